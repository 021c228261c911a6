// The scan's speed against the tools an operator would compare it with, on one disc-like tree, in one
// run:
//   walk      MediaWalker::ScanFiles with no display (the walk and the classification of every file)
//             against `find <disc> -type f`;
//   expansion ArchiveExpander::Expand over every ZIP, into a fresh extract folder, against
//             `bsdtar -xf <zip> -C <folder>` over the same ZIPs, each into its own fresh folder;
//   screen    the same walk started from frmScanDisc's Next button and shown by frmScanProgress (its
//             labels fed per file, as the screen does) against `find` again.
//
// The tree (see disc_tree.h) keeps the archives apart from the disc it walks: a ZIP met by the walk is
// expanded on the spot, and the walk's time would then be mostly the expansion's, which is measured on
// its own. disc/ has the shape of a master with its archives taken out; it still carries programs, so
// the walk's test of every .EXE for a self-extractor is in the walk's time.
//
// The page cache cannot be dropped here (that takes root), so every side is timed warm: find lists the
// disc once before anything is timed, each side has an untimed round, then the best of three timed
// rounds counts, the sides taking turns within a round. Each walk starts with empty lists, as a
// session's first scan does; what a later scan pays to let go of the last one's lists is shown apart.
// Each expansion starts with the earlier output deleted and the file system synced, so that neither
// side pays for the other's writing back.

#include "measure.h"
#include "disc_tree.h"

#include "catalogue/CatalogueSetup.h"
#include "controls/Forms.h"
#include "platform/FileSystem.h"
#include "platform/MsgBox.h"
#include "platform/Paths.h"
#include "scan/ArchiveExpander.h"
#include "scan/MediaWalker.h"
#include "scan/frmScanDisc.h"
#include "scan/frmScanProgress.h"
#include "shell/MainMod.h"
#include "shell/MainModScreens.h"

#include <QApplication>
#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QPushButton>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <limits>

#include <unistd.h>

namespace {
constexpr int TimedRounds = 3;

struct Best {
    double ms = std::numeric_limits<double>::infinity();
    void take(double v) { ms = std::min(ms, v); }
};


// Runs a tool to its end; its output goes to /dev/null unless asked for.
bool runTool(const QString &program, const QStringList &args, QByteArray *output = nullptr)
{
    QProcess p;
    if (!output)
        p.setStandardOutputFile(QProcess::nullDevice());
    p.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    p.start(program, args);
    if (!p.waitForFinished(-1))
        return false;
    if (output)
        *output = p.readAllStandardOutput();
    return p.exitStatus() == QProcess::NormalExit && p.exitCode() == 0;
}

struct Output {
    qint64 files = 0, bytes = 0;
    bool operator==(const Output &) const = default;
};

Output filesBelow(const QString &folder)
{
    Output out;
    QDirIterator it(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        it.next();
        ++out.files;
        out.bytes += it.fileInfo().size();
    }
    return out;
}

void report(const char *what, double ms, const char *against, double referenceMs, double goal)
{
    const double ratio = ms / referenceMs;
    std::printf("%-40s %8.1f ms   %-14s %8.1f ms   ratio %.2f (goal %.1f) %s\n", what, ms, against, referenceMs,
                ratio, goal, ratio <= goal ? "met" : "MISSED");
}

void clearScan()
{
    ResetList(gMediaFiles);
    ResetList(gExternalFiles);
    ClearRealPaths();
}

void copyPictures(const QString &appFolder)
{
    // The screens' artwork lies beside the build's executables; the scanning screen shows its banner.
    const QDir from(QCoreApplication::applicationDirPath() + QStringLiteral("/../pictures"));
    QDir().mkpath(appFolder + QStringLiteral("/pictures"));
    for (const QString &f : from.entryList({QStringLiteral("*.png")}, QDir::Files))
        QFile::copy(from.filePath(f), appFolder + QStringLiteral("/pictures/") + f);
}
} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    InstallScreenServices();
    int boxes = 0;
    SetMsgBoxPresenter([&](const MsgBoxRequest &r) {
        if (++boxes <= 10)
            std::fprintf(stderr, "message box: %s\n", qPrintable(r.prompt));
        return FirstButtonOf(r.style);
    });

    const DiscTree tree = SharedDiscTree();
    if (tree.files == 0)
        return 1;
    const QString find = QStandardPaths::findExecutable(QStringLiteral("find"));
    if (find.isEmpty()) {
        std::fprintf(stderr, "find is missing (Debian package findutils)\n");
        return 1;
    }
    const QString bsdtar = QStandardPaths::findExecutable(QStringLiteral("bsdtar"));

    // The application folder of the run: kevro.ini names the disc, extract/ takes the archives, and the
    // screen road's application viewer judges the executables against a catalogue of its own (on
    // SQLite; no data source of this machine's user or system counts).
    QTemporaryDir appFolder;
    if (!MakeAppFolder(appFolder.path()))
        return 1;
    copyPictures(appFolder.path());
    WriteIniKey(QStringLiteral("Devices"), QStringLiteral("DefaultDevice"), tree.disc);
    // A tree just laid out is still being written back; that must not run under the timings.
    ::sync();

    // ---- the walk, without and with the screen, against find ----------------------------------------
    const QStringList findArgs{tree.disc, QStringLiteral("-type"), QStringLiteral("f")};
    QByteArray listing;
    runTool(find, findArgs, &listing); // warms the page cache, and counts the files find sees
    const qsizetype findFiles = listing.count('\n');
    listing.clear();

    Best findBest, walkBest, screenBest, releaseBest;
    int32_t walked = 0, walkedOnScreen = 0;
    qsizetype media = 0, external = 0;
    for (int round = 0; round <= TimedRounds; ++round) {
        const double findMs = timed([&] { runTool(find, findArgs); });

        // The walk starts with empty lists, as the first scan of a session does: letting go of the last
        // round's 200,000 paths is not the walk's work. A later scan pays it; it is shown apart.
        ResetExtractFolder();
        const double releaseMs = timed(clearScan);
        const double walkMs = timed([&] {
            MediaWalker w;
            w.SetDrive(tree.disc);
            w.ScanFiles();
        });
        walked = gFilesScanned;
        media = gMediaFiles.size();
        external = gExternalFiles.size();

        clearScan();
        auto *setUp = Forms::get<frmScanDisc>();
        setUp->show();
        QCoreApplication::processEvents();
        const double screenMs = timed([&] { setUp->cmdNext->click(); });
        walkedOnScreen = gFilesScanned;
        Forms::unload<frmScanDisc>();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);

        if (round > 0) {
            findBest.take(findMs);
            walkBest.take(walkMs);
            screenBest.take(screenMs);
            releaseBest.take(releaseMs);
        }
    }
    // The lists of a scan of this size hold tens of MB; the expansions start tools from this process.
    clearScan();

    std::printf("disc: %d files in %d folders; find lists %lld, the walk %d (%lld media, %lld external), "
                "the screen %d\n",
                tree.files, tree.folders, static_cast<long long>(findFiles), int(walked), static_cast<long long>(media),
                static_cast<long long>(external), int(walkedOnScreen));
    if (walked != findFiles || walkedOnScreen != findFiles)
        std::printf("MISMATCH: the walks did not see the files find sees\n");
    report("walk + classification (MediaWalker)", walkBest.ms, "find -type f", findBest.ms, 1.5);
    std::printf("  a scan after this one first lets go of its lists: %.1f ms more\n", releaseBest.ms);

    // ---- the expansion against bsdtar ---------------------------------------------------------------
    const QString tarRoot = appFolder.path() + QStringLiteral("/bsdtar");
    Best expandBest, listBest, tarBest;
    int warnings = 0;
    const auto expandAll = [&](bool take) {
        ResetExtractFolder();
        ::sync();
        ArchiveExpander x;
        double listMs = 0, expandMs = 0;
        warnings = 0;
        for (const QString &z : tree.zips) {
            const QString archive = tree.archives + QLatin1Char('/') + z;
            // The scan lists an archive before it expands it; that is timed apart.
            long code = -1;
            listMs += timed([&] { code = x.ReadContents(archive); });
            if (code != 0)
                ++warnings;
            expandMs += timed([&] { x.Expand(archive, ExtractFolder() + QLatin1Char('/') + z.toUpper()); });
            warnings += static_cast<int>(x.warnings().size());
        }
        if (take) {
            listBest.take(listMs);
            expandBest.take(expandMs);
        }
    };
    bool tarFailed = false;
    const auto tarAll = [&](bool take) {
        QDir(tarRoot).removeRecursively();
        ::sync();
        const double ms = timed([&] {
            for (const QString &z : tree.zips) {
                const QString target = tarRoot + QLatin1Char('/') + z.toUpper();
                QDir().mkpath(target);
                if (!runTool(bsdtar, {QStringLiteral("-xf"), tree.archives + QLatin1Char('/') + z, QStringLiteral("-C"),
                                      target}))
                    tarFailed = true;
            }
        });
        if (take)
            tarBest.take(ms);
    };
    for (int round = 0; round <= TimedRounds; ++round) {
        if (bsdtar.isEmpty()) {
            expandAll(round > 0);
        } else if (round % 2 == 0) {
            expandAll(round > 0);
            tarAll(round > 0);
        } else {
            tarAll(round > 0);
            expandAll(round > 0);
        }
    }
    const Output expanded = filesBelow(ExtractFolder());
    std::printf("archives: %lld ZIPs; ArchiveExpander wrote %lld files, %.1f MB, %d warnings\n",
                static_cast<long long>(tree.zips.size()), expanded.files, expanded.bytes / 1e6, warnings);
    if (bsdtar.isEmpty()) {
        std::printf("%-40s %8.1f ms   (listing them first, as the scan does: %.1f ms)\n",
                    "expansion (ArchiveExpander)", expandBest.ms, listBest.ms);
        std::printf("bsdtar is missing (Debian package libarchive-tools): the expansion ratio is skipped\n");
    } else {
        const Output tarred = filesBelow(tarRoot);
        if (tarFailed || !(tarred == expanded))
            std::printf("MISMATCH: bsdtar wrote %lld files, %.1f MB%s\n", tarred.files, tarred.bytes / 1e6,
                        tarFailed ? " and failed on some archives" : "");
        // The reference pays for a process start an archive; how much that is, for the reading of the ratio.
        Best startsBest;
        for (int round = 0; round <= TimedRounds; ++round) {
            const double ms = timed([&] {
                for (qsizetype i = 0; i < tree.zips.size(); ++i)
                    runTool(bsdtar, {QStringLiteral("--version")});
            });
            if (round > 0)
                startsBest.take(ms);
        }
        report("expansion (ArchiveExpander::Expand)", expandBest.ms, "bsdtar -xf", tarBest.ms, 1.2);
        std::printf("  listing the archives first, as the scan does: %.1f ms more; of bsdtar's time, %lld starts "
                    "of bsdtar alone take %.1f ms\n",
                    listBest.ms, static_cast<long long>(tree.zips.size()), startsBest.ms);
    }
    ResetExtractFolder();
    QDir(tarRoot).removeRecursively();

    report("the same walk through frmScanProgress", screenBest.ms, "find -type f", findBest.ms, 3.0);
    if (boxes > 0)
        std::printf("%d message boxes came up (the first ones are on stderr)\n", boxes);
    return 0;
}
