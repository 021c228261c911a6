#include "shell/MainMod.h"

#include "platform/Events.h"
#include "platform/FileSystem.h"
#include "platform/IniProfile.h"
#include "platform/MsgBox.h"
#include "platform/Paths.h"
#include "platform/VbError.h"
#include "shell/Progress.h"

#include <QDir>
#include <QFileInfo>

#include <cerrno>
#include <cmath>

QString gClientCode;
QString gClientName;
QString gCatalogueNumber;
QString gScanDrive;
int32_t gFilesScanned = 0;
QStringList gMediaFiles{QString()};
QStringList gExternalFiles{QString()};
QList<CheckedItem> gCheckedItems{CheckedItem{}};
QStringList gExtensionList;

// ---- lists -------------------------------------------------------------------------------------

void ResetList(QStringList &list)
{
    list = QStringList{QString()};
}

void ResetList(QList<CheckedItem> &list)
{
    list = QList<CheckedItem>{CheckedItem{}};
}

bool ListIsEmpty(const QStringList &list)
{
    return list.isEmpty() || list.first().isEmpty();
}

bool ListIsEmpty(const QList<CheckedItem> &list)
{
    return list.isEmpty() || list.first().text.isEmpty();
}

namespace {
// Element 0 is taken while it is empty; after that the list grows at its end.
template <class T> void appendUnderConvention(QList<T> &list, const T &item, bool empty)
{
    if (!empty)
        list.append(item);
    else if (list.isEmpty())
        list.append(item);
    else
        list[0] = item;
}
} // namespace

void AppendToList(QStringList &list, const QString &item)
{
    appendUnderConvention(list, item, ListIsEmpty(list));
}

void FillExtensionList()
{
    gExtensionList = {".EXE", ".AVI", ".MOV", ".MPG", ".MPEG", ".ASF", ".WMV", ".WAV",
                      ".MP3", ".AIF", ".BMP", ".JPG", ".GIF", ".TXT", ".NFO"};
}

void AddCheckedItem(const QString &text, const QString &kind)
{
    appendUnderConvention(gCheckedItems, CheckedItem{text, kind, 0}, ListIsEmpty(gCheckedItems));
}

// ---- paths and files ---------------------------------------------------------------------------

QString FileNameOnly(const QString &path)
{
    const int slash = path.lastIndexOf(QLatin1Char('/'));
    return slash < 0 ? path : path.mid(slash + 1);
}

QString ExtensionOf(const QString &path)
{
    const int dot = path.lastIndexOf(QLatin1Char('.'));
    if (dot < 0)
        return QString();
    const int slash = path.lastIndexOf(QLatin1Char('/'));
    return dot > slash ? path.mid(dot + 1) : QString();
}

QString ShortenPath(const QString &path, int16_t max)
{
    if (path.size() <= max)
        return path;
    const QString name = FileNameOnly(path);
    if (name.size() < max - 3)
        return path.left(max - (name.size() + 3)) + QStringLiteral("...") + name;
    return QStringLiteral("...") + path.right(std::max(0, max - 3));
}

QString ReplaceIllegalFileChars(const QString &text)
{
    static const QString illegal = QStringLiteral("\\/:<>?|\"*");
    QString out = text;
    for (QChar &c : out) {
        if (illegal.contains(c))
            c = QLatin1Char('_');
    }
    return out;
}

QString RemoveApostrophes(const QString &text)
{
    QString out = text;
    return out.remove(QLatin1Char('\''));
}

QVariant NullToEmpty(const QVariant &value)
{
    return value.isNull() ? QVariant(QString()) : value;
}

bool FileExists(const QString &path, int occurrence)
{
    return InfoOf(path, occurrence).exists;
}

namespace {
// A size as the volume's total counts it: only the low 32 bits, read as a signed number (sizes of 2 GiB and
// more come out wrong).
double countedSize(int64_t size)
{
    return static_cast<int32_t>(static_cast<uint32_t>(static_cast<uint64_t>(size) & 0xFFFFFFFFu));
}

// The regular files below a folder, as the scan sees a volume: links, pipes and devices are no files
// of it, and KEVRO's own folders are no part of it.
double folderSize(const QString &folder, const QStringList &own)
{
    QDir dir(folder.isEmpty() ? QStringLiteral("/") : folder);
    if (!dir.exists())
        return 0;
    double total = 0;
    const QFileInfoList entries =
        dir.entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    for (const QFileInfo &e : entries) {
        if (e.isSymLink())
            continue;
        if (e.isDir()) {
            // KEVRO's folders are told by their real path, whatever road the volume's path took.
            if (!own.contains(e.canonicalFilePath()))
                total += folderSize(e.absoluteFilePath(), own);
            continue;
        }
        if (!e.isFile())
            continue;
        total += countedSize(e.size());
    }
    return total;
}

// Rounds half away from zero, as a "####" format does.
long long roundHalfAway(double v)
{
    return static_cast<long long>(v < 0 ? std::ceil(v - 0.5) : std::floor(v + 0.5));
}
} // namespace

double FolderSizeBytes(const QString &folder)
{
    if (ScannedImage() && QFileInfo(folder).isFile()) {
        // A disc image: its files as the walk listed them, counted as a folder's files are.
        double total = 0;
        for (const int64_t size : ImageFileSizes())
            total += countedSize(size);
        return total;
    }
    return folderSize(folder, {QDir(AppPath()).canonicalPath(), QDir(ExtractFolder()).canonicalPath()});
}

QString FileSizeText(const QString &path, int occurrence)
{
    const StoredFileInfo info = InfoOf(path, occurrence);
    if (!info.exists || info.isDir)
        return QStringLiteral("Error");
    const qint64 length = info.size;
    if (length == 0)
        return QStringLiteral("0 KB");
    const double kb = length / 1024.0;
    // The zero test rounds to even; the text itself rounds half away from zero.
    if (std::nearbyint(kb) == 0)
        return QStringLiteral("1 KB");
    return QString::number(roundHalfAway(kb)) + QStringLiteral(" KB");
}

QString ExtractFolder()
{
    return AppPath() + QStringLiteral("/extract");
}

QString StoredExtractFolder()
{
    return StoredText(ExtractFolder());
}

bool IsInExtractFolder(const QString &path)
{
    const QString prefix = StoredExtractFolder() + QLatin1Char('/');
    return path.left(prefix.size()) == prefix;
}

QString FileIconKey(const QString &path, int occurrence)
{
    // The archive mark wins, and stands even when the file cannot be looked at.
    if (IsInExtractFolder(path))
        return QStringLiteral("Zip");
    // A file that is not there (any more) is simply not marked hidden; one that cannot be looked at is told.
    const StoredFileInfo info = InfoOf(path, occurrence);
    if (info.error != 0 && info.error != ENOENT) {
        const long number = info.error == EACCES || info.error == EPERM ? VbErr::PathFileAccess
                            : info.error == ENOTDIR                     ? VbErr::PathNotFound
                                                                        : VbErr::DeviceIOError;
        MsgBox(QStringLiteral("Error ") + QString::number(number) + QStringLiteral(" occured."), vbExclamation);
        return QString();
    }
    return info.hidden ? QStringLiteral("Hidden") : QString();
}

bool IsVideoFile(const QString &path)
{
    const QString t4 = path.right(4);
    if (t4 == QLatin1String(".AVI") || t4 == QLatin1String(".MPG") || t4 == QLatin1String(".MPE") ||
        t4 == QLatin1String(".ASF") || t4 == QLatin1String(".WMW") || t4 == QLatin1String(".MOV"))
        return true;
    if (path.right(5) == QLatin1String(".MPEG"))
        return true;
    return t4 == QLatin1String(".DAT") && path.right(18).startsWith(QLatin1String("MPEGAV/"));
}

bool IsAudioFile(const QString &path)
{
    const QString t4 = path.right(4);
    return t4 == QLatin1String(".WAV") || t4 == QLatin1String(".AIF") || t4 == QLatin1String(".MP3");
}

bool IsImageFile(const QString &path)
{
    const QString t4 = path.right(4);
    // The four-character tail against ".JPEG" never matches: .JPEG files are not counted as images.
    return t4 == QLatin1String(".JPG") || t4 == QLatin1String(".BMP") || t4 == QLatin1String(".GIF") ||
           t4 == QLatin1String(".JPEG");
}

bool IsTextFile(const QString &path)
{
    const QString t4 = path.right(4);
    return t4 == QLatin1String(".TXT") || t4 == QLatin1String(".NFO") || t4 == QLatin1String(".INI") ||
           path.right(3) == QLatin1String(".ME") || path.right(7) == QLatin1String(".README");
}

// ---- kevro.ini --------------------------------------------------------------------------------------

QString IniFileName()
{
    return AppPath() + QStringLiteral("/kevro.ini");
}

QString ReadIniKey(const QString &section, const QString &key)
{
    return GetPrivateProfileString(section, key, QStringLiteral("Nowt"), 50, IniFileName());
}

void WriteIniKey(const QString &section, const QString &key, const QString &value)
{
    if (!WritePrivateProfileString(section, key, value, IniFileName()))
        RaiseVbError(VbErr::PathFileAccess);
}

QString ReadDefaultDevice()
{
    constexpr int pathBuffer = 4096;
    return GetPrivateProfileString(QStringLiteral("Devices"), QStringLiteral("DefaultDevice "), QStringLiteral("Nowt"),
                                   pathBuffer, IniFileName());
}

QString DeviceFromIniValue(const QString &value)
{
    if (value.startsWith(QLatin1Char('/')))
        return value;
    return value.left(1).toUpper() + QStringLiteral(":/");
}

// ---- the end of the program ----------------------------------------------------------------------

void ResetExtractFolder()
{
    const QString text = QStringLiteral("Removing de-archived files...");
    const QString folder = ExtractFolder();
    const std::function<void()> steps[] = {
        [&] { UpdateProgressBox(1, text); },
        [] { DoEvents(); },
        [&] { UpdateProgressBox(50, text); },
        [&] { DeleteFolder(folder, true); },
        [&] { UpdateProgressBox(99, text); },
        [&] { CreateFolder(folder); },
        [] { UnloadProgressBox(); },
    };
    for (const auto &step : steps) {
        try {
            step();
        } catch (const VbError &e) {
            if (e.number == VbErr::UnspecifiedFailure)
                continue;
            MsgBox(QStringLiteral("Error deleting and creating temp extract folder. Error #") +
                       QString::number(e.number) + QStringLiteral(" Make sure all files in ") + folder +
                       QStringLiteral(" are deleted before running KEVRO again.  Can not continue."),
                   vbCritical);
            EndProcess(1);
        }
    }
}

namespace {
std::function<void()> &unlatcher()
{
    static std::function<void()> u;
    return u;
}
} // namespace

void SetMediaPlayerUnlatcher(std::function<void()> unlatch)
{
    unlatcher() = std::move(unlatch);
}

void UnlatchMediaPlayers()
{
    if (unlatcher())
        unlatcher()();
}

void ExitApplication()
{
    UnlatchMediaPlayers();
    ResetExtractFolder();
    EndProcess(0);
}
