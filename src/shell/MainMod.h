#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <cstdint>
#include <functional>

// ---- the job's state, alive for the whole run -------------------------------------------------

// What the operator opened for checking on a viewer screen.
struct CheckedItem {
    QString text; // path, " (", size text, ")"
    QString kind; // "Video", "Audio", "Image", "Text" or "External"
    int16_t done = 0;
};

extern QString gClientCode;
extern QString gClientName;
extern QString gCatalogueNumber;
extern QString gScanDrive;
extern int32_t gFilesScanned;
extern QStringList gMediaFiles;
extern QStringList gExternalFiles;
extern QList<CheckedItem> gCheckedItems;
extern QStringList gExtensionList;

// The list convention: a list is never truly empty; an empty list has one element, "". A writer appends
// at index 0 while element 0 is "", otherwise at a new last index; a reader tests element 0.
void ResetList(QStringList &list);
void ResetList(QList<CheckedItem> &list);
void AppendToList(QStringList &list, const QString &item);
bool ListIsEmpty(const QStringList &list);
bool ListIsEmpty(const QList<CheckedItem> &list);

void FillExtensionList();
void AddCheckedItem(const QString &text, const QString &kind);

// ---- paths and files -----------------------------------------------------------------------------
QString FileNameOnly(const QString &path);
QString ExtensionOf(const QString &path);
QString ShortenPath(const QString &path, int16_t max);
QString ReplaceIllegalFileChars(const QString &text);
QString RemoveApostrophes(const QString &text);
QVariant NullToEmpty(const QVariant &value);
// The file of a stored path (its occurrence-th one when several share the path).
bool FileExists(const QString &path, int occurrence = 0);
double FolderSizeBytes(const QString &folder);
QString FileSizeText(const QString &path, int occurrence = 0);
QString FileIconKey(const QString &path, int occurrence = 0);

bool IsVideoFile(const QString &path);
bool IsAudioFile(const QString &path);
bool IsImageFile(const QString &path);
bool IsTextFile(const QString &path);

// The extract folder, application path + "/extract", and its stored form (upper case), the head of every
// archive member's stored path.
QString ExtractFolder();
QString StoredExtractFolder();
// True when a stored path lies in the extract folder: the file came out of an archive.
bool IsInExtractFolder(const QString &path);

// ---- kevro.ini --------------------------------------------------------------------------------------
QString IniFileName();
// A key of kevro.ini as the screens read it: a buffer of 50 and the default "Nowt" for a missing key.
QString ReadIniKey(const QString &section, const QString &key);
// Writes a key of kevro.ini; raises 75 when the file cannot be written.
void WriteIniKey(const QString &section, const QString &key, const QString &value);
// The volume a DefaultDevice value names: a volume root is kept; anything else is a drive letter,
// whose first character counts, and names no volume here.
QString DeviceFromIniValue(const QString &value);
// The DefaultDevice value of kevro.ini ("Nowt" when absent). A letter's first character is what
// counts; a folder's path is read whole, however long.
QString ReadDefaultDevice();

// ---- the end of the program ----------------------------------------------------------------------
void ResetExtractFolder();
// Makes the media players let go of the files they hold. The review screens register how.
void UnlatchMediaPlayers();
void SetMediaPlayerUnlatcher(std::function<void()> unlatch);
[[noreturn]] void ExitApplication();
