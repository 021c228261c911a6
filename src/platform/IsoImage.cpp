// ISO 9660 images with their Joliet and Rock Ridge names, read record by record: a folder lists in the
// order of its directory records, as a drive lists it. Rock Ridge names come first, then Joliet, then
// the ISO 9660 identifiers without their version and a trailing dot.

#include "platform/DiscImage.h"

#include <QStringDecoder>

#include <cstring>

namespace {
constexpr int64_t Sector = SectorSource::SectorSize;
constexpr int MaxDescriptors = 64;
constexpr int MaxContinuations = 64;
constexpr int MaxFolderContinuations = 65536; // continuation areas one folder's records may send the reader to

uint32_t le32(const unsigned char *p)
{
    return uint32_t(p[0]) | uint32_t(p[1]) << 8 | uint32_t(p[2]) << 16 | uint32_t(p[3]) << 24;
}

enum Flag : unsigned char { Hidden = 0x01, Directory = 0x02, Associated = 0x04, MultiExtent = 0x80 };

// The record's name as the file system's bytes.
QByteArray isoName(const QByteArray &id)
{
    QByteArray name = id;
    const qsizetype semicolon = name.indexOf(';');
    if (semicolon >= 0)
        name.truncate(semicolon);
    if (name.endsWith('.'))
        name.chop(1);
    return name;
}

QByteArray jolietName(const QByteArray &id)
{
    QStringDecoder ucs2(QStringDecoder::Utf16BE);
    QString name = ucs2(id.left(id.size() & ~1));
    const qsizetype semicolon = name.indexOf(QLatin1Char(';'));
    if (semicolon >= 0)
        name.truncate(semicolon);
    return name.toUtf8();
}

class IsoImage final : public DiscImage
{
public:
    bool open(std::unique_ptr<SectorSource> &source, QString &why)
    {
        m_source = std::move(source);
        const auto giveBack = [&](const QString &reason) {
            source = std::move(m_source);
            why = reason;
            return false;
        };
        QByteArray primary, joliet;
        unsigned char d[Sector];
        for (int i = 0; i < MaxDescriptors; ++i) {
            if (!m_source->Read(m_source->sessionStart + 16 + i, 0, reinterpret_cast<char *>(d), Sector))
                break;
            if (std::memcmp(d + 1, "CD001", 5) != 0)
                break;
            if (d[0] == 255)
                break;
            if (d[0] == 1 && primary.isEmpty())
                primary = QByteArray(reinterpret_cast<const char *>(d), Sector);
            const bool jolietEscape = d[88] == '%' && d[89] == '/' && (d[90] == '@' || d[90] == 'C' || d[90] == 'E');
            if (d[0] == 2 && jolietEscape && joliet.isEmpty())
                joliet = QByteArray(reinterpret_cast<const char *>(d), Sector);
        }
        if (primary.isEmpty())
            return giveBack(QStringLiteral("no ISO 9660 or UDF volume"));
        const auto *p = reinterpret_cast<const unsigned char *>(primary.constData());
        if ((p[128] | p[129] << 8) != Sector)
            return giveBack(QStringLiteral("the ISO 9660 volume has blocks of another size than 2048 bytes"));
        const int32_t primaryRoot = rootOf(p);
        m_susp = suspOf(primaryRoot);
        if (m_susp >= 0) {
            m_names = RockRidge;
            m_root = primaryRoot;
        } else if (!joliet.isEmpty()) {
            m_names = Joliet;
            m_root = rootOf(reinterpret_cast<const unsigned char *>(joliet.constData()));
        } else {
            m_names = Plain;
            m_root = primaryRoot;
        }
        m_format = m_names == RockRidge ? QStringLiteral("ISO 9660 with Rock Ridge")
                   : m_names == Joliet  ? QStringLiteral("ISO 9660 with Joliet")
                                        : QStringLiteral("ISO 9660");
        if (m_names == RockRidge && !joliet.isEmpty())
            m_format += QStringLiteral(" and Joliet");
        return true;
    }

    Listing list(int32_t, const QByteArray &bytes) override
    {
        Listing out;
        const auto *d = reinterpret_cast<const unsigned char *>(bytes.constData());
        const int64_t size = bytes.size();
        int continuations = 0; // continuation areas read for this folder
        Entry pending;         // the parts of a file in several extents
        Node pendingNode;
        bool inPieces = false;
        for (int64_t at = 0; at < size;) {
            const int length = d[at];
            // A record never crosses a sector: a zero length pads to the next one.
            if (length == 0) {
                at = (at / Sector + 1) * Sector;
                continue;
            }
            // A damaged record: the rest of its sector is passed over, the next sector read.
            if (length < 34 || at + length > size || (at % Sector) + length > Sector || 33 + d[at + 32] > length) {
                out.problem = QStringLiteral("a directory record is damaged");
                at = (at / Sector + 1) * Sector;
                continue;
            }
            const unsigned char *r = d + at;
            at += length;
            const int idLength = r[32];
            const QByteArray id(reinterpret_cast<const char *>(r + 33), idLength);
            if (idLength == 1 && (id[0] == '\0' || id[0] == '\1'))
                continue; // the folder itself and its parent
            const unsigned char flags = r[25];
            // The data begins behind the record's extended attributes, if it has any.
            const int64_t extent = int64_t(le32(r + 2)) + r[1];
            const int64_t bytesHere = le32(r + 10);
            if (flags & Associated)
                continue; // another file's resource fork, no file of its own
            RockRidgeEntry rr;
            if (m_names == RockRidge)
                rr = rockRidge(r, length, idLength, continuations);
            if (rr.skip)
                continue;
            Node n;
            n.folder = (flags & Directory) || rr.childLink >= 0;
            // A folder moved away for its depth stands where its placeholder stands.
            const int64_t start = rr.childLink >= 0 ? rr.childLink : extent;
            n.size = rr.childLink >= 0 ? folderSizeAt(rr.childLink) : bytesHere;
            n.extents.append({start, n.size});
            n.location = start;
            QByteArray name = !rr.name.isEmpty()   ? rr.name
                              : m_names == Joliet ? jolietName(id)
                                                  : isoName(id);
            if (inPieces) {
                pendingNode.extents += n.extents;
                pendingNode.size += n.size;
                if (flags & MultiExtent)
                    continue;
                inPieces = false;
                pending.size = pendingNode.size;
                pending.node = addNode(pendingNode);
                out.entries.append(pending);
                continue;
            }
            Entry e{name, -1, n.folder, bool(flags & Hidden), n.folder ? 0 : n.size};
            if ((flags & MultiExtent) && !n.folder) {
                inPieces = true;
                pending = e;
                pendingNode = n;
                continue;
            }
            e.node = addNode(n);
            out.entries.append(e);
        }
        if (inPieces) {
            pending.size = pendingNode.size;
            pending.node = addNode(pendingNode);
            out.entries.append(pending);
        }
        return out;
    }

private:
    enum Names { Plain, Joliet, RockRidge };

    int32_t rootOf(const unsigned char *descriptor)
    {
        const unsigned char *root = descriptor + 156;
        Node n;
        n.folder = true;
        n.location = le32(root + 2);
        n.size = le32(root + 10);
        n.extents.append({n.location, n.size});
        return addNode(n);
    }

    // The size of a relocated folder, from its own record "."
    int64_t folderSizeAt(int64_t sector)
    {
        unsigned char r[34];
        if (!m_source->Read(sector, 0, reinterpret_cast<char *>(r), sizeof r) || r[0] < 34)
            return 0;
        return le32(r + 10);
    }

    // The Rock Ridge marker in the root's own record: the bytes to skip in every record's system use
    // area, or -1 when the volume has no Rock Ridge.
    int suspOf(int32_t root)
    {
        unsigned char r[Sector];
        if (!m_source->Read(m_nodes[root].location, 0, reinterpret_cast<char *>(r), Sector))
            return -1;
        const int length = r[0], idLength = r[32];
        const int su = 33 + idLength + ((idLength % 2) == 0 ? 1 : 0);
        if (length < 34 || su + 7 > length)
            return -1;
        const unsigned char *sp = r + su;
        if (sp[0] == 'S' && sp[1] == 'P' && sp[2] >= 7 && sp[4] == 0xBE && sp[5] == 0xEF)
            return sp[6];
        return -1;
    }

    struct RockRidgeEntry {
        QByteArray name;
        int64_t childLink = -1;
        bool skip = false; // a link, a device, a pipe, a socket, or a folder shown elsewhere
    };

    RockRidgeEntry rockRidge(const unsigned char *record, int length, int idLength, int &continuations)
    {
        RockRidgeEntry out;
        int su = 33 + idLength + ((idLength % 2) == 0 ? 1 : 0) + m_susp;
        QByteArray area(reinterpret_cast<const char *>(record) + su, std::max(0, length - su));
        bool nameDone = false;
        for (int hops = 0; hops <= MaxContinuations && !area.isEmpty(); ++hops) {
            const auto *a = reinterpret_cast<const unsigned char *>(area.constData());
            const int size = int(area.size());
            QByteArray next;
            for (int at = 0; at + 4 <= size;) {
                const int len = a[at + 2];
                if (len < 4 || at + len > size)
                    break;
                const unsigned char *e = a + at;
                const char s0 = char(e[0]), s1 = char(e[1]);
                if (s0 == 'N' && s1 == 'M' && len >= 5 && !nameDone) {
                    const unsigned char nmFlags = e[4];
                    if (!(nmFlags & 0x06))
                        out.name.append(reinterpret_cast<const char *>(e + 5), len - 5);
                    nameDone = !(nmFlags & 0x01);
                } else if (s0 == 'P' && s1 == 'X' && len >= 12) {
                    const uint32_t type = le32(e + 4) & 0170000;
                    if (type != 0040000 && type != 0100000)
                        out.skip = true;
                } else if ((s0 == 'S' && s1 == 'L') || (s0 == 'R' && s1 == 'E')) {
                    out.skip = true;
                } else if (s0 == 'C' && s1 == 'L' && len >= 12) {
                    out.childLink = le32(e + 4);
                } else if (s0 == 'C' && s1 == 'E' && len >= 28 && ++continuations <= MaxFolderContinuations) {
                    const int64_t block = le32(e + 4), offset = le32(e + 12), bytes = le32(e + 20);
                    if (bytes > 0 && bytes <= Sector && offset < Sector) {
                        next.resize(qsizetype(bytes));
                        if (!m_source->Read(block, offset, next.data(), bytes))
                            next.clear();
                    }
                } else if (s0 == 'S' && s1 == 'T') {
                    break;
                }
                at += len;
            }
            area = next;
        }
        return out;
    }

    Names m_names = Plain;
    int m_susp = -1;
};
} // namespace

std::shared_ptr<DiscImage> OpenIsoImage(std::unique_ptr<SectorSource> &source, QString &why)
{
    auto image = std::make_shared<IsoImage>();
    if (!image->open(source, why))
        return nullptr;
    return image;
}
