#include "scan/MediaWalker.h"

#include "platform/Events.h"
#include "platform/MsgBox.h"
#include "platform/Paths.h"
#include "platform/VbError.h"
#include "shell/MainMod.h"

#include <QDir>
#include <QFile>

#include <cerrno>
#include <cmath>

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
} // namespace

FileTail ClassifyTail(const QString &path)
{
    const QString t4 = path.right(4);
    static const QStringList four{".JPG", ".GIF", ".BMP", ".AVI", ".MOV", ".ASF", ".WMV", ".TXT", ".NFO",
                                  ".MPE", ".MPG", ".DAT", ".MP3", ".WAV", ".AIF", ".VOB", ".INI"};
    if (t4.size() == 4 && four.contains(t4))
        return FileTail::Recognised;
    if (t4 == QLatin1String(".ZIP") || t4 == QLatin1String(".EXE"))
        return FileTail::ArchiveCandidate;
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

MediaWalker::Listing MediaWalker::list(const QString &folder, bool foldersToo)
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
                out.folders.append(QFile::decodeName(name));
        } else {
            out.files.append(QFile::decodeName(name));
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
    const Listing l = list(folder, true);
    // The subfolders come with the same listing; the walk of this folder's subfolders takes them.
    m_lastListed = folder.endsWith(kSlash) && folder.size() > 1 ? folder.chopped(1) : folder;
    m_lastListedFolders = l.folders;
    const QString realFolder = folder.isEmpty() ? QDir::currentPath() + kSlash : folder;
    QStringList result;
    result.reserve(l.files.size());
    for (const QString &name : l.files) {
        const QString stored = (folder + name).toUpper();
        RegisterRealPath(stored, realFolder + name);
        result.append(stored);
        ++gFilesScanned;
        if (m_display.currentAction)
            m_display.currentAction(ShortenPath(folder + name, m_maxPathLabel).toUpper());
    }
    pump();
    return result;
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
    try {
        return m_expander.ReadContents(RealPath(path)) == 0;
    } catch (const VbError &e) {
        if (e.number != VbErr::SetNotPermitted)
            MsgBox(QStringLiteral("Error ") + QString::number(e.number) +
                       QStringLiteral(" while reading Zip file.  Zip file will be ignored"),
                   vbExclamation);
        return false;
    }
}

void MediaWalker::expandArchive(const QString &stored)
{
    if (m_display.compressedFile)
        m_display.compressedFile(QStringLiteral("Decompressing ") + FileNameOnly(stored));
    if (m_display.currentAction)
        m_display.currentAction(ShortenPath(stored, m_maxPathLabel).toUpper());
    pump();
    m_expander.Expand(RealPath(stored), ArchiveTargetFolder(stored));
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

void MediaWalker::classify(const QString &stored)
{
    switch (ClassifyTail(stored)) {
    case FileTail::Recognised:
        AppendToList(gMediaFiles, stored);
        break;
    case FileTail::ArchiveCandidate:
        if (FileIsCompressed(stored))
            expandArchive(stored);
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
    const QStringList files = AllFiles(startPath);
    for (const QString &f : files)
        classify(f);
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
            const QStringList files = AllFiles(sub + kSlash);
            for (const QString &f : files)
                classify(f);
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
