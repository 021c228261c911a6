#pragma once

#include <QString>

// Which files each review screen lists, and how many its fill finds: the same count on the screen and
// in the batch job's summary.
enum class ViewerKind { Video, Audio, Image, Text, External };

// The tail tests of the four media screens, on a stored (upper-case) path. They are the screens' own
// and differ from the report's kind tests: the image screen lists ".JPEG" files, for one.
bool VideoScreenListsFile(const QString &path);
bool AudioScreenListsFile(const QString &path);
bool ImageScreenListsFile(const QString &path);
bool TextScreenListsFile(const QString &path);

// The external screen lists an entry of gExternalFiles when the file exists and its size can be read,
// and its upper-case tail, as long as the limit, equals the limit in upper case (an empty limit lists
// every such file). The occurrence names the file where several share the path.
bool ExternalScreenListsFile(const QString &path, const QString &limit, int occurrence = 0);

// The number of files a screen's fill lists from the scan's lists (the external one with no limit).
int CountViewerFiles(ViewerKind kind);

// The characters of a text file for the text screen. Files on masters come from Windows editors: a
// file that is valid UTF-8 (with or without its mark) reads as UTF-8, one with a UTF-16 mark as UTF-16,
// and anything else as Windows-1252, the code page such files were written in.
QString DecodeTextFile(const QByteArray &bytes);
