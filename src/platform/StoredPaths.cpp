#include "platform/StoredPaths.h"

#include "platform/DiscImage.h"
#include "platform/Paths.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QList>

#include <algorithm>
#include <cerrno>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// A character the discs' platform could not hold in a name, or one that would change what a line of
// the report or a grid's row says.
bool replaced(char32_t c)
{
    return c < 0x20 || (c >= 0x7F && c <= 0x9F) || c == U'<' || c == U'>' || c == 0x200E || c == 0x200F ||
           (c >= 0x202A && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069);
}

// The length of the UTF-8 sequence at p (overlong forms, surrogates and values past U+10FFFF are not
// UTF-8), and its value; 0 when the byte at p starts none.
int utf8Sequence(const unsigned char *p, const unsigned char *end, char32_t &value)
{
    const unsigned char b = *p;
    if (b < 0x80) {
        value = b;
        return 1;
    }
    int n;
    unsigned char lo = 0x80, hi = 0xBF;
    if (b >= 0xC2 && b <= 0xDF) {
        n = 2;
        value = b & 0x1F;
    } else if (b >= 0xE0 && b <= 0xEF) {
        n = 3;
        value = b & 0x0F;
        if (b == 0xE0)
            lo = 0xA0;
        else if (b == 0xED)
            hi = 0x9F;
    } else if (b >= 0xF0 && b <= 0xF4) {
        n = 4;
        value = b & 0x07;
        if (b == 0xF0)
            lo = 0x90;
        else if (b == 0xF4)
            hi = 0x8F;
    } else {
        return 0;
    }
    if (end - p < n)
        return 0;
    for (int i = 1; i < n; ++i) {
        const unsigned char c = p[i];
        if (c < (i == 1 ? lo : 0x80) || c > (i == 1 ? hi : 0xBF))
            return 0;
        value = value << 6 | (c & 0x3F);
    }
    return n;
}

bool isUtf8(QByteArrayView bytes)
{
    const auto *p = reinterpret_cast<const unsigned char *>(bytes.data());
    const auto *end = p + bytes.size();
    char32_t c;
    while (p < end) {
        const int n = utf8Sequence(p, end, c);
        if (n == 0)
            return false;
        p += n;
    }
    return true;
}

void appendChar(QString &out, char32_t c)
{
    if (replaced(c))
        out.append(QLatin1Char('_'));
    else if (c < 0x10000)
        out.append(QChar(char16_t(c)));
    else
        out.append(QChar::fromUcs4(c));
}

// The name with every character it may not hold as "_", in its own case.
QString cleanName(QByteArrayView name)
{
    const auto *p = reinterpret_cast<const unsigned char *>(name.data());
    const auto *end = p + name.size();
    QString out;
    out.reserve(name.size());
    char32_t c;
    while (p < end) {
        const int n = utf8Sequence(p, end, c);
        if (n == 0) {
            out.append(QLatin1Char('_'));
            ++p;
            continue;
        }
        appendChar(out, c);
        p += n;
    }
    return out;
}

// A file the walk listed: its folder's number and its name's place in the registry's name bytes.
struct Entry {
    int32_t folder;
    int32_t nameLength;
    int64_t nameAt;
    int32_t node = -1;   // a file of the scanned disc image: its node there
    bool hidden = false; // (for an image's file) its record says hidden
    int64_t size = 0;    // (for an image's file) its size
};

// The files of the scan in the walk's order; the index by stored path is made when first asked for, so
// the walk itself pays only for appending.
struct Registry {
    QList<QByteArray> folders{QByteArray()};
    QByteArray names;
    QList<QString> stored;
    QList<Entry> entries;
    bool indexed = true;
    QHash<QString, int32_t> first;                 // stored path to its first entry
    QHash<QString, QList<int32_t>> later;          // the second, third... entries of a shared path
    QHash<QByteArray, QString> links;              // real paths that are no UTF-8, to their links
    int linkCount = 0;
    std::shared_ptr<DiscImage> image;              // the disc image the walk listed, if it was one
    QHash<int32_t, QString> copies;                // an image's files copied out, by node

    void index()
    {
        if (indexed)
            return;
        first.clear();
        later.clear();
        first.reserve(stored.size());
        for (int32_t i = 0; i < int32_t(stored.size()); ++i) {
            const auto it = first.constFind(stored[i]);
            if (it == first.constEnd())
                first.insert(stored[i], i);
            else
                later[stored[i]].append(i);
        }
        indexed = true;
    }

    // The entry of a stored path's occurrence, or -1.
    int32_t find(const QString &path, int occurrence)
    {
        index();
        if (occurrence == 0) {
            const auto it = first.constFind(path);
            return it == first.constEnd() ? -1 : *it;
        }
        const auto it = later.constFind(path);
        if (it == later.constEnd() || occurrence < 1 || occurrence > it->size())
            return -1;
        return (*it)[occurrence - 1];
    }

    QByteArray native(int32_t entry) const
    {
        const Entry &e = entries[entry];
        return folders[e.folder] + names.sliced(e.nameAt, e.nameLength);
    }
    QByteArrayView name(int32_t entry) const
    {
        const Entry &e = entries[entry];
        return QByteArrayView(names).sliced(e.nameAt, e.nameLength);
    }
};

Registry &registry()
{
    static Registry r;
    return r;
}

// A path no walk registered: as it is when it exists, else one name at a time, taking the first entry
// whose name matches without regard to case.
QString resolveByName(const QString &stored)
{
    if (stored.isEmpty() || QFileInfo::exists(stored) || !stored.startsWith(QLatin1Char('/')))
        return stored;
    QString current = QStringLiteral("/");
    const QStringList parts = stored.split(QLatin1Char('/'), Qt::SkipEmptyParts);
    for (const QString &part : parts) {
        const QString exact = QDir(current).filePath(part);
        if (QFileInfo::exists(exact)) {
            current = exact;
            continue;
        }
        const QStringList entries =
            QDir(current).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
        auto match = std::find_if(entries.begin(), entries.end(),
                                  [&](const QString &e) { return e.compare(part, Qt::CaseInsensitive) == 0; });
        if (match == entries.end())
            return stored;
        current = QDir(current).filePath(*match);
    }
    return current;
}

// A link to a real path whose bytes no QString can hold, below the extract folder.
QString linkTo(const QByteArray &native)
{
    Registry &r = registry();
    const auto known = r.links.constFind(native);
    if (known != r.links.constEnd() && QFileInfo(*known).isSymLink())
        return *known;
    const qsizetype slash = native.lastIndexOf('/');
    QString folder;
    do // a folder of its own for each link: two such files may share a name
        folder = AppPath() + QStringLiteral("/extract/.names/") + QString::number(++r.linkCount);
    while (QFileInfo::exists(folder));
    const QString link = folder + QLatin1Char('/') + cleanName(QByteArrayView(native).sliced(slash + 1));
    if (!QDir().mkpath(folder) || ::symlink(native.constData(), QFile::encodeName(link).constData()) != 0)
        return QString::fromUtf8(native); // cannot be reached; opening it fails as for a missing file
    r.links.insert(native, link);
    return link;
}

// A file of the disc image copied out into the extract folder, once, for what opens files by their path
// (a player, a picture, the desktop's opener). "" when it cannot be read.
QString copyOut(int32_t e)
{
    Registry &r = registry();
    const Entry &entry = r.entries[e];
    const auto known = r.copies.constFind(entry.node);
    if (known != r.copies.constEnd() && QFileInfo::exists(*known))
        return *known;
    if (!r.image)
        return QString();
    QString folder;
    do
        folder = AppPath() + QStringLiteral("/extract/.image/") + QString::number(++r.linkCount);
    while (QFileInfo::exists(folder));
    const QString path = folder + QLatin1Char('/') + cleanName(r.name(e));
    QFile out(path);
    if (!QDir().mkpath(folder) || !out.open(QIODevice::WriteOnly))
        return QString();
    QByteArray buffer(1 << 20, Qt::Uninitialized);
    for (int64_t at = 0; at < entry.size;) {
        const int64_t n = r.image->Read(entry.node, at, buffer.data(), std::min<int64_t>(buffer.size(), entry.size - at));
        if (n <= 0 || out.write(buffer.constData(), n) != n) {
            out.remove();
            return QString();
        }
        at += n;
    }
    out.close();
    r.copies.insert(entry.node, path);
    return path;
}
} // namespace

QString StoredPath(const QString &storedFolder, QByteArrayView name)
{
    // Most names on a disc are plain ASCII: no decoding, no case tables, one piece of memory.
    const qsizetype n = name.size();
    QString out(storedFolder.size() + n, Qt::Uninitialized);
    QChar *d = std::copy(storedFolder.cbegin(), storedFolder.cend(), out.data());
    for (qsizetype i = 0; i < n; ++i) {
        const auto c = static_cast<unsigned char>(name[i]);
        if (c >= 0x80)
            return storedFolder + cleanName(name).toUpper();
        d[i] = c < 0x20 || c == 0x7F || c == '<' || c == '>' ? QLatin1Char('_')
               : c >= 'a' && c <= 'z'                       ? QChar(char16_t(c - ('a' - 'A')))
                                                            : QChar(char16_t(c));
    }
    return out;
}

QString StoredName(QByteArrayView name)
{
    return StoredPath(QString(), name);
}

QString ShownText(const QString &text)
{
    QString out;
    out.reserve(text.size());
    for (const char32_t c : text.toUcs4())
        appendChar(out, c);
    return out;
}

QString StoredText(const QString &text)
{
    return ShownText(text).toUpper();
}

int32_t RegisterScanFolder(const QByteArray &nativeFolder)
{
    Registry &r = registry();
    r.folders.append(nativeFolder);
    return int32_t(r.folders.size() - 1);
}

void RegisterScanFile(const QString &stored, int32_t folder, QByteArrayView nativeName)
{
    Registry &r = registry();
    r.entries.append({folder, int32_t(nativeName.size()), r.names.size()});
    r.names.append(nativeName);
    r.stored.append(stored);
    r.indexed = false;
}

qsizetype RegisteredFileCount()
{
    return registry().entries.size();
}

void ForgetRegisteredFiles(qsizetype from)
{
    Registry &r = registry();
    if (from >= r.entries.size())
        return;
    r.names.truncate(qsizetype(r.entries[from].nameAt));
    r.entries.resize(from);
    r.stored.resize(from);
    r.indexed = false;
}

void RegisterImageFile(const QString &stored, QByteArrayView name, int32_t node, int64_t size, bool hidden)
{
    Registry &r = registry();
    r.entries.append({-1, int32_t(name.size()), r.names.size(), node, hidden, size});
    r.names.append(name);
    r.stored.append(stored);
    r.indexed = false;
}

void SetScannedImage(std::shared_ptr<DiscImage> image)
{
    registry().image = std::move(image);
}

std::shared_ptr<DiscImage> ScannedImage()
{
    return registry().image;
}

QList<int64_t> ImageFileSizes()
{
    QList<int64_t> out;
    for (const Entry &e : std::as_const(registry().entries))
        if (e.node >= 0)
            out.append(e.size);
    return out;
}

int32_t ImageNodeOf(const QString &stored, int occurrence)
{
    Registry &r = registry();
    const int32_t e = r.find(stored, occurrence);
    return e >= 0 ? r.entries[e].node : -1;
}

void RegisterRealPath(const QString &stored, const QString &real)
{
    RegisterScanFile(stored, 0, QFile::encodeName(real));
}

void ClearRealPaths()
{
    std::shared_ptr<DiscImage> image = registry().image;
    registry() = Registry();
    registry().image = std::move(image);
}

int StoredPathCount(const QString &stored)
{
    Registry &r = registry();
    r.index();
    if (!r.first.contains(stored))
        return 0;
    const auto it = r.later.constFind(stored);
    return 1 + (it == r.later.constEnd() ? 0 : int(it->size()));
}

QByteArray NativePath(const QString &stored, int occurrence)
{
    Registry &r = registry();
    const int32_t e = r.find(stored, occurrence);
    if (e >= 0)
        return r.entries[e].node >= 0 ? QByteArray() : r.native(e);
    return QFile::encodeName(resolveByName(stored));
}

QString RealPath(const QString &stored, int occurrence)
{
    Registry &r = registry();
    const int32_t e = r.find(stored, occurrence);
    if (e >= 0 && r.entries[e].node >= 0)
        return copyOut(e);
    const QByteArray native = NativePath(stored, occurrence);
    return isUtf8(native) ? QString::fromUtf8(native) : linkTo(native);
}

StoredFileInfo InfoOf(const QString &stored, int occurrence)
{
    StoredFileInfo info;
    if (stored.isEmpty())
        return info;
    Registry &r = registry();
    const int32_t e = r.find(stored, occurrence);
    if (e >= 0 && r.entries[e].node >= 0) {
        // A file of the disc image: what its record says.
        info.exists = r.image != nullptr;
        info.size = r.entries[e].size;
        info.hidden = r.entries[e].hidden || r.name(e).startsWith('.');
        return info;
    }
    struct stat st;
    // A listed file is a regular file of the disc; what stands there now is never followed elsewhere.
    const QByteArray native = e >= 0 ? r.native(e) : QFile::encodeName(resolveByName(stored));
    if ((e >= 0 ? ::lstat(native.constData(), &st) : ::stat(native.constData(), &st)) != 0) {
        info.error = errno;
        return info;
    }
    if (e >= 0 && !S_ISREG(st.st_mode))
        return info;
    info.exists = true;
    info.isDir = S_ISDIR(st.st_mode);
    info.size = int64_t(st.st_size);
    const QByteArrayView name = e >= 0 ? r.name(e) : QByteArrayView(native).sliced(native.lastIndexOf('/') + 1);
    info.hidden = name.startsWith('.');
    return info;
}

int64_t ReadStoredFile(const QString &stored, int occurrence, int64_t offset, char *out, int64_t n)
{
    Registry &r = registry();
    const int32_t e = r.find(stored, occurrence);
    if (e >= 0 && r.entries[e].node >= 0)
        return r.image ? r.image->Read(r.entries[e].node, offset, out, n) : -1;
    const QByteArray native = e >= 0 ? r.native(e) : QFile::encodeName(resolveByName(stored));
    // O_NONBLOCK: a pipe put in a file's place since the walk is never waited for.
    const int fd = ::open(native.constData(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
    if (fd < 0)
        return -1;
    int64_t done = 0;
    while (done < n) {
        const ssize_t got = ::pread(fd, out + done, size_t(n - done), offset + done);
        if (got <= 0)
            break;
        done += got;
    }
    ::close(fd);
    return done;
}

QList<ListedFile> FilesInWalkOrder()
{
    Registry &r = registry();
    QList<ListedFile> out;
    out.reserve(r.stored.size());
    QHash<QString, int> seen;
    r.index();
    for (const QString &stored : std::as_const(r.stored))
        out.append({stored, r.later.contains(stored) ? seen[stored]++ : 0});
    return out;
}

QList<qsizetype> FilesWhoseHeadPasses(int headBytes, const std::function<bool(QByteArrayView head)> &test, int threads,
                                      const std::atomic<bool> *stop)
{
    Registry &r = registry();
    r.index();
    const qsizetype count = r.entries.size();
    const auto work = [&](qsizetype from, qsizetype to, QList<qsizetype> &out) {
        QByteArray head(headBytes, Qt::Uninitialized);
        int dir = -1, dirFolder = -1;
        for (qsizetype i = from; i < to && !(stop && *stop); ++i) {
            const Entry &e = r.entries[i];
            int64_t n = -1;
            if (e.node >= 0) {
                n = r.image ? r.image->Read(e.node, 0, head.data(), headBytes) : -1;
            } else {
                // The files of one folder follow each other in the walk: its handle serves them all.
                if (e.folder != dirFolder) {
                    if (dir >= 0)
                        ::close(dir);
                    dirFolder = e.folder;
                    dir = e.folder > 0 ? ::open(r.folders[e.folder].constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)
                                       : AT_FDCWD;
                }
                const QByteArray name = e.folder > 0 ? QByteArray(r.names.constData() + e.nameAt, e.nameLength)
                                                     : r.native(int32_t(i));
                const int fd = dir == -1 ? -1 : ::openat(dir, name.constData(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
                if (fd >= 0) {
                    n = ::pread(fd, head.data(), size_t(headBytes), 0);
                    ::close(fd);
                }
            }
            if (n > 0 && test(QByteArrayView(head.constData(), n)))
                out.append(i);
        }
        if (dir >= 0)
            ::close(dir);
    };
    // Opening a few hundred thousand files is the cost here: one share of them a thread.
    threads = std::max(1, threads);
    QList<QList<qsizetype>> found(threads);
    std::vector<std::thread> others;
    for (int t = 1; t < threads; ++t)
        others.emplace_back(work, count * t / threads, count * (t + 1) / threads, std::ref(found[t]));
    work(0, count / threads, found[0]);
    for (std::thread &t : others)
        t.join();
    QList<qsizetype> out;
    for (const QList<qsizetype> &part : std::as_const(found))
        out += part;
    return out;
}

int Occurrences::operator()(const QString &stored)
{
    Registry &r = registry();
    r.index();
    if (r.later.isEmpty() || !r.later.contains(stored))
        return 0;
    return m_seen[stored]++;
}
