#include "platform/DiscImage.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {
constexpr int64_t RawSectorSize = 2352;
constexpr int64_t MaxCueSheet = 64 * 1024;
const char RawSync[12] = {0, '\xff', '\xff', '\xff', '\xff', '\xff', '\xff', '\xff', '\xff', '\xff', '\xff', 0};

class File final
{
public:
    explicit File(const QString &path)
        : m_fd(::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK))
    {
        struct stat st;
        if (m_fd >= 0 && (::fstat(m_fd, &st) != 0 || !S_ISREG(st.st_mode))) {
            ::close(m_fd);
            m_fd = -1;
        }
        if (m_fd >= 0)
            m_size = st.st_size;
    }
    ~File()
    {
        if (m_fd >= 0)
            ::close(m_fd);
    }
    File(const File &) = delete;
    File &operator=(const File &) = delete;
    bool ok() const { return m_fd >= 0; }
    int64_t size() const { return m_size; }
    bool read(int64_t at, char *out, int64_t n) const
    {
        if (at < 0 || n < 0 || at > m_size || n > m_size - at)
            return false;
        while (n > 0) {
            const ssize_t got = ::pread(m_fd, out, size_t(n), at);
            if (got <= 0)
                return false;
            out += got;
            at += got;
            n -= got;
        }
        return true;
    }

private:
    int m_fd;
    int64_t m_size = 0;
};

// A plain image: sector k at byte k * 2048.
class PlainSource final : public SectorSource
{
public:
    explicit PlainSource(std::unique_ptr<File> file) : m_file(std::move(file)) {}
    int64_t Sectors() const override { return m_file->size() / SectorSize; }
    bool Read(int64_t sector, int64_t at, char *out, int64_t n) override
    {
        if (sector < 0 || sector >= Sectors() || at < 0)
            return false;
        const int64_t from = sector * SectorSize + at;
        return n <= Sectors() * SectorSize - from && m_file->read(from, out, n);
    }

private:
    std::unique_ptr<File> m_file;
};

// A raw CD image, possibly in several files (one a track): each file holds sectors of 2352 bytes (or
// 2048 for a cooked track), whose user data stands behind the sync and header (mode 1) and the
// subheader (mode 2 form 1).
class RawSource final : public SectorSource
{
public:
    struct Segment {
        std::shared_ptr<File> file;
        int64_t firstSector; // on the disc
        int64_t sectors;
        int64_t sectorBytes; // 2352 or 2048
    };
    explicit RawSource(QList<Segment> segments) : m_segments(std::move(segments)) {}
    int64_t Sectors() const override
    {
        return m_segments.isEmpty() ? 0 : m_segments.last().firstSector + m_segments.last().sectors;
    }
    bool Read(int64_t sector, int64_t at, char *out, int64_t n) override
    {
        if (at < 0 || n < 0)
            return false;
        sector += at / SectorSize;
        at %= SectorSize;
        char raw[RawSectorSize];
        while (n > 0) {
            const Segment *s = segmentOf(sector);
            if (!s)
                return false;
            const int64_t offset = (sector - s->firstSector) * s->sectorBytes;
            int64_t data = 0;
            if (s->sectorBytes == RawSectorSize) {
                if (!s->file->read(offset, raw, RawSectorSize) || std::memcmp(raw, RawSync, sizeof RawSync) != 0)
                    return false;
                const auto mode = static_cast<unsigned char>(raw[15]);
                if (mode == 1)
                    data = 16;
                else if (mode == 2 && !(static_cast<unsigned char>(raw[18]) & 0x20))
                    data = 24; // form 1; form 2 holds no file system data
                else
                    return false;
            } else if (!s->file->read(offset, raw, SectorSize)) {
                return false;
            }
            const int64_t take = std::min(n, SectorSize - at);
            std::memcpy(out, raw + data + at, size_t(take));
            out += take;
            n -= take;
            at = 0;
            ++sector;
        }
        return true;
    }

private:
    const Segment *segmentOf(int64_t sector) const
    {
        for (const Segment &s : m_segments)
            if (sector >= s.firstSector && sector < s.firstSector + s.sectors)
                return &s;
        return nullptr;
    }
    QList<Segment> m_segments;
};

bool looksLikeCueSheet(const QByteArray &head)
{
    static const QRegularExpression file(QStringLiteral("^\\s*FILE\\s"), QRegularExpression::CaseInsensitiveOption |
                                                                              QRegularExpression::MultilineOption);
    static const QRegularExpression track(QStringLiteral("^\\s*TRACK\\s+\\d+\\s"),
                                          QRegularExpression::CaseInsensitiveOption |
                                              QRegularExpression::MultilineOption);
    const QString text = QString::fromLatin1(head);
    return !head.contains('\0') && file.match(text).hasMatch() && track.match(text).hasMatch();
}

// A cue sheet's files and tracks as the disc's sectors; the last session's first data track tells
// where its volume descriptors are.
std::unique_ptr<SectorSource> cueSource(const QString &cue, const QByteArray &text, QString &why)
{
    QList<RawSource::Segment> segments;
    std::shared_ptr<File> current;
    int64_t fileStart = 0, sectorBytes = 0;
    int session = 1, dataSession = 0;
    int64_t sessionStart = -1;
    bool trackIsData = false, firstOfSession = true;
    const auto closeFile = [&] {
        if (current && sectorBytes > 0) {
            segments.append({current, fileStart, current->size() / sectorBytes, sectorBytes});
            fileStart += current->size() / sectorBytes;
        }
        current.reset();
        sectorBytes = 0;
    };
    for (const QByteArray &rawLine : text.split('\n')) {
        const QString line = QString::fromUtf8(rawLine).trimmed();
        const QStringList words = line.split(QRegularExpression(QStringLiteral("\\s+")), Qt::SkipEmptyParts);
        if (words.isEmpty())
            continue;
        const QString key = words[0].toUpper();
        if (key == QLatin1String("FILE")) {
            closeFile();
            QString name = line.mid(4).trimmed();
            if (name.startsWith(QLatin1Char('"')))
                name = name.mid(1, name.indexOf(QLatin1Char('"'), 1) - 1);
            else
                name = name.section(QLatin1Char(' '), 0, 0);
            // The track files lie beside the sheet; a name never leads elsewhere.
            name = QFileInfo(name.replace(QLatin1Char('\\'), QLatin1Char('/'))).fileName();
            current = std::make_shared<File>(QFileInfo(cue).dir().filePath(name));
            if (!current->ok()) {
                why = QStringLiteral("the cue sheet names %1, which is not beside it").arg(name);
                return nullptr;
            }
        } else if (key == QLatin1String("TRACK") && words.size() >= 3) {
            const QString mode = words[2].toUpper();
            trackIsData = mode.startsWith(QLatin1String("MODE"));
            const int64_t bytes = mode.endsWith(QLatin1String("/2048")) ? SectorSource::SectorSize : RawSectorSize;
            if (sectorBytes == 0)
                sectorBytes = bytes;
        } else if (key == QLatin1String("REM") && words.size() >= 3 && words[1].toUpper() == QLatin1String("SESSION")) {
            session = words[2].toInt();
            firstOfSession = true;
        } else if (key == QLatin1String("INDEX") && words.size() >= 3 && words[1].toInt() == 1 && trackIsData &&
                   firstOfSession && session > dataSession) {
            const QStringList msf = words[2].split(QLatin1Char(':'));
            if (msf.size() == 3) {
                sessionStart = fileStart + (msf[0].toLongLong() * 60 + msf[1].toLongLong()) * 75 + msf[2].toLongLong();
                dataSession = session;
                firstOfSession = false;
            }
        }
    }
    closeFile();
    if (segments.isEmpty() || sessionStart < 0) {
        why = QStringLiteral("the cue sheet names no data track");
        return nullptr;
    }
    auto source = std::make_unique<RawSource>(segments);
    source->sessionStart = sessionStart;
    return source;
}

std::unique_ptr<SectorSource> sourceOf(const QString &path, QString &why)
{
    auto file = std::make_unique<File>(path);
    if (!file->ok()) {
        why = QStringLiteral("the file cannot be read");
        return nullptr;
    }
    QByteArray head(int(std::min<int64_t>(file->size(), MaxCueSheet)), Qt::Uninitialized);
    if (!file->read(0, head.data(), head.size())) {
        why = QStringLiteral("the file cannot be read");
        return nullptr;
    }
    if (file->size() <= MaxCueSheet && looksLikeCueSheet(head))
        return cueSource(path, head, why);
    if (head.startsWith(QByteArray(RawSync, sizeof RawSync))) {
        std::shared_ptr<File> shared = std::move(file);
        return std::make_unique<RawSource>(
            QList<RawSource::Segment>{{shared, 0, shared->size() / RawSectorSize, RawSectorSize}});
    }
    return std::make_unique<PlainSource>(std::move(file));
}
} // namespace

std::shared_ptr<DiscImage> DiscImage::Open(const QString &path, QString *why)
{
    QString reason;
    std::unique_ptr<SectorSource> source = sourceOf(path, reason);
    std::shared_ptr<DiscImage> image;
    if (source) {
        // A drive shows the UDF names of a disc that has them, the ISO 9660 ones otherwise.
        QString udfWhy, isoWhy;
        image = OpenUdfImage(source, udfWhy);
        if (!image)
            image = OpenIsoImage(source, isoWhy);
        if (!image)
            reason = !udfWhy.isEmpty() ? udfWhy : !isoWhy.isEmpty() ? isoWhy : QStringLiteral("no disc image");
    }
    if (image)
        image->m_path = path;
    else if (why)
        *why = reason;
    return image;
}

bool IsDiscImage(const QString &path)
{
    if (!QFileInfo(path).isFile())
        return false;
    return DiscImage::Open(path) != nullptr;
}

int32_t DiscImage::addNode(Node node)
{
    m_nodes.append(std::move(node));
    return int32_t(m_nodes.size() - 1);
}

int64_t DiscImage::Size(int32_t node) const
{
    return node >= 0 && node < m_nodes.size() ? m_nodes[node].size : 0;
}

int64_t DiscImage::Read(int32_t node, int64_t offset, char *out, int64_t n)
{
    if (node < 0 || node >= m_nodes.size() || offset < 0 || n < 0)
        return -1;
    const Node &f = m_nodes[node];
    n = std::min(n, std::max<int64_t>(0, f.size - offset));
    if (f.isInline) {
        if (offset + n > f.inlineData.size())
            return -1;
        std::memcpy(out, f.inlineData.constData() + offset, size_t(n));
        return n;
    }
    int64_t done = 0, start = 0;
    for (const Extent &e : f.extents) {
        if (done == n)
            break;
        const int64_t end = start + e.bytes;
        if (offset + done < end) {
            const int64_t within = offset + done - start;
            const int64_t take = std::min(n - done, e.bytes - within);
            if (e.sector < 0)
                std::memset(out + done, 0, size_t(take));
            else if (!m_source->Read(e.sector, within, out + done, take))
                return -1;
            done += take;
        }
        start = end;
    }
    return done == n ? n : -1;
}

bool DiscImage::readAll(int32_t node, QByteArray &out, int64_t limit, QString &problem)
{
    const int64_t size = Size(node);
    if (size > limit) {
        problem = QStringLiteral("it claims %1 bytes, more than a folder of a disc can hold").arg(size);
        return false;
    }
    out.resize(qsizetype(size));
    if (Read(node, 0, out.data(), size) != size) {
        problem = QStringLiteral("its records lie outside the image or cannot be read");
        return false;
    }
    return true;
}

DiscImage::Listing DiscImage::List(int32_t folder)
{
    const auto known = m_listings.constFind(folder);
    if (known != m_listings.constEnd())
        return *known;
    if (m_folders.isEmpty())
        m_folders.insert(m_nodes[m_root].location);
    Listing listing = list(folder);
    QList<Entry> kept;
    for (const Entry &e : std::as_const(listing.entries)) {
        if (e.folder) {
            const int64_t where = m_nodes[e.node].location;
            if (m_folders.contains(where)) {
                listing.problem = QString::fromUtf8(e.name) + QStringLiteral(" leads back to a folder already listed");
                continue;
            }
            m_folders.insert(where);
        }
        kept.append(e);
    }
    listing.entries = kept;
    m_listings.insert(folder, listing);
    return listing;
}
