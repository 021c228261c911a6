#include "review/ViewerFiles.h"

#include "shell/MainMod.h"

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

bool ExternalScreenListsFile(const QString &path, const QString &limit)
{
    if (path.isEmpty() || !FileExists(path) || FileSizeText(path) == QLatin1String("Error"))
        return false;
    return path.toUpper().right(limit.size()) == limit.toUpper();
}

int CountViewerFiles(ViewerKind kind)
{
    int count = 0;
    if (kind == ViewerKind::External) {
        for (const QString &path : gExternalFiles)
            count += ExternalScreenListsFile(path, QString()) ? 1 : 0;
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
