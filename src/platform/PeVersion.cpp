#include "platform/PeVersion.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

namespace {

constexpr uint32_t RtVersion = 16;
constexpr uint32_t VersionInfoId = 1;
constexpr uint16_t Pe32Magic = 0x10b;
constexpr uint16_t Pe32PlusMagic = 0x20b;
constexpr int ResourceDirectoryIndex = 2;
constexpr uint32_t SubdirectoryBit = 0x80000000u;
// Above this the loader takes the raw data pointer rounded down to a sector.
constexpr uint32_t SectorSize = 0x200;

// A window on bytes whose every read says whether it stayed inside: bytes in memory, or a file read
// piece by piece (one in a disc image, say).
class Bytes
{
public:
    Bytes(const char *data, qsizetype size) : m_data(reinterpret_cast<const uint8_t *>(data)), m_size(uint64_t(size)) {}
    Bytes(uint64_t size, const VersionFileReader &read) : m_size(size), m_read(&read) {}
    uint64_t size() const { return m_size; }
    bool has(uint64_t offset, uint64_t length) const { return offset <= m_size && length <= m_size - offset; }
    bool u16(uint64_t offset, uint16_t &v) const
    {
        uint8_t b[2];
        if (!get(offset, b, 2))
            return false;
        v = uint16_t(b[0] | b[1] << 8);
        return true;
    }
    bool u32(uint64_t offset, uint32_t &v) const
    {
        uint8_t b[4];
        if (!get(offset, b, 4))
            return false;
        v = uint32_t(b[0]) | uint32_t(b[1]) << 8 | uint32_t(b[2]) << 16 | uint32_t(b[3]) << 24;
        return true;
    }
    QByteArray slice(uint64_t offset, uint64_t length) const
    {
        QByteArray out(qsizetype(length), Qt::Uninitialized);
        return get(offset, out.data(), length) ? out : QByteArray();
    }

private:
    bool get(uint64_t offset, void *out, uint64_t length) const
    {
        if (!has(offset, length))
            return false;
        if (m_data) {
            std::memcpy(out, m_data + offset, size_t(length));
            return true;
        }
        return (*m_read)(int64_t(offset), static_cast<char *>(out), int64_t(length)) == int64_t(length);
    }
    const uint8_t *m_data = nullptr;
    uint64_t m_size;
    const VersionFileReader *m_read = nullptr;
};

struct Section {
    uint32_t virtualAddress, virtualSize, rawPointer, rawSize;
};

class PeImage
{
public:
    explicit PeImage(const Bytes &file) : m_file(file) {}

    // Reads the headers; false when this is no PE image whose resource directory can be found.
    bool open()
    {
        uint16_t mz;
        uint32_t peOffset, signature;
        if (!m_file.u16(0, mz) || mz != 0x5A4D || !m_file.u32(0x3C, peOffset) || !m_file.u32(peOffset, signature) ||
            signature != 0x00004550)
            return false;
        const uint64_t coff = uint64_t(peOffset) + 4;
        uint16_t sectionCount, optionalSize, magic;
        if (!m_file.u16(coff + 2, sectionCount) || !m_file.u16(coff + 16, optionalSize))
            return false;
        const uint64_t optional = coff + 20;
        if (!m_file.u16(optional, magic) || (magic != Pe32Magic && magic != Pe32PlusMagic))
            return false;
        const uint64_t countAt = optional + (magic == Pe32Magic ? 92 : 108);
        const uint64_t directories = countAt + 4;
        uint32_t directoryCount, fileAlignment;
        if (!m_file.u32(optional + 36, fileAlignment) || !m_file.u32(countAt, directoryCount) ||
            directoryCount <= ResourceDirectoryIndex)
            return false;
        const uint64_t resourceEntry = directories + 8 * ResourceDirectoryIndex;
        // The directory entry must lie inside the optional header the file declares.
        if (resourceEntry + 8 > optional + optionalSize)
            return false;
        if (!m_file.u32(resourceEntry, m_resourceRva) || m_resourceRva == 0)
            return false;
        m_roundRawPointers = fileAlignment >= SectorSize;
        const uint64_t table = optional + optionalSize;
        for (uint64_t i = 0; i < sectionCount; ++i) {
            const uint64_t s = table + 40 * i;
            Section section;
            if (!m_file.u32(s + 8, section.virtualSize) || !m_file.u32(s + 12, section.virtualAddress) ||
                !m_file.u32(s + 16, section.rawSize) || !m_file.u32(s + 20, section.rawPointer))
                break; // a section table cut short by the end of the file: the sections read so far
            m_sections.push_back(section);
        }
        return true;
    }

    // The file offset of a relative virtual address, or false when it maps to nothing in the file.
    bool offsetOf(uint64_t rva, uint64_t &offset) const
    {
        for (const Section &s : m_sections) {
            const uint64_t pointer = m_roundRawPointers ? s.rawPointer / SectorSize * SectorSize : s.rawPointer;
            const uint64_t extent = std::max(s.virtualSize, s.rawSize);
            if (rva >= s.virtualAddress && rva < uint64_t(s.virtualAddress) + extent) {
                offset = pointer + (rva - s.virtualAddress);
                return offset < m_file.size();
            }
        }
        // Outside every section the image is the file itself (the headers).
        offset = rva;
        return rva < m_file.size();
    }

    // The resource directory entry of a level whose id is wanted (or the first when any will do).
    bool entryOf(uint64_t directoryRva, bool wantId, uint32_t id, uint32_t &target) const
    {
        uint64_t directory;
        uint16_t named, numbered;
        if (!offsetOf(directoryRva, directory) || !m_file.u16(directory + 12, named) ||
            !m_file.u16(directory + 14, numbered))
            return false;
        const uint64_t count = uint64_t(named) + numbered;
        for (uint64_t i = 0; i < count; ++i) {
            uint32_t name, data;
            if (!m_file.u32(directory + 16 + 8 * i, name) || !m_file.u32(directory + 20 + 8 * i, data))
                return false;
            if (!wantId) {
                target = data;
                return true;
            }
            if (!(name & SubdirectoryBit) && name == id) {
                target = data;
                return true;
            }
        }
        return false;
    }

    QByteArray versionBlock() const
    {
        uint32_t types, names, languages;
        if (!entryOf(m_resourceRva, true, RtVersion, types) || !(types & SubdirectoryBit))
            return {};
        const uint64_t namesRva = uint64_t(m_resourceRva) + (types & ~SubdirectoryBit);
        // The version API asks for the block numbered 1: a file whose version block has another number or a
        // name has no version information.
        if (!entryOf(namesRva, true, VersionInfoId, names))
            return {};
        if (!(names & SubdirectoryBit))
            return {};
        const uint64_t languagesRva = uint64_t(m_resourceRva) + (names & ~SubdirectoryBit);
        if (!entryOf(languagesRva, false, 0, languages) || (languages & SubdirectoryBit))
            return {};
        uint64_t dataEntry, dataOffset;
        uint32_t dataRva, dataSize;
        if (!offsetOf(uint64_t(m_resourceRva) + languages, dataEntry) || !m_file.u32(dataEntry, dataRva) ||
            !m_file.u32(dataEntry + 4, dataSize) || !offsetOf(dataRva, dataOffset) || !m_file.has(dataOffset, dataSize))
            return {};
        uint16_t declared;
        if (dataSize < 6 || !m_file.u16(dataOffset, declared) || declared < 6)
            return {};
        return m_file.slice(dataOffset, std::min<uint32_t>(dataSize, declared));
    }

private:
    const Bytes &m_file;
    uint32_t m_resourceRva = 0;
    bool m_roundRawPointers = true;
    std::vector<Section> m_sections;
};

uint64_t align4(uint64_t v)
{
    return (v + 3) & ~uint64_t(3);
}

// One node of a version block: its key, its value and where its children lie.
struct Node {
    uint64_t end = 0;
    uint16_t valueLength = 0;
    bool text = false;
    QString key;
    uint64_t valueStart = 0, valueEnd = 0, childrenStart = 0;
};

bool readNode(const Bytes &block, uint64_t at, uint64_t limit, Node &node)
{
    uint16_t length, type;
    if (at + 6 > limit || !block.u16(at, length) || !block.u16(at + 2, node.valueLength) || !block.u16(at + 4, type) ||
        length < 6)
        return false;
    node.end = std::min<uint64_t>(at + length, limit);
    node.text = type == 1;
    node.key.clear();
    uint64_t p = at + 6;
    uint16_t c = 0;
    while (p + 2 <= node.end && block.u16(p, c) && c != 0) {
        node.key.append(QChar(c));
        p += 2;
    }
    p += 2; // the key's NUL, where there was one
    node.valueStart = std::min(align4(p), node.end);
    const uint64_t bytes = node.text ? uint64_t(node.valueLength) * 2 : node.valueLength;
    node.valueEnd = std::min(node.valueStart + bytes, node.end);
    node.childrenStart = std::min(align4(node.valueEnd), node.end);
    return true;
}

} // namespace

QByteArray VersionBlockFromImage(const char *data, qsizetype size)
{
    const Bytes file(data, size);
    PeImage image(file);
    return image.open() ? image.versionBlock() : QByteArray();
}

QByteArray VersionBlockFromFile(int64_t size, const VersionFileReader &read)
{
    const Bytes file(uint64_t(std::max<int64_t>(size, 0)), read);
    PeImage image(file);
    return image.open() ? image.versionBlock() : QByteArray();
}

QByteArray ReadVersionBlock(const QString &path)
{
    // A pipe or a device under an executable's name is never opened.
    const QFileInfo info(path);
    if (!info.isFile())
        return {};
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() == 0)
        return {};
    if (uchar *mapped = file.map(0, file.size()))
        return VersionBlockFromImage(reinterpret_cast<const char *>(mapped), file.size());
    const QByteArray all = file.readAll();
    return VersionBlockFromImage(all.constData(), all.size());
}

std::optional<VersionValue> QueryVersionValue(const QByteArray &block, const QString &subBlock)
{
    const Bytes bytes(block.constData(), block.size());
    Node node;
    if (!readNode(bytes, 0, bytes.size(), node))
        return std::nullopt;
    const QStringList keys = subBlock.split(QLatin1Char('\\'), Qt::SkipEmptyParts);
    for (const QString &key : keys) {
        bool found = false;
        Node child;
        for (uint64_t at = node.childrenStart; at < node.end; at = align4(child.end)) {
            if (!readNode(bytes, at, node.end, child))
                break;
            if (child.key.compare(key, Qt::CaseInsensitive) == 0) {
                found = true;
                break;
            }
        }
        if (!found)
            return std::nullopt;
        node = child;
    }
    return VersionValue{block.mid(qsizetype(node.valueStart), qsizetype(node.valueEnd - node.valueStart)),
                        node.valueLength, node.text};
}

QString VersionValueText(const VersionValue &value)
{
    QString text;
    const Bytes bytes(value.bytes.constData(), value.bytes.size());
    uint16_t c = 0;
    for (uint64_t p = 0; bytes.u16(p, c) && c != 0; p += 2)
        text.append(QChar(c));
    return text;
}
