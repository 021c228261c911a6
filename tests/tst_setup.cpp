// kevro-setup as an installer runs it: the demo disc it lays out (every kind of file, real media, the
// archives as the scan reads them, programs the demo catalogue judges every way), the settings that point
// a first start at it, and what it leaves alone.

#include "TestSupport.h"

#include "catalogue/Database.h"
#include "platform/FileSystem.h"
#include "platform/IniProfile.h"
#include "review/ExeEvaluation.h"
#include "scan/MediaWalker.h"
#include "shell/MainMod.h"

#include <QDir>
#include <QDirIterator>
#include <QImage>
#include <QMap>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <archive.h>
#include <archive_entry.h>

#include <memory>

namespace {
// Runs kevro-setup; home, when given, is its application folder instead of this program's.
int runSetup(const QStringList &args, QString *output = nullptr, const QString &home = QString())
{
    QProcess p;
    p.setProcessChannelMode(QProcess::MergedChannels);
    if (!home.isEmpty()) {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("KEVRO_HOME"), home);
        p.setProcessEnvironment(env);
    }
    p.start(QStringLiteral(KEVRO_SETUP_PROGRAM), args);
    p.waitForFinished(60000);
    if (output)
        *output = QString::fromLocal8Bit(p.readAll());
    return p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1;
}

QStringList names(const QStringList &stored, const QString &prefix)
{
    QStringList out;
    for (const QString &s : stored)
        if (s.startsWith(prefix))
            out.append(s.mid(prefix.size()));
    out.sort();
    return out;
}

// Every file below the folder, hidden ones too, as paths relative to it.
QStringList filesBelow(const QString &folder)
{
    QStringList out;
    QDirIterator it(folder, QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
    while (it.hasNext())
        out.append(QDir(folder).relativeFilePath(it.next()));
    out.sort();
    return out;
}

// The members libarchive's seeking ZIP reader finds in a file, the one a self-extractor needs, with
// their contents; folders end in "/". Empty when it takes the file for no ZIP or a member fails.
QMap<QString, QByteArray> zipMembers(const QString &path)
{
    QMap<QString, QByteArray> members;
    std::unique_ptr<archive, decltype(&archive_read_free)> a(archive_read_new(), archive_read_free);
    archive_read_support_format_zip_seekable(a.get());
    if (archive_read_open_filename(a.get(), QFile::encodeName(path).constData(), 10240) != ARCHIVE_OK)
        return {};
    archive_entry *e = nullptr;
    int r;
    while ((r = archive_read_next_header(a.get(), &e)) == ARCHIVE_OK) {
        QString name = QString::fromUtf8(archive_entry_pathname(e));
        if (archive_entry_filetype(e) == AE_IFDIR && !name.endsWith('/'))
            name += '/';
        QByteArray data;
        char buf[4096];
        la_ssize_t n;
        while ((n = archive_read_data(a.get(), buf, sizeof buf)) > 0)
            data.append(buf, n);
        if (n < 0)
            return {};
        members.insert(name, data);
    }
    return r == ARCHIVE_EOF ? members : QMap<QString, QByteArray>();
}

// A number of 2 to 4 bytes at a place in a file, in either byte order.
quint32 num(const QByteArray &b, qsizetype at, int bytes, bool bigEndian = false)
{
    quint32 v = 0;
    for (int i = 0; i < bytes; ++i)
        v = (v << 8) | quint8(b.at(at + (bigEndian ? i : bytes - 1 - i)));
    return v;
}

// The chunks of a RIFF (little-endian) or IFF (big-endian) file: the form's size is the file's, and its
// chunks fill it to the last byte. Returns the chunk names in order, or "" on the first that does not fit.
QStringList chunks(const QByteArray &file, const char *form, const char *type, bool bigEndian)
{
    auto size = [&](qsizetype at) { return num(file, at, 4, bigEndian); };
    if (file.size() < 12 || !file.startsWith(form) || file.mid(8, 4) != type || size(4) != file.size() - 8)
        return {QString()};
    QStringList out;
    qsizetype at = 12;
    while (at < file.size()) {
        if (at + 8 > file.size() || at + 8 + size(at + 4) > file.size())
            return {QString()};
        out.append(QString::fromLatin1(file.mid(at, 4)));
        at += 8 + size(at + 4) + (size(at + 4) % 2);
    }
    return out;
}
} // namespace

class TestSetup final : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void firstStartSettingsPointAtTheDemoDisc();
    void discHoldsEveryKindAsRealFiles();
    void archivesOpenAsTheScanOpensThem();
    void scanFindsEveryKindAndTheDemoClientsGetEveryVerdict();
    void existingSettingsCatalogueAndNeighboursAreLeftAlone();
    void aLinkInPlaceOfTheDiscIsLeftAlone();

private:
    QString disc() const { return m_app.file("demo-disc"); }
    TempAppFolder m_app;
    QString m_firstOutput;
};

void TestSetup::initTestCase()
{
    QCOMPARE(runSetup({"--demo"}, &m_firstOutput), 0);
}

void TestSetup::firstStartSettingsPointAtTheDemoDisc()
{
    QVERIFY2(m_firstOutput.contains("Laid out the demo disc in " + disc()), qPrintable(m_firstOutput));
    // The settings a first start reads: the demo disc by its whole path, HTML reports of everything.
    QCOMPARE(DeviceFromIniValue(ReadDefaultDevice()), disc());
    QCOMPARE(ReadIniKey("Reports", "DefaultReportType ") + ReadIniKey("Reports", "DefaultReportContent "),
             QString("HTMLALL"));

    // --demo-disc alone gives a folder without settings the same, and no catalogue.
    QTemporaryDir other;
    QCOMPARE(runSetup({"--demo-disc"}, nullptr, other.path()), 0);
    const auto key = [ini = other.filePath("kevro.ini")](const char *section, const char *key) {
        return GetPrivateProfileString(section, key, "Nowt", 4096, ini);
    };
    QCOMPARE(key("Devices", "DefaultDevice"), other.filePath("demo-disc"));
    QCOMPARE(key("Reports", "DefaultReportType") + key("Reports", "DefaultReportContent"), QString("HTMLALL"));
    QCOMPARE(filesBelow(other.filePath("demo-disc")), filesBelow(disc()));
    QVERIFY(!QFile::exists(other.filePath("kevro.db")) && !QFile::exists(other.filePath("odbc.ini")));
}

void TestSetup::discHoldsEveryKindAsRealFiles()
{
    // Each file's kind, by its upper-cased path: video, audio, image, text, programs and archives, the
    // rest (unknown kinds, the hidden file among them, and a .DAT the scan knows but no screen shows).
    QList<QStringList> kinds(6);
    for (const QString &f : filesBelow(disc())) {
        const QString u = f.toUpper();
        kinds[IsVideoFile(u) ? 0 : IsAudioFile(u) ? 1 : IsImageFile(u) ? 2 : IsTextFile(u) ? 3
              : u.endsWith(".EXE") || u.endsWith(".ZIP") ? 4 : 5].append(u);
    }
    const QList<QStringList> expected{
        {"MEDIA/CLIP.MOV", "MEDIA/INTRO.MPG", "MEDIA/TRAILER.AVI", "MPEGAV/AVSEQ01.DAT"},
        {"MEDIA/BELL.AIF", "MEDIA/CHIME.WAV", "MEDIA/SILENCE.MP3", "MEDIA/THEME.MP3"},
        {"MEDIA/PICTURES/COVER.BMP", "MEDIA/PICTURES/DOT.GIF", "MEDIA/PICTURES/SUNSET.JPG"},
        {"DOCS/.DRAFT.TXT", "DOCS/CREDITS.NFO", "DOCS/INSTALL.README", "DOCS/READ.ME", "DOCS/RELEASE NOTES.TXT",
         "README.TXT", "SETUP/SETUP.INI"},
        {"AUTORUN.EXE", "MENU.EXE", "PLAYERS/QUICKTIMEINSTALLER.EXE", "PLAYERS/WMPLAYER.EXE", "SETUP/DATA.ZIP",
         "SETUP/DXSETUP.EXE", "TOOLS/DISCTOOL.EXE"},
        {".DISCINFO", "AUTORUN.INF", "DATA.XYZ", "DOCS/INDEX.HTM", "DOCS/MANUAL.PDF", "TOOLS/DISC.DAT"}};
    for (QStringList &kind : kinds)
        kind.sort();
    QCOMPARE(kinds, expected);
    QVERIFY(IsHiddenFile(disc() + "/.DiscInfo") && IsHiddenFile(disc() + "/Docs/.Draft.txt"));
    QVERIFY(!IsHiddenFile(disc() + "/README.TXT"));

    // The pictures decode.
    const QList<QPair<QString, QSize>> pictures{{"Cover.bmp", {48, 32}}, {"Dot.gif", {1, 1}}, {"Sunset.jpg", {48, 32}}};
    for (const auto &[name, size] : pictures)
        QCOMPARE(QImage(disc() + "/Media/Pictures/" + name).size(), size);
    // The sound and video containers hold together to their last byte.
    const QByteArray wav = ReadTestFile(disc() + "/Media/Chime.wav");
    QCOMPARE(chunks(wav, "RIFF", "WAVE", false), (QStringList{"fmt ", "data"}));
    QCOMPARE(num(wav, 20, 2), 1u); // PCM
    const QByteArray aif = ReadTestFile(disc() + "/Media/Bell.aif");
    QCOMPARE(chunks(aif, "FORM", "AIFF", true), (QStringList{"COMM", "SSND"}));
    QCOMPARE(num(aif, 22, 4, true), num(aif, 42, 4, true) - 8); // sample frames of 8 bits, mono: the sound's bytes
    const QByteArray avi = ReadTestFile(disc() + "/Media/Trailer.avi");
    QCOMPARE(chunks(avi, "RIFF", "AVI ", false), (QStringList{"LIST", "LIST", "idx1"}));
    QCOMPARE(num(avi, avi.lastIndexOf("idx1") + 4, 4) / 16, num(avi, 32 + 16, 4)); // an index entry a frame
    // MP3: frames back to back, each behind its sync word.
    const QByteArray mp3 = ReadTestFile(disc() + "/Media/Silence.mp3");
    QVERIFY(mp3.size() > 0 && mp3.size() % 104 == 0);
    for (qsizetype at = 0; at < mp3.size(); at += 104)
        QCOMPARE(num(mp3, at, 2, true), 0xFFFBu);
    // MPEG video: a sequence of 64 x 48 with its pictures, closed by its end code.
    const QByteArray mpg = ReadTestFile(disc() + "/Media/Intro.mpg");
    QVERIFY(mpg.startsWith(QByteArray("\0\0\1\xB3", 4)) && mpg.endsWith(QByteArray("\0\0\1\xB7", 4)));
    QCOMPARE(num(mpg, 4, 3, true), (64u << 12) | 48u);
    QCOMPARE(mpg.count(QByteArray("\0\0\1\0", 4)), 25);
    QCOMPARE(ReadTestFile(disc() + "/MPEGAV/AVSEQ01.DAT"), mpg);
    // The encoded movie and tune come whole out of the program's resources.
    for (const char *name : {"Clip.mov", "Theme.mp3"}) {
        const QByteArray bytes = ReadTestFile(disc() + "/Media/" + name);
        QVERIFY2(!bytes.isEmpty() && bytes == ReadTestFile(QStringLiteral(KEVRO_SOURCE_DIR "/assets/demo-media/") +
                                                            QString::fromLatin1(name).toUpper()),
                 name);
    }
}

void TestSetup::archivesOpenAsTheScanOpensThem()
{
    // The ZIP, folders and all.
    const auto data = zipMembers(disc() + "/Setup/Data.zip");
    QCOMPARE(data.keys(), (QStringList{"Program/", "Program/ACRORD32.EXE", "Program/Help/", "Program/Help/Guide.txt",
                                       "Program/Player/", "Program/Player/FlashPlayer.exe", "Program/Player/Splash.gif",
                                       "Reader/", "Reader/AR505ENU.EXE"}));
    QCOMPARE(data.value("Program/Help/Guide.txt"), QByteArray("How to read the manual.\r\n"));

    // The self-extractor: a program first, a ZIP behind it.
    const QString sfx = disc() + "/Setup/DXSETUP.EXE";
    const QByteArray sfxBytes = ReadTestFile(sfx);
    QVERIFY(sfxBytes.startsWith("MZ"));
    const auto directX = zipMembers(sfx);
    QCOMPARE(directX.keys(), (QStringList{"DirectX/", "DirectX/DXWEBSETUP.EXE", "DirectX/Readme.txt"}));
    QCOMPARE(directX.value("DirectX/Readme.txt"), QByteArray("DirectX 9.0c\r\n"));
    // Its offsets count from the start of the file, so readers that trust them find the members too.
    const quint32 directory = num(sfxBytes, sfxBytes.size() - 22 + 16, 4);
    QCOMPARE(num(sfxBytes, directory, 4), 0x02014B50u);
    const quint32 firstMember = num(sfxBytes, directory + 42, 4);
    QVERIFY(firstMember > 64);
    QCOMPARE(num(sfxBytes, firstMember, 4), 0x04034B50u);
}

// The scan of the demo disc, and its programs judged against the demo catalogue for each demo client.
void TestSetup::scanFindsEveryKindAndTheDemoClientsGetEveryVerdict()
{
    ResetExtractFolder(); // a message box on the way fails the test
    MediaWalker walker;
    walker.SetDrive(disc());
    walker.ScanFiles();
    // Every file of the disc is a media file but the unknown kinds and the hidden one, the external files.
    const QString D = disc().toUpper() + "/", X = ExtractFolder().toUpper() + "/";
    QCOMPARE(names(gExternalFiles, D),
             (QStringList{".DISCINFO", "AUTORUN.INF", "DATA.XYZ", "DOCS/INDEX.HTM", "DOCS/MANUAL.PDF"}));
    QStringList all = names(gMediaFiles, D) + names(gExternalFiles, D),
                onDisc = filesBelow(disc()).join('\n').toUpper().split('\n');
    all.sort();
    onDisc.sort();
    QCOMPARE(all, onDisc);
    QCOMPARE(names(gMediaFiles, X),
             (QStringList{"SETUP/DATA.ZIP/PROGRAM/ACRORD32.EXE", "SETUP/DATA.ZIP/PROGRAM/HELP/GUIDE.TXT",
                          "SETUP/DATA.ZIP/PROGRAM/PLAYER/FLASHPLAYER.EXE", "SETUP/DATA.ZIP/PROGRAM/PLAYER/SPLASH.GIF",
                          "SETUP/DATA.ZIP/READER/AR505ENU.EXE", "SETUP/DXSETUP.EXE/DIRECTX/DXWEBSETUP.EXE",
                          "SETUP/DXSETUP.EXE/DIRECTX/README.TXT"}));
    // Only the two archives were expanded (below their paths on the disc): the programs are no archives.
    QCOMPARE(QDir(ExtractFolder()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList{"Setup"});
    QCOMPARE(QDir(ExtractFolder() + "/Setup").entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
             (QStringList{"Data.zip", "DXSETUP.EXE"}));

    // Each program's verdict for Northwind, Contoso and Blue Yonder: Licensed, Un-licensed or unknown.
    // A program licensed for all three is one that needs no licence.
    QMap<QString, QString> verdicts;
    for (const char *client : {"Northwind Records", "Contoso Games", "Blue Yonder Music"}) {
        OpenDatabase();
        Recordset rs;
        rs.Open(QString("Select CLIENT_ID From KEVRO_CLIENTS Where CLIENT_NAME = '%1'").arg(client), gConnection.get());
        const QString code = rs.Fields("CLIENT_ID").toString();
        CloseDatabase();
        for (const ExeVerdict &v : EvaluateExecutables(gMediaFiles, code).verdicts)
            verdicts[QFileInfo(v.path).fileName()] += "LU?"[v.kind];
    }
    QCOMPARE(verdicts, (QMap<QString, QString>{{"ACRORD32.EXE", "LLL"}, {"AR505ENU.EXE", "LLL"}, {"AUTORUN.EXE", "LLL"},
                                               {"MENU.EXE", "LLL"}, {"DISCTOOL.EXE", "???"}, {"DXSETUP.EXE", "LLU"},
                                               {"DXWEBSETUP.EXE", "LLU"}, {"FLASHPLAYER.EXE", "LUU"},
                                               {"QUICKTIMEINSTALLER.EXE", "UUU"}, {"WMPLAYER.EXE", "UUU"}}));
}

void TestSetup::existingSettingsCatalogueAndNeighboursAreLeftAlone()
{
    const QByteArray ini = "[Devices]\nDefaultDevice=e\n; the operator's own\n";
    WriteTestFile(m_app.file("kevro.ini"), ini);
    WriteTestFile(m_app.file("notes.txt"), "the station's own notes");
    WriteTestFile(disc() + "/STRAY.TXT", "left from an older demo disc");
    // A link inside the disc to a folder elsewhere: the link goes with the disc, not what it leads to.
    QTemporaryDir elsewhere;
    WriteTestFile(elsewhere.filePath("KEEP.TXT"), "not the demo disc's");
    QVERIFY(QFile::link(elsewhere.path(), disc() + "/Elsewhere"));
    const QByteArray db = ReadTestFile(m_app.file("kevro.db"));
    const auto stationUntouched = [&] {
        return ReadTestFile(m_app.file("kevro.db")) == db && ReadTestFile(m_app.file("kevro.ini")) == ini &&
               ReadTestFile(m_app.file("notes.txt")) == "the station's own notes";
    };

    // The catalogue exists: --demo lays the disc out again, then refuses to replace the catalogue.
    QString out;
    QVERIFY(runSetup({"--demo"}, &out) != 0);
    QVERIFY2(out.contains("Laid out the demo disc in " + disc()), qPrintable(out));
    QVERIFY2(out.contains("give --force to replace it"), qPrintable(out));
    QVERIFY(stationUntouched());
    QVERIFY(!QFile::exists(disc() + "/STRAY.TXT"));
    QVERIFY(!QFileInfo(disc() + "/Elsewhere").isSymLink());
    QCOMPARE(ReadTestFile(elsewhere.filePath("KEEP.TXT")), QByteArray("not the demo disc's"));

    // --demo-disc touches nothing but the disc.
    WriteTestFile(disc() + "/STRAY.TXT", "again");
    QCOMPARE(runSetup({"--demo-disc"}), 0);
    QVERIFY(!QFile::exists(disc() + "/STRAY.TXT"));
    QVERIFY(stationUntouched());
}

void TestSetup::aLinkInPlaceOfTheDiscIsLeftAlone()
{
    QTemporaryDir elsewhere;
    WriteTestFile(elsewhere.filePath("KEEP.TXT"), "not the demo disc's");
    QVERIFY(QDir(disc()).removeRecursively());
    QVERIFY(QFile::link(elsewhere.path(), disc()));
    QString out;
    QVERIFY(runSetup({"--demo-disc"}, &out) != 0);
    QVERIFY2(out.contains("is a link"), qPrintable(out));
    QVERIFY(QFileInfo(disc()).isSymLink());
    QCOMPARE(QDir(elsewhere.path()).entryList(QDir::Files), QStringList{"KEEP.TXT"});
    QCOMPARE(ReadTestFile(elsewhere.filePath("KEEP.TXT")), QByteArray("not the demo disc's"));
    QVERIFY(QFile::remove(disc()));
}

QTEST_GUILESS_MAIN(TestSetup)
#include "tst_setup.moc"
