#include "catalogue/DemoDisc.h"

#include "platform/IniProfile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QList>
#include <QPair>
#include <QtEndian>

#include <archive.h>
#include <archive_entry.h>

#include <cmath>

namespace {
// A program file that is no archive: the DOS header's mark, then padding.
QByteArray program(const char *name)
{
    QByteArray b("MZ");
    b.append(QByteArray(126, '\0'));
    b.append("This program is a stand-in for ");
    b.append(name);
    b.append(QByteArray(1024 - b.size() % 1024, '\0'));
    return b;
}

void putLe(QByteArray &b, quint32 v, int bytes)
{
    for (int i = 0; i < bytes; ++i)
        b.append(char((v >> (8 * i)) & 0xFF));
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

// An MPEG-1 system stream holding one pack and its end: a container the players accept, no pictures.
QByteArray mpeg()
{
    static const unsigned char pack[] = {0x00, 0x00, 0x01, 0xBA, 0x21, 0x00, 0x01, 0x00, 0x01, 0x80, 0x00, 0x01,
                                         0x00, 0x00, 0x01, 0xB9};
    return QByteArray(reinterpret_cast<const char *>(pack), sizeof pack);
}

la_ssize_t appendTo(archive *, void *client, const void *buf, size_t n)
{
    static_cast<QByteArray *>(client)->append(static_cast<const char *>(buf), static_cast<qsizetype>(n));
    return static_cast<la_ssize_t>(n);
}

// A ZIP of the members, folders made explicit as the tools of the time wrote them.
QByteArray zip(const QList<QPair<QString, QByteArray>> &members)
{
    QByteArray out;
    archive *a = archive_write_new();
    archive_write_set_format_zip(a);
    archive_write_set_bytes_in_last_block(a, 1);
    archive_write_open(a, &out, nullptr, appendTo, nullptr);
    QStringList folders;
    for (const auto &[name, data] : members) {
        const QStringList parts = name.split(QLatin1Char('/'));
        for (int i = 1; i < parts.size(); ++i) {
            const QString folder = parts.mid(0, i).join(QLatin1Char('/')) + QLatin1Char('/');
            if (folders.contains(folder))
                continue;
            folders.append(folder);
            archive_entry *e = archive_entry_new();
            archive_entry_copy_pathname(e, folder.toUtf8().constData());
            archive_entry_set_filetype(e, AE_IFDIR);
            archive_entry_set_perm(e, 0755);
            archive_entry_set_mtime(e, 1104537600, 0);
            archive_write_header(a, e);
            archive_entry_free(e);
        }
        archive_entry *e = archive_entry_new();
        archive_entry_copy_pathname(e, name.toUtf8().constData());
        archive_entry_set_filetype(e, AE_IFREG);
        archive_entry_set_perm(e, 0644);
        archive_entry_set_size(e, data.size());
        archive_entry_set_mtime(e, 1104537600, 0);
        archive_write_header(a, e);
        archive_write_data(a, data.constData(), static_cast<size_t>(data.size()));
        archive_entry_free(e);
    }
    archive_write_close(a);
    archive_write_free(a);
    return out;
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

QString LayOutDemoDisc(const QString &folder)
{
    QDir dir(folder);
    if (dir.exists() && !dir.removeRecursively())
        return folder + QStringLiteral(": the old demo disc cannot be removed");
    const QByteArray readme =
        "Demo master for KEVRO\r\n=====================\r\n\r\n"
        "A small disc to scan: programs the demo catalogue knows, some licensed to Northwind Records and\r\n"
        "Contoso Games, some to nobody, one that nobody knows, media, documents, an archive and a\r\n"
        "self-extracting installer.\r\n";
    const QList<QPair<QString, QByteArray>> files{
        {QStringLiteral("AUTORUN.INF"), "[autorun]\r\nopen=AUTORUN.EXE\r\nicon=AUTORUN.EXE,0\r\n"},
        {QStringLiteral("AUTORUN.EXE"), program("Acme Autorun Menu")},
        {QStringLiteral("MENU.EXE"), program("Acme Menu Viewer")},
        {QStringLiteral("README.TXT"), readme},
        {QStringLiteral(".DiscInfo"), "Mastered 2005-01-01 for the demo client\n"},
        {QStringLiteral("Docs/Release Notes.txt"), "Release notes\r\n\r\nFirst pressing.\r\n"},
        {QStringLiteral("Docs/Credits.nfo"), "Credits: the KEVRO demo team\r\n"},
        {QStringLiteral("Docs/Read.me"), "Read me too.\r\n"},
        {QStringLiteral("Docs/Manual.pdf"), "%PDF-1.4\n% a document kind the scan does not sort\n%%EOF\n"},
        {QStringLiteral("Media/Chime.wav"), wave()},
        {QStringLiteral("Media/Intro.mpg"), mpeg()},
        {QStringLiteral("Media/Pictures/Cover.bmp"), bitmap()},
        {QStringLiteral("Media/Pictures/Dot.gif"), gif()},
        {QStringLiteral("Players/WMPLAYER.EXE"), program("Windows Media Player")},
        {QStringLiteral("Players/QuickTimeInstaller.exe"), program("QuickTime")},
        {QStringLiteral("Tools/DiscTool.exe"), program("a tool the catalogue does not know")},
        {QStringLiteral("Tools/disc.dat"), QByteArray(512, '\x5A')},
        {QStringLiteral("Setup/SETUP.INI"), "[Setup]\r\nProduct=Demo\r\n"},
        {QStringLiteral("Setup/Data.zip"),
         zip({{QStringLiteral("Program/ACRORD32.EXE"), program("Acrobat Reader")},
              {QStringLiteral("Program/Help/Guide.txt"), "How to read the manual.\r\n"},
              {QStringLiteral("Program/Player/FlashPlayer.exe"), program("Flash Player")},
              {QStringLiteral("Program/Player/Splash.gif"), gif()}})},
        // A self-extractor: a program stub with the ZIP behind it, as the installers of the time were.
        {QStringLiteral("Setup/DXSETUP.EXE"),
         program("DirectX set-up") + zip({{QStringLiteral("DirectX/DXWEBSETUP.EXE"), program("DirectX web set-up")},
                                          {QStringLiteral("DirectX/Readme.txt"), "DirectX 9.0c\r\n"}})},
    };
    for (const auto &[name, bytes] : files) {
        if (const QString e = write(folder + QLatin1Char('/') + name, bytes); !e.isEmpty())
            return e;
    }
    return QString();
}

QString WriteDemoSettings(const QString &iniFile, const QString &demoDisc)
{
    if (QFileInfo::exists(iniFile))
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
