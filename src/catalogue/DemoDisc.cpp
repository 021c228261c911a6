#include "catalogue/DemoDisc.h"

#include "platform/IniProfile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QList>
#include <QPair>

#include <archive.h>
#include <archive_entry.h>

#include <array>
#include <cmath>
#include <cstdlib>
#include <memory>

namespace {
void putLe(QByteArray &b, quint32 v, int bytes)
{
    for (int i = 0; i < bytes; ++i)
        b.append(char((v >> (8 * i)) & 0xFF));
}

void putBe(QByteArray &b, quint32 v, int bytes)
{
    for (int i = bytes - 1; i >= 0; --i)
        b.append(char((v >> (8 * i)) & 0xFF));
}

// A program file that is no archive: a DOS program that says it needs Windows and stops, as every
// Windows program begins, then the name of the program it stands in for, padded to the size in KB.
QByteArray program(const char *standsFor, int kilobytes = 1)
{
    const int size = kilobytes * 1024;
    QByteArray b("MZ");
    putLe(b, size % 512, 2);         // bytes in the last page
    putLe(b, (size + 511) / 512, 2); // pages
    putLe(b, 0, 2);                  // relocations
    putLe(b, 4, 2);                  // header paragraphs: the code starts at 64
    putLe(b, 0x10, 2);               // least extra memory
    putLe(b, 0xFFFF, 2);             // most extra memory
    putLe(b, 0, 2);                  // SS
    putLe(b, 0xB8, 2);               // SP
    putLe(b, 0, 2);                  // checksum
    putLe(b, 0, 2);                  // IP
    putLe(b, 0, 2);                  // CS
    putLe(b, 0x40, 2);               // relocation table
    putLe(b, 0, 2);                  // overlay
    b.append(QByteArray(36, '\0'));  // reserved, OEM, and no Windows header (offset 0)
    // push cs; pop ds; mov dx, 0Eh; mov ah, 9; int 21h; mov ax, 4C01h; int 21h
    static const unsigned char code[] = {0x0E, 0x1F, 0xBA, 0x0E, 0x00, 0xB4, 0x09,
                                         0xCD, 0x21, 0xB8, 0x01, 0x4C, 0xCD, 0x21};
    b.append(reinterpret_cast<const char *>(code), sizeof code);
    b.append("This program cannot be run in DOS mode.\r\r\n$");
    b.append('\0');
    b.append("Stand-in for ");
    b.append(standsFor);
    b.append(QByteArray(size - b.size(), '\0'));
    return b;
}

// Half a second of a 440 Hz tone, 8 kHz mono 8-bit PCM.
QByteArray wave()
{
    constexpr int rate = 8000, samples = rate / 2;
    QByteArray b("RIFF");
    putLe(b, 36 + samples, 4);
    b.append("WAVEfmt ");
    putLe(b, 16, 4);
    putLe(b, 1, 2); // PCM
    putLe(b, 1, 2); // mono
    putLe(b, rate, 4);
    putLe(b, rate, 4);
    putLe(b, 1, 2);
    putLe(b, 8, 2);
    b.append("data");
    putLe(b, samples, 4);
    for (int i = 0; i < samples; ++i)
        b.append(char(128 + std::lround(100 * std::sin(2 * M_PI * 440 * i / rate))));
    return b;
}

// A bell: 880 Hz dying away over 0.4 s, 8 kHz mono 8-bit AIFF.
QByteArray aiff()
{
    constexpr int rate = 8000, samples = rate * 2 / 5;
    QByteArray sound;
    putBe(sound, 0, 4); // offset
    putBe(sound, 0, 4); // block size
    for (int i = 0; i < samples; ++i)
        sound.append(char(std::lround(110 * std::exp(-6.0 * i / samples) * std::sin(2 * M_PI * 880 * i / rate))));
    QByteArray b("FORM");
    putBe(b, 4 + 8 + 18 + 8 + sound.size(), 4);
    b.append("AIFFCOMM");
    putBe(b, 18, 4);
    putBe(b, 1, 2); // mono
    putBe(b, samples, 4);
    putBe(b, 8, 2);
    // 8000 as an 80-bit extended number: 2^12 * 1.953125
    putBe(b, 16383 + 12, 2);
    putBe(b, 8000u << 19, 4);
    putBe(b, 0, 4);
    b.append("SSND");
    putBe(b, sound.size(), 4);
    b.append(sound);
    return b;
}

// Half a second of silence as MPEG-1 Layer III, 32 kbit/s mono at 44.1 kHz: frames whose side
// information says there is nothing to play.
QByteArray mp3()
{
    constexpr int frames = 20, frameBytes = 144 * 32000 / 44100;
    QByteArray b;
    for (int i = 0; i < frames; ++i) {
        b.append("\xFF\xFB\x10\xC4", 4); // mono, an original
        b.append(QByteArray(frameBytes - 4, '\0'));
    }
    return b;
}

// A 48 x 32 picture of three bands, 24-bit BMP.
QByteArray bitmap()
{
    constexpr int w = 48, h = 32, stride = w * 3;
    QByteArray b("BM");
    putLe(b, 54 + stride * h, 4);
    putLe(b, 0, 4);
    putLe(b, 54, 4);
    putLe(b, 40, 4);
    putLe(b, w, 4);
    putLe(b, h, 4);
    putLe(b, 1, 2);
    putLe(b, 24, 2);
    putLe(b, 0, 4);
    putLe(b, stride * h, 4);
    putLe(b, 2835, 4);
    putLe(b, 2835, 4);
    putLe(b, 0, 4);
    putLe(b, 0, 4);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            const int band = x * 3 / w;
            b.append(char(band == 0 ? 0xB0 : 0x30)); // blue
            b.append(char(band == 1 ? 0xA0 : 0x40)); // green
            b.append(char(band == 2 ? 0xC0 : 0x20)); // red
        }
    return b;
}

// A one-pixel GIF.
QByteArray gif()
{
    static const unsigned char bytes[] = {0x47, 0x49, 0x46, 0x38, 0x39, 0x61, 0x01, 0x00, 0x01, 0x00, 0x80, 0x00,
                                          0x00, 0x1E, 0x3C, 0x5A, 0xFF, 0xFF, 0xFF, 0x2C, 0x00, 0x00, 0x00, 0x00,
                                          0x01, 0x00, 0x01, 0x00, 0x00, 0x02, 0x02, 0x44, 0x01, 0x00, 0x3B};
    return QByteArray(reinterpret_cast<const char *>(bytes), sizeof bytes);
}

// A 48 x 32 sunset over the sea, baseline JPEG.
QByteArray jpeg()
{
    return QByteArray::fromBase64(
        "/9j/4AAQSkZJRgABAQEAYABgAAD/2wBDAA0JCgsKCA0LCgsODg0PEyAVExISEyccHhcgLikxMC4pLSwzOko+MzZGNywtQFdBRkxO"
        "UlNSMj5aYVpQYEpRUk//2wBDAQ4ODhMREyYVFSZPNS01T09PT09PT09PT09PT09PT09PT09PT09PT09PT09PT09PT09PT09PT09P"
        "T09PT09PT0//wAARCAAgADADASIAAhEBAxEB/8QAGAAAAwEBAAAAAAAAAAAAAAAAAgMGBAX/xAAmEAABAwIEBgMAAAAAAAAAAAAB"
        "AAIDBAUREpHRBhMxQVJTQlHS/8QAGQEAAgMBAAAAAAAAAAAAAAAAAwUAAgQG/8QAHhEAAgIBBQEAAAAAAAAAAAAAAAEDBAIFERIh"
        "UZH/2gAMAwEAAhEDEQA/AOqHpgesYejD0qdYeOQ2B6YHpdNTTTtzNADft3dMkpZoWZiA4DrlPRAceHLjv2CcgYemB6xh6YHqOsDc"
        "hKC90/hLoN0YvlN4S6DdToRhdc60fgnd2Ut6fi63RU8cfIqcWtAODG4Y9/kmnjC2uBBgqiD1BY39KFCMLBlpFZvfv6Ud2Uoxfqb1"
        "zaDdMF+pfXNoN1NBEFpdWPwE7kp//9k=");
}

// MSB-first bits, for the MPEG video stream.
class BitWriter
{
public:
    void put(quint32 value, int bits)
    {
        for (int i = bits - 1; i >= 0; --i) {
            m_byte = quint8((m_byte << 1) | ((value >> i) & 1));
            if (++m_bits == 8)
                flush();
        }
    }
    void put(const char *code)
    {
        for (; *code; ++code)
            put(*code == '1' ? 1 : 0, 1);
    }
    // Pads with zero bits to the byte, then writes the start code.
    void start(quint8 code)
    {
        while (m_bits)
            put(0, 1);
        m_out.append("\0\0\1", 3);
        m_out.append(char(code));
    }
    QByteArray bytes() const { return m_out; }

private:
    void flush()
    {
        m_out.append(char(m_byte));
        m_byte = 0;
        m_bits = 0;
    }
    QByteArray m_out;
    quint8 m_byte = 0;
    int m_bits = 0;
};

// A second of dawn: 64 x 48 MPEG-1 video at 25 pictures a second, each an intra picture of one colour
// going from a dark red to a light blue. Every block holds its DC term only, so the stream is written
// without a transform.
QByteArray mpeg()
{
    constexpr int w = 64, h = 48, pictures = 25;
    static const char *const lumaSize[] = {"100", "00", "01", "101", "110", "1110", "11110", "111110", "1111110"};
    static const char *const chromaSize[] = {"00",    "01",     "10",      "110",     "1110",
                                             "11110", "111110", "1111110", "11111110"};
    BitWriter b;
    // The DC term of a block as the change from the one before; each slice starts again from mid-grey.
    auto dc = [&](int change, const char *const *sizes) {
        int size = 0;
        while ((std::abs(change) >> size) != 0)
            ++size;
        b.put(sizes[size]);
        if (size)
            b.put(static_cast<quint32>(change > 0 ? change : change + (1 << size) - 1), size);
        b.put("10"); // end of block
    };
    b.start(0xB3); // sequence
    b.put(w, 12);
    b.put(h, 12);
    b.put(1, 4);     // square pixels
    b.put(3, 4);     // 25 pictures a second
    b.put(1000, 18); // 400 kbit/s
    b.put(1, 1);
    b.put(20, 10); // buffer
    b.put(0, 3);   // not constrained, the default quantiser matrices
    b.start(0xB8); // group of pictures at 00:00:00.00, closed
    b.put(0, 1 + 5 + 6);
    b.put(1, 1);
    b.put(0, 6 + 6);
    b.put(0b10, 2);
    for (int p = 0; p < pictures; ++p) {
        const int y = 16 + p * 200 / (pictures - 1) - 128, tint = p * 60 / (pictures - 1) - 30;
        b.start(0x00); // picture
        b.put(p, 10);
        b.put(1, 3); // intra
        b.put(0xFFFF, 16);
        b.put(0, 1);
        for (int row = 0; row < h / 16; ++row) {
            b.start(quint8(0x01 + row)); // slice
            b.put(8, 5);                 // quantiser scale
            b.put(0, 1);
            for (int col = 0; col < w / 16; ++col) {
                b.put("11"); // the next macroblock, intra
                const bool first = col == 0;
                for (int block = 0; block < 4; ++block)
                    dc(first && block == 0 ? y : 0, lumaSize);
                dc(first ? tint : 0, chromaSize);  // blue difference
                dc(first ? -tint : 0, chromaSize); // red difference
            }
        }
    }
    b.start(0xB7); // sequence end
    return b.bytes();
}

// Two seconds of a light bar crossing a dusk sky: 32 x 24 uncompressed 24-bit frames at 6 a second.
QByteArray avi()
{
    constexpr int w = 32, h = 24, frameBytes = w * h * 3, frames = 12, fps = 6;
    auto chunk = [](const char *id, const QByteArray &data) {
        QByteArray c(id);
        putLe(c, data.size(), 4);
        c.append(data);
        if (data.size() % 2)
            c.append('\0');
        return c;
    };
    auto list = [&](const char *type, const QByteArray &data) { return chunk("LIST", QByteArray(type) + data); };

    QByteArray avih;
    putLe(avih, 1000000 / fps, 4);    // microseconds a frame
    putLe(avih, frameBytes * fps, 4); // bytes a second at most
    putLe(avih, 0, 4);                // padding granularity
    putLe(avih, 0x10, 4);             // has an index
    putLe(avih, frames, 4);           // frames
    putLe(avih, 0, 4);                // initial frames
    putLe(avih, 1, 4);                // streams
    putLe(avih, frameBytes, 4);       // buffer
    putLe(avih, w, 4);
    putLe(avih, h, 4);
    avih.append(QByteArray(16, '\0'));
    QByteArray strh("vidsDIB ");
    putLe(strh, 0, 4);             // flags
    putLe(strh, 0, 4);             // priority, language
    putLe(strh, 0, 4);             // initial frames
    putLe(strh, 1, 4);             // scale
    putLe(strh, fps, 4);           // rate
    putLe(strh, 0, 4);             // start
    putLe(strh, frames, 4);        // length
    putLe(strh, frameBytes, 4);    // buffer
    putLe(strh, 0xFFFFFFFF, 4);    // quality: the default
    putLe(strh, 0, 4);             // sample size: varies
    putLe(strh, 0, 4);             // frame: left, top
    putLe(strh, w | (h << 16), 4); //        right, bottom
    QByteArray strf;
    putLe(strf, 40, 4);
    putLe(strf, w, 4);
    putLe(strf, h, 4); // bottom-up
    putLe(strf, 1, 2);
    putLe(strf, 24, 2);
    putLe(strf, 0, 4); // uncompressed
    putLe(strf, frameBytes, 4);
    strf.append(QByteArray(16, '\0'));
    const QByteArray header =
        list("hdrl", chunk("avih", avih) + list("strl", chunk("strh", strh) + chunk("strf", strf)));

    QByteArray movi, index;
    for (int f = 0; f < frames; ++f) {
        QByteArray pixels;
        const int bar = f * w / frames;
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) {
                const bool lit = x >= bar && x < bar + 4;
                pixels.append(char(lit ? 0x60 : 0x80 + y * 3)); // blue
                pixels.append(char(lit ? 0xE0 : 0x30 + y * 2)); // green
                pixels.append(char(lit ? 0xF0 : 0x40 + y));     // red
            }
        index.append("00db");
        putLe(index, 0x10, 4);            // a key frame
        putLe(index, 4 + movi.size(), 4); // from the "movi" mark
        putLe(index, frameBytes, 4);
        movi.append(chunk("00db", pixels));
    }
    QByteArray b("RIFF");
    const QByteArray body = QByteArray("AVI ") + header + list("movi", movi) + chunk("idx1", index);
    putLe(b, body.size(), 4);
    return b + body;
}

struct ArchiveWriterFree {
    void operator()(archive *a) const { archive_write_free(a); }
};

la_ssize_t appendTo(archive *, void *client, const void *buf, size_t n)
{
    static_cast<QByteArray *>(client)->append(static_cast<const char *>(buf), static_cast<qsizetype>(n));
    return static_cast<la_ssize_t>(n);
}

// A ZIP of the members, folders made explicit as the tools of the time wrote them. Returns "" or what
// went wrong.
QString zip(const QList<QPair<QString, QByteArray>> &members, QByteArray &out)
{
    out.clear();
    std::unique_ptr<archive, ArchiveWriterFree> a(archive_write_new());
    auto failed = [&](int r) { return r != ARCHIVE_OK && r != ARCHIVE_WARN; };
    if (failed(archive_write_set_format_zip(a.get())) || failed(archive_write_set_bytes_in_last_block(a.get(), 1)) ||
        failed(archive_write_open(a.get(), &out, nullptr, appendTo, nullptr)))
        return QString::fromLocal8Bit(archive_error_string(a.get()));
    auto add = [&](const QString &name, bool folder, const QByteArray &data) {
        std::unique_ptr<archive_entry, void (*)(archive_entry *)> e(archive_entry_new(), archive_entry_free);
        archive_entry_copy_pathname(e.get(), name.toUtf8().constData());
        archive_entry_set_filetype(e.get(), folder ? AE_IFDIR : AE_IFREG);
        archive_entry_set_perm(e.get(), folder ? 0755 : 0644);
        archive_entry_set_size(e.get(), data.size());
        archive_entry_set_mtime(e.get(), 1104537600, 0);
        if (failed(archive_write_header(a.get(), e.get())))
            return false;
        return data.isEmpty() ||
               archive_write_data(a.get(), data.constData(), static_cast<size_t>(data.size())) == data.size();
    };
    QStringList folders;
    for (const auto &[name, data] : members) {
        const QStringList parts = name.split(QLatin1Char('/'));
        for (int i = 1; i < parts.size(); ++i) {
            const QString folder = parts.mid(0, i).join(QLatin1Char('/')) + QLatin1Char('/');
            if (folders.contains(folder))
                continue;
            folders.append(folder);
            if (!add(folder, true, QByteArray()))
                return QString::fromLocal8Bit(archive_error_string(a.get()));
        }
        if (!add(name, false, data))
            return QString::fromLocal8Bit(archive_error_string(a.get()));
    }
    if (failed(archive_write_close(a.get())))
        return QString::fromLocal8Bit(archive_error_string(a.get()));
    return QString();
}

quint32 le(const QByteArray &b, qsizetype at, int bytes)
{
    quint32 v = 0;
    for (int i = bytes - 1; i >= 0; --i)
        v = (v << 8) | quint8(b.at(at + i));
    return v;
}

void setLe32(QByteArray &b, qsizetype at, quint32 v)
{
    for (int i = 0; i < 4; ++i)
        b[at + i] = char((v >> (8 * i)) & 0xFF);
}

// A self-extractor: the program stub with the ZIP behind it, the ZIP's offsets moved past the stub as
// the self-extractor makers left them, so that the readers which trust the offsets find the members
// as well as those which search from the end. Returns "" or what went wrong.
QString selfExtractor(const QByteArray &stub, QByteArray zipBytes, QByteArray &out)
{
    // The end record closes the file: the writer adds no comment.
    const qsizetype end = zipBytes.size() - 22;
    if (end < 0 || le(zipBytes, end, 4) != 0x06054B50)
        return QStringLiteral("the self-extractor's ZIP has no end record");
    const quint32 shift = static_cast<quint32>(stub.size());
    const quint32 entries = le(zipBytes, end + 10, 2), directory = le(zipBytes, end + 16, 4);
    qsizetype at = directory;
    for (quint32 i = 0; i < entries; ++i) {
        if (at + 46 > end || le(zipBytes, at, 4) != 0x02014B50 || le(zipBytes, at + 42, 4) == 0xFFFFFFFF)
            return QStringLiteral("the self-extractor's ZIP has a directory entry that cannot be moved");
        setLe32(zipBytes, at + 42, le(zipBytes, at + 42, 4) + shift);
        at += 46 + le(zipBytes, at + 28, 2) + le(zipBytes, at + 30, 2) + le(zipBytes, at + 32, 2);
    }
    setLe32(zipBytes, end + 16, directory + shift);
    out = stub + zipBytes;
    return QString();
}

QString write(const QString &path, const QByteArray &bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile f(path);
    if (!f.open(QIODevice::WriteOnly) || f.write(bytes) != bytes.size())
        return path + QStringLiteral(": ") + f.errorString();
    return QString();
}
} // namespace

// A file kept in the program's resources. The resources live in a static library: they are brought in
// by name, or the linker would leave them out.
static QByteArray resource(const QString &name)
{
    Q_INIT_RESOURCE(demo_media);
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QString LayOutDemoDisc(const QString &folder)
{
    // The folder is ours to replace, but only as a folder: a link would lead the removal elsewhere.
    const QFileInfo info(folder);
    if (info.isSymLink())
        return folder + QStringLiteral(": is a link, not the demo disc's own folder; it is left alone");
    if (info.exists() && !info.isDir())
        return folder + QStringLiteral(": is a file, not the demo disc's folder; it is left alone");

    QByteArray dataZip, directX;
    const QString zipped =
        zip({{QStringLiteral("Program/ACRORD32.EXE"), program("Adobe Acrobat Reader", 6)},
             {QStringLiteral("Program/Help/Guide.txt"), "How to read the manual.\r\n"},
             {QStringLiteral("Program/Player/FlashPlayer.exe"), program("Macromedia Flash Player", 3)},
             {QStringLiteral("Program/Player/Splash.gif"), gif()},
             {QStringLiteral("Reader/AR505ENU.EXE"), program("Adobe Acrobat Reader set-up", 8)}},
            dataZip);
    if (!zipped.isEmpty())
        return folder + QStringLiteral("/Setup/Data.zip: ") + zipped;
    QByteArray directXZip;
    QString made = zip({{QStringLiteral("DirectX/DXWEBSETUP.EXE"), program("DirectX web set-up", 2)},
                        {QStringLiteral("DirectX/Readme.txt"), "DirectX 9.0c\r\n"}},
                       directXZip);
    if (made.isEmpty())
        made = selfExtractor(program("DirectX set-up"), directXZip, directX);
    if (!made.isEmpty())
        return folder + QStringLiteral("/Setup/DXSETUP.EXE: ") + made;

    const QByteArray readme =
        "Demo master for KEVRO\r\n=====================\r\n\r\n"
        "A small disc to scan: programs the demo catalogue knows, some licensed to Northwind Records and\r\n"
        "Contoso Games, some to nobody, one that nobody knows, video, sound, pictures, documents, an archive\r\n"
        "and a self-extracting installer.\r\n";
    const QByteArray index = "<html><head><title>Demo master</title></head><body>\r\n"
                             "<h1>Demo master</h1>\r\n<p>Read <a href=\"Manual.pdf\">the manual</a> or "
                             "<a href=\"Release Notes.txt\">the release notes</a>.</p>\r\n</body></html>\r\n";
    const QList<QPair<QString, QByteArray>> files{
        {QStringLiteral("AUTORUN.INF"), "[autorun]\r\nopen=AUTORUN.EXE\r\nicon=AUTORUN.EXE,0\r\n"},
        {QStringLiteral("AUTORUN.EXE"), program("Acme Autorun Menu", 4)},
        {QStringLiteral("MENU.EXE"), program("Acme Menu Viewer", 2)},
        {QStringLiteral("README.TXT"), readme},
        {QStringLiteral("DATA.XYZ"), QByteArray("XYZ\x1A", 4) + QByteArray(252, '\x07')},
        {QStringLiteral(".DiscInfo"), "Mastered 2005-01-01 for the demo client\n"},
        {QStringLiteral("Docs/Release Notes.txt"), "Release notes\r\n\r\nFirst pressing.\r\n"},
        {QStringLiteral("Docs/Credits.nfo"), "Credits: the KEVRO demo team\r\n"},
        {QStringLiteral("Docs/Read.me"), "Read me too.\r\n"},
        {QStringLiteral("Docs/Install.readme"), "Insert the disc; the menu starts by itself.\r\n"},
        {QStringLiteral("Docs/.Draft.txt"), "A draft left on the master by mistake.\r\n"},
        {QStringLiteral("Docs/Index.htm"), index},
        {QStringLiteral("Docs/Manual.pdf"), "%PDF-1.4\n% a document kind the scan does not sort\n%%EOF\n"},
        {QStringLiteral("Media/Intro.mpg"), mpeg()},
        {QStringLiteral("Media/Trailer.avi"), avi()},
        {QStringLiteral("Media/Chime.wav"), wave()},
        {QStringLiteral("Media/Bell.aif"), aiff()},
        {QStringLiteral("Media/Silence.mp3"), mp3()},
        // Encoded by GStreamer (tools/make-demo-media.sh): a QuickTime movie and a tune.
        {QStringLiteral("Media/Clip.mov"), resource(QStringLiteral(":/demo-media/CLIP.MOV"))},
        {QStringLiteral("Media/Theme.mp3"), resource(QStringLiteral(":/demo-media/THEME.MP3"))},
        {QStringLiteral("Media/Pictures/Cover.bmp"), bitmap()},
        {QStringLiteral("Media/Pictures/Dot.gif"), gif()},
        {QStringLiteral("Media/Pictures/Sunset.jpg"), jpeg()},
        // A video CD's track, a video by the folder it lies in.
        {QStringLiteral("MPEGAV/AVSEQ01.DAT"), mpeg()},
        {QStringLiteral("Players/WMPLAYER.EXE"), program("Windows Media Player", 5)},
        {QStringLiteral("Players/QuickTimeInstaller.exe"), program("QuickTime", 7)},
        {QStringLiteral("Tools/DiscTool.exe"), program("a tool the catalogue does not know")},
        {QStringLiteral("Tools/disc.dat"), QByteArray(512, '\x5A')},
        {QStringLiteral("Setup/SETUP.INI"), "[Setup]\r\nProduct=Demo\r\n"},
        {QStringLiteral("Setup/Data.zip"), dataZip},
        {QStringLiteral("Setup/DXSETUP.EXE"), directX},
    };
    if (info.exists() && !QDir(folder).removeRecursively())
        return folder + QStringLiteral(": the old demo disc cannot be removed");
    for (const auto &[name, bytes] : files) {
        if (const QString e = write(folder + QLatin1Char('/') + name, bytes); !e.isEmpty())
            return e;
    }
    return QString();
}

QString WriteDemoSettings(const QString &iniFile, const QString &demoDisc)
{
    if (QFileInfo::exists(iniFile) || QFileInfo(iniFile).isSymLink())
        return QString();
    const QList<std::array<QString, 3>> keys{
        {QStringLiteral("Devices"), QStringLiteral("DefaultDevice"), QDir(demoDisc).absolutePath()},
        {QStringLiteral("Reports"), QStringLiteral("DefaultReportType"), QStringLiteral("HTML")},
        {QStringLiteral("Reports"), QStringLiteral("DefaultReportContent"), QStringLiteral("ALL")}};
    for (const auto &[section, key, value] : keys) {
        if (!WritePrivateProfileString(section, key, value, iniFile))
            return iniFile + QStringLiteral(": cannot be written");
    }
    return QString();
}
