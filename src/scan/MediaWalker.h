#pragma once

#include "platform/DiscImage.h"
#include "scan/ArchiveExpander.h"

#include <QSet>
#include <QString>
#include <QStringList>

#include <sys/types.h>

#include <cstdint>
#include <functional>

// What a file's name makes of it in the scan: a kind the review screens know, a candidate archive
// (".ZIP", ".EXE", recognised whether or not it expands), or nothing known (an external file).
enum class FileTail { Recognised, ArchiveCandidate, Unknown };
// The tail test on a stored (upper-case) path; exact comparisons, no other rule.
FileTail ClassifyTail(const QString &path);

// The review screen a finished scan leads to, by the kinds the operator asked for.
struct KindsToReview {
    bool exe = true, video = true, audio = true, image = true, text = true, other = true;
    bool any() const { return exe || video || audio || image || text || other; }
};
QString FirstReviewScreen(const KindsToReview &kinds);

// The target folder of an archive found at a real path: the extract folder, then the path without its
// volume root. The archive's own name becomes a folder name, so no two archives of a scan clash (two
// whose stored paths are equal keep their own folders, as their real names differ).
// An archive inside a disc image expands below its path inside the image.
QByteArray ArchiveTargetFolder(const QByteArray &nativeArchivePath, bool insideImage = false);

// The walk of one volume: every file of every folder, depth first, into gMediaFiles or gExternalFiles,
// archives expanded as they are met, then the extract folder walked the same way. It works without a
// window; a screen follows it through the Display hooks and cancels through Cancel().
class MediaWalker final
{
public:
    struct Display {
        std::function<void(const QString &)> currentAction; // the file being looked at
        std::function<void(int32_t)> filesScanned;
        std::function<void(const QString &)> stage;          // what the scan is doing now
        std::function<void(int)> progress;                  // top-level folders done, in per cent
        std::function<void(const QString &)> compressedFile; // the archive being expanded, or ""
        std::function<void(int)> zipProgress;
        std::function<void(bool)> busy;                     // the hourglass while files are listed
        std::function<void()> pumpEvents;
    };

    MediaWalker();

    void setDisplay(Display display) { m_display = std::move(display); }
    // Run the pre-scan and move the progress bar by top-level folders.
    void setShowProgress(bool on) { m_showProgress = on; }

    // The volume to walk: its root becomes the working folder and the scanned volume. A disc image file
    // is a volume of its own; a file that is no image raises 68 with the reason.
    void SetDrive(const QString &volumeRoot);
    QString DirPath() const { return m_dirPath; }

    // The walk and the pass over the extract folder. A failure at the start folder's own level passes on.
    void ScanFiles();

    // The operator confirmed a cancel: no further subfolder is entered and the expansion under way stops.
    void Cancel();
    bool ScanCancelled() const { return m_cancelled; }

    // Kept for the screen and the tests: what the walk counted on its way.
    int32_t PreScanFileCount() const { return m_preScanFileCount; }
    int32_t TopFoldersDone() const { return m_topFoldersDone; }
    const QStringList &TopFolders() const { return m_topFolders; }

    // True once the start folder's own files were listed: a failure after that is no failure of the
    // volume but of the extract folder's pass.
    bool StartFolderListed() const { return m_startListed; }

    ArchiveExpander &Expander() { return m_expander; }
    // The archives the walk expanded: the stored form of each one's folder in the extract folder, and
    // the archive's own stored path.
    const QList<QPair<QString, QString>> &ExpandedArchives() const { return m_archives; }

private:
    // A folder of the walk: the file system's bytes, its stored form and its path as shown, each with
    // the trailing "/" (the stored form of the process's current folder is "").
    // (In a disc image: the path inside the image as its bytes, and the folder's node there.)
    struct Folder {
        QByteArray native;
        QString stored;
        QString shown;
        int32_t node = -1;
    };
    struct SubFolder {
        QByteArray name;
        int32_t node = -1;
    };
    Folder sub(const Folder &parent, const SubFolder &child) const;
    // A folder's regular files go to the sink (with their image record, in an image), its subfolders
    // (KEVRO's own folders left out) to the result, in the file system's or the image's record order;
    // links, pipes, sockets and devices are passed over.
    using FileSink = std::function<void(const char *name, qsizetype length, const DiscImage::Entry *record)>;
    QList<SubFolder> list(const Folder &folder, const FileSink &sink);
    QList<SubFolder> listImage(const Folder &folder, const FileSink &sink);
    // Where a file's content is read: its real path, or its path and node in the disc image.
    struct Where {
        QByteArray native;
        int32_t node = -1;
    };
    // The files of a folder as stored paths; where each archive candidate lies beside its path (empty
    // for the others).
    struct Files {
        QStringList stored;
        QList<Where> places;
    };
    Files AllFiles(const Folder &folder);
    int32_t NumFilesInPath(const Folder &folder);
    void ScanMedia(const Folder &start);
    void ScanRootFiles(const Folder &start);
    void ScanSubFolders();
    void ListTopFolders();
    QList<SubFolder> subFolderNames(const Folder &folder);
    void classifyAll(const Files &files);
    void classify(const QString &stored, const Where &where);
    void expandArchive(const QString &stored, const Where &where);
    bool FileIsCompressed(const QString &stored, const Where &where);
    ArchiveExpander::Source imageSource(int32_t node) const;
    bool isOwnFolder(int dirFd, const char *name, ino_t inode, const QByteArray &path) const;
    void pump();
    void showCount();

    Display m_display;
    ArchiveExpander m_expander;
    bool m_showProgress = true;
    bool m_cancelled = false;
    bool m_startListed = false;
    int32_t m_preScanFileCount = 0;
    int32_t m_topFoldersDone = 0;
    QStringList m_topFolders{QString()};
    QSet<QByteArray> m_topFolderSet; // the same folders' bytes, for the look-up at each folder
    int16_t m_maxPathLabel = 40;
    Folder m_volume;   // the volume's root
    Folder m_dir;      // the working folder
    QString m_dirPath; // its path as shown, with the trailing separator for a root
    // The application folder and the extract folder are no part of a volume that holds them.
    struct Identity {
        dev_t device;
        ino_t inode;
        QByteArray path;
    };
    QList<Identity> m_ownFolders;
    // Subfolders seen by the last listing of a folder, handed to the walk of that folder's subfolders.
    QByteArray m_lastListed;
    int32_t m_lastListedNode = -1;
    bool m_lastListedValid = false;
    QList<SubFolder> m_lastListedFolders;
    // The disc image the volume is, if it is one; opened afresh for each walk after the first.
    void openImage(const QString &path);
    std::shared_ptr<DiscImage> m_image;
    bool m_imageWalked = false;
    QSet<int32_t> m_warnedFolders; // the image's folders whose listing problem was told
    QList<QPair<QString, QString>> m_archives;
};
