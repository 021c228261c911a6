#include "scan/MediaWalker.h"

#include "platform/Events.h"
#include "platform/MsgBox.h"
#include "platform/Paths.h"
#include "platform/VbError.h"
#include "shell/MainMod.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

namespace {
const QString kSlash = QStringLiteral("/");

bool endsWithAny(const QString &path, std::initializer_list<const char *> tails)
{
    for (const char *t : tails) {
        if (path.endsWith(QLatin1String(t)))
            return true;
    }
    return false;
}

// The runtime's number for a folder that cannot be listed.
long listingError(int err)
{
    switch (err) {
    case EACCES:
    case EPERM:
        return VbErr::PermissionDenied;
    case ENOENT:
    case ENOTDIR:
        return VbErr::PathNotFound;
    case ENOMEM:
        return VbErr::OutOfMemory;
    default:
        return VbErr::DeviceIOError;
    }
}
// The lines of an expansion's warning box: a hostile archive can name thousands of members, each
// with a name of hundreds of characters.
QString WarningLines(const QStringList &warnings)
{
    constexpr int maxLines = 15, maxWidth = 100;
    QStringList lines;
    for (int i = 0; i < warnings.size() && i < maxLines; ++i) {
        const QString &w = warnings[i];
        lines.append(w.size() <= maxWidth ? w : w.left(maxWidth / 2 - 2) + QStringLiteral("...") + w.right(maxWidth / 2 - 1));
    }
    if (warnings.size() > maxLines)
        lines.append(QStringLiteral("... and ") + QString::number(warnings.size() - maxLines) + QStringLiteral(" more"));
    return lines.join(QLatin1Char('\n'));
}
// A name from the file system: plain ASCII needs no decoding.
QString decodeName(const char *name)
{
    const auto length = static_cast<qsizetype>(std::strlen(name));
    for (qsizetype i = 0; i < length; ++i) {
        if (static_cast<unsigned char>(name[i]) >= 0x80)
            return QFile::decodeName(QByteArray(name, length));
    }
    return QString::fromLatin1(name, length);
}

// The upper case of prefix + name, the prefix already in upper case: most names on a disc are plain
// ASCII, which needs no case tables and no second copy.
QString upperPath(const QString &upperPrefix, const QString &name)
{
    QString out;
    out.reserve(upperPrefix.size() + name.size());
    out.append(upperPrefix);
    for (const QChar c : name) {
        const char16_t u = c.unicode();
        if (u >= 0x80)
            return upperPrefix + name.toUpper();
        out.append(u >= 'a' && u <= 'z' ? QChar(char16_t(u - ('a' - 'A'))) : c);
    }
    return out;
}
} // namespace

FileTail ClassifyTail(const QString &path)
{
    // The last four characters as one number, compared with the tails of the table: a walk classifies
    // every file of a disc.
    constexpr auto key = [](const char (&t)[5]) {
        return uint64_t(uint8_t(t[0])) << 48 | uint64_t(uint8_t(t[1])) << 32 | uint64_t(uint8_t(t[2])) << 16 |
               uint64_t(uint8_t(t[3]));
    };
    static constexpr uint64_t four[] = {key(".JPG"), key(".GIF"), key(".BMP"), key(".AVI"), key(".MOV"), key(".ASF"),
                                        key(".WMV"), key(".TXT"), key(".NFO"), key(".MPE"), key(".MPG"), key(".DAT"),
                                        key(".MP3"), key(".WAV"), key(".AIF"), key(".VOB"), key(".INI")};
    const qsizetype n = path.size();
    if (n >= 4 && path[n - 4] == QLatin1Char('.')) {
        const uint64_t tail = uint64_t(path[n - 4].unicode()) << 48 | uint64_t(path[n - 3].unicode()) << 32 |
                              uint64_t(path[n - 2].unicode()) << 16 | uint64_t(path[n - 1].unicode());
        for (const uint64_t t : four) {
            if (tail == t)
                return FileTail::Recognised;
        }
        if (tail == key(".ZIP") || tail == key(".EXE"))
            return FileTail::ArchiveCandidate;
    }
    if (path.endsWith(QLatin1String(".ME")) || endsWithAny(path, {".MPEG", ".JPEG", ".README"}))
        return FileTail::Recognised;
    return FileTail::Unknown;
}

QString FirstReviewScreen(const KindsToReview &kinds)
{
    if (kinds.exe)
        return QStringLiteral("frmScanResultsEXEs");
    if (kinds.video)
        return QStringLiteral("frmScanResultsVideo");
    if (kinds.audio)
        return QStringLiteral("frmScanResultsAudio");
    if (kinds.image)
        return QStringLiteral("frmScanResultsImages");
    if (kinds.text)
        return QStringLiteral("frmScanResultsText");
    // No test of the external box: the set-up screen has made sure something is ticked.
    return QStringLiteral("frmScanResultsOther");
}

QString ArchiveTargetFolder(const QString &storedArchivePath)
{
    return ExtractFolder() + kSlash + storedArchivePath.mid(VolumeRootOf(storedArchivePath).size());
}

MediaWalker::MediaWalker()
{
    m_expander.setObserver({[this](int percent) {
                                if (m_display.zipProgress)
                                    m_display.zipProgress(percent);
                            },
                            [this] { pump(); }});
}

void MediaWalker::pump()
{
    if (m_display.pumpEvents)
        m_display.pumpEvents();
}

void MediaWalker::showCount()
{
    if (m_display.filesScanned)
        m_display.filesScanned(gFilesScanned);
}

void MediaWalker::SetDrive(const QString &volumeRoot)
{
    QString root = volumeRoot;
    if (root.size() > 1 && root.endsWith(kSlash))
        root.chop(1);
    SetScannedVolume(root);
    gScanDrive = root == kSlash ? QString() : root;
    m_dirPath = gScanDrive + kSlash;
}

void MediaWalker::Cancel()
{
    m_cancelled = true;
    m_expander.setAbort(true);
    pump();
}

MediaWalker::Listing MediaWalker::list(const QString &folder, bool foldersToo, const FileSink &sink)
{
    Listing out;
    const QByteArray native = QFile::encodeName(folder.isEmpty() ? QDir::currentPath() : folder);
    DIR *dir = opendir(native.constData());
    if (!dir)
        RaiseVbError(listingError(errno));
    const int fd = dirfd(dir);
    errno = 0;
    while (const dirent *e = readdir(dir)) {
        const char *name = e->d_name;
        if (name[0] == '.' && (name[1] == 0 || (name[1] == '.' && name[2] == 0)))
            continue;
        unsigned char type = e->d_type;
        if (type == DT_UNKNOWN || type == DT_LNK) {
            // A link counts as what it points at; a link to a folder is never walked (it could lead
            // back up the tree), and a dangling one is listed as the file it names.
            struct stat st;
            const bool isLink = type == DT_LNK;
            if (fstatat(fd, name, &st, 0) == 0)
                type = S_ISDIR(st.st_mode) ? (isLink ? DT_LNK : DT_DIR) : DT_REG;
            else
                type = DT_REG;
            if (type == DT_LNK)
                continue;
        }
        if (type == DT_DIR) {
            if (foldersToo)
                out.folders.append(decodeName(name));
        } else if (sink) {
            sink(name);
        } else {
            out.files.append(decodeName(name));
        }
    }
    const int err = errno;
    closedir(dir);
    if (err != 0)
        RaiseVbError(listingError(err));
    return out;
}

QStringList MediaWalker::AllFiles(const QString &folder)
{
    return filesOf(folder).stored;
}

void MediaWalker::classifyAll(const Files &files)
{
    for (qsizetype i = 0; i < files.stored.size(); ++i)
        classify(files.stored[i], files.names[i].isNull() ? QString() : files.realFolder + files.names[i]);
}

MediaWalker::Files MediaWalker::filesOf(const QString &folder)
{
    // Upper case maps character by character, so the folder's part is done once for all its files.
    const QString upperFolder = upperPath(QString(), folder);
    Files out;
    out.realFolder = folder.isEmpty() ? QDir::currentPath() + kSlash : folder;
    // Each stored path is made straight from the name's bytes; the name itself is kept only for the
    // files whose real path the classification needs (the archive candidates).
    const FileSink sink = [&](const char *raw) {
        const auto length = static_cast<qsizetype>(std::strlen(raw));
        QString stored;
        QString name;
        if (std::all_of(raw, raw + length, [](char c) { return static_cast<unsigned char>(c) < 0x80; })) {
            stored.resize(upperFolder.size() + length);
            QChar *d = std::copy(upperFolder.cbegin(), upperFolder.cend(), stored.data());
            for (qsizetype i = 0; i < length; ++i) {
                const char c = raw[i];
                d[i] = QChar(char16_t(c >= 'a' && c <= 'z' ? c - ('a' - 'A') : c));
            }
        } else {
            name = decodeName(raw);
            stored = upperPath(upperFolder, name);
        }
        if (ClassifyTail(stored) == FileTail::ArchiveCandidate && name.isNull())
            name = QString::fromLatin1(raw, length);
        ++gFilesScanned;
        if (m_display.currentAction) {
            // The label cuts by position: the stored path gives the same cut unless the case change
            // altered the length (a German sharp s, say).
            const bool sameLength = name.isNull() || stored.size() == folder.size() + name.size();
            m_display.currentAction(sameLength ? ShortenPath(stored, m_maxPathLabel)
                                               : ShortenPath(folder + name, m_maxPathLabel).toUpper());
        }
        out.stored.append(std::move(stored));
        out.names.append(std::move(name));
    };
    const Listing l = list(folder, true, sink);
    // The subfolders come with the same listing; the walk of this folder's subfolders takes them.
    m_lastListed = folder.endsWith(kSlash) && folder.size() > 1 ? folder.chopped(1) : folder;
    m_lastListedFolders = l.folders;
    RegisterRealFolder(upperFolder, folder.isEmpty() ? QString() : folder);
    pump();
    return out;
}

int32_t MediaWalker::NumFilesInPath(const QString &path)
{
    try {
        return static_cast<int32_t>(list(path, false).files.size());
    } catch (const VbError &) {
        return 0; // no handle, no files
    }
}

void MediaWalker::ListTopFolders()
{
    ResetList(m_topFolders);
    m_topFolderSet.clear();
    const QString base = m_dirPath;
    QStringList names;
    try {
        names = subFolderNames(base);
    } catch (const VbError &) {
        return; // an unreadable folder lists nothing
    }
    for (int i = 0; i < names.size(); ++i) {
        const QString full = base.endsWith(kSlash) ? base + names[i] : base + kSlash + names[i];
        if (i == 0)
            m_topFolders[0] = full;
        else
            m_topFolders.append(full);
        m_topFolderSet.insert(full);
    }
}

QStringList MediaWalker::subFolderNames(const QString &folder)
{
    const QString key = folder.endsWith(kSlash) && folder.size() > 1 ? folder.chopped(1) : folder;
    if (!m_lastListed.isNull() && key == m_lastListed)
        return m_lastListedFolders;
    return list(folder, true).folders;
}

bool MediaWalker::FileIsCompressed(const QString &path)
{
    return isArchive(RealPath(path));
}

bool MediaWalker::isArchive(const QString &real)
{
    try {
        return m_expander.ReadContents(real) == 0;
    } catch (const VbError &e) {
        if (e.number != VbErr::SetNotPermitted)
            MsgBox(QStringLiteral("Error ") + QString::number(e.number) +
                       QStringLiteral(" while reading Zip file.  Zip file will be ignored"),
                   vbExclamation);
        return false;
    }
}

void MediaWalker::expandArchive(const QString &stored, const QString &real)
{
    if (m_display.compressedFile)
        m_display.compressedFile(QStringLiteral("Decompressing ") + FileNameOnly(stored));
    if (m_display.currentAction)
        m_display.currentAction(ShortenPath(stored, m_maxPathLabel).toUpper());
    pump();
    m_expander.Expand(real, ArchiveTargetFolder(stored));
    // The listing taken before this expansion may no longer hold every subfolder.
    m_lastListed = QString();
    if (!m_expander.warnings().isEmpty())
        MsgBox(QStringLiteral("Not everything in ") + FileNameOnly(stored) + QStringLiteral(" was extracted:\n\n") +
                   WarningLines(m_expander.warnings()),
               vbExclamation);
    if (m_display.zipProgress)
        m_display.zipProgress(0);
    if (m_display.compressedFile)
        m_display.compressedFile(QString());
}

void MediaWalker::classify(const QString &stored, const QString &real)
{
    switch (ClassifyTail(stored)) {
    case FileTail::Recognised:
        AppendToList(gMediaFiles, stored);
        break;
    case FileTail::ArchiveCandidate:
        if (isArchive(real))
            expandArchive(stored, real);
        // Recognised whether it expanded or not.
        AppendToList(gMediaFiles, stored);
        break;
    case FileTail::Unknown:
        break;
    }
    if (gMediaFiles.last() != stored)
        AppendToList(gExternalFiles, stored);
}

void MediaWalker::ScanRootFiles(const QString &startPath)
{
    if (m_display.busy)
        m_display.busy(true);
    classifyAll(filesOf(startPath));
    showCount();
    ScanSubFolders();
    if (m_display.busy)
        m_display.busy(false);
}

void MediaWalker::ScanMedia(const QString &startPath)
{
    ScanRootFiles(startPath);
}

void MediaWalker::ScanSubFolders()
{
    try {
        const QString here = m_dirPath;
        const QStringList names = subFolderNames(here);
        QStringList subFolders;
        subFolders.reserve(names.size());
        for (const QString &n : names)
            subFolders.append(here.endsWith(kSlash) ? here + n : here + kSlash + n);
        pump();
        for (int i = 0; i < subFolders.size() && !m_cancelled; ++i) {
            const QString back = m_dirPath;
            const QString sub = subFolders[i];
            if (sub.isEmpty())
                break;
            classifyAll(filesOf(sub + kSlash));
            m_dirPath = sub;
            if (m_showProgress && m_topFolderSet.contains(sub)) {
                const double percent = double(m_topFoldersDone) / m_topFolders.size() * 100.0;
                if (m_display.progress)
                    m_display.progress(static_cast<int>(std::nearbyint(std::min(percent, 100.0))));
                ++m_topFoldersDone;
            }
            ScanSubFolders();
            m_dirPath = back;
            showCount();
        }
    } catch (const VbError &e) {
        MsgBox(QStringLiteral("Error ") + QString::number(e.number), vbExclamation);
    }
}

void MediaWalker::ScanFiles()
{
    m_maxPathLabel = 40;
    m_cancelled = false;
    m_expander.setAbort(false);
    m_expander.ResetScanTotal();
    pump();
    gFilesScanned = 0;
    ResetList(gMediaFiles);
    ResetList(gExternalFiles);
    ClearRealPaths();
    m_lastListed = QString();

    QString startPath;
    if (m_showProgress) {
        if (m_display.stage)
            m_display.stage(QStringLiteral("Pre-scanning media..."));
        m_preScanFileCount = 0;
        startPath = m_dirPath.left(VolumeRootOf(m_dirPath).size());
        m_dirPath = startPath;
        ListTopFolders();
        m_preScanFileCount += NumFilesInPath(startPath);
    }

    if (m_display.stage)
        m_display.stage(QStringLiteral("Scanning media..."));
    m_topFoldersDone = 0;
    // Without the pre-scan the start path stays empty and the root listing runs on the current folder.
    ScanMedia(startPath);

    if (m_display.stage)
        m_display.stage(QStringLiteral("Processing archive files..."));
    m_dirPath = ExtractFolder() + kSlash;
    ListTopFolders();
    m_topFoldersDone = 0;
    ScanMedia(m_dirPath);

    showCount();
}
