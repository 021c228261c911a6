// The whole job without screens against its two big parts, in one run, on the scan benchmark's disc:
//   kevro-check   one job as a separate process: the walk of the disc and its archives, the expansion,
//                 the judgement of every program against the demo catalogue (SQLite), the viewers'
//                 counts, the HTML report listing every file, and the extract folder emptied at both
//                 ends; its wall time and its peak resident memory (from wait4);
//   reference     the walk with the expansion (MediaWalker::ScanFiles over the same folder, in this
//                 process), which is the part of the job no report or judgement can avoid.
// Goal: the whole job within 2x the walk and expansion, in under 500 MB. Both sides run warm (find lists
// the tree before anything is timed), one untimed round, then the best of three; the sides take turns.
//
// bench_check_speed   (the disc: $KEVRO_BENCH_DISC, default build/bench-disc, shared with bench_scan_speed)

#include "disc_tree.h"
#include "measure.h"

#include "platform/FileSystem.h"
#include "platform/MsgBox.h"
#include "platform/Paths.h"
#include "scan/ArchiveExpander.h"
#include "scan/MediaWalker.h"
#include "shell/MainMod.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <limits>
#include <vector>

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

namespace {
constexpr int TimedRounds = 3;

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    ArchiveExpander::PrepareLocale();
    int boxes = 0;
    SetMsgBoxPresenter([&](const MsgBoxRequest &r) {
        if (++boxes <= 5)
            std::fprintf(stderr, "message box: %s\n", qPrintable(r.prompt));
        return FirstButtonOf(r.style);
    });

    const QString here = QCoreApplication::applicationDirPath();
    const DiscTree tree = SharedDiscTree();
    if (tree.files == 0)
        return 1;

    // The application folder of the run, with the demo catalogue.
    QTemporaryDir appFolder;
    if (!MakeAppFolder(appFolder.path()))
        return 1;
    const QString check = here + QStringLiteral("/../kevro-check");
    const QStringList checkArgs{QStringLiteral("--client"), QStringLiteral("4"), QStringLiteral("--catalogue"),
                                QStringLiteral("BENCH"), QStringLiteral("--report"), QStringLiteral("html"),
                                QStringLiteral("--content"), QStringLiteral("all"), tree.root};
    ::sync();
    QProcess::execute(QStringLiteral("find"), {tree.root, QStringLiteral("-type"), QStringLiteral("f"),
                                               QStringLiteral("-fprint"), QStringLiteral("/dev/null")});

    double walkBest = std::numeric_limits<double>::infinity(), checkBest = walkBest;
    long peakKb = 0;
    int32_t walked = 0;
    qsizetype media = 0, external = 0;
    bool failed = false;
    for (int round = 0; round <= TimedRounds; ++round) {
        const auto walk = [&] {
            const WalkRun run = FreshWalk(tree.root);
            walked = run.walked;
            media = run.media;
            external = run.external;
            if (round > 0)
                walkBest = std::min(walkBest, run.ms);
        };
        const auto job = [&] {
            ::sync();
            const Child c = runMeasured(check, checkArgs);
            failed = failed || !c.ok;
            if (round > 0) {
                checkBest = std::min(checkBest, c.ms);
                peakKb = std::max(peakKb, c.peakKb);
            }
        };
        if (round % 2 == 0) {
            walk();
            job();
        } else {
            job();
            walk();
        }
    }
    if (failed) {
        std::fprintf(stderr, "kevro-check failed on the disc\n");
        return 1;
    }
    const QFileInfo report(AppPath() + QStringLiteral("/reports/BENCH.html"));
    std::printf("disc: %d files in %d folders and %lld archives; the walk saw %d (%lld media, %lld external)\n",
                tree.files, tree.folders, static_cast<long long>(tree.zips.size()), int(walked),
                static_cast<long long>(media), static_cast<long long>(external));
    std::printf("report: %.1f MB\n", report.size() / 1048576.0);
    const double ratio = checkBest / walkBest;
    std::printf("%-40s %8.1f ms   %-22s %8.1f ms   ratio %.2f (goal 2.0) %s\n", "whole job (kevro-check)", checkBest,
                "walk + expansion", walkBest, ratio, ratio <= 2.0 ? "met" : "MISSED");
    std::printf("%-40s %8.1f MB   (goal 500) %s\n", "peak resident memory of kevro-check", peakKb / 1024.0,
                peakKb / 1024.0 < 500 ? "met" : "MISSED");
    return 0;
}
