// UDF images (1.02 to 2.60: DVD bridge and UDF-only images, Blu-ray's metadata partition), read
// descriptor by descriptor: a folder lists in the order of its file identifiers, as a drive lists it.
// No Debian library hands out what a drive shows here: libudfread reads UDF 2.60 but keeps each file
// identifier's hidden flag to itself, libcdio's libudf reads no metadata partition.

#include "platform/DiscImage.h"

#include <QStringDecoder>

#include <algorithm>
#include <cstring>

namespace {
constexpr int64_t Block = SectorSource::SectorSize;
constexpr int MaxDescriptorSectors = 256;
constexpr int MaxAllocationHops = 1024;
constexpr int MaxExtents = 1 << 20;
constexpr qsizetype MaxImageExtents = 32 * 1024 * 1024;

enum Tag : uint16_t {
    PrimaryVolume = 1,
    AnchorPointer = 2,
    VolumePointer = 3,
    Partition = 5,
    LogicalVolume = 6,
    Terminating = 8,
    FileSet = 256,
    FileIdentifier = 257,
    AllocationExtent = 258,
    FileEntry = 261,
    ExtendedFileEntry = 266,
};

uint16_t le16(const unsigned char *p)
{
    return uint16_t(p[0] | p[1] << 8);
}
uint32_t le32(const unsigned char *p)
{
    return uint32_t(p[0]) | uint32_t(p[1]) << 8 | uint32_t(p[2]) << 16 | uint32_t(p[3]) << 24;
}
uint64_t le64(const unsigned char *p)
{
    return uint64_t(le32(p)) | uint64_t(le32(p + 4)) << 32;
}

// A descriptor's tag: its identifier when the checksum holds, else 0.
uint16_t tagOf(const unsigned char *d)
{
    unsigned sum = 0;
    for (int i = 0; i < 16; ++i)
        if (i != 4)
            sum += d[i];
    return (sum & 0xFF) == d[4] ? le16(d) : 0;
}

// A name in the OSTA compressed Unicode of UDF, as UTF-8.
QByteArray udfName(const unsigned char *p, int length)
{
    if (length < 1)
        return {};
    const int id = p[0];
    QString name;
    if (id == 8 || id == 254) {
        for (int i = 1; i < length; ++i)
            name.append(QChar(char16_t(p[i])));
    } else if (id == 16 || id == 255) {
        QStringDecoder ucs2(QStringDecoder::Utf16BE);
        name = ucs2(QByteArray(reinterpret_cast<const char *>(p + 1), (length - 1) & ~1));
    }
    return name.toUtf8();
}

class UdfImage final : public DiscImage
{
public:
    bool open(std::unique_ptr<SectorSource> &source, QString &why)
    {
        m_source = std::move(source);
        const bool ok = openVolume(why);
        if (!ok)
            source = std::move(m_source);
        return ok;
    }

    Listing list(int32_t, const QByteArray &bytes) override
    {
        Listing out;
        const auto *d = reinterpret_cast<const unsigned char *>(bytes.constData());
        const int64_t size = bytes.size();
        for (int64_t at = 0; at + 38 <= size;) {
            const unsigned char *f = d + at;
            if (tagOf(f) != FileIdentifier) {
                out.problem = QStringLiteral("a file identifier is damaged");
                break;
            }
            const int characteristics = f[18], nameLength = f[19], useLength = le16(f + 36);
            const int64_t length = (38 + useLength + nameLength + 3) & ~3;
            if (at + 38 + useLength + nameLength > size) {
                out.problem = QStringLiteral("a file identifier is damaged");
                break;
            }
            at += length;
            if (characteristics & 0x0C)
                continue; // deleted, or the parent folder
            const QByteArray name = udfName(f + 38 + useLength, nameLength);
            QString why;
            const int32_t node = fileOf(f + 20, why);
            if (node < 0) {
                if (!why.isEmpty())
                    out.problem = QString::fromUtf8(name) + QStringLiteral(": ") + why;
                continue;
            }
            const Node &n = m_nodes[node];
            out.entries.append({name, node, n.folder, bool(characteristics & 0x01), n.folder ? 0 : n.size});
        }
        return out;
    }

private:
    struct Map {
        int type = 1;          // 1 a partition of the disc, 2 the metadata partition, 3 a virtual one
        uint16_t partition = 0;
        int64_t start = -1;    // where that partition begins
        QList<Extent> metadata; // for the metadata partition: where its blocks lie in the partition
        QList<int64_t> metadataStarts; // where each of those extents begins in the metadata partition
        QList<uint32_t> vat;    // for a virtual partition: each block's place in the partition
    };

    bool openVolume(QString &why)
    {
        if (!hasNsrDescriptor()) {
            why = QString(); // no UDF: the ISO 9660 reader may know the image
            return false;
        }
        unsigned char d[Block];
        int64_t vdsStart = -1, vdsLength = 0;
        const int64_t last = m_source->Sectors() - 1;
        for (int64_t at : {m_source->sessionStart + 256, last - 256, last}) {
            if (at > 0 && read(at, d) && tagOf(d) == AnchorPointer) {
                vdsLength = le32(d + 16);
                vdsStart = le32(d + 20);
                break;
            }
        }
        if (vdsStart < 0) {
            why = QStringLiteral("the UDF volume has no anchor");
            return false;
        }
        QByteArray logical;
        QList<std::pair<uint16_t, int64_t>> partitions;
        int sectors = 0;
        for (int64_t s = vdsStart, end = vdsStart + vdsLength / Block; s < end && sectors < MaxDescriptorSectors;
             ++s, ++sectors) {
            if (!read(s, d))
                break;
            const uint16_t tag = tagOf(d);
            if (tag == Terminating || tag == 0)
                break;
            if (tag == Partition)
                partitions.append({le16(d + 22), le32(d + 188)});
            else if (tag == LogicalVolume && logical.isEmpty())
                logical = QByteArray(reinterpret_cast<const char *>(d), Block);
            else if (tag == VolumePointer) {
                s = int64_t(le32(d + 24)) - 1;
                end = s + 1 + le32(d + 20) / Block;
            }
        }
        if (logical.isEmpty() || partitions.isEmpty()) {
            why = QStringLiteral("the UDF volume has no logical volume or partition");
            return false;
        }
        const auto *lv = reinterpret_cast<const unsigned char *>(logical.constData());
        if (le32(lv + 212) != Block) {
            why = QStringLiteral("the UDF volume has blocks of another size than 2048 bytes");
            return false;
        }
        const uint32_t mapsLength = std::min<uint32_t>(le32(lv + 264), Block - 440);
        const uint32_t mapCount = le32(lv + 268);
        const unsigned char *m = lv + 440;
        // The revision the volume says it keeps to, as its domain identifier's suffix holds it.
        const int bcd = le16(lv + 216 + 24);
        QString revision = QStringLiteral("UDF");
        if (bcd >= 0x0100 && bcd <= 0x0260)
            revision += QStringLiteral(" %1.%2").arg(bcd >> 8, 1, 16).arg(bcd & 0xFF, 2, 16, QLatin1Char('0'));
        for (uint32_t i = 0, at = 0; i < mapCount && at + 2 <= mapsLength; ++i) {
            const int type = m[at], length = m[at + 1];
            if (length < 6 || at + length > mapsLength)
                break;
            // A map of a kind not read (or too short for its kind) is kept as type 0: nothing refers to
            // it successfully.
            Map map;
            map.type = 0;
            if (type == 1) {
                map.type = 1;
                map.partition = le16(m + at + 4);
            } else if (type == 2 && length >= 64) {
                const QByteArray id(reinterpret_cast<const char *>(m + at + 5), 23);
                map.type = 2;
                map.partition = le16(m + at + 38);
                if (id.startsWith("*UDF Virtual Partition")) {
                    map.type = 3; // write-once media: blocks through the table at the end of the recording
                } else if (id.startsWith("*UDF Metadata Partition")) {
                    map.metadata.append({le32(m + at + 40), 0}); // the metadata file's place, read below
                } else if (id.startsWith("*UDF Sparable Partition")) {
                    map.type = 1; // rewritable media: the blocks where they were written, spared ones aside
                } else {
                    map.type = 0;
                }
            }
            for (const auto &[number, start] : partitions)
                if (number == map.partition)
                    map.start = start;
            if (map.start < 0 && map.type != 0) {
                why = QStringLiteral("the UDF volume names a partition it does not describe");
                return false;
            }
            m_maps.append(map);
            at += length;
        }
        if (m_maps.isEmpty()) {
            why = QStringLiteral("the UDF volume has no partition map");
            return false;
        }
        for (int r = 0; r < m_maps.size(); ++r) {
            if (m_maps[r].type == 3 && !readVat(r, why))
                return false;
        }
        // The metadata partition's blocks are those of its metadata file, a file of the partition below.
        for (Map &map : m_maps) {
            if (map.type != 2 || map.metadata.isEmpty())
                continue;
            const int64_t fileEntry = map.start + map.metadata.first().sector;
            map.metadata.clear();
            // The metadata file counts its blocks in the physical partition of the same number.
            int physicalReference = -1;
            for (int r = 0; r < m_maps.size(); ++r)
                if (m_maps[r].type == 1 && m_maps[r].partition == map.partition)
                    physicalReference = r;
            Node n;
            if (physicalReference < 0 || !read(fileEntry, d) ||
                !entryOf(d, fileEntry, physicalReference, nullptr, n, why)) {
                why = QStringLiteral("the UDF metadata partition cannot be read");
                return false;
            }
            map.metadata = n.extents;
            int64_t at = 0;
            for (const Extent &e : std::as_const(map.metadata)) {
                map.metadataStarts.append(at);
                at += e.bytes;
            }
        }
        // The file set, and its root folder.
        const int64_t fsd = physical(le32(lv + 252), le16(lv + 256));
        if (fsd < 0 || !read(fsd, d) || tagOf(d) != FileSet) {
            why = QStringLiteral("the UDF volume has no file set");
            return false;
        }
        m_root = fileOf(d + 400, why);
        if (m_root < 0 || !m_nodes[m_root].folder) {
            why = QStringLiteral("the UDF volume's root folder cannot be read");
            return false;
        }
        m_format = revision;
        return true;
    }

    // The virtual allocation table of write-once media: the last entry recorded, a file of its own.
    bool readVat(int virtualReference, QString &why)
    {
        Map &virt = m_maps[virtualReference];
        int physicalReference = -1;
        for (int r = 0; r < m_maps.size(); ++r)
            if (m_maps[r].type == 1 && m_maps[r].partition == virt.partition)
                physicalReference = r;
        unsigned char d[Block];
        // The recording ends where the image's trailing empty sectors begin.
        int64_t last = m_source->Sectors() - 1;
        for (int64_t scanned = 0; last > 0 && scanned < 32768; --last, ++scanned) {
            if (!read(last, d))
                break;
            if (std::any_of(d, d + Block, [](unsigned char c) { return c != 0; }))
                break;
        }
        for (int64_t s = last; physicalReference >= 0 && s > last - 16 && s > 0; --s) {
            if (!read(s, d) || (tagOf(d) != FileEntry && tagOf(d) != ExtendedFileEntry) || d[27] != 248)
                continue;
            Node n;
            QString unused;
            if (!entryOf(d, s, physicalReference, nullptr, n, unused) || n.size > 64 * 1024 * 1024)
                continue;
            const int32_t node = addNode(n);
            QByteArray table;
            if (!readAll(node, table, n.size, unused) || table.size() < 2)
                continue;
            const auto *t = reinterpret_cast<const unsigned char *>(table.constData());
            const int header = le16(t);
            for (qsizetype at = header; at + 4 <= table.size(); at += 4)
                virt.vat.append(le32(t + at));
            return true;
        }
        why = QStringLiteral("the UDF volume's virtual allocation table cannot be found");
        return false;
    }

    bool hasNsrDescriptor()
    {
        unsigned char d[Block];
        for (int i = 0; i < 32; ++i) {
            if (!read(m_source->sessionStart + 16 + i, d))
                return false;
            if (std::memcmp(d + 1, "NSR02", 5) == 0 || std::memcmp(d + 1, "NSR03", 5) == 0)
                return true;
            if (std::memcmp(d + 1, "TEA01", 5) == 0)
                return false;
        }
        return false;
    }

    bool read(int64_t sector, unsigned char *d) { return m_source->Read(sector, 0, reinterpret_cast<char *>(d), Block); }

    // The image's sector of a logical block of a partition, or -1.
    int64_t physical(int64_t block, int reference) const
    {
        if (reference < 0 || reference >= m_maps.size())
            return -1;
        const Map &m = m_maps[reference];
        if (block < 0 || m.type == 0)
            return -1;
        if (m.type == 1)
            return m.start + block;
        if (m.type == 3)
            return block < m.vat.size() && m.vat[block] != 0xFFFFFFFFu ? m.start + m.vat[block] : -1;
        // The metadata file's extent that holds the block, found by halving.
        const int64_t offset = block * Block;
        const auto after = std::upper_bound(m.metadataStarts.begin(), m.metadataStarts.end(), offset);
        if (after == m.metadataStarts.begin())
            return -1;
        const qsizetype i = (after - m.metadataStarts.begin()) - 1;
        const Extent &e = m.metadata[i];
        const int64_t within = offset - m.metadataStarts[i];
        return e.sector < 0 || within >= e.bytes ? -1 : e.sector + within / Block;
    }

    // The file whose entry a long allocation descriptor names; -1 (and why) when it cannot be read, -1
    // without a reason for a link, device or other entry that is no file of the disc.
    int32_t fileOf(const unsigned char *longAd, QString &why)
    {
        const int reference = le16(longAd + 8);
        const int64_t sector = physical(le32(longAd + 4), reference);
        // Entries named by many identifiers are read once.
        const auto known = m_entries.constFind(sector);
        if (known != m_entries.constEnd())
            return *known;
        unsigned char d[Block];
        if (sector < 0 || !read(sector, d)) {
            why = QStringLiteral("its entry lies outside the image");
            return -1;
        }
        Node n;
        bool regular = false;
        if (!entryOf(d, sector, reference, &regular, n, why))
            return -1;
        if (!n.folder && !regular) {
            m_entries.insert(sector, -1);
            return -1;
        }
        m_extentsHeld += n.extents.size();
        if (m_extentsHeld > MaxImageExtents) {
            why = QStringLiteral("the image claims more extents than a disc can hold");
            return -1;
        }
        const int32_t node = addNode(n);
        m_entries.insert(sector, node);
        return node;
    }

    // A file entry's type, size and extents.
    bool entryOf(const unsigned char *d, int64_t sector, int reference, bool *regular, Node &n, QString &why)
    {
        const uint16_t tag = tagOf(d);
        if (tag != FileEntry && tag != ExtendedFileEntry) {
            why = QStringLiteral("its entry is damaged");
            return false;
        }
        const int fileType = d[27];
        const int adType = le16(d + 34) & 7;
        n.folder = fileType == 4;
        if (regular)
            *regular = fileType == 5 || fileType == 249; // a file, or a real-time one
        n.size = int64_t(std::min<uint64_t>(le64(d + 56), uint64_t(1) << 50));
        n.location = sector;
        const bool extended = tag == ExtendedFileEntry;
        const uint32_t eaLength = le32(d + (extended ? 208 : 168));
        const uint32_t adLength = le32(d + (extended ? 212 : 172));
        const uint32_t adStart = (extended ? 216 : 176) + eaLength;
        if (adStart > Block || adLength > Block - adStart) {
            why = QStringLiteral("its entry is damaged");
            return false;
        }
        const unsigned char *ads = d + adStart;
        if (adType == 3) {
            n.isInline = true;
            n.inlineData = QByteArray(reinterpret_cast<const char *>(ads), adLength);
            n.size = std::min<int64_t>(n.size, adLength);
            return true;
        }
        if (adType > 2) {
            why = QStringLiteral("its entry is damaged");
            return false;
        }
        // Short descriptors count in the partition the entry itself lies in.
        if (!extentsOf(ads, adLength, adType, reference, n.extents, why))
            return false;
        // Extents that hold nothing recorded read as zeros, but never more of them than the image holds:
        // a file cannot claim petabytes out of a few sectors.
        int64_t recorded = 0, unrecorded = 0;
        for (const Extent &e : n.extents)
            (e.sector < 0 ? unrecorded : recorded) += e.bytes;
        n.size = std::min(n.size, recorded + std::min(unrecorded, m_source->Sectors() * Block));
        return true;
    }

    bool extentsOf(const unsigned char *ads, uint32_t length, int adType, int reference, QList<Extent> &out,
                   QString &why)
    {
        const uint32_t step = adType == 0 ? 8 : adType == 1 ? 16 : 20;
        QByteArray held; // the allocation extent the descriptors go on in
        unsigned char d[Block];
        for (int hops = 0; hops < MaxAllocationHops; ++hops) {
            bool continued = false;
            for (uint32_t at = 0; at + step <= length && !continued; at += step) {
                const unsigned char *a = ads + at;
                const uint32_t raw = le32(a);
                const int64_t bytes = raw & 0x3FFFFFFF;
                const int kind = int(raw >> 30);
                if (bytes == 0)
                    return true;
                const int64_t block = le32(a + (adType == 2 ? 12 : 4));
                const int ref = adType == 0 ? reference : le16(a + (adType == 2 ? 16 : 8));
                if (kind == 3) {
                    const int64_t sector = physical(block, ref);
                    if (sector < 0 || !read(sector, d) || tagOf(d) != AllocationExtent) {
                        why = QStringLiteral("its allocation descriptors lie outside the image");
                        return false;
                    }
                    held = QByteArray(reinterpret_cast<const char *>(d), Block);
                    ads = reinterpret_cast<const unsigned char *>(held.constData()) + 24;
                    length = std::min<uint32_t>(le32(d + 20), Block - 24);
                    continued = true;
                    continue;
                }
                if (out.size() >= MaxExtents) {
                    why = QStringLiteral("it claims too many extents");
                    return false;
                }
                if (kind != 0) {
                    out.append({-1, bytes}); // allocated or not, nothing recorded: zeros
                    continue;
                }
                // A recorded extent; the metadata partition maps block by block.
                const bool mapped = m_maps.value(ref).type == 2 || m_maps.value(ref).type == 3;
                for (int64_t done = 0; done < bytes; done += mapped ? Block : bytes) {
                    const int64_t sector = physical(block + done / Block, ref);
                    if (sector < 0 || sector >= m_source->Sectors()) {
                        why = QStringLiteral("it lies outside the image");
                        return false;
                    }
                    if (out.size() >= MaxExtents) {
                        why = QStringLiteral("it claims too many extents");
                        return false;
                    }
                    out.append({sector, mapped ? std::min(Block, bytes - done) : bytes});
                }
            }
            if (!continued)
                return true;
        }
        why = QStringLiteral("its allocation descriptors go on without end");
        return false;
    }

    QList<Map> m_maps;
    QHash<int64_t, int32_t> m_entries; // nodes by the sector of their entry
    qsizetype m_extentsHeld = 0;
};
} // namespace

std::shared_ptr<DiscImage> OpenUdfImage(std::unique_ptr<SectorSource> &source, QString &why)
{
    auto image = std::make_shared<UdfImage>();
    if (!image->open(source, why))
        return nullptr;
    return image;
}
