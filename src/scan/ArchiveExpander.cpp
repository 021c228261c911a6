#include "scan/ArchiveExpander.h"

#include "platform/StoredPaths.h"

#include <QDir>
#include <QFile>
#include <QStringDecoder>

#include <archive.h>
#include <archive_entry.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <clocale>
#include <cstring>
#include <langinfo.h>
#include <memory>
#include <mutex>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace {
constexpr int64_t KiB = 1024;
constexpr int64_t MiB = 1024 * KiB;
constexpr int64_t GiB = 1024 * MiB;
constexpr size_t kReadBlock = 64 * KiB;
constexpr size_t kWriteBlock = 256 * KiB;
// How often an expansion lets the screen breathe: a click on Cancel must not wait long.
constexpr auto kPumpInterval = std::chrono::milliseconds(40);

// The DOS code page 437, bytes 0x80 to 0xFF.
constexpr char16_t kCp437High[128] = {
    0x00C7, 0x00FC, 0x00E9, 0x00E2, 0x00E4, 0x00E0, 0x00E5, 0x00E7, 0x00EA, 0x00EB, 0x00E8, 0x00EF, 0x00EE,
    0x00EC, 0x00C4, 0x00C5, 0x00C9, 0x00E6, 0x00C6, 0x00F4, 0x00F6, 0x00F2, 0x00FB, 0x00F9, 0x00FF, 0x00D6,
    0x00DC, 0x00A2, 0x00A3, 0x00A5, 0x20A7, 0x0192, 0x00E1, 0x00ED, 0x00F3, 0x00FA, 0x00F1, 0x00D1, 0x00AA,
    0x00BA, 0x00BF, 0x2310, 0x00AC, 0x00BD, 0x00BC, 0x00A1, 0x00AB, 0x00BB, 0x2591, 0x2592, 0x2593, 0x2502,
    0x2524, 0x2561, 0x2562, 0x2556, 0x2555, 0x2563, 0x2551, 0x2557, 0x255D, 0x255C, 0x255B, 0x2510, 0x2514,
    0x2534, 0x252C, 0x251C, 0x2500, 0x253C, 0x255E, 0x255F, 0x255A, 0x2554, 0x2569, 0x2566, 0x2560, 0x2550,
    0x256C, 0x2567, 0x2568, 0x2564, 0x2565, 0x2559, 0x2558, 0x2552, 0x2553, 0x256B, 0x256A, 0x2518, 0x250C,
    0x2588, 0x2584, 0x258C, 0x2590, 0x2580, 0x03B1, 0x00DF, 0x0393, 0x03C0, 0x03A3, 0x03C3, 0x00B5, 0x03C4,
    0x03A6, 0x0398, 0x03A9, 0x03B4, 0x221E, 0x03C6, 0x03B5, 0x2229, 0x2261, 0x00B1, 0x2265, 0x2264, 0x2320,
    0x2321, 0x00F7, 0x2248, 0x00B0, 0x2219, 0x00B7, 0x221A, 0x207F, 0x00B2, 0x25A0, 0x00A0};

struct ArchiveCloser {
    void operator()(archive *a) const { archive_read_free(a); }
};
using ArchivePtr = std::unique_ptr<archive, ArchiveCloser>;

class Fd final
{
public:
    explicit Fd(int fd = -1) : m_fd(fd) {}
    ~Fd() { reset(); }
    Fd(Fd &&o) noexcept : m_fd(o.release()) {}
    Fd &operator=(Fd &&o) noexcept
    {
        if (this != &o) {
            reset();
            m_fd = o.release();
        }
        return *this;
    }
    int get() const { return m_fd; }
    int release()
    {
        const int fd = m_fd;
        m_fd = -1;
        return fd;
    }
    void reset()
    {
        if (m_fd >= 0)
            ::close(m_fd);
        m_fd = -1;
    }

private:
    int m_fd;
};

// The readers of the formats a disc's archives come in: ZIP, also behind a self-extractor's program
// stub (the seeking reader finds its directory from the end), and the self-extractors of 7-Zip, RAR
// (both generations) and Microsoft's cabinet maker. Nothing else: a .ZIP or .EXE in any other format
// is no archive to this system.
ArchivePtr newReader()
{
    ArchivePtr a(archive_read_new());
    archive_read_support_format_zip_seekable(a.get());
    archive_read_support_format_zip_streamable(a.get());
    archive_read_support_format_7zip(a.get());
    archive_read_support_format_rar(a.get());
    archive_read_support_format_rar5(a.get());
    archive_read_support_format_cab(a.get());
    return a;
}

long openError(int err)
{
    switch (err) {
    case ENOENT:
    case ENOTDIR:
        return VbErr::FileNotFound;
    case EACCES:
    case EPERM:
        return VbErr::PermissionDenied;
    default:
        return VbErr::DeviceIOError;
    }
}

// Opens the archive file itself; a file that cannot be opened raises the runtime's file error. A pipe
// or a device under an archive's name is no archive: it is never read (a pipe would wait forever).
// (O_NONBLOCK changes nothing for a regular file's reads.)
Fd openArchiveFile(const QByteArray &path, bool &regular, int64_t &size)
{
    // Never through a link: what was listed as a file of the disc is the only thing read.
    Fd fd(::open(path.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW));
    if (fd.get() < 0)
        RaiseVbError(openError(errno));
    struct stat st;
    regular = ::fstat(fd.get(), &st) == 0 && S_ISREG(st.st_mode);
    size = regular ? static_cast<int64_t>(st.st_size) : 0;
    return fd;
}

// Makes a folder and the folders above it that are missing, as the file system names them.
bool makeFolders(const QByteArray &path)
{
    for (qsizetype at = 1; at <= path.size(); ++at) {
        if (at < path.size() && path[at] != '/')
            continue;
        const QByteArray part = path.left(at);
        if (::mkdir(part.constData(), 0755) != 0 && errno != EEXIST)
            return false;
    }
    struct stat st;
    return ::stat(path.constData(), &st) == 0 && S_ISDIR(st.st_mode);
}

// Whether any of the readers could take the file, judged from its first bytes and its tail without
// building them (a reader with every format costs more than the walk of a small file): a
// self-extractor starts with a program header, every other archive with its own mark, and a ZIP behind
// anything else ends with its directory's end record within the last 64 KB.
bool mayBeArchive(const ArchiveExpander::Source &source)
{
    constexpr int64_t tailBytes = 65536 + 22 + 20; // the longest comment, the record, the ZIP64 locator
    const int64_t size = source.size;
    if (size < 2)
        return false;
    // A small file is read once, head and tail together.
    QByteArray bytes(static_cast<qsizetype>(std::min<int64_t>(size, tailBytes)), Qt::Uninitialized);
    const int64_t from = size <= tailBytes ? 0 : size - tailBytes;
    char head[8] = {};
    const int64_t n = from == 0 ? std::min<int64_t>(8, size) : source.read(0, head, sizeof head);
    if (source.read(from, bytes.data(), bytes.size()) != bytes.size() || n < 2)
        return true; // let the readers judge
    const QByteArrayView h = from == 0 ? QByteArrayView(bytes).first(n) : QByteArrayView(head, n);
    for (const char *mark : {"MZ", "\x7F" "ELF", "PK", "7z\xBC\xAF\x27\x1C", "Rar!", "MSCF"}) {
        if (h.startsWith(QByteArrayView(mark)))
            return true;
    }
    const QByteArray &tail = bytes;
    return tail.contains(QByteArrayView("PK\x05\x06", 4)) || tail.contains(QByteArrayView("PK\x06\x07", 4));
}

// libarchive reads an archive through these, wherever its bytes lie.
struct Reading {
    const ArchiveExpander::Source *source;
    int64_t position = 0;
    std::vector<char> block = std::vector<char>(kReadBlock);
};

la_ssize_t readCallback(archive *a, void *data, const void **buffer)
{
    auto *r = static_cast<Reading *>(data);
    const int64_t n = r->source->read(r->position, r->block.data(),
                                      std::min<int64_t>(int64_t(r->block.size()), r->source->size - r->position));
    if (n < 0) {
        archive_set_error(a, EIO, "the archive's bytes cannot be read");
        return -1;
    }
    r->position += n;
    *buffer = r->block.data();
    return n;
}

la_int64_t seekCallback(archive *, void *data, la_int64_t offset, int whence)
{
    auto *r = static_cast<Reading *>(data);
    const int64_t base = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? r->position : r->source->size;
    r->position = std::clamp<int64_t>(base + offset, 0, r->source->size);
    return r->position;
}

la_int64_t skipCallback(archive *, void *data, la_int64_t request)
{
    auto *r = static_cast<Reading *>(data);
    const int64_t skipped = std::clamp<int64_t>(request, 0, r->source->size - r->position);
    r->position += skipped;
    return skipped;
}

int openReading(archive *a, Reading &reading)
{
    archive_read_set_read_callback(a, readCallback);
    archive_read_set_seek_callback(a, seekCallback);
    archive_read_set_skip_callback(a, skipCallback);
    archive_read_set_callback_data(a, &reading);
    return archive_read_open1(a);
}

// The bytes of a regular file, through its handle.
ArchiveExpander::Source fileSource(const Fd &fd, int64_t size)
{
    const int handle = fd.get();
    return {size, [handle](int64_t offset, char *out, int64_t n) -> int64_t {
                int64_t done = 0;
                while (done < n) {
                    const ssize_t got = ::pread(handle, out + done, size_t(n - done), offset + done);
                    if (got < 0 && errno == EINTR)
                        continue;
                    if (got <= 0)
                        return got < 0 ? -1 : done;
                    done += got;
                }
                return done;
            }};
}

bool unrecognised(archive *a)
{
    const char *msg = archive_error_string(a);
    return msg && std::strstr(msg, "Unrecognized archive format");
}

QString libarchiveMessage(archive *a)
{
    const char *msg = archive_error_string(a);
    return msg ? QString::fromLocal8Bit(msg).simplified() : QStringLiteral("unreadable");
}

QString sizeText(int64_t bytes)
{
    if (bytes % GiB == 0)
        return QString::number(bytes / GiB) + QStringLiteral(" GB");
    return QString::number(bytes / MiB) + QStringLiteral(" MB");
}

// A count with its thousands marked, as the README states the bounds.
QString countText(int64_t n)
{
    QString digits = QString::number(n);
    for (qsizetype at = digits.size() - 3; at > 0; at -= 3)
        digits.insert(at, QLatin1Char(','));
    return digits;
}

bool isUtf8Codeset()
{
    const char *cs = nl_langinfo(CODESET);
    return cs && (std::strcmp(cs, "UTF-8") == 0 || std::strcmp(cs, "utf8") == 0);
}
} // namespace

// One expansion of one archive: the reader, the target folder's handle and the running counts.
struct ArchiveExpander::Run {
    ArchiveExpander &owner;
    archive *a;
    int targetFd;
    int64_t archiveSize;
    QByteArray targetNative;
    int64_t archiveWritten = 0;
    int lastPercent = -1;
    std::chrono::steady_clock::time_point lastPump = std::chrono::steady_clock::now();
    bool stopped = false; // by a bound or an abort
    bool broken = false;  // the reader cannot go on past a damaged member
    std::vector<char> buffer = std::vector<char>(kWriteBlock);

    int64_t members = 0;

    // A member's name is shown with the characters no line may carry as "_".
    void warn(const QString &member, const QString &why) { owner.warn(ShownText(member) + QStringLiteral(": ") + why); }

    void stop(const QString &member, const QString &why)
    {
        owner.warn(QStringLiteral("Expansion stopped at ") + ShownText(member) + QStringLiteral(": ") + why);
        stopped = true;
    }

    // One more member read: false (and the archive stopped) when that passes a count bound.
    bool countAllows(const QString &member)
    {
        const Limits &l = owner.m_limits;
        ++members;
        ++owner.m_scanMembers;
        if (members > l.archiveMembers) {
            stop(member, QStringLiteral("the archive holds more than ") + countText(l.archiveMembers) +
                             QStringLiteral(" members"));
            return false;
        }
        if (owner.m_scanMembers > l.scanMembers) {
            stop(member, QStringLiteral("the disc's archives hold more than ") + countText(l.scanMembers) +
                             QStringLiteral(" members"));
            return false;
        }
        return true;
    }

    void report(bool force)
    {
        if (owner.m_observer.progress && archiveSize > 0) {
            const int64_t read = archive_filter_bytes(a, -1);
            const int percent = static_cast<int>(std::clamp<int64_t>(read * 100 / archiveSize, 0, 100));
            if (percent != lastPercent) {
                lastPercent = percent;
                owner.m_observer.progress(percent);
            }
        }
        const auto now = std::chrono::steady_clock::now();
        if (owner.m_observer.pumpEvents && (force || now - lastPump >= kPumpInterval)) {
            lastPump = now;
            owner.m_observer.pumpEvents();
        }
    }

    // The member's path below the target folder, as its folder names; empty with a reason when the
    // member must not be written. Backslashes separate folders as they do in DOS-made archives, a
    // leading "/" or drive is dropped, and a ".." anywhere refuses the member.
    QStringList parts(const QString &name, QString &why) const
    {
        QString p = name;
        p.replace(QLatin1Char('\\'), QLatin1Char('/'));
        QStringList out;
        const QStringList raw = p.split(QLatin1Char('/'), Qt::SkipEmptyParts);
        for (int i = 0; i < raw.size(); ++i) {
            const QString &c = raw[i];
            if (c == QLatin1String("."))
                continue;
            if (c == QLatin1String("..")) {
                why = QStringLiteral("leads outside the archive's folder");
                return {};
            }
            if (i == 0 && out.isEmpty() && c.size() == 2 && c[1] == QLatin1Char(':') && c[0].isLetter())
                continue;
            out.append(c);
        }
        if (out.isEmpty())
            why = QStringLiteral("has no name");
        return out;
    }

    QString errnoReason(int err) const
    {
        switch (err) {
        case ENAMETOOLONG:
            return QStringLiteral("name too long for this file system");
        case EILSEQ:
        case EINVAL:
            return QStringLiteral("name cannot be created on this file system");
        case ELOOP:
        case ENOTDIR:
        case EISDIR:
        case EEXIST:
            return QStringLiteral("clashes with another member of another kind");
        case ENOSPC:
            return QStringLiteral("no space left on the extract folder's disk");
        default:
            return QString::fromLocal8Bit(std::strerror(err));
        }
    }

    // Opens (creating as needed) the folders of a member below the target, never through a link.
    Fd openFolders(const QStringList &folders, int count, QString &why) const
    {
        Fd dir(::dup(targetFd));
        for (int i = 0; i < count; ++i) {
            const QByteArray c = QFile::encodeName(folders[i]);
            int fd = ::openat(dir.get(), c.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
            if (fd < 0 && errno == ENOENT) {
                if (::mkdirat(dir.get(), c.constData(), 0755) != 0 && errno != EEXIST) {
                    why = errnoReason(errno);
                    return Fd();
                }
                fd = ::openat(dir.get(), c.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
            }
            if (fd < 0) {
                why = errnoReason(errno);
                return Fd();
            }
            dir = Fd(fd);
        }
        return dir;
    }

    bool boundsAllow(const QString &member, int64_t more, int64_t memberWritten, int64_t memberRead)
    {
        const Limits &l = owner.m_limits;
        if (archiveWritten + more > l.archiveBytes) {
            stop(member, QStringLiteral("the archive would unpack to more than ") + sizeText(l.archiveBytes));
            return false;
        }
        if (owner.m_scanTotal + more > l.scanBytes) {
            stop(member, QStringLiteral("the disc's archives would unpack to more than ") + sizeText(l.scanBytes));
            return false;
        }
        const int64_t after = memberWritten + more;
        if (after > l.ratioFloorBytes && after > l.maxRatio * std::max<int64_t>(memberRead, 1)) {
            stop(member, QStringLiteral("it unpacks to more than ") + QString::number(l.maxRatio) +
                             QStringLiteral(" times its packed size"));
            return false;
        }
        return true;
    }

    bool spaceLeft(const QString &member)
    {
        struct statvfs vfs;
        if (::fstatvfs(targetFd, &vfs) != 0)
            return true;
        const int64_t free = static_cast<int64_t>(vfs.f_bavail) * static_cast<int64_t>(vfs.f_frsize);
        if (free - static_cast<int64_t>(kWriteBlock) < owner.m_limits.freeSpaceReserve) {
            stop(member, QStringLiteral("less than ") + sizeText(owner.m_limits.freeSpaceReserve) +
                             QStringLiteral(" would stay free on the extract folder's disk"));
            return false;
        }
        return true;
    }

    // Writes one regular member. Its file holds exactly what was unpacked; a file left unfinished is
    // removed.
    void writeFile(const QString &member, const QStringList &path)
    {
        QString why;
        Fd dir = openFolders(path, static_cast<int>(path.size()) - 1, why);
        if (dir.get() < 0) {
            warn(member, why);
            return;
        }
        const QByteArray leaf = QFile::encodeName(path.last());
        Fd out(::openat(dir.get(), leaf.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, 0644));
        if (out.get() < 0) {
            warn(member, errnoReason(errno));
            return;
        }
        int64_t written = 0;
        // An unfinished file goes, and its bytes no longer count against the bounds.
        auto discard = [&] {
            out.reset();
            ::unlinkat(dir.get(), leaf.constData(), 0);
            archiveWritten -= written;
            owner.m_scanTotal -= written;
        };
        const int64_t readAtStart = archive_filter_bytes(a, -1);
        int64_t sinceSpaceCheck = 0;
        if (!spaceLeft(member)) {
            discard();
            return;
        }
        for (;;) {
            const la_ssize_t n = archive_read_data(a, buffer.data(), buffer.size());
            if (n == 0)
                break;
            if (n < 0) {
                discard();
                broken = n == ARCHIVE_FATAL;
                warn(member, QStringLiteral("damaged (") + libarchiveMessage(a) +
                                 (broken ? QStringLiteral("); the rest of the archive cannot be read") : QStringLiteral(")")));
                return;
            }
            if (owner.m_abort) {
                discard();
                stopped = true;
                return;
            }
            if (!boundsAllow(member, n, written, archive_filter_bytes(a, -1) - readAtStart)) {
                discard();
                return;
            }
            sinceSpaceCheck += n;
            if (sinceSpaceCheck >= 64 * MiB) {
                sinceSpaceCheck = 0;
                if (!spaceLeft(member)) {
                    discard();
                    return;
                }
            }
            const char *p = buffer.data();
            la_ssize_t left = n;
            while (left > 0) {
                const ssize_t w = ::write(out.get(), p, static_cast<size_t>(left));
                if (w < 0) {
                    if (errno == EINTR)
                        continue;
                    const int err = errno;
                    discard();
                    warn(member, errnoReason(err));
                    return;
                }
                p += w;
                left -= w;
            }
            written += n;
            archiveWritten += n;
            owner.m_scanTotal += n;
            report(false);
        }
    }

    void entry(archive_entry *e)
    {
        QString member;
        if (const char *raw = archive_entry_pathname(e))
            member = DecodeMemberName(raw);
        else if (const char *utf8 = archive_entry_pathname_utf8(e))
            member = QString::fromUtf8(utf8);
        else if (const wchar_t *wide = archive_entry_pathname_w(e))
            member = QString::fromWCharArray(wide);
        if (!countAllows(member))
            return;
        if (archive_entry_is_encrypted(e)) {
            warn(member, QStringLiteral("encrypted"));
            return;
        }
        const mode_t type = archive_entry_filetype(e);
        if (archive_entry_hardlink(e) || archive_entry_symlink(e) || type == AE_IFLNK) {
            warn(member, QStringLiteral("a link, not a file"));
            return;
        }
        if (type != AE_IFREG && type != AE_IFDIR && type != 0) {
            warn(member, QStringLiteral("not a file or a folder"));
            return;
        }
        QString why;
        const QStringList path = parts(member, why);
        if (path.isEmpty()) {
            warn(member, why);
            return;
        }
        const QByteArray full = targetNative + '/' + QFile::encodeName(path.join(QLatin1Char('/')));
        if (full.size() >= PATH_MAX) {
            warn(member, QStringLiteral("path too long for this file system"));
            return;
        }
        if (type == AE_IFDIR) {
            if (openFolders(path, static_cast<int>(path.size()), why).get() < 0)
                warn(member, why);
            return;
        }
        writeFile(member, path);
    }
};

ArchiveExpander::Limits ArchiveExpander::DefaultLimits()
{
    // A disc holds at most a few tens of GB; a single archive on it that unpacks beyond 4 GB, or a
    // member that keeps growing past 16 MB at more than 200 to 1 (deflate peaks near 1000 to 1 only on
    // runs of one byte), is no software distribution but a bomb.
    // A software master's archives hold thousands of files, rarely tens of thousands; millions of (empty)
    // members would take the extract folder's file system's inodes and the operator's afternoon.
    return Limits{4 * GiB, 16 * GiB, 16 * MiB, 200, 1 * GiB, 200'000, 1'000'000};
}

ArchiveExpander::ArchiveExpander() : ArchiveExpander(DefaultLimits()) {}

ArchiveExpander::ArchiveExpander(Limits limits) : m_limits(limits)
{
    PrepareLocale();
}

void ArchiveExpander::PrepareLocale()
{
    static std::once_flag once;
    std::call_once(once, [] {
        if (isUtf8Codeset())
            return;
        for (const char *name : {"C.UTF-8", "C.utf8", "en_US.UTF-8"}) {
            if (std::setlocale(LC_CTYPE, name) && isUtf8Codeset())
                return;
        }
    });
}

QString ArchiveExpander::DecodeMemberName(const char *raw)
{
    if (!raw)
        return QString();
    const QByteArray bytes(raw);
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = utf8.decode(bytes);
    if (!utf8.hasError())
        return text;
    text.clear();
    text.reserve(bytes.size());
    for (const char c : bytes) {
        const auto b = static_cast<unsigned char>(c);
        text.append(b < 0x80 ? QChar(b) : QChar(kCp437High[b - 0x80]));
    }
    return text;
}

void ArchiveExpander::warn(const QString &line)
{
    if (m_warnings.size() < MaxWarnings)
        m_warnings.append(line);
    else
        ++m_warningsLeftOut;
}

long ArchiveExpander::ReadContents(const QString &archivePath)
{
    return ReadContents(QFile::encodeName(archivePath));
}

long ArchiveExpander::ReadContents(const QByteArray &archivePath)
{
    bool regular = false;
    int64_t size = 0;
    Fd fd = openArchiveFile(archivePath, regular, size);
    if (!regular)
        return 1;
    return ReadContents(fileSource(fd, size));
}

long ArchiveExpander::ReadContents(const Source &source)
{
    if (!mayBeArchive(source))
        return 1;
    ArchivePtr a = newReader();
    Reading reading{&source};
    if (openReading(a.get(), reading) != ARCHIVE_OK) {
        if (unrecognised(a.get()))
            return 1;
        throw VbError(ErrDamagedArchive, libarchiveMessage(a.get()));
    }
    archive_entry *e = nullptr;
    int retries = 0;
    for (long count = 0;; ++count) {
        const int r = archive_read_next_header(a.get(), &e);
        if (r == ARCHIVE_EOF)
            return 0;
        if (r == ARCHIVE_RETRY && ++retries < 16)
            continue;
        if (r < ARCHIVE_WARN)
            throw VbError(ErrDamagedArchive, libarchiveMessage(a.get()));
        if (m_observer.pumpEvents && count % 256 == 255)
            m_observer.pumpEvents();
        // Readable as far as the expansion will go: it stops there with its own warning.
        if (m_abort || count >= m_limits.archiveMembers)
            return 0;
    }
}

bool ArchiveExpander::Expand(const QString &archivePath, const QString &targetFolder)
{
    return Expand(QFile::encodeName(archivePath), QFile::encodeName(targetFolder));
}

bool ArchiveExpander::Expand(const QByteArray &archivePath, const QByteArray &targetFolder)
{
    // What a path that is no archive to open leaves behind is its own warning, never the last archive's.
    m_warnings.clear();
    m_warningsLeftOut = 0;
    Fd fd;
    bool regular = false;
    int64_t size = 0;
    try {
        fd = openArchiveFile(archivePath, regular, size);
    } catch (const VbError &e) {
        warn(QStringLiteral("the archive cannot be opened (") + e.description + QLatin1Char(')'));
        return true;
    }
    if (!regular)
        return true;
    return Expand(fileSource(fd, size), targetFolder);
}

bool ArchiveExpander::Expand(const Source &source, const QByteArray &targetFolder)
{
    m_warnings.clear();
    m_warningsLeftOut = 0;
    const QString shownTarget = ShownText(QFile::decodeName(targetFolder));
    if (!makeFolders(targetFolder)) {
        warn(shownTarget + QStringLiteral(": the folder cannot be made"));
        return true;
    }
    char canonical[PATH_MAX];
    if (!::realpath(targetFolder.constData(), canonical)) {
        warn(shownTarget + QStringLiteral(": the folder cannot be opened"));
        return true;
    }
    const QByteArray targetNative(canonical);
    Fd target(::open(targetNative.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (target.get() < 0) {
        warn(shownTarget + QStringLiteral(": the folder cannot be opened"));
        return true;
    }
    ArchivePtr a = newReader();
    Reading reading{&source};
    if (openReading(a.get(), reading) != ARCHIVE_OK) {
        warn(QStringLiteral("the archive cannot be read (") + libarchiveMessage(a.get()) + QLatin1Char(')'));
        return true;
    }
    Run run{*this, a.get(), target.get(), source.size, targetNative};
    archive_entry *e = nullptr;
    int retries = 0;
    while (!run.stopped && !run.broken && !m_abort) {
        const int r = archive_read_next_header(a.get(), &e);
        if (r == ARCHIVE_EOF)
            break;
        if (r == ARCHIVE_RETRY && ++retries < 16)
            continue;
        if (r < ARCHIVE_WARN) {
            warn(QStringLiteral("the rest of the archive is damaged (") + libarchiveMessage(a.get()) +
                 QLatin1Char(')'));
            break;
        }
        run.entry(e);
        // Between members a click on Cancel always gets through, however quickly they come.
        run.report(true);
    }
    if (m_observer.progress && !run.stopped && !m_abort)
        m_observer.progress(100);
    return !run.stopped && !m_abort;
}
