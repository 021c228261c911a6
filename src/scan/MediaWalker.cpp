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
QString WarningLines(const QStringList &warnings, int leftOut)
{
    constexpr int maxLines = 15, maxWidth = 100;
    QStringList lines;
    for (int i = 0; i < warnings.size() && i < maxLines; ++i) {
        const QString &w = warnings[i];
        lines.append(w.size() <= maxWidth ? w : w.left(maxWidth / 2 - 2) + QStringLiteral("...") + w.right(maxWidth / 2 - 1));
    }
    if (warnings.size() + leftOut > maxLines)
        lines.append(QStringLiteral("... and ") + QString::number(warnings.size() + leftOut - maxLines) +
                     QStringLiteral(" more"));
    return lines.join(QLatin1Char('\n'));
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

QByteArray ArchiveTargetFolder(const QByteArray &nativeArchivePath, bool insideImage)
{
    if (insideImage)
        return QFile::encodeName(ExtractFolder()) + '/' + nativeArchivePath;
    QByteArray root = QFile::encodeName(ScannedVolume());
    if (!root.endsWith('/'))
        root += '/';
    const qsizetype cut = nativeArchivePath.startsWith(root) ? root.size() : nativeArchivePath.startsWith('/') ? 1 : 0;
    return QFile::encodeName(ExtractFolder()) + '/' + nativeArchivePath.mid(cut);
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
    // An optical drive with no disc offers its empty mount point: no volume to walk.
    if (IsEmptyDrive(volumeRoot))
        RaiseVbError(VbErr::DeviceUnavailable);
    QString root = volumeRoot;
    if (root.size() > 1 && root.endsWith(kSlash))
        root.chop(1);
    m_image.reset();
    if (QFileInfo(root).isFile())
        openImage(root);
    SetScannedImage(m_image);
    SetScannedVolume(root);
    gScanDrive = root == kSlash ? QString() : root;
    m_dirPath = gScanDrive + kSlash;
    m_volume = {m_image ? QByteArray() : QFile::encodeName(m_dirPath), StoredText(m_dirPath), m_dirPath,
                m_image ? m_image->Root() : -1};
    m_dir = m_volume;
}

void MediaWalker::openImage(const QString &path)
{
    QString why;
    m_image = DiscImage::Open(path, &why);
    if (!m_image)
        throw VbError(VbErr::DeviceUnavailable, QStringLiteral("%1 is no disc image: %2").arg(path, why));
    m_imageWalked = false;
    m_warnedFolders.clear();
}

void MediaWalker::Cancel()
{
    m_cancelled = true;
    m_expander.setAbort(true);
    pump();
}

MediaWalker::Folder MediaWalker::sub(const Folder &parent, const SubFolder &child) const
{
    const QByteArray native = parent.native + child.name;
    const QString shown = parent.node >= 0 ? parent.shown + QString::fromUtf8(child.name) : QFile::decodeName(native);
    return {native + '/', parent.stored + StoredName(child.name) + kSlash, shown + kSlash, child.node};
}

QList<MediaWalker::SubFolder> MediaWalker::listImage(const Folder &folder, const FileSink &sink)
{
    const DiscImage::Listing listing = m_image->List(folder.node);
    // A folder of which nothing could be read fails as an unreadable folder does; one read in part is
    // listed as far as it goes, with a warning. The reasons may quote the image's names.
    const QString problem = ShownText(listing.problem);
    if (!problem.isEmpty() && listing.entries.isEmpty())
        throw VbError(VbErr::DeviceIOError, problem);
    if (!problem.isEmpty() && !m_warnedFolders.contains(folder.node)) {
        m_warnedFolders.insert(folder.node); // the walk lists a folder more than once: one warning
        MsgBox(QStringLiteral("Error ") + QString::number(VbErr::DeviceIOError), vbExclamation, QString(),
               ShownText(folder.shown.chopped(1)) + QStringLiteral(": not all of the folder could be read (") +
                   problem + QStringLiteral("); what could be read is listed"));
    }
    QList<SubFolder> folders;
    for (const DiscImage::Entry &e : listing.entries) {
        if (e.folder)
            folders.append({e.name, e.node});
        else
            sink(e.name.constData(), e.name.size(), &e);
    }
    return folders;
}

bool MediaWalker::isOwnFolder(int dirFd, const char *name, ino_t inode, const QByteArray &path) const
{
    for (const Identity &own : m_ownFolders) {
        if (path == own.path)
            return true;
        struct stat st;
        if (inode == own.inode && ::fstatat(dirFd, name, &st, AT_SYMLINK_NOFOLLOW) == 0 && st.st_dev == own.device &&
            st.st_ino == own.inode)
            return true;
    }
    return false;
}

QList<MediaWalker::SubFolder> MediaWalker::list(const Folder &folder, const FileSink &sink)
{
    if (folder.node >= 0)
        return listImage(folder, sink);
    QList<SubFolder> folders;
    const QByteArray native = folder.native.isEmpty() ? QFile::encodeName(QDir::currentPath()) : folder.native;
    DIR *dir = opendir(native.constData());
    if (!dir)
        RaiseVbError(listingError(errno));
    const int fd = dirfd(dir);
    for (;;) {
        // Each entry's own look-ups may leave errno set; only readdir's says the listing failed.
        errno = 0;
        const dirent *e = readdir(dir);
        if (!e)
            break;
        const char *name = e->d_name;
        if (name[0] == '.' && (name[1] == 0 || (name[1] == '.' && name[2] == 0)))
            continue;
        unsigned char type = e->d_type;
        if (type == DT_UNKNOWN) {
            // An entry that vanished or cannot be examined is passed over; the rest is listed.
            struct stat st;
            if (::fstatat(fd, name, &st, AT_SYMLINK_NOFOLLOW) != 0)
                continue;
            type = S_ISREG(st.st_mode) ? DT_REG : S_ISDIR(st.st_mode) ? DT_DIR : DT_LNK;
        }
        // A link, pipe, socket or device is no file of the disc: never listed, followed or opened.
        if (type == DT_REG) {
            sink(name, static_cast<qsizetype>(std::strlen(name)), nullptr);
        } else if (type == DT_DIR) {
            const QByteArray n(name);
            if (m_ownFolders.isEmpty() || !isOwnFolder(fd, name, e->d_ino, native + (native.endsWith('/') ? "" : "/") + n))
                folders.append({n, -1});
        }
    }
    const int err = errno;
    closedir(dir);
    if (err != 0)
        RaiseVbError(listingError(err));
    return folders;
}

MediaWalker::Files MediaWalker::AllFiles(const Folder &folder)
{
    Files out;
    const bool image = folder.node >= 0;
    const QByteArray base =
        folder.native.isEmpty() && !image ? QFile::encodeName(QDir::currentPath()) + '/' : folder.native;
    const int32_t folderNumber = image ? -1 : RegisterScanFolder(base);
    const FileSink sink = [&](const char *raw, qsizetype length, const DiscImage::Entry *record) {
        const QByteArrayView name(raw, length);
        QString stored = StoredPath(folder.stored, name);
        if (record)
            RegisterImageFile(stored, name, record->node, record->size, record->hidden);
        else
            RegisterScanFile(stored, folderNumber, name);
        ++gFilesScanned;
        if (m_display.currentAction)
            m_display.currentAction(ShortenPath(stored, m_maxPathLabel));
        // The real path is kept only for the files whose content the classification reads.
        if (ClassifyTail(stored) == FileTail::ArchiveCandidate)
            out.places.append({base + name.toByteArray(), record ? record->node : -1});
        else
            out.places.append(Where{});
        out.stored.append(std::move(stored));
    };
    // A listing that fails part way leaves none of its files behind: the folder is left out whole.
    const qsizetype registered = RegisteredFileCount();
    QList<SubFolder> folders;
    try {
        folders = list(folder, sink);
    } catch (const VbError &) {
        ForgetRegisteredFiles(registered);
        gFilesScanned -= int32_t(out.stored.size());
        throw;
    }
    // The subfolders come with the same listing; the walk of this folder's subfolders takes them.
    m_lastListed = folder.native;
    m_lastListedNode = folder.node;
    m_lastListedValid = true;
    m_lastListedFolders = folders;
    pump();
    return out;
}

int32_t MediaWalker::NumFilesInPath(const Folder &folder)
{
    try {
        int32_t count = 0;
        list(folder, [&](const char *, qsizetype, const DiscImage::Entry *) { ++count; });
        return count;
    } catch (const VbError &) {
        return 0; // no handle, no files
    }
}

void MediaWalker::ListTopFolders()
{
    ResetList(m_topFolders);
    m_topFolderSet.clear();
    QList<SubFolder> names;
    try {
        names = subFolderNames(m_dir);
    } catch (const VbError &) {
        return; // an unreadable folder lists nothing
    }
    for (int i = 0; i < names.size(); ++i) {
        const Folder f = sub(m_dir, names[i]);
        const QString full = f.shown.chopped(1);
        if (i == 0)
            m_topFolders[0] = full;
        else
            m_topFolders.append(full);
        m_topFolderSet.insert(f.native);
    }
}

QList<MediaWalker::SubFolder> MediaWalker::subFolderNames(const Folder &folder)
{
    if (m_lastListedValid && folder.native == m_lastListed && folder.node == m_lastListedNode)
        return m_lastListedFolders;
    return list(folder, [](const char *, qsizetype, const DiscImage::Entry *) {});
}

ArchiveExpander::Source MediaWalker::imageSource(int32_t node) const
{
    std::shared_ptr<DiscImage> image = m_image;
    return {image->Size(node), [image, node](int64_t offset, char *out, int64_t n) {
                return image->Read(node, offset, out, n);
            }};
}

bool MediaWalker::FileIsCompressed(const QString &stored, const Where &where)
{
    try {
        return (where.node >= 0 ? m_expander.ReadContents(imageSource(where.node))
                                : m_expander.ReadContents(where.native)) == 0;
    } catch (const VbError &e) {
        if (e.number != VbErr::SetNotPermitted)
            MsgBox(QStringLiteral("Error ") + QString::number(e.number) +
                       QStringLiteral(" while reading Zip file.  Zip file will be ignored"),
                   vbExclamation, QString(),
                   stored + QStringLiteral(": not expanded, it cannot be read as an archive (") + e.description +
                       QLatin1Char(')'));
        return false;
    }
}

void MediaWalker::expandArchive(const QString &stored, const Where &where)
{
    if (m_display.compressedFile)
        m_display.compressedFile(QStringLiteral("Decompressing ") + FileNameOnly(stored));
    if (m_display.currentAction)
        m_display.currentAction(ShortenPath(stored, m_maxPathLabel).toUpper());
    pump();
    const QByteArray target = ArchiveTargetFolder(where.native, where.node >= 0);
    if (where.node >= 0)
        m_expander.Expand(imageSource(where.node), target);
    else
        m_expander.Expand(where.native, target);
    // The stored form of the archive's folder, as the extract folder's walk will store its members.
    QString folder = StoredExtractFolder();
    for (const QByteArray &part : target.mid(QFile::encodeName(ExtractFolder()).size()).split('/'))
        if (!part.isEmpty())
            folder += kSlash + StoredName(part);
    m_archives.append({folder, stored});
    // The listing taken before this expansion may no longer hold every subfolder.
    m_lastListedValid = false;
    const QStringList &warnings = m_expander.warnings();
    if (!warnings.isEmpty()) {
        QStringList detail;
        for (const QString &w : warnings)
            detail.append(stored + QStringLiteral(": ") + w);
        if (m_expander.warningsLeftOut() > 0)
            detail.append(stored + QStringLiteral(": ") + QString::number(m_expander.warningsLeftOut()) +
                          QStringLiteral(" more members not extracted"));
        MsgBox(QStringLiteral("Not everything in ") + FileNameOnly(stored) + QStringLiteral(" was extracted:\n\n") +
                   WarningLines(warnings, m_expander.warningsLeftOut()),
               vbExclamation, QString(), detail.join(QLatin1Char('\n')));
    }
    if (m_display.zipProgress)
        m_display.zipProgress(0);
    if (m_display.compressedFile)
        m_display.compressedFile(QString());
}

void MediaWalker::classifyAll(const Files &files)
{
    for (qsizetype i = 0; i < files.stored.size(); ++i)
        classify(files.stored[i], files.places[i]);
}

void MediaWalker::classify(const QString &stored, const Where &where)
{
    switch (ClassifyTail(stored)) {
    case FileTail::Recognised:
        AppendToList(gMediaFiles, stored);
        break;
    case FileTail::ArchiveCandidate:
        if (FileIsCompressed(stored, where))
            expandArchive(stored, where);
        // Recognised whether it expanded or not.
        AppendToList(gMediaFiles, stored);
        break;
    case FileTail::Unknown:
        break;
    }
    if (gMediaFiles.last() != stored)
        AppendToList(gExternalFiles, stored);
}

void MediaWalker::ScanRootFiles(const Folder &start)
{
    if (m_display.busy)
        m_display.busy(true);
    const Files files = AllFiles(start);
    m_startListed = true;
    classifyAll(files);
    showCount();
    ScanSubFolders();
    if (m_display.busy)
        m_display.busy(false);
}

void MediaWalker::ScanMedia(const Folder &start)
{
    ScanRootFiles(start);
}

void MediaWalker::ScanSubFolders()
{
    const Folder here = m_dir;
    QList<Folder> subFolders;
    int i = 0;
    try {
        const QList<SubFolder> names = subFolderNames(here);
        subFolders.reserve(names.size());
        for (const SubFolder &n : names)
            subFolders.append(sub(here, n));
        pump();
        for (; i < subFolders.size() && !m_cancelled; ++i) {
            const Folder back = m_dir;
            const Folder &folder = subFolders[i];
            if (folder.node >= 0) {
                // In a disc image what can be listed is listed: a folder that cannot be read is left out
                // alone, and the folders after it are walked.
                Files files;
                try {
                    files = AllFiles(folder);
                } catch (const VbError &e) {
                    MsgBox(QStringLiteral("Error ") + QString::number(e.number), vbExclamation, QString(),
                           ShownText(folder.shown.chopped(1)) + QStringLiteral(": the folder cannot be read (") +
                               e.description + QStringLiteral("); it was left out"));
                    continue;
                }
                classifyAll(files);
            } else {
                classifyAll(AllFiles(folder));
            }
            m_dir = folder;
            m_dirPath = folder.shown.chopped(1);
            if (m_showProgress && m_topFolderSet.contains(folder.native)) {
                const double percent = double(m_topFoldersDone) / m_topFolders.size() * 100.0;
                if (m_display.progress)
                    m_display.progress(static_cast<int>(std::nearbyint(std::min(percent, 100.0))));
                ++m_topFoldersDone;
            }
            ScanSubFolders();
            m_dir = back;
            m_dirPath = back.shown.size() > 1 ? back.shown.chopped(1) : back.shown;
            showCount();
        }
    } catch (const VbError &e) {
        // This level of the walk ends here; the level above goes on.
        const auto shown = [](const Folder &f) { return ShownText(f.shown.size() > 1 ? f.shown.chopped(1) : f.shown); };
        const QString failed = shown(i < subFolders.size() ? subFolders[i] : here);
        const qsizetype after = subFolders.size() - i - 1;
        QString detail = failed + QStringLiteral(": the folder cannot be read (") + e.description +
                         QStringLiteral("); it was left out");
        if (i < subFolders.size() && after > 0)
            detail += QStringLiteral(", and with it the ") + QString::number(after) +
                      (after == 1 ? QStringLiteral(" folder") : QStringLiteral(" folders")) +
                      QStringLiteral(" after it in ") + shown(here);
        MsgBox(QStringLiteral("Error ") + QString::number(e.number), vbExclamation, QString(), detail);
    }
}

void MediaWalker::ScanFiles()
{
    m_maxPathLabel = 40;
    m_cancelled = false;
    m_startListed = false;
    m_expander.setAbort(false);
    m_expander.ResetScanTotal();
    pump();
    gFilesScanned = 0;
    ResetList(gMediaFiles);
    ResetList(gExternalFiles);
    ClearRealPaths();
    m_lastListedValid = false;
    m_archives.clear();
    m_dir = m_volume;
    m_dirPath = m_volume.shown;
    if (m_image && m_imageWalked) {
        // A later walk reads the image afresh: what it listed before counts for nothing now.
        openImage(m_image->Path());
        SetScannedImage(m_image);
        m_volume.node = m_dir.node = m_image->Root();
    }
    m_imageWalked = m_image != nullptr;

    // KEVRO's own folders lie outside every disc: a volume that holds them is walked without them.
    m_ownFolders.clear();
    for (const QString &own : {AppPath(), ExtractFolder()}) {
        struct stat st;
        const QByteArray path = QFile::encodeName(QDir(own).canonicalPath());
        if (!path.isEmpty() && ::stat(path.constData(), &st) == 0)
            m_ownFolders.append({st.st_dev, st.st_ino, path});
    }

    Folder start; // without the pre-scan the root listing runs on the process's current folder
    if (m_showProgress) {
        if (m_display.stage)
            m_display.stage(QStringLiteral("Pre-scanning media..."));
        m_preScanFileCount = 0;
        start = m_dir;
        ListTopFolders();
        m_preScanFileCount += NumFilesInPath(start);
    }

    if (m_display.stage)
        m_display.stage(QStringLiteral("Scanning media..."));
    m_topFoldersDone = 0;
    ScanMedia(start);

    if (m_display.stage)
        m_display.stage(QStringLiteral("Processing archive files..."));
    m_ownFolders.clear();
    m_dirPath = ExtractFolder() + kSlash;
    m_dir = {QFile::encodeName(m_dirPath), StoredText(m_dirPath), m_dirPath};
    ListTopFolders();
    m_topFoldersDone = 0;
    ScanMedia(m_dir);

    showCount();
}
