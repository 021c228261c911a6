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
// More entries than any disc holds (a Blu-ray of 50 GB in files of 4 KB is 12 million).
constexpr qsizetype MaxNodes = 16 * 1024 * 1024;

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
        int64_t sectorBytes;   // 2352 or 2048
        int64_t fileFirst = 0; // where the segment begins in its file, in sectors
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
            const int64_t offset = (s->fileFirst + sector - s->firstSector) * s->sectorBytes;
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

// A cue sheet's files and tracks as the disc's sectors. Each track is a run of its file's sectors at its
// address on the disc: the first track of a later session lies behind the lead-out of the session before
// (REM LEAD-OUT, else 6,750 sectors after the first session and 2,250 after later ones), the lead-in of
// its own (REM LEAD-IN, else 4,500) and its pregap (PREGAP, else 150); a PREGAP not recorded in the file
// moves what follows. The volume descriptors of the last session lie 16 sectors behind its
// first data track.
std::unique_ptr<SectorSource> cueSource(const QString &cue, QByteArray text, QString &why)
{
    if (text.startsWith("\xef\xbb\xbf"))
        text.remove(0, 3);
    struct Track {
        std::shared_ptr<File> file;
        int64_t fileSector = -1; // INDEX 01, in the file's sectors
        int64_t fileStart = -1;  // the track's first index (its pregap's INDEX 00 when the file holds it)
        int64_t sectorBytes = RawSectorSize;
        int64_t gapBefore = 0;   // sectors of the disc not in the file, before this track
        bool data = false;
        int session = 1;
        bool defaultPregap = false; // the first of a later session, no PREGAP said
    };
    QList<Track> tracks;
    std::shared_ptr<File> current;
    int session = 1;
    int64_t pendingGap = 0, leadOut = -1, leadIn = -1;
    bool newSession = false;
    const auto msf = [](const QString &text) {
        const QStringList p = text.split(QLatin1Char(':'));
        return p.size() == 3 ? (p[0].toLongLong() * 60 + p[1].toLongLong()) * 75 + p[2].toLongLong() : -1;
    };
    for (const QByteArray &rawLine : text.split('\n')) {
        const QString line = QString::fromUtf8(rawLine).trimmed();
        const QStringList words = line.split(QRegularExpression(QStringLiteral("\\s+")), Qt::SkipEmptyParts);
        if (words.isEmpty())
            continue;
        const QString key = words[0].toUpper();
        if (key == QLatin1String("FILE")) {
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
        } else if (key == QLatin1String("REM") && words.size() >= 3 && words[1].toUpper() == QLatin1String("SESSION")) {
            const int next = words[2].toInt();
            if (next > session) {
                newSession = true;
                pendingGap = leadOut >= 0 ? leadOut : session == 1 ? 6750 : 2250;
                leadOut = leadIn = -1;
            }
            session = next;
        } else if (key == QLatin1String("REM") && words.size() >= 3 && words[1].toUpper() == QLatin1String("LEAD-OUT")) {
            leadOut = msf(words[2]);
        } else if (key == QLatin1String("REM") && words.size() >= 3 && words[1].toUpper() == QLatin1String("LEAD-IN")) {
            leadIn = msf(words[2]);
        } else if (key == QLatin1String("TRACK") && words.size() >= 3) {
            const QString mode = words[2].toUpper();
            Track t;
            t.file = current;
            t.data = mode.startsWith(QLatin1String("MODE"));
            t.sectorBytes = mode.endsWith(QLatin1String("/2048")) ? SectorSource::SectorSize : RawSectorSize;
            t.session = session;
            t.gapBefore = newSession ? pendingGap + (leadIn >= 0 ? leadIn : 4500) : 0;
            t.defaultPregap = newSession;
            newSession = false;
            pendingGap = 0;
            tracks.append(t);
        } else if (key == QLatin1String("PREGAP") && words.size() >= 2 && !tracks.isEmpty()) {
            tracks.last().gapBefore += std::max<int64_t>(0, msf(words[1]));
            tracks.last().defaultPregap = false;
        } else if (key == QLatin1String("INDEX") && words.size() >= 3 && !tracks.isEmpty()) {
            Track &t = tracks.last();
            const int64_t at = msf(words[2]);
            if (t.fileStart < 0)
                t.fileStart = at;
            if (words[1].toInt() == 1)
                t.fileSector = at;
        }
    }
    // Each track, with the pregap its file holds, runs to the next one of its file, or to the file's end;
    // its disc address follows the tracks before it.
    QList<RawSource::Segment> segments;
    int64_t disc = 0, sessionStart = -1;
    int lastDataSession = 0;
    for (qsizetype i = 0; i < tracks.size(); ++i) {
        const Track &t = tracks[i];
        if (!t.file || t.fileSector < 0)
            continue;
        const int64_t first = std::min(t.fileStart, t.fileSector);
        int64_t end = t.file->size() / t.sectorBytes;
        for (qsizetype j = i + 1; j < tracks.size(); ++j)
            if (tracks[j].file == t.file && tracks[j].fileSector >= 0) {
                end = std::min(tracks[j].fileStart, tracks[j].fileSector);
                break;
            }
        if (end <= t.fileSector)
            continue;
        disc += t.gapBefore + (t.defaultPregap && first == t.fileSector ? 150 : 0);
        if (i == 0)
            disc = -(t.fileSector - first); // the first track's INDEX 01 is the disc's sector 0
        RawSource::Segment segment{t.file, disc, end - first, t.sectorBytes};
        segment.fileFirst = first;
        segments.append(segment);
        if (t.data && t.session > lastDataSession) {
            lastDataSession = t.session;
            sessionStart = disc + (t.fileSector - first);
        }
        disc += end - first;
    }
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
    if (file->size() <= MaxCueSheet && looksLikeCueSheet(head.startsWith("\xef\xbb\xbf") ? head.mid(3) : head))
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
    // Where each extent begins in the file, for reads that find their extent by halving.
    node.starts.reserve(node.extents.size());
    int64_t at = 0;
    for (const Extent &e : std::as_const(node.extents)) {
        node.starts.append(at);
        at += e.bytes;
    }
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
    const auto first = std::upper_bound(f.starts.begin(), f.starts.end(), offset);
    qsizetype i = first == f.starts.begin() ? 0 : (first - f.starts.begin()) - 1;
    int64_t done = 0;
    for (; done < n && i < f.extents.size(); ++i) {
        const Extent &e = f.extents[i];
        const int64_t within = offset + done - f.starts[i];
        if (within < 0 || within >= e.bytes)
            continue;
        const int64_t take = std::min(n - done, e.bytes - within);
        if (e.sector < 0)
            std::memset(out + done, 0, size_t(take));
        else if (!m_source->Read(e.sector, within, out + done, take))
            return done > 0 ? done : -1;
        done += take;
    }
    return done == n ? n : (done > 0 ? done : -1);
}

bool DiscImage::readAll(int32_t node, QByteArray &out, int64_t limit, QString &problem)
{
    const int64_t size = Size(node);
    if (size > limit) {
        problem = QStringLiteral("it claims %1 bytes, more than a folder of a disc can hold").arg(size);
        return false;
    }
    out.resize(qsizetype(size));
    // As far as it can be read, sector by sector: what stands before a damaged part is listed.
    // Read in runs of sectors; after a failed run, one sector at a time up to the damage.
    int64_t done = 0, step = 64 * SectorSource::SectorSize;
    while (done < size) {
        const int64_t n = Read(node, done, out.data() + done, std::min<int64_t>(size - done, step));
        if (n <= 0 && step == SectorSource::SectorSize)
            break;
        if (n <= 0)
            step = SectorSource::SectorSize;
        else
            done += n;
    }
    if (done < size) {
        out.truncate(qsizetype(done / SectorSource::SectorSize * SectorSource::SectorSize));
        problem = QStringLiteral("its records lie outside the image or cannot be read");
        return !out.isEmpty();
    }
    return true;
}

namespace {
// A name no folder can hold ("", ".", "..", one with a separator or a NUL) is made one that it can.
QByteArray safeName(const QByteArray &name, bool &changed)
{
    QByteArray out = name;
    out.replace('/', '_');
    out.replace('\0', '_');
    if (out.isEmpty() || out == "." || out == "..")
        out = QByteArray(std::max<qsizetype>(1, out.size()), '_');
    changed = out != name;
    return out;
}

void addProblem(QString &problems, const QString &problem)
{
    if (!problem.isEmpty())
        problems = problems.isEmpty() ? problem : problems + QStringLiteral("; ") + problem;
}
} // namespace

DiscImage::Listing DiscImage::List(int32_t folder)
{
    const auto known = m_listings.constFind(folder);
    if (known != m_listings.constEnd())
        return *known;
    Listing listing;
    // A folder whose records another folder's records overlap is read once: a hostile image cannot make
    // the walk read the same sectors again and again.
    const Node &n = m_nodes[folder];
    const auto range = [](const Extent &e) {
        return std::pair<int64_t, int64_t>{e.sector, e.sector + (e.bytes + SectorSource::SectorSize - 1) / SectorSource::SectorSize};
    };
    for (const Extent &e : n.extents) {
        const auto [start, end] = range(e);
        if (e.sector < 0 || start == end)
            continue;
        auto next = m_folderRanges.upperBound(start);
        const bool overlapsBefore = next != m_folderRanges.begin() && std::prev(next).value() > start;
        if (overlapsBefore || (next != m_folderRanges.end() && next.key() < end)) {
            listing.problem = QStringLiteral("its records overlap another folder's");
            m_listings.insert(folder, listing);
            return listing;
        }
    }
    for (const Extent &e : n.extents)
        if (e.sector >= 0)
            m_folderRanges.insert(range(e).first, range(e).second);
    if (m_folders.isEmpty())
        m_folders.insert(m_nodes[m_root].location);
    if (m_nodes.size() > MaxNodes) {
        listing.problem = QStringLiteral("the image holds more entries than a disc can");
        m_listings.insert(folder, listing);
        return listing;
    }
    // A folder's records, as far as they can be read: what stands before a damaged part is listed.
    constexpr int64_t MaxFolderBytes = 256 * 1024 * 1024;
    QByteArray records;
    if (!readAll(folder, records, MaxFolderBytes, listing.problem)) {
        m_listings.insert(folder, listing);
        return listing;
    }
    Listing found = list(folder, records);
    addProblem(listing.problem, found.problem);
    bool renamed = false;
    for (Entry &e : found.entries) {
        bool changed = false;
        e.name = safeName(e.name, changed);
        renamed = renamed || changed;
        if (e.folder) {
            const int64_t where = m_nodes[e.node].location;
            if (m_folders.contains(where)) {
                addProblem(listing.problem, QString::fromUtf8(e.name) + QStringLiteral(" leads back to a folder already listed"));
                continue;
            }
            m_folders.insert(where);
        }
        listing.entries.append(e);
    }
    if (renamed)
        addProblem(listing.problem, QStringLiteral("names no folder can hold were given \"_\" in place of their "
                                                   "separators"));
    m_listings.insert(folder, listing);
    return listing;
}
