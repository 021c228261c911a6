#pragma once

#include "scan/ArchiveExpander.h"

#include <QSet>
#include <QString>
#include <QStringList>

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

// The target folder of an archive found at a stored path: the extract folder, then the path without
// its volume root. The archive's own name becomes a folder name, so no two archives of a scan clash.
QString ArchiveTargetFolder(const QString &storedArchivePath);

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

    // The volume to walk: its root becomes the working folder and the scanned volume.
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

    // The parts of the walk, public as on the scanning screen.
    QStringList AllFiles(const QString &folder);
    int32_t NumFilesInPath(const QString &path);
    bool FileIsCompressed(const QString &path);
    void ScanMedia(const QString &startPath);
    void ScanRootFiles(const QString &startPath);
    void ScanSubFolders();
    void ListTopFolders();

    ArchiveExpander &Expander() { return m_expander; }

private:
    struct Listing {
        QStringList files;   // names of the folder's files, in the file system's order
        QStringList folders; // names of its subfolders, same order
    };
    // A folder's entries in the file system's order; with a sink, each file's raw name goes to it
    // instead of the list.
    using FileSink = std::function<void(const char *name)>;
    Listing list(const QString &folder, bool foldersToo, const FileSink &sink = {});
    // The files of a folder as stored paths; the real name of each archive candidate beside its path
    // (a null text for the others).
    struct Files {
        QStringList stored;
        QStringList names;
        QString realFolder;
    };
    Files filesOf(const QString &folder);
    void classifyAll(const Files &files);
    QStringList subFolderNames(const QString &folder);
    void classify(const QString &stored, const QString &real);
    void expandArchive(const QString &stored, const QString &real);
    bool isArchive(const QString &real); // FileIsCompressed on a real path
    void pump();
    void showCount();

    Display m_display;
    ArchiveExpander m_expander;
    bool m_showProgress = true;
    bool m_cancelled = false;
    int32_t m_preScanFileCount = 0;
    int32_t m_topFoldersDone = 0;
    QStringList m_topFolders{QString()};
    QSet<QString> m_topFolderSet; // the same paths, for the look-up at each folder
    int16_t m_maxPathLabel = 40;
    QString m_dirPath; // the working folder, with its trailing separator for a root
    // Subfolders seen by the last listing of a folder, handed to the walk of that folder's subfolders.
    QString m_lastListed;
    QStringList m_lastListedFolders;
};
