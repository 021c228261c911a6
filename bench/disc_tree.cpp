#include "disc_tree.h"
#include "measure.h"

#include "catalogue/CatalogueSetup.h"
#include "platform/FileSystem.h"
#include "platform/Paths.h"
#include "platform/StoredPaths.h"
#include "scan/MediaWalker.h"
#include "shell/MainMod.h"

#include <QCoreApplication>

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QRandomGenerator>
#include <QSet>

#include <archive.h>
#include <archive_entry.h>

#include <algorithm>
#include <cstdio>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

namespace {
// Bump when the layout changes: an older tree is then laid out again.
const QByteArray kLayout = "kevro bench disc tree 2\n";
const char *const kMarker = "/.bench-layout";

constexpr quint32 Seed = 20261123;
constexpr int FolderCount = 10000; // the root of disc/ and 9,999 below it
constexpr int FileCount = 200000;
constexpr int TopLevelFolders = 24;
constexpr int MaxDepth = 5;
constexpr int ArchiveCount = 300;

enum class Style { Iso, Mixed, Lower };

const char *const kFolderWords[] = {"Images", "Photos",  "Video",   "Audio",   "Music",     "Docs",     "Data",
                                    "Setup",  "Drivers", "Bonus",   "Extras",  "Media",     "Clips",    "Tracks",
                                    "Chapter", "Demo",   "Help",    "Manual",  "Web",       "Resources", "Sounds",
                                    "Movies", "Gallery", "Samples", "Archive", "Program",   "Support",  "Tools",
                                    "Fonts",  "Backgrounds"};
const char *const kFileWords[] = {"Track", "Image", "Photo",   "Clip",  "Scene",  "Chapter", "Page",  "Readme",
                                  "Notes", "Intro", "Song",    "Picture", "Movie", "Setup",  "Install", "Index",
                                  "Licence", "Data", "Level",  "Sample", "Voice", "Map",     "Logo",  "Cover"};
// Joliet discs carry names from every European language.
const char *const kAccentedWords[] = {"Caf\u00e9", "Se\u00f1al", "M\u00fcller", "\u00c6r\u00f8", "Gar\u00e7on"};
const char *const kTextWords[] = {
    "the",   "disc",   "of",     "and",   "to",      "install", "program", "files",   "a",      "in",
    "is",    "for",    "this",   "with",  "on",      "your",    "you",     "that",    "be",     "are",
    "click", "window", "folder", "copy",  "licence", "version", "system",  "press",   "select", "drive",
    "from",  "will",   "can",    "not",   "any",     "music",   "picture", "player",  "menu",   "screen",
    "read",  "before", "after",  "each",  "time",    "support", "update",  "service", "all",    "more",
    "use",   "only",   "may",    "which", "when",    "other",   "rights",  "reserved", "see",   "help"};

struct Tail {
    const char *text; // as a mixed-case folder writes it
    int weight;       // per thousand files
};
// Mostly what the review screens sort (pictures, sound, video, text), a few programs, and the pages,
// libraries and documents the scan leaves to the external list.
const Tail kTails[] = {
    {".JPG", 150}, {".GIF", 40},  {".BMP", 20},  {".jpeg", 5},  {".TXT", 70},  {".NFO", 5},   {".ME", 3},
    {".MP3", 90},  {".WAV", 35},  {".AIF", 5},   {".AVI", 35},  {".MPG", 25},  {".MPEG", 5},  {".MOV", 15},
    {".WMV", 10},  {".ASF", 5},   {".VOB", 10},  {".DAT", 50},  {".INI", 15},  {".EXE", 15},  {".HTM", 90},
    {".html", 10}, {".PDF", 40},  {".DOC", 25},  {".XML", 25},  {".DLL", 35},  {".CAB", 10},  {".ICO", 15},
    {".PNG", 30},  {".CSS", 10},  {".JS", 10},   {".MP4", 20},  {".INF", 10},  {"", 15},      {".BAK", 10},
    {".LOG", 10},  {".HLP", 15},  {".TTF", 12}};

int totalWeight()
{
    int sum = 0;
    for (const Tail &t : kTails)
        sum += t.weight;
    return sum;
}

const Tail &pickTail(QRandomGenerator &gen)
{
    static const int total = totalWeight();
    int at = static_cast<int>(gen.bounded(total));
    for (const Tail &t : kTails) {
        if (at < t.weight)
            return t;
        at -= t.weight;
    }
    return kTails[0];
}

template <class T, size_t N> const T &pick(QRandomGenerator &gen, const T (&items)[N])
{
    return items[gen.bounded(static_cast<quint32>(N))];
}

QString styled(const QString &name, Style style)
{
    switch (style) {
    case Style::Iso:
        return name.toUpper().replace(QLatin1Char(' '), QLatin1Char('_'));
    case Style::Lower:
        return name.toLower();
    case Style::Mixed:
        break;
    }
    return name;
}

bool writeBytes(const QString &path, const QByteArray &bytes)
{
    const int fd = ::open(QFile::encodeName(path).constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0)
        return false;
    const bool ok = ::write(fd, bytes.constData(), static_cast<size_t>(bytes.size())) == bytes.size();
    return ::close(fd) == 0 && ok;
}

QByteArray randomBytes(QRandomGenerator &gen, qsizetype size)
{
    QByteArray out((size + 3) & ~qsizetype(3), Qt::Uninitialized);
    gen.fillRange(reinterpret_cast<quint32 *>(out.data()), out.size() / 4);
    out.truncate(size);
    return out;
}

QByteArray text(QRandomGenerator &gen, qsizetype size)
{
    QByteArray out;
    out.reserve(size + 16);
    int inLine = 0;
    while (out.size() < size) {
        out += pick(gen, kTextWords);
        if (++inLine == 12) {
            out += ".\r\n";
            inLine = 0;
        } else {
            out += ' ';
        }
    }
    out.truncate(size);
    return out;
}

// A small file whose first bytes are what its kind starts with: a program has its DOS header, so that
// the scan's archive test reads it as it reads a real one.
QByteArray smallFile(QRandomGenerator &gen, const QString &tail)
{
    const qsizetype size = 100 + gen.bounded(600);
    const QString t = tail.toUpper();
    QByteArray head;
    if (t == QLatin1String(".EXE") || t == QLatin1String(".DLL"))
        head = QByteArray("MZ\x90\0\x03\0\0\0\x04\0\0\0\xFF\xFF\0\0", 16) + QByteArray(48, '\0') +
               "This program cannot be run in DOS mode.\r\r\n$";
    else if (t == QLatin1String(".JPG") || t == QLatin1String(".JPEG"))
        head = QByteArray("\xFF\xD8\xFF\xE0\0\x10JFIF\0", 11);
    else if (t == QLatin1String(".GIF"))
        head = "GIF89a";
    else if (t == QLatin1String(".PNG"))
        head = QByteArray("\x89PNG\r\n\x1A\n", 8);
    else if (t == QLatin1String(".MP3"))
        head = QByteArray("ID3\x03\0\0", 6);
    else if (t == QLatin1String(".WAV") || t == QLatin1String(".AVI"))
        head = t == QLatin1String(".WAV") ? QByteArray("RIFF\0\0\0\0WAVE", 12) : QByteArray("RIFF\0\0\0\0AVI ", 12);
    else
        return text(gen, size);
    return head + randomBytes(gen, std::max<qsizetype>(0, size - head.size()));
}

struct Folder {
    QString path;
    int depth;
    Style style;
};

bool makeDisc(const QString &disc, QRandomGenerator &gen)
{
    std::vector<Folder> folders{{disc, 0, Style::Mixed}};
    folders.reserve(FolderCount);
    std::vector<int> canHold{0}; // folders less than MaxDepth deep
    for (int i = 1; i < FolderCount; ++i) {
        const int parent = i <= TopLevelFolders ? 0 : canHold[1 + gen.bounded(static_cast<quint32>(canHold.size() - 1))];
        const Folder &p = folders[static_cast<size_t>(parent)];
        // A top-level folder decides how its branch is named: ISO 9660, mixed case, or lower case.
        Style style = p.style;
        if (parent == 0) {
            const quint32 s = gen.bounded(10);
            style = s < 4 ? Style::Iso : s < 9 ? Style::Mixed : Style::Lower;
        }
        QString name = QString::fromLatin1(pick(gen, kFolderWords));
        if (gen.bounded(3) == 0)
            name += QLatin1Char(' ') + QString::fromLatin1(pick(gen, kFolderWords));
        name += QLatin1Char(' ') + QString::number(i);
        folders.push_back({p.path + QLatin1Char('/') + styled(name, style), p.depth + 1, style});
        if (p.depth + 1 < MaxDepth)
            canHold.push_back(i);
    }
    // From none to forty files a folder, twenty on average, then evened out to the exact total.
    std::vector<int> counts(folders.size());
    int total = 0;
    for (int &c : counts)
        total += (c = static_cast<int>(gen.bounded(41)));
    while (total != FileCount) {
        int &c = counts[gen.bounded(static_cast<quint32>(counts.size()))];
        if (total < FileCount) {
            ++c;
            ++total;
        } else if (c > 0) {
            --c;
            --total;
        }
    }

    for (const Folder &f : folders) {
        if (!QDir().mkpath(f.path))
            return false;
    }
    int written = 0, nextReport = FileCount / 10;
    for (size_t i = 0; i < folders.size(); ++i) {
        const Folder &f = folders[i];
        for (int k = 0; k < counts[i]; ++k) {
            const Tail &tail = pickTail(gen);
            QString stem = QString::fromUtf8(gen.bounded(200) == 0 ? pick(gen, kAccentedWords) : pick(gen, kFileWords));
            if (gen.bounded(4) == 0)
                stem += QLatin1Char(' ') + QString::fromLatin1(pick(gen, kFileWords));
            stem += QLatin1Char(' ') + QStringLiteral("%1").arg(k + 1, 2, 10, QLatin1Char('0'));
            QString tailText = QString::fromLatin1(tail.text);
            if (f.style == Style::Mixed && gen.bounded(10) < 3)
                tailText = tailText.toLower();
            const QString name = f.style == Style::Mixed ? stem + tailText : styled(stem + tailText, f.style);
            if (!writeBytes(f.path + QLatin1Char('/') + name, smallFile(gen, tailText)))
                return false;
            if (++written == nextReport) {
                std::printf("  %d of %d files\n", written, FileCount);
                std::fflush(stdout);
                nextReport += FileCount / 10;
            }
        }
    }
    return true;
}

const char *const kArchiveFolders[] = {"Setup",        "Drivers",       "Drivers/Video", "Drivers/Audio",
                                       "Extras",       "Extras/Demos",  "Extras/Trials", "Updates",
                                       "Tools",        "Data",          "Install/Disk1", "Install/Disk2"};
const char *const kMemberFolders[] = {"Data", "Help", "Bin", "Docs", "Media", "Samples"};
const char *const kTextTails[] = {".txt", ".htm", ".ini", ".xml", ".TXT", ".inf"};
const char *const kDataTails[] = {".dat", ".dll", ".cab", ".bin", ".jpg", ".DAT", ".exe"};

QString archiveName(int index, QRandomGenerator &gen)
{
    switch (gen.bounded(4)) {
    case 0:
        return QStringLiteral("SETUP%1.ZIP").arg(index, 3, 10, QLatin1Char('0'));
    case 1:
        return QStringLiteral("Data Pack %1.zip").arg(index);
    case 2:
        return QStringLiteral("patch%1.zip").arg(index);
    default:
        return QStringLiteral("Demo %1.ZIP").arg(index);
    }
}

bool writeZip(const QString &path, int index, QRandomGenerator &gen)
{
    archive *a = archive_write_new();
    archive_write_set_format_zip(a);
    // Some installers store their members: the data inside is compressed already.
    if (index % 8 == 5)
        archive_write_set_options(a, "zip:compression=store");
    if (archive_write_open_filename(a, QFile::encodeName(path).constData()) != ARCHIVE_OK) {
        archive_write_free(a);
        return false;
    }
    const bool folderEntries = index % 2 == 0; // as Info-ZIP writes them; other tools leave them out
    QSet<QString> foldersWritten;
    const time_t when = 946684800 + index * 86400; // fixed, so that the bytes are the same every time
    bool ok = true;
    const int members = 2 + static_cast<int>(gen.bounded(17));
    for (int m = 0; m < members && ok; ++m) {
        QString folder;
        if (gen.bounded(10) < 6) {
            folder = QStringLiteral("App %1/").arg(index);
            if (gen.bounded(2))
                folder += QString::fromLatin1(pick(gen, kMemberFolders)) + QLatin1Char('/');
        }
        const bool isText = gen.bounded(100) < 55;
        const QByteArray data = isText ? text(gen, 10 * 1024 + gen.bounded(90 * 1024))
                                       : randomBytes(gen, 10 * 1024 + gen.bounded(110 * 1024));
        const QString name = folder + QString::fromLatin1(pick(gen, kFileWords)) + QStringLiteral(" %1").arg(m) +
                             QString::fromLatin1(isText ? pick(gen, kTextTails) : pick(gen, kDataTails));
        if (folderEntries) {
            for (qsizetype at = folder.indexOf(QLatin1Char('/')); at >= 0; at = folder.indexOf(QLatin1Char('/'), at + 1)) {
                const QString dir = folder.left(at + 1);
                if (foldersWritten.contains(dir))
                    continue;
                foldersWritten.insert(dir);
                archive_entry *d = archive_entry_new();
                archive_entry_copy_pathname(d, dir.toUtf8().constData());
                archive_entry_set_filetype(d, AE_IFDIR);
                archive_entry_set_perm(d, 0755);
                archive_entry_set_mtime(d, when, 0);
                ok = ok && archive_write_header(a, d) == ARCHIVE_OK;
                archive_entry_free(d);
            }
        }
        archive_entry *e = archive_entry_new();
        archive_entry_copy_pathname(e, name.toUtf8().constData());
        archive_entry_set_filetype(e, AE_IFREG);
        archive_entry_set_perm(e, 0644);
        archive_entry_set_size(e, data.size());
        archive_entry_set_mtime(e, when, 0);
        ok = ok && archive_write_header(a, e) == ARCHIVE_OK &&
             archive_write_data(a, data.constData(), static_cast<size_t>(data.size())) == data.size();
        archive_entry_free(e);
    }
    ok = archive_write_close(a) == ARCHIVE_OK && ok;
    archive_write_free(a);
    return ok;
}

bool makeArchives(const QString &archives, QRandomGenerator &gen)
{
    for (int z = 0; z < ArchiveCount; ++z) {
        const QString folder = archives + QLatin1Char('/') + QString::fromLatin1(pick(gen, kArchiveFolders));
        if (!QDir().mkpath(folder) || !writeZip(folder + QLatin1Char('/') + archiveName(z, gen), z, gen))
            return false;
    }
    return true;
}

// A folder this benchmark may clear: nothing there, or a tree it laid out (the first layout's marker
// was "complete").
bool ours(const QString &root)
{
    const QDir dir(root);
    return !dir.exists() || dir.isEmpty(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden) ||
           QFile::exists(root + QLatin1String(kMarker)) || QFile::exists(root + QStringLiteral("/complete"));
}

QByteArray readMarker(const QString &root)
{
    QFile f(root + QLatin1String(kMarker));
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}
} // namespace

DiscTree MakeDiscTree(const QString &rootPath)
{
    DiscTree t;
    t.root = QDir(rootPath).absolutePath();
    t.disc = t.root + QStringLiteral("/disc");
    t.archives = t.root + QStringLiteral("/archives");
    if (readMarker(t.root) != kLayout) {
        if (!ours(t.root)) {
            std::fprintf(stderr, "%s holds something else: the benchmark's tree is not made there\n", qPrintable(t.root));
            return t;
        }
        std::printf("Laying out the disc-like tree in %s (once; this takes a while)...\n", qPrintable(t.root));
        std::fflush(stdout);
        QDir(t.root).removeRecursively();
        QDir().mkpath(t.root);
        // A tree left half made is recognised as ours by its marker and laid out again.
        if (!writeBytes(t.root + QLatin1String(kMarker), "incomplete\n")) {
            std::fprintf(stderr, "%s cannot be written\n", qPrintable(t.root));
            return t;
        }
        QRandomGenerator gen(Seed);
        if (!makeDisc(t.disc, gen) || !makeArchives(t.archives, gen)) {
            std::fprintf(stderr, "the tree in %s could not be written\n", qPrintable(t.root));
            return t;
        }
        ::sync();
        writeBytes(t.root + QLatin1String(kMarker), kLayout);
    }
    t.files = FileCount;
    t.folders = FolderCount;
    QDirIterator it(t.archives, {QStringLiteral("*.zip"), QStringLiteral("*.ZIP")}, QDir::Files,
                    QDirIterator::Subdirectories);
    while (it.hasNext())
        t.zips.append(QDir(t.archives).relativeFilePath(it.next()));
    t.zips.sort();
    return t;
}

DiscTree SharedDiscTree()
{
    const QString root = qEnvironmentVariableIsSet("KEVRO_BENCH_DISC")
                             ? qEnvironmentVariable("KEVRO_BENCH_DISC")
                             : QCoreApplication::applicationDirPath() + QStringLiteral("/../bench-disc");
    return MakeDiscTree(root);
}

bool MakeAppFolder(const QString &folder)
{
    const QDir app(folder);
    qputenv("KEVRO_HOME", QFile::encodeName(folder));
    qputenv("ODBCINI", QFile::encodeName(app.filePath(QStringLiteral("no-user-odbc.ini"))));
    qputenv("ODBCSYSINI", QFile::encodeName(app.filePath(QStringLiteral("no-system-odbc"))));
    CreateFolder(ExtractFolder());
    CreateFolder(AppPath() + QStringLiteral("/reports"));
    CatalogueTarget catalogue;
    catalogue.sqliteFile = app.filePath(QStringLiteral("kevro.db"));
    QString failed = CreateCatalogue(catalogue, true);
    if (failed.isEmpty())
        failed = LoadDemoCatalogue(catalogue);
    if (failed.isEmpty())
        failed = WriteDataSourceEntry(catalogue, app.filePath(QStringLiteral("odbc.ini")));
    if (!failed.isEmpty())
        std::fprintf(stderr, "the benchmark's catalogue cannot be made: %s\n", qPrintable(failed));
    return failed.isEmpty();
}

WalkRun FreshWalk(const QString &volume)
{
    const auto empty = [] {
        ResetList(gMediaFiles);
        ResetList(gExternalFiles);
        ClearRealPaths();
        ResetExtractFolder();
    };
    empty();
    ::sync();
    WalkRun run;
    run.ms = timed([&] {
        MediaWalker w;
        w.SetDrive(volume);
        w.ScanFiles();
    });
    run.walked = gFilesScanned;
    run.media = gMediaFiles.size();
    run.external = gExternalFiles.size();
    empty();
    return run;
}
