// Fills a FlexGrid with 100,000 rows in blocks of 500 written through Clip, the way the review screens
// fill their grids, and the same rows through a QTableWidget, in one run. Reports the time per block
// (mean and worst, and the last block, at the full size) and the total of each, and their ratio.

#include "review/FlexGrid.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QTableWidget>

#include <algorithm>
#include <cstdio>

namespace {
constexpr int TotalRows = 100000;
constexpr int Block = 500;

QString rowText(int i)
{
    return QStringLiteral("\t/MEDIA/CDROM/DISC/FOLDER%1/FILE%2.JPG\tFILE%2.JPG\t%3 KB\t\r")
        .arg(i % 97)
        .arg(i)
        .arg(i % 4096);
}

struct Result {
    double totalMs = 0, worstMs = 0, lastMs = 0;
};

Result fillFlexGrid()
{
    FlexGrid grid;
    grid.setCols(4);
    grid.resize(800, 600);
    grid.show();
    grid.setRedraw(false);
    Result r;
    QElapsedTimer all;
    all.start();
    QString buffer = QStringLiteral("\tPath\tFile Name\tFile Size\r");
    int total = 0, batch = 0;
    for (int i = 0; i < TotalRows; ++i) {
        buffer += rowText(i);
        ++total;
        ++batch;
        if (batch == Block || i == TotalRows - 1) {
            QElapsedTimer t;
            t.start();
            grid.setRows(total + 1);
            QApplication::processEvents();
            grid.setRow(total - batch);
            grid.setCol(0);
            grid.setRowSel(total);
            grid.setColSel(3);
            grid.setClip(buffer);
            const double ms = t.nsecsElapsed() / 1e6;
            r.worstMs = std::max(r.worstMs, ms);
            r.lastMs = ms;
            buffer.clear();
            batch = 0;
        }
    }
    grid.setFixedRows(1);
    grid.setCol(2);
    grid.setSort(FlexGrid::flexSortGenericAscending);
    grid.setRedraw(true);
    QApplication::processEvents();
    r.totalMs = all.nsecsElapsed() / 1e6;
    return r;
}

Result fillTableWidget()
{
    QTableWidget table;
    table.setColumnCount(4);
    table.resize(800, 600);
    table.show();
    table.setUpdatesEnabled(false);
    Result r;
    QElapsedTimer all;
    all.start();
    QStringList pending;
    int total = 0;
    for (int i = 0; i < TotalRows; ++i) {
        pending << rowText(i);
        ++total;
        if (pending.size() == Block || i == TotalRows - 1) {
            QElapsedTimer t;
            t.start();
            const int first = table.rowCount();
            table.setRowCount(total);
            QApplication::processEvents();
            for (int k = 0; k < pending.size(); ++k) {
                const QStringList cells = pending[k].split(QLatin1Char('\t'));
                for (int c = 0; c < 4; ++c)
                    table.setItem(first + k, c, new QTableWidgetItem(cells.value(c)));
            }
            const double ms = t.nsecsElapsed() / 1e6;
            r.worstMs = std::max(r.worstMs, ms);
            r.lastMs = ms;
            pending.clear();
        }
    }
    table.sortItems(2);
    table.setUpdatesEnabled(true);
    QApplication::processEvents();
    r.totalMs = all.nsecsElapsed() / 1e6;
    return r;
}
} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    const int blocks = TotalRows / Block;
    const Result flex = fillFlexGrid();
    const Result widget = fillTableWidget();
    std::printf("rows %d in blocks of %d (%d blocks)\n", TotalRows, Block, blocks);
    std::printf("FlexGrid      total %9.1f ms  mean block %7.2f ms  worst %7.2f ms  last %7.2f ms\n", flex.totalMs,
                flex.totalMs / blocks, flex.worstMs, flex.lastMs);
    std::printf("QTableWidget  total %9.1f ms  mean block %7.2f ms  worst %7.2f ms  last %7.2f ms\n",
                widget.totalMs, widget.totalMs / blocks, widget.worstMs, widget.lastMs);
    std::printf("QTableWidget / FlexGrid: %.1fx\n", widget.totalMs / flex.totalMs);
    return 0;
}
