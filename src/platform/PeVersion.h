#pragma once

#include <QByteArray>
#include <QString>

#include <functional>
#include <optional>

// The version resource of a Windows executable (PE32 or PE32+), read the way the Windows version API
// hands it out: the whole VS_VERSIONINFO block first, then values by their sub-block path. Every read is
// checked against the end of the file and of the block; a truncated, damaged or hostile file simply has
// no version block.

// The VS_VERSIONINFO block of the file: the RT_VERSION resource numbered 1, its first language. Empty when the file is no PE file, has no such resource, or
// anything on the way lies outside the file. Only regular files are opened.
QByteArray ReadVersionBlock(const QString &path);
// The same from a file's bytes already in memory.
QByteArray VersionBlockFromImage(const char *data, qsizetype size);
// The same from a file of `size` bytes read piece by piece: read(offset, out, n) gives the bytes read.
using VersionFileReader = std::function<int64_t(int64_t offset, char *out, int64_t n)>;
QByteArray VersionBlockFromFile(int64_t size, const VersionFileReader &read);

// A value of a version block by its path, "\VarFileInfo\Translation" or "\StringFileInfo\040904B0\Name".
// Keys compare without regard to case, as the platform's query does. nullopt when the path is not there.
struct VersionValue {
    QByteArray bytes;   // the value as stored (UTF-16 for a text)
    int declaredLength; // the node's value length: characters for a text, bytes for binary data
    bool text;          // the node's type says text
};
std::optional<VersionValue> QueryVersionValue(const QByteArray &block, const QString &subBlock);

// A text value: the UTF-16 characters up to the first NUL, never past the node's end.
QString VersionValueText(const VersionValue &value);
