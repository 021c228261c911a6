// Fills a FlexGrid with 100,000 rows in blocks of 500 written through Clip, the way the review screens
// fill their grids, and the same rows through a QTableWidget, in one run. The rows' text is made before
// the clock starts; each block is timed from raising the row count to the last cell written. Reports
// the time per block (mean, worst, and the last one, at the full size), the fill's total, the sort by
// file name that follows, and the ratios.

#include "controls/FlexGrid.h"

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
    double totalMs = 0, worstMs = 0, lastMs = 0, sortMs = 0;

    void addBlock(const QElapsedTimer &t)
    {
        const double ms = t.nsecsElapsed() / 1e6;
        totalMs += ms;
        worstMs = std::max(worstMs, ms);
        lastMs = ms;
    }
};

const QStringList &blocks()
{
    static const QStringList texts = [] {
        QStringList out;
        QString buffer = QStringLiteral("\tPath\tFile Name\tFile Size\r");
        for (int i = 0; i < TotalRows; ++i) {
            buffer += rowText(i);
            if ((i + 1) % Block == 0) {
                out << buffer;
                buffer.clear();
            }
        }
        return out;
    }();
    return texts;
}

Result fillFlexGrid()
{
    FlexGrid grid;
    grid.setCols(4);
    grid.resize(800, 600);
    grid.show();
    QApplication::processEvents();
    grid.setRedraw(false);
    Result r;
    int total = 0;
    for (const QString &buffer : blocks()) {
        QElapsedTimer t;
        t.start();
        total += Block;
        grid.setRows(total + 1);
        QApplication::processEvents();
        grid.setRow(total - Block);
        grid.setCol(0);
        grid.setRowSel(total);
        grid.setColSel(3);
        grid.setClip(buffer);
        r.addBlock(t);
    }
    QElapsedTimer t;
    t.start();
    grid.setFixedRows(1);
    grid.setCol(2);
    grid.setSort(FlexGrid::flexSortGenericAscending);
    grid.setRedraw(true);
    QApplication::processEvents();
    r.sortMs = t.nsecsElapsed() / 1e6;
    return r;
}

Result fillTableWidget(bool updates)
{
    QTableWidget table;
    table.setColumnCount(4);
    table.resize(800, 600);
    table.show();
    QApplication::processEvents();
    table.setUpdatesEnabled(updates);
    Result r;
    int total = 0;
    for (const QString &buffer : blocks()) {
        QElapsedTimer t;
        t.start();
        const int first = total;
        total += Block;
        table.setRowCount(total + 1);
        QApplication::processEvents();
        const QStringList lines = buffer.split(QLatin1Char('\r'), Qt::SkipEmptyParts);
        for (int k = 0; k < lines.size(); ++k) {
            const QStringList cells = lines[k].split(QLatin1Char('\t'));
            for (int c = 0; c < 4; ++c)
                table.setItem(first + k, c, new QTableWidgetItem(cells.value(c)));
        }
        r.addBlock(t);
    }
    QElapsedTimer t;
    t.start();
    table.sortItems(2);
    table.setUpdatesEnabled(true);
    QApplication::processEvents();
    r.sortMs = t.nsecsElapsed() / 1e6;
    return r;
}
} // namespace

void report(const char *name, const Result &r)
{
    std::printf("%-28s blocks %8.1f ms  mean %6.2f ms  worst %6.2f ms  last %6.2f ms  sort %7.1f ms\n", name,
                r.totalMs, r.totalMs / (TotalRows / Block), r.worstMs, r.lastMs, r.sortMs);
}

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    blocks();
    const Result flex = fillFlexGrid();
    const Result quiet = fillTableWidget(false);
    const Result plain = fillTableWidget(true);
    std::printf("%d rows in blocks of %d\n", TotalRows, Block);
    report("FlexGrid (Redraw off)", flex);
    report("QTableWidget (updates off)", quiet);
    report("QTableWidget", plain);
    std::printf("fill: QTableWidget (updates off) / FlexGrid %.1fx, QTableWidget / FlexGrid %.1fx\n",
                quiet.totalMs / flex.totalMs, plain.totalMs / flex.totalMs);
    std::printf("fill and sort: QTableWidget (updates off) / FlexGrid %.1fx\n",
                (quiet.totalMs + quiet.sortMs) / (flex.totalMs + flex.sortMs));
    return 0;
}
