#include "review/ViewerFiles.h"

#include "platform/StoredPaths.h"
#include "shell/MainMod.h"

#include <QStringDecoder>

bool VideoScreenListsFile(const QString &path)
{
    const QString t4 = path.right(4);
    if (t4 == QLatin1String(".AVI") || t4 == QLatin1String(".MPG") || t4 == QLatin1String(".MPE") ||
        t4 == QLatin1String(".ASF") || t4 == QLatin1String(".WMW") || t4 == QLatin1String(".MOV"))
        return true;
    if (path.right(5) == QLatin1String(".MPEG"))
        return true;
    // A video CD's track: ".DAT" in a folder named MPEGAV.
    return t4 == QLatin1String(".DAT") && path.right(18).startsWith(QLatin1String("MPEGAV/"));
}

bool AudioScreenListsFile(const QString &path)
{
    const QString t4 = path.right(4);
    return t4 == QLatin1String(".WAV") || t4 == QLatin1String(".AIF") || t4 == QLatin1String(".MP3");
}

bool ImageScreenListsFile(const QString &path)
{
    const QString t4 = path.right(4);
    return t4 == QLatin1String(".JPG") || t4 == QLatin1String(".BMP") || t4 == QLatin1String(".GIF") ||
           path.right(5) == QLatin1String(".JPEG");
}

bool TextScreenListsFile(const QString &path)
{
    const QString t4 = path.right(4);
    return t4 == QLatin1String(".TXT") || t4 == QLatin1String(".NFO") || t4 == QLatin1String(".INI") ||
           path.right(3) == QLatin1String(".ME") || path.right(7) == QLatin1String(".README");
}

bool ExternalScreenListsFile(const QString &path, const QString &limit, int occurrence)
{
    if (path.isEmpty() || !FileExists(path, occurrence) || FileSizeText(path, occurrence) == QLatin1String("Error"))
        return false;
    return path.toUpper().right(limit.size()) == limit.toUpper();
}

int CountViewerFiles(ViewerKind kind)
{
    int count = 0;
    if (kind == ViewerKind::External) {
        Occurrences occurrence;
        for (const QString &path : gExternalFiles)
            count += ExternalScreenListsFile(path, QString(), occurrence(path)) ? 1 : 0;
        return count;
    }
    bool (*lists)(const QString &) = kind == ViewerKind::Video   ? VideoScreenListsFile
                                     : kind == ViewerKind::Audio ? AudioScreenListsFile
                                     : kind == ViewerKind::Image ? ImageScreenListsFile
                                                                 : TextScreenListsFile;
    for (const QString &path : gMediaFiles)
        count += lists(path) ? 1 : 0;
    return count;
}

QString DecodeTextFile(const QByteArray &bytes)
{
    if (bytes.startsWith("\xff\xfe") || bytes.startsWith("\xfe\xff")) {
        QStringDecoder utf16(bytes.startsWith("\xff\xfe") ? QStringDecoder::Utf16LE : QStringDecoder::Utf16BE);
        return utf16(bytes.mid(2));
    }
    QStringDecoder utf8(QStringDecoder::Utf8);
    const QString text = utf8(bytes);
    if (!utf8.hasError())
        return text;
    // Windows-1252: Latin-1 but for 0x80..0x9F, where it keeps its quotes, dashes and the euro sign
    // (the five holes of the code page stay as the control characters Windows maps them to).
    static const char16_t high[32] = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                      0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                      0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                      0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};
    QString out(bytes.size(), Qt::Uninitialized);
    QChar *to = out.data();
    for (const char c : bytes) {
        const auto b = static_cast<unsigned char>(c);
        *to++ = b >= 0x80 && b < 0xA0 ? QChar(high[b - 0x80]) : QChar(b);
    }
    return out;
}
