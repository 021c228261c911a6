// The scan's speed against the tools an operator would compare it with, on one disc-like tree in one
// run: the walk and classification of the scan logic against `find <root> -type f`, the expansion of
// the archives against `bsdtar -xf` of the same archives, and the same walk through the scanning
// screen (its labels updated per file) against `find` again.
//
// The tree: 200,000 files in 10,000 folders (a hundred top-level folders of a hundred each), names in
// mixed case with spaces, the tails a master carries (a few programs, mostly media and documents),
// and beside it a folder of 300 ZIPs with some 3,000 members of text and of incompressible data. The
// walk is timed on the files tree alone, so that it measures the walk; the archives are timed apart.
// It is made once (a marker file says it is complete) in $KEVRO_BENCH_DISC or bench-disc/ in the
// build folder. The page cache cannot be dropped without privileges: every side runs once to warm it,
// then the best of three runs counts.

#include "controls/Forms.h"
#include "platform/MsgBox.h"
#include "scan/ArchiveExpander.h"
#include "scan/MediaWalker.h"
#include "scan/frmScanDisc.h"
#include "scan/frmScanProgress.h"
#include "shell/MainMod.h"
#include "shell/MainModScreens.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QPushButton>
#include <QRandomGenerator>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <archive.h>
#include <archive_entry.h>

#include <algorithm>
#include <cstdio>
#include <functional>

namespace {
constexpr int TopFolders = 100, SubFolders = 99, FilesPerFolder = 20, Archives = 300, MembersPerArchive = 10;

void writeFile(const QString &path, const QByteArray &bytes)
{
    QFile f(path);
    if (f.open(QIODevice::WriteOnly))
        f.write(bytes);
}

la_ssize_t appendTo(archive *, void *client, const void *buf, size_t n)
{
    static_cast<QByteArray *>(client)->append(static_cast<const char *>(buf), static_cast<qsizetype>(n));
    return static_cast<la_ssize_t>(n);
}

QByteArray zipOf(int index, QRandomGenerator &gen)
{
    QByteArray out;
    archive *a = archive_write_new();
    archive_write_set_format_zip(a);
    archive_write_open(a, &out, nullptr, appendTo, nullptr);
    for (int m = 0; m < MembersPerArchive; ++m) {
        QByteArray data;
        if (m % 2 == 0) {
            const int words = 2000 + gen.bounded(18000);
            for (int w = 0; w < words; ++w)
                data += QByteArray::number(gen.bounded(100000)) + (w % 12 == 11 ? '\n' : ' ');
        } else {
            data.resize(20000 + gen.bounded(80000));
            gen.fillRange(reinterpret_cast<quint32 *>(data.data()), data.size() / 4);
        }
        const QByteArray name = QStringLiteral("Program %1/%2/Part %3.%4")
                                    .arg(index)
                                    .arg(m % 3 ? "Data" : "Help")
                                    .arg(m)
                                    .arg(m % 2 ? "DAT" : "txt")
                                    .toUtf8();
        archive_entry *e = archive_entry_new();
        archive_entry_copy_pathname(e, name.constData());
        archive_entry_set_filetype(e, AE_IFREG);
        archive_entry_set_perm(e, 0644);
        archive_entry_set_size(e, data.size());
        archive_write_header(a, e);
        archive_write_data(a, data.constData(), static_cast<size_t>(data.size()));
        archive_entry_free(e);
    }
    archive_write_close(a);
    archive_write_free(a);
    return out;
}

// The tree, made once.
void makeTree(const QString &root)
{
    if (QFile::exists(root + QStringLiteral("/complete")))
        return;
    std::printf("Making the disc-like tree in %s (once)...\n", qPrintable(root));
    std::fflush(stdout);
    QDir(root).removeRecursively();
    QRandomGenerator gen(20261123);
    // Mostly media and documents, a few programs and some kinds the scan does not sort.
    const char *tails[] = {".JPG", ".jpg", ".TXT", ".MP3", ".AVI", ".Gif", ".DAT", ".HTM", ".XML", ".WAV",
                           ".mpg", ".NFO", ".BMP", ".doc", ".PDF", ".ini", ".EXE", ".DLL", ".MOV", ".CAB"};
    const QByteArray body(200, 'k');
    for (int t = 0; t < TopFolders; ++t) {
        const QString top = root + QStringLiteral("/files/Section %1").arg(t, 2, 10, QLatin1Char('0'));
        for (int s = -1; s < SubFolders; ++s) {
            const QString folder = s < 0 ? top : top + QStringLiteral("/Sub Folder %1").arg(s);
            QDir().mkpath(folder);
            for (int f = 0; f < FilesPerFolder; ++f)
                writeFile(folder + QStringLiteral("/File Name %1%2").arg(f).arg(QLatin1String(tails[gen.bounded(20)])),
                          body);
        }
    }
    QDir().mkpath(root + QStringLiteral("/archives"));
    for (int z = 0; z < Archives; ++z)
        writeFile(root + QStringLiteral("/archives/SETUP%1.ZIP").arg(z, 3, 10, QLatin1Char('0')), zipOf(z, gen));
    writeFile(root + QStringLiteral("/complete"), "yes");
}

double bestOf3(const std::function<void()> &run)
{
    run(); // warms the page cache
    double best = 1e30;
    for (int i = 0; i < 3; ++i) {
        QElapsedTimer t;
        t.start();
        run();
        best = std::min(best, t.nsecsElapsed() / 1e6);
    }
    return best;
}

void runTool(const QString &program, const QStringList &args)
{
    QProcess p;
    p.setStandardOutputFile(QProcess::nullDevice());
    p.start(program, args);
    p.waitForFinished(-1);
}

void report(const char *what, double ms, const char *against, double referenceMs, double goal)
{
    const double ratio = ms / referenceMs;
    std::printf("%-44s %9.1f ms   %-22s %9.1f ms   ratio %.2f (goal %.1f) %s\n", what, ms, against, referenceMs, ratio,
                goal, ratio <= goal ? "met" : "MISSED");
}
} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    InstallScreenServices();
    SetMsgBoxPresenter([](const MsgBoxRequest &r) {
        std::fprintf(stderr, "box: %s\n", qPrintable(r.prompt));
        return FirstButtonOf(r.style);
    });
    const QString root = qEnvironmentVariableIsSet("KEVRO_BENCH_DISC")
                             ? qEnvironmentVariable("KEVRO_BENCH_DISC")
                             : QCoreApplication::applicationDirPath() + QStringLiteral("/../bench-disc");
    makeTree(QDir(root).absolutePath());
    const QString files = QDir(root).absolutePath() + QStringLiteral("/files");
    const QString archives = QDir(root).absolutePath() + QStringLiteral("/archives");
    QTemporaryDir appFolder;
    qputenv("KEVRO_HOME", appFolder.path().toLocal8Bit());
    QDir(appFolder.path()).mkpath(QStringLiteral("extract"));

    const QString find = QStandardPaths::findExecutable(QStringLiteral("find"));
    const double findMs = bestOf3([&] { runTool(find, {files, QStringLiteral("-type"), QStringLiteral("f")}); });

    // The walk and classification of the scan logic, no screen.
    const double walkMs = bestOf3([&] {
        MediaWalker w;
        w.SetDrive(files);
        w.ScanFiles();
    });
    std::printf("%d files walked; %lld in the media list, %lld external\n", int(gFilesScanned),
                static_cast<long long>(gMediaFiles.size()), static_cast<long long>(gExternalFiles.size()));
    report("walk + classification (scan logic)", walkMs, "find -type f", findMs, 1.5);

    // The expansion of every archive, each into a fresh folder.
    const QStringList zips = QDir(archives).entryList({QStringLiteral("*.ZIP")}, QDir::Files, QDir::Name);
    const QString target = appFolder.path() + QStringLiteral("/expanded");
    const double expandMs = bestOf3([&] {
        QDir(target).removeRecursively();
        ArchiveExpander x;
        for (const QString &z : zips) {
            x.ReadContents(archives + QLatin1Char('/') + z);
            x.Expand(archives + QLatin1Char('/') + z, target + QLatin1Char('/') + z);
        }
    });
    const QString bsdtar = QStandardPaths::findExecutable(QStringLiteral("bsdtar"));
    if (bsdtar.isEmpty()) {
        std::printf("bsdtar is missing (Debian package libarchive-tools): the expansion ratio is skipped\n");
    } else {
        const double tarMs = bestOf3([&] {
            QDir(target).removeRecursively();
            for (const QString &z : zips) {
                QDir().mkpath(target + QLatin1Char('/') + z);
                runTool(bsdtar, {QStringLiteral("-xf"), archives + QLatin1Char('/') + z, QStringLiteral("-C"),
                                 target + QLatin1Char('/') + z});
            }
        });
        report("expansion of 300 ZIPs (ArchiveExpander)", expandMs, "bsdtar -xf", tarMs, 1.2);
    }
    QDir(target).removeRecursively();

    // The same walk through the scanning screen, as the operator starts it.
    WriteIniKey(QStringLiteral("Devices"), QStringLiteral("DefaultDevice"), files);
    const double screenMs = bestOf3([&] {
        auto *setUp = Forms::get<frmScanDisc>();
        setUp->show();
        setUp->cmdNext->click();
        Forms::unload<frmScanDisc>();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    });
    report("the same walk through frmScanProgress", screenMs, "find -type f", findMs, 3.0);
    return 0;
}
