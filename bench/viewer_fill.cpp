// The fill of a review screen with 100,000 matches, as the text review screen loads: blocks of 500 rows
// written through Clip with the grid's drawing off, the sort by name and the mark pass; against the
// same fill row by row (each match its own AddItem, drawing off too), on the same list in the same run.
// The files exist (empty, in 100 folders, every hundredth hidden), so both sides read the same sizes and
// marks from the file system. Best of three rounds after an untimed one; the sides take turns.

#include "measure.h"
#include "controls/FlexGrid.h"
#include "controls/Forms.h"
#include "platform/MsgBox.h"
#include "review/ViewerFiles.h"
#include "review/frmScanResultsText.h"
#include "shell/MainMod.h"
#include "shell/MainModScreens.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <limits>

namespace {
constexpr int Matches = 100000;
constexpr int Folders = 100;
constexpr int TimedRounds = 3;


// The same grid filled one row at a time.
void fillRowByRow(FlexGrid *g)
{
    g->setRedraw(false);
    g->setRows(0);
    g->setCols(5);
    g->AddItem(QStringLiteral("\tPath\tFile Name\tFile Size"));
    for (const QString &path : gMediaFiles) {
        if (!TextScreenListsFile(path))
            continue;
        g->AddItem(FileIconKey(path) + QLatin1Char('\t') + path + QLatin1Char('\t') + FileNameOnly(path) +
                   QLatin1Char('\t') + FileSizeText(path));
    }
    g->setFixedRows(1);
    g->setCol(2);
    g->setSort(FlexGrid::flexSortGenericAscending);
    for (int r = 1; r < g->Rows(); ++r) {
        const QString mark = g->TextMatrix(r, 0);
        if (mark.isEmpty())
            continue;
        g->setCol(0);
        g->setRow(r);
        g->setText(QString());
    }
    g->setRedraw(true);
}
} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    InstallScreenServices();
    SetMsgBoxPresenter([](const MsgBoxRequest &r) {
        std::fprintf(stderr, "message box: %s\n", qPrintable(r.prompt));
        return FirstButtonOf(r.style);
    });
    QTemporaryDir home;
    qputenv("KEVRO_HOME", QFile::encodeName(home.path()));
    const QString disc = home.filePath(QStringLiteral("DISC"));
    ResetList(gMediaFiles);
    for (int f = 0; f < Folders; ++f)
        QDir().mkpath(disc + QStringLiteral("/FOLDER%1").arg(f, 3, 10, QLatin1Char('0')));
    for (int i = 0; i < Matches; ++i) {
        const QString name = (i % 100 == 0 ? QStringLiteral(".F%1.TXT") : QStringLiteral("F%1.TXT"))
                                 .arg((i * 7919) % Matches, 6, 10, QLatin1Char('0'));
        const QString path =
            disc + QStringLiteral("/FOLDER%1/").arg(i % Folders, 3, 10, QLatin1Char('0')) + name;
        QFile file(path);
        file.open(QIODevice::WriteOnly);
        AppendToList(gMediaFiles, path);
    }

    double clipBest = std::numeric_limits<double>::infinity(), rowBest = clipBest, filesBest = clipBest;
    int rows = 0;
    for (int round = 0; round <= TimedRounds; ++round) {
        const auto clip = [&] {
            Forms::unload<frmScanResultsText>();
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
            const double ms = timed([] { Forms::get<frmScanResultsText>(); });
            rows = Forms::get<frmScanResultsText>()->gridTextResults->Rows();
            if (round > 0)
                clipBest = std::min(clipBest, ms);
        };
        const auto rowByRow = [&] {
            FlexGrid grid;
            const double ms = timed([&] { fillRowByRow(&grid); });
            if (round > 0)
                rowBest = std::min(rowBest, ms);
        };
        // What both fills read of the file system, alone: each file's mark and size.
        const auto files = [&] {
            qsizetype n = 0;
            const double ms = timed([&] {
                for (const QString &path : gMediaFiles)
                    n += FileIconKey(path).size() + FileSizeText(path).size();
            });
            if (round > 0 && n > 0)
                filesBest = std::min(filesBest, ms);
        };
        if (round % 2 == 0) {
            clip();
            rowByRow();
        } else {
            rowByRow();
            clip();
        }
        files();
    }
    std::printf("%d matches, %d rows in the grid (heading included)\n", Matches, rows);
    std::printf("%-44s %8.1f ms\n", "viewer fill, blocks of 500 through Clip", clipBest);
    std::printf("%-44s %8.1f ms   ratio %.2f\n", "the same fill row by row (AddItem)", rowBest, rowBest / clipBest);
    std::printf("%-44s %8.1f ms   (the grids' own part: %.1f ms through Clip, %.1f ms row by row)\n",
                "of which the marks and sizes of the files", filesBest, clipBest - filesBest, rowBest - filesBest);
    return 0;
}
