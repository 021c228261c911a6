#include "review/ExecutableFormat.h"

#include "platform/StoredPaths.h"
#include "review/VersionInformation.h"

namespace {
uint16_t le16(const QByteArray &b, qsizetype at)
{
    return uint16_t(uint8_t(b[at]) | uint8_t(b[at + 1]) << 8);
}
uint32_t le32(const QByteArray &b, qsizetype at)
{
    return uint32_t(uint8_t(b[at])) | uint32_t(uint8_t(b[at + 1])) << 8 | uint32_t(uint8_t(b[at + 2])) << 16 |
           uint32_t(uint8_t(b[at + 3])) << 24;
}
uint32_t be32(const QByteArray &b, qsizetype at)
{
    return uint32_t(uint8_t(b[at])) << 24 | uint32_t(uint8_t(b[at + 1])) << 16 | uint32_t(uint8_t(b[at + 2])) << 8 |
           uint32_t(uint8_t(b[at + 3]));
}

// "MZ", then the PE signature where the DOS header points, a file header with sections, and an
// optional header of a PE32 or PE32+ image that the file holds whole.
ExecutableFormat pe(const QByteArray &head, int64_t size, const HeaderReader &read)
{
    if (head.size() < 64 || !head.startsWith("MZ"))
        return {};
    const int64_t at = le32(head, 0x3C);
    if (at < 4 || at > size - 24)
        return {};
    const QByteArray h = read(at, 24 + 2);
    if (h.size() < 26 || !h.startsWith(QByteArray("PE\0\0", 4)))
        return {};
    const uint16_t sections = le16(h, 6), optionalSize = le16(h, 20), characteristics = le16(h, 22);
    const uint16_t magic = le16(h, 24);
    const bool pe32 = magic == 0x10b, pe32Plus = magic == 0x20b;
    if (sections == 0 || sections > 96 || !(pe32 || pe32Plus) || optionalSize < (pe32 ? 96 : 112) ||
        at + 24 + optionalSize > size)
        return {};
    const QString role = (characteristics & 0x2000) ? QStringLiteral("library")
                         : (characteristics & 0x0002) ? QStringLiteral("program")
                                                      : QStringLiteral("other");
    return {QStringLiteral("pe"), pe32 ? QStringLiteral("32") : QStringLiteral("64"), role};
}

uint64_t le64(const QByteArray &b, qsizetype at)
{
    return uint64_t(le32(b, at)) | uint64_t(le32(b, at + 4)) << 32;
}

// A shared object that names a program interpreter is a program built to load anywhere (PIE).
bool hasInterpreter(const QByteArray &head, bool wide, bool little, const HeaderReader &read)
{
    if (!little)
        return false; // (big-endian programs are read as what their type says)
    const uint64_t table = wide ? le64(head, 32) : le32(head, 28);
    const int entrySize = le16(head, wide ? 54 : 42), count = le16(head, wide ? 56 : 44);
    if (entrySize < (wide ? 56 : 32) || count == 0 || count > 64 || table > (uint64_t(1) << 40))
        return false;
    const QByteArray entries = read(int64_t(table), entrySize * count);
    for (int i = 0; i < count && (i + 1) * entrySize <= entries.size(); ++i)
        if (le32(entries, i * entrySize) == 3)
            return true;
    return false;
}

ExecutableFormat elf(const QByteArray &head, const HeaderReader &read)
{
    if (head.size() < 52 || !head.startsWith("\x7f" "ELF"))
        return {};
    const int cls = uint8_t(head[4]), data = uint8_t(head[5]), version = uint8_t(head[6]);
    if ((cls != 1 && cls != 2) || (data != 1 && data != 2) || version != 1 || (cls == 2 && head.size() < 64))
        return {};
    const uint16_t type = data == 1 ? le16(head, 16) : uint16_t(uint8_t(head[16]) << 8 | uint8_t(head[17]));
    if (type < 1 || type > 4)
        return {};
    const QString role = type == 2 || (type == 3 && hasInterpreter(head, cls == 2, data == 1, read))
                             ? QStringLiteral("program")
                         : type == 3 ? QStringLiteral("library")
                                     : QStringLiteral("other");
    return {QStringLiteral("elf"), cls == 1 ? QStringLiteral("32") : QStringLiteral("64"), role};
}

ExecutableFormat machO(const QByteArray &head, int64_t size)
{
    if (head.size() < 28)
        return {};
    const uint32_t magic = be32(head, 0);
    const bool thin32 = magic == 0xFEEDFACEu || magic == 0xCEFAEDFEu;
    const bool thin64 = magic == 0xFEEDFACFu || magic == 0xCFFAEDFEu;
    if (thin32 || thin64) {
        const bool little = magic == 0xCEFAEDFEu || magic == 0xCFFAEDFEu;
        const uint32_t fileType = little ? le32(head, 12) : be32(head, 12);
        const uint32_t cpu = little ? le32(head, 4) : be32(head, 4);
        if (cpu == 0 || fileType == 0 || fileType > 12)
            return {};
        const QString role = fileType == 2 ? QStringLiteral("program")
                             : fileType == 6 ? QStringLiteral("library")
                                             : QStringLiteral("other");
        return {QStringLiteral("mach-o"), thin32 ? QStringLiteral("32") : QStringLiteral("64"), role};
    }
    // The universal file's mark is also a Java class file's: there the count that follows is a version
    // (45 and up), and no architecture entry would lie inside the file.
    if (magic == 0xCAFEBABEu) {
        const uint32_t count = be32(head, 4);
        if (count == 0 || count > 20 || head.size() < qsizetype(8 + 20 * count))
            return {};
        for (uint32_t i = 0; i < count; ++i) {
            const qsizetype e = 8 + 20 * qsizetype(i);
            const int64_t offset = be32(head, e + 8), length = be32(head, e + 12);
            if (be32(head, e) == 0 || offset < 8 + 20 * int64_t(count) || length == 0 || offset + length > size)
                return {};
        }
        return {QStringLiteral("mach-o"), QString(), QStringLiteral("program")};
    }
    return {};
}
} // namespace

ExecutableFormat ExecutableFormatOf(const QByteArray &head, int64_t size, const HeaderReader &read)
{
    if (ExecutableFormat f = pe(head, size, read); f.found())
        return f;
    if (ExecutableFormat f = elf(head, read); f.found())
        return f;
    return machO(head, size);
}

namespace {
constexpr int HeadBytes = 512;
} // namespace

QList<qsizetype> FilesMarkedAsPrograms(int threads, const std::atomic<bool> *stop)
{
    return FilesWhoseHeadPasses(
        HeadBytes,
        [](QByteArrayView h) {
            if (h.size() < 28)
                return false;
            if (h.startsWith("MZ") || h.startsWith("\x7f" "ELF"))
                return true;
            for (const char *mark : {"\xfe\xed\xfa\xce", "\xfe\xed\xfa\xcf", "\xce\xfa\xed\xfe", "\xcf\xfa\xed\xfe",
                                     "\xca\xfe\xba\xbe"})
                if (h.startsWith(QByteArrayView(mark, 4)))
                    return true;
            return false;
        },
        threads, stop);
}

QList<ProgramFile> ExaminePrograms(const QList<ListedFile> &files, const QList<qsizetype> &marked)
{
    QList<ProgramFile> out;
    char head[HeadBytes];
    for (const qsizetype i : marked) {
        const ListedFile &f = files[i];
        const int64_t n = ReadStoredFile(f.stored, f.occurrence, 0, head, HeadBytes);
        if (n < 28)
            continue;
        const HeaderReader read = [&](int64_t offset, int length) {
            QByteArray bytes(length, Qt::Uninitialized);
            const int64_t got = ReadStoredFile(f.stored, f.occurrence, offset, bytes.data(), length);
            bytes.truncate(got < 0 ? 0 : qsizetype(got));
            return bytes;
        };
        const ExecutableFormat format =
            ExecutableFormatOf(QByteArray::fromRawData(head, qsizetype(n)), InfoOf(f.stored, f.occurrence).size, read);
        if (!format.found())
            continue;
        ProgramFile p;
        p.stored = f.stored;
        p.occurrence = f.occurrence;
        p.format = format;
        if (format.format == QLatin1String("pe")) {
            VersionInformation info;
            p.hasVersion = info.ReadVersionInformation(f.stored, f.occurrence) || !info.LanguageCodePage.isEmpty();
            if (p.hasVersion) {
                p.languageCodePage = info.LanguageCodePage;
                p.companyName = info.CompanyName;
                p.fileDescription = info.FileDescription;
                p.fileVersion = info.FileVersion;
                p.internalName = info.InternalName;
                p.legalCopyright = info.LegalCopyright;
                p.originalFileName = info.OriginalFileName;
                p.productName = info.ProductName;
                p.productVersion = info.ProductVersion;
            }
        }
        out.append(p);
    }
    return out;
}
