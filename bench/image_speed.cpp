// A master delivered as a disc image, against the tools a plant would otherwise use, in one run, on the
// scan benchmark's tree made into ISO 9660 images with Rock Ridge and Joliet (xorriso, made once):
//   walk       MediaWalker::ScanFiles over the image of the tree's disc/ (200,000 files; the walk and the
//              classification of every file, as the scan benchmark walks the folder) against
//              `bsdtar -tf <image>`, which lists the image's entries and nothing more. Goal within 1.5x.
//   whole job  kevro-check on the image of the whole tree (its 300 ZIPs expanded from the image's bytes)
//              against what it spares: `bsdtar -xf <image>` into a folder, then kevro-check on that
//              folder. Goal: faster. With kevro-check's peak memory (goal 500 MB).
// Every side runs warm (the image is read once before anything is timed), one untimed round, then the
// best of three, the sides taking turns.
//
// bench_image_speed   (the tree: $KEVRO_BENCH_DISC, default build/bench-disc, shared with bench_scan_speed)

#include "disc_tree.h"
#include "measure.h"

#include "catalogue/CatalogueSetup.h"
#include "platform/FileSystem.h"
#include "platform/MsgBox.h"
#include "platform/Paths.h"
#include "scan/ArchiveExpander.h"
#include "scan/MediaWalker.h"
#include "shell/MainMod.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <limits>

#include <unistd.h>

namespace {
constexpr int TimedRounds = 3;

struct Best {
    double ms = std::numeric_limits<double>::infinity();
    void take(double v) { ms = std::min(ms, v); }
};

void report(const char *what, double ms, const char *against, double referenceMs, double goal)
{
    const double ratio = ms / referenceMs;
    std::printf("%-40s %8.1f ms   %-28s %8.1f ms   ratio %.2f (goal %.1f) %s\n", what, ms, against, referenceMs,
                ratio, goal, ratio <= goal ? "met" : "MISSED");
}
} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    ArchiveExpander::PrepareLocale();
    SetMsgBoxPresenter([](const MsgBoxRequest &r) {
        std::fprintf(stderr, "message box: %s\n", qPrintable(r.detail.isEmpty() ? r.prompt : r.detail));
        return FirstButtonOf(r.style);
    });
    const QString xorriso = QStandardPaths::findExecutable(QStringLiteral("xorriso"));
    const QString bsdtar = QStandardPaths::findExecutable(QStringLiteral("bsdtar"));
    if (xorriso.isEmpty() || bsdtar.isEmpty()) {
        std::fprintf(stderr, "xorriso and bsdtar are needed (Debian packages xorriso, libarchive-tools)\n");
        return 1;
    }
    const QString here = QCoreApplication::applicationDirPath();
    const DiscTree tree = SharedDiscTree();
    const QString &root = tree.root;
    if (tree.files == 0)
        return 1;
    const auto makeImage = [&](const QString &image, const QString &folder) {
        if (QFileInfo::exists(image) && QFileInfo(image).lastModified() >= QFileInfo(root).lastModified())
            return true;
        std::printf("Making the image %s (once; this takes a while)...\n", qPrintable(image));
        return QProcess::execute(xorriso, {QStringLiteral("-as"), QStringLiteral("mkisofs"), QStringLiteral("-quiet"),
                                           QStringLiteral("-R"), QStringLiteral("-J"), QStringLiteral("-joliet-long"),
                                           QStringLiteral("-o"), image, folder}) == 0;
    };
    const QString discImage = root + QStringLiteral("-disc.iso"), image = root + QStringLiteral(".iso");
    if (!makeImage(discImage, tree.disc) || !makeImage(image, tree.root))
        return 1;

    // The application folder of the run, with the demo catalogue.
    QTemporaryDir appFolder;
    if (!MakeAppFolder(appFolder.path()))
        return 1;
    const QString check = here + QStringLiteral("/../kevro-check");
    const auto checkArgs = [](const QString &volume) {
        return QStringList{QStringLiteral("--client"), QStringLiteral("4"), QStringLiteral("--catalogue"),
                           QStringLiteral("BENCH"), QStringLiteral("--report"), QStringLiteral("html"),
                           QStringLiteral("--content"), QStringLiteral("all"), volume};
    };
    const QString unpacked = appFolder.filePath(QStringLiteral("unpacked"));
    QProcess::execute(QStringLiteral("sh"), {QStringLiteral("-c"),
                                             QStringLiteral("cat '%1' '%2' > /dev/null").arg(image, discImage)});

    Best walkBest, listBest, jobBest, unpackBest, folderJobBest;
    long peakKb = 0;
    int32_t walked = 0;
    bool ok = true;
    for (int round = 0; round <= TimedRounds; ++round) {
        const bool take = round > 0;
        const auto walk = [&] {
            const WalkRun run = FreshWalk(discImage);
            walked = run.walked;
            if (take)
                walkBest.take(run.ms);
        };
        const auto list = [&] {
            const Child c = runMeasured(bsdtar, {QStringLiteral("-tf"), discImage});
            ok = ok && c.ok;
            if (take)
                listBest.take(c.ms);
        };
        const auto job = [&] {
            ::sync();
            const Child c = runMeasured(check, checkArgs(image));
            ok = ok && c.ok;
            if (take) {
                jobBest.take(c.ms);
                peakKb = std::max(peakKb, c.peakKb);
            }
        };
        const auto unpackedJob = [&] {
            QDir(unpacked).removeRecursively();
            QDir().mkpath(unpacked);
            ::sync();
            const Child x = runMeasured(bsdtar, {QStringLiteral("-xf"), image, QStringLiteral("-C"), unpacked});
            const Child c = runMeasured(check, checkArgs(unpacked));
            ok = ok && x.ok && c.ok;
            if (take) {
                unpackBest.take(x.ms);
                folderJobBest.take(c.ms);
            }
            QDir(unpacked).removeRecursively();
        };
        if (round % 2 == 0) {
            walk();
            list();
            job();
            unpackedJob();
        } else {
            unpackedJob();
            job();
            list();
            walk();
        }
    }
    if (!ok) {
        std::fprintf(stderr, "a run failed\n");
        return 1;
    }
    std::printf("images: %s %.1f MB, the walk saw %d files (%d in disc/); %s %.1f MB\n",
                qPrintable(QFileInfo(discImage).fileName()), QFileInfo(discImage).size() / 1048576.0, int(walked),
                tree.files, qPrintable(QFileInfo(image).fileName()), QFileInfo(image).size() / 1048576.0);
    report("walk + classification (MediaWalker)", walkBest.ms, "bsdtar -tf (listing only)", listBest.ms, 1.5);
    std::printf("  kevro-check on the folder bsdtar -xf made: %.1f ms, bsdtar -xf itself %.1f ms\n", folderJobBest.ms,
                unpackBest.ms);
    report("whole job on the image (kevro-check)", jobBest.ms, "bsdtar -xf + kevro-check", unpackBest.ms + folderJobBest.ms,
           1.0);
    std::printf("%-40s %8.1f MB   (goal 500) %s\n", "peak resident memory of kevro-check", peakKb / 1024.0,
                peakKb / 1024.0 < 500 ? "met" : "MISSED");
    return 0;
}
