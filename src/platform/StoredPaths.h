#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QHash>
#include <QList>
#include <QString>

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>

class DiscImage;

// A stored path is the text a file of the scan is known by: upper case, and free of what a name may
// hold on this platform but could not on the discs' own (control characters, "<" and ">", Unicode
// direction controls, bytes that are not UTF-8; each becomes "_"). So a name can neither add a line to
// the report, bring markup into it, shift a grid's columns, nor disguise its tail. Two files can come
// to share one stored path (names that differ in case or in such characters): they stay two entries of
// the lists, the first, second, ... occurrence of that text in the walk's order, each reaching its own
// file.

// The stored form of one name as the file system gives it (bytes), and the stored path of a name in a
// folder whose stored form (separator included) is known.
QString StoredName(QByteArrayView name);
QString StoredPath(const QString &storedFolder, QByteArrayView name);
// The same rule on a text already decoded: a volume root, the application folder.
QString StoredText(const QString &text);
// A name or path from a disc or an archive as a message or a log line shows it: the same characters
// become "_", the case stays.
QString ShownText(const QString &text);

// The walk registers every file it lists: its stored path and the file system's bytes of its real path,
// in the walk's order. A folder's bytes are registered once and shared by its files.
int32_t RegisterScanFolder(const QByteArray &nativeFolder); // with its trailing "/"; returns its number
void RegisterScanFile(const QString &stored, int32_t folder, QByteArrayView nativeName);
// How many files are registered; forgetting back to such a count drops the files of a listing that failed
// part way.
qsizetype RegisteredFileCount();
void ForgetRegisteredFiles(qsizetype from);
// A file of a disc image the walk lists, by its node in the image, with what its record says.
void RegisterImageFile(const QString &stored, QByteArrayView name, int32_t node, int64_t size, bool hidden);
// The disc image the scan walks (null when the volume is a folder); it outlives the list of files.
void SetScannedImage(std::shared_ptr<DiscImage> image);
std::shared_ptr<DiscImage> ScannedImage();
// The sizes of the files the walk listed in the disc image.
QList<int64_t> ImageFileSizes();
// The node in the scanned image of a stored path's file, or -1 for a file of a folder.
int32_t ImageNodeOf(const QString &stored, int occurrence = 0);
// A single file by its real path, for a file that no walk registered.
void RegisterRealPath(const QString &stored, const QString &real);
// Forgets every registered file (a new scan).
void ClearRealPaths();

// How many registered files share a stored path (0 for one no walk registered).
int StoredPathCount(const QString &stored);

// The real file behind a stored path, as bytes for the file system ("" for a file inside a disc image).
// A path no walk registered is taken as it is when it exists, else resolved folder by folder without
// regard to case.
QByteArray NativePath(const QString &stored, int occurrence = 0);
// The same as a path every Qt class can open: a real path whose bytes are not UTF-8 is reached through
// a link in the extract folder, and a file inside a disc image is copied out into it (each made once,
// emptied with the extract folder).
QString RealPath(const QString &stored, int occurrence = 0);

// Reads n bytes from an offset of a listed file (of the folder, never through a link, or of the disc
// image); returns the number read, -1 when the file cannot be read.
int64_t ReadStoredFile(const QString &stored, int occurrence, int64_t offset, char *out, int64_t n);

// Every file the walk listed, in the walk's order, with its occurrence of its stored path.
struct ListedFile {
    QString stored;
    int occurrence = 0;
};
QList<ListedFile> FilesInWalkOrder();
// The places in that order of the files whose first bytes (at most headBytes of them) pass the test, each
// file read only as far as its head, by as many threads side by side. It only reads what the walk
// registered: other threads may look files up meanwhile, none may register any.
QList<qsizetype> FilesWhoseHeadPasses(int headBytes, const std::function<bool(QByteArrayView head)> &test,
                                      int threads = 2, const std::atomic<bool> *stop = nullptr);

// What the screens and the report need to know of a listed file without opening it.
struct StoredFileInfo {
    bool exists = false; // a file or folder is there
    bool isDir = false;
    bool hidden = false; // its name begins with "."
    int64_t size = 0;
    int error = 0; // the file system's reason when the file could not be looked at (0 when it could)
};
StoredFileInfo InfoOf(const QString &stored, int occurrence = 0);

// Numbers the entries of a list that share a stored path, in the list's order: the first gets 0, the
// second 1. With no shared path in the scan every entry gets 0 at the cost of one look-up.
class Occurrences final
{
public:
    int operator()(const QString &stored);

private:
    QHash<QString, int> m_seen;
};
