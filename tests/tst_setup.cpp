// kevro-setup as an installer runs it: the demo disc it lays out (every kind of file, real media, the
// archives as the scan reads them, programs the demo catalogue judges every way), the settings that point
// a first start at it, and what it leaves alone.

#include "TestSupport.h"

#include "platform/FileSystem.h"
#include "platform/IniProfile.h"
#include "platform/MsgBox.h"
#include "scan/MediaWalker.h"
#include "shell/MainMod.h"

#include <QDir>
#include <QDirIterator>
#include <QImage>
#include <QMap>
#include <QProcess>
#include <QProcessEnvironment>
#include <QSqlDatabase>
#include <QSqlQuery>
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

struct ReaderFree {
    void operator()(archive *a) const { archive_read_free(a); }
};
using Reader = std::unique_ptr<archive, ReaderFree>;

// The members libarchive's seeking ZIP reader finds in a file, the one a self-extractor needs, with
// their contents; folders end in "/". Empty when it takes the file for no ZIP or a member fails.
QMap<QString, QByteArray> zipMembers(const QString &path)
{
    QMap<QString, QByteArray> members;
    Reader a(archive_read_new());
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

// Whether any of libarchive's formats takes the file for an archive.
bool anyArchiveFormatTakes(const QString &path)
{
    Reader a(archive_read_new());
    archive_read_support_format_all(a.get());
    archive_read_support_filter_all(a.get());
    archive_entry *e = nullptr;
    return archive_read_open_filename(a.get(), QFile::encodeName(path).constData(), 10240) == ARCHIVE_OK &&
           archive_read_next_header(a.get(), &e) == ARCHIVE_OK;
}

quint32 le(const QByteArray &b, qsizetype at, int bytes)
{
    quint32 v = 0;
    for (int i = bytes - 1; i >= 0; --i)
        v = (v << 8) | quint8(b.at(at + i));
    return v;
}

quint32 be(const QByteArray &b, qsizetype at, int bytes)
{
    quint32 v = 0;
    for (int i = 0; i < bytes; ++i)
        v = (v << 8) | quint8(b.at(at + i));
    return v;
}

// The chunks of a RIFF (little-endian) or IFF (big-endian) file: the form's size is the file's, and its
// chunks fill it to the last byte. Returns the chunk names in order, or "" on the first that does not fit.
QStringList chunks(const QByteArray &file, const char *form, const char *type, bool bigEndian)
{
    auto size = [&](qsizetype at) { return bigEndian ? be(file, at, 4) : le(file, at, 4); };
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

// How a client's judgement of an executable comes out from the catalogue's tables alone.
QMap<QString, QString> judge(const QString &dbFile, const QString &client, const QStringList &exeNames)
{
    QMap<QString, QString> out;
    const QString connection = QStringLiteral("tst_setup_") + client;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), connection);
        db.setDatabaseName(dbFile);
        if (!db.open())
            return out;
        QSqlQuery q(db);
        QMap<QString, QPair<int, bool>> known; // EXE_NAME -> application, whether it needs a licence
        q.exec("SELECT UPPER(EXE_NAME), APP_ID, APP_REQUIRES_LICENSE FROM KEVRO_APP_COMPONENTS "
               "JOIN KEVRO_APPS ON APP_ID = EXE_APP");
        while (q.next())
            known.insert(q.value(0).toString(), {q.value(1).toInt(), q.value(2).toBool()});
        QList<int> held;
        q.prepare("SELECT LICENSE_APP FROM KEVRO_LICENSES JOIN KEVRO_CLIENTS "
                  "ON CAST(CLIENT_ID AS VARCHAR(50)) = LICENSE_CLIENT WHERE CLIENT_NAME = ?");
        q.addBindValue(client);
        q.exec();
        while (q.next())
            held.append(q.value(0).toInt());
        for (const QString &exe : exeNames) {
            const auto k = known.constFind(exe);
            out.insert(exe, k == known.cend()         ? QStringLiteral("unknown")
                            : !k->second              ? QStringLiteral("free")
                            : held.contains(k->first) ? QStringLiteral("licensed")
                                                      : QStringLiteral("un-licensed"));
        }
    }
    QSqlDatabase::removeDatabase(connection);
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
    void demoClientsHoldSomeOfTheProgramsLicences();
    void scanFindsEveryKindAndExpandsTheArchives();
    void existingSettingsCatalogueAndNeighboursAreLeftAlone();
    void aLinkInPlaceOfTheDiscIsLeftAlone();

private:
    QString disc() const { return m_app.file("demo-disc"); }
    TempAppFolder m_app;
    QString m_firstOutput;
    int m_firstExit = -1;
};

void TestSetup::initTestCase()
{
    m_firstExit = runSetup({"--demo"}, &m_firstOutput);
}

void TestSetup::firstStartSettingsPointAtTheDemoDisc()
{
    QCOMPARE(m_firstExit, 0);
    QVERIFY2(m_firstOutput.contains("Laid out the demo disc in " + disc()), qPrintable(m_firstOutput));
    QVERIFY2(m_firstOutput.contains("Loaded the demo catalogue."), qPrintable(m_firstOutput));
    // The settings a first start reads: the demo disc by its whole path, HTML reports of everything.
    QCOMPARE(ReadDefaultDevice(), disc());
    QCOMPARE(DeviceFromIniValue(ReadDefaultDevice()), disc());
    QCOMPARE(ReadIniKey("Reports", "DefaultReportType "), QString("HTML"));
    QCOMPARE(ReadIniKey("Reports", "DefaultReportContent "), QString("ALL"));

    // --demo-disc alone gives a folder without settings the same, and no catalogue.
    QTemporaryDir other;
    QString out;
    QCOMPARE(runSetup({"--demo-disc"}, &out, other.path()), 0);
    const QString ini = other.filePath("kevro.ini");
    QCOMPARE(GetPrivateProfileString("Devices", "DefaultDevice", "Nowt", 4096, ini), other.filePath("demo-disc"));
    QCOMPARE(GetPrivateProfileString("Reports", "DefaultReportType", "Nowt", 50, ini), QString("HTML"));
    QCOMPARE(GetPrivateProfileString("Reports", "DefaultReportContent", "Nowt", 50, ini), QString("ALL"));
    QCOMPARE(filesBelow(other.filePath("demo-disc")), filesBelow(disc()));
    QVERIFY(!QFile::exists(other.filePath("kevro.db")));
    QVERIFY(!QFile::exists(other.filePath("odbc.ini")));
}

void TestSetup::discHoldsEveryKindAsRealFiles()
{
    // Each file's kind, by its upper-cased path: 0 video, 1 audio, 2 image, 3 text, 4 programs and
    // archives, 5 the rest.
    QList<QStringList> kinds(6);
    for (const QString &f : filesBelow(disc())) {
        const QString u = f.toUpper();
        kinds[IsVideoFile(u) ? 0 : IsAudioFile(u) ? 1 : IsImageFile(u) ? 2 : IsTextFile(u) ? 3
              : u.endsWith(".EXE") || u.endsWith(".ZIP") ? 4 : 5].append(u);
    }
    for (QStringList &kind : kinds)
        kind.sort();
    QCOMPARE(kinds[0], (QStringList{"MEDIA/CLIP.MOV", "MEDIA/INTRO.MPG", "MEDIA/TRAILER.AVI", "MPEGAV/AVSEQ01.DAT"}));
    QCOMPARE(kinds[1], (QStringList{"MEDIA/BELL.AIF", "MEDIA/CHIME.WAV", "MEDIA/SILENCE.MP3", "MEDIA/THEME.MP3"}));
    QCOMPARE(kinds[2], (QStringList{"MEDIA/PICTURES/COVER.BMP", "MEDIA/PICTURES/DOT.GIF", "MEDIA/PICTURES/SUNSET.JPG"}));
    QCOMPARE(kinds[3], (QStringList{"DOCS/.DRAFT.TXT", "DOCS/CREDITS.NFO", "DOCS/INSTALL.README", "DOCS/READ.ME",
                                    "DOCS/RELEASE NOTES.TXT", "README.TXT", "SETUP/SETUP.INI"}));
    QCOMPARE(kinds[4], (QStringList{"AUTORUN.EXE", "MENU.EXE", "PLAYERS/QUICKTIMEINSTALLER.EXE", "PLAYERS/WMPLAYER.EXE",
                                    "SETUP/DATA.ZIP", "SETUP/DXSETUP.EXE", "TOOLS/DISCTOOL.EXE"}));
    // The rest: unknown kinds, the hidden file among them, and a .DAT the scan knows but no screen shows.
    QCOMPARE(kinds[5], (QStringList{".DISCINFO", "AUTORUN.INF", "DATA.XYZ", "DOCS/INDEX.HTM", "DOCS/MANUAL.PDF",
                                    "TOOLS/DISC.DAT"}));
    QVERIFY(IsHiddenFile(disc() + "/.DiscInfo"));
    QVERIFY(IsHiddenFile(disc() + "/Docs/.Draft.txt"));
    QVERIFY(!IsHiddenFile(disc() + "/README.TXT"));

    // The pictures decode.
    const QList<QPair<QString, QSize>> pictures{{"Cover.bmp", {48, 32}}, {"Dot.gif", {1, 1}}, {"Sunset.jpg", {48, 32}}};
    for (const auto &[name, size] : pictures) {
        const QImage picture(disc() + "/Media/Pictures/" + name);
        QVERIFY2(!picture.isNull(), qPrintable(name));
        QCOMPARE(picture.size(), size);
    }
    // The sound and video containers hold together to their last byte.
    const QByteArray wav = ReadTestFile(disc() + "/Media/Chime.wav");
    QCOMPARE(chunks(wav, "RIFF", "WAVE", false), (QStringList{"fmt ", "data"}));
    QCOMPARE(le(wav, 20, 2), 1u); // PCM
    const QByteArray aif = ReadTestFile(disc() + "/Media/Bell.aif");
    QCOMPARE(chunks(aif, "FORM", "AIFF", true), (QStringList{"COMM", "SSND"}));
    QCOMPARE(be(aif, 22, 4), be(aif, 42, 4) - 8); // sample frames of 8 bits, mono: the sound's bytes
    const QByteArray avi = ReadTestFile(disc() + "/Media/Trailer.avi");
    QCOMPARE(chunks(avi, "RIFF", "AVI ", false), (QStringList{"LIST", "LIST", "idx1"}));
    const qsizetype index = avi.lastIndexOf("idx1");
    QCOMPARE(le(avi, index + 4, 4) / 16, le(avi, 32 + 16, 4)); // an index entry for each frame
    // MP3: frames back to back, each behind its sync word.
    const QByteArray mp3 = ReadTestFile(disc() + "/Media/Silence.mp3");
    QVERIFY(mp3.size() > 0 && mp3.size() % 104 == 0);
    for (qsizetype at = 0; at < mp3.size(); at += 104)
        QCOMPARE(be(mp3, at, 2), 0xFFFBu);
    // MPEG video: a sequence of 64 x 48 with its pictures, closed by its end code.
    const QByteArray mpg = ReadTestFile(disc() + "/Media/Intro.mpg");
    QVERIFY(mpg.startsWith(QByteArray("\0\0\1\xB3", 4)) && mpg.endsWith(QByteArray("\0\0\1\xB7", 4)));
    QCOMPARE(be(mpg, 4, 3), (64u << 12) | 48u);
    QCOMPARE(mpg.count(QByteArray("\0\0\1\0", 4)), 25);
    QCOMPARE(ReadTestFile(disc() + "/MPEGAV/AVSEQ01.DAT"), mpg);
    // The encoded movie and tune come whole out of the program's resources.
    for (const auto &[laid, source] : {std::pair{"/Media/Clip.mov", "CLIP.MOV"}, std::pair{"/Media/Theme.mp3", "THEME.MP3"}}) {
        const QByteArray bytes = ReadTestFile(disc() + QLatin1String(laid));
        QVERIFY2(!bytes.isEmpty() && bytes == ReadTestFile(QStringLiteral(KEVRO_SOURCE_DIR "/assets/demo-media/") +
                                                            QLatin1String(source)),
                 laid);
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
    const qsizetype end = sfxBytes.size() - 22;
    QCOMPARE(le(sfxBytes, end, 4), 0x06054B50u);
    const quint32 directory = le(sfxBytes, end + 16, 4);
    QCOMPARE(le(sfxBytes, directory, 4), 0x02014B50u);
    const quint32 firstMember = le(sfxBytes, directory + 42, 4);
    QVERIFY(firstMember > 64);
    QCOMPARE(le(sfxBytes, firstMember, 4), 0x04034B50u);

    // Every other program is no archive to any reader, on the disc or in an archive.
    QTemporaryDir unpacked;
    QStringList programs;
    for (const QString &f : filesBelow(disc()))
        if (f.toUpper().endsWith(".EXE") && f != "Setup/DXSETUP.EXE")
            programs.append(disc() + "/" + f);
    for (const auto *members : {&data, &directX})
        for (auto m = members->cbegin(); m != members->cend(); ++m)
            if (m.key().toUpper().endsWith(".EXE"))
                programs.append(WriteTestFile(unpacked.filePath(m.key()), m.value()));
    QCOMPARE(programs.size(), 9);
    for (const QString &p : programs) {
        QVERIFY2(ReadTestFile(p).startsWith("MZ"), qPrintable(p));
        QVERIFY2(!anyArchiveFormatTakes(p), qPrintable(p));
    }
    QVERIFY(anyArchiveFormatTakes(sfx));
}

void TestSetup::demoClientsHoldSomeOfTheProgramsLicences()
{
    // The programs on the disc and in its archives, by name.
    QStringList exes;
    for (const QString &f : filesBelow(disc()))
        if (f.toUpper().endsWith(".EXE"))
            exes.append(QFileInfo(f).fileName().toUpper());
    for (const QString &archive : {QString("/Setup/Data.zip"), QString("/Setup/DXSETUP.EXE")})
        for (const QString &m : zipMembers(disc() + archive).keys())
            if (m.toUpper().endsWith(".EXE"))
                exes.append(QFileInfo(m).fileName().toUpper());
    const QString db = m_app.file("kevro.db");
    QCOMPARE(judge(db, "Northwind Records", exes),
             (QMap<QString, QString>{{"ACRORD32.EXE", "free"},
                                     {"AR505ENU.EXE", "free"},
                                     {"AUTORUN.EXE", "free"},
                                     {"DISCTOOL.EXE", "unknown"},
                                     {"DXSETUP.EXE", "licensed"},
                                     {"DXWEBSETUP.EXE", "licensed"},
                                     {"FLASHPLAYER.EXE", "licensed"},
                                     {"MENU.EXE", "free"},
                                     {"QUICKTIMEINSTALLER.EXE", "un-licensed"},
                                     {"WMPLAYER.EXE", "un-licensed"}}));
    const auto contoso = judge(db, "Contoso Games", exes);
    QCOMPARE(contoso.value("DXSETUP.EXE"), QString("licensed"));
    QCOMPARE(contoso.value("FLASHPLAYER.EXE"), QString("un-licensed"));
    const auto blueYonder = judge(db, "Blue Yonder Music", exes);
    QCOMPARE(blueYonder.value("DXSETUP.EXE"), QString("un-licensed"));
    QCOMPARE(blueYonder.value("AUTORUN.EXE"), QString("free"));
}

void TestSetup::scanFindsEveryKindAndExpandsTheArchives()
{
    QStringList boxes;
    const MsgBoxPresenter previous = SetMsgBoxPresenter([&](const MsgBoxRequest &r) {
        boxes.append(r.prompt);
        return FirstButtonOf(r.style);
    });
    ResetExtractFolder();
    MediaWalker walker;
    walker.SetDrive(disc());
    walker.ScanFiles();
    SetMsgBoxPresenter(previous);
    QCOMPARE(boxes, QStringList());
    const QString D = disc().toUpper() + "/", X = ExtractFolder().toUpper() + "/";
    QCOMPARE(names(gMediaFiles, D),
             (QStringList{"AUTORUN.EXE", "DOCS/.DRAFT.TXT", "DOCS/CREDITS.NFO", "DOCS/INSTALL.README", "DOCS/READ.ME",
                          "DOCS/RELEASE NOTES.TXT", "MEDIA/BELL.AIF", "MEDIA/CHIME.WAV", "MEDIA/CLIP.MOV", "MEDIA/INTRO.MPG",
                          "MEDIA/PICTURES/COVER.BMP", "MEDIA/PICTURES/DOT.GIF", "MEDIA/PICTURES/SUNSET.JPG",
                          "MEDIA/SILENCE.MP3", "MEDIA/THEME.MP3", "MEDIA/TRAILER.AVI", "MENU.EXE", "MPEGAV/AVSEQ01.DAT",
                          "PLAYERS/QUICKTIMEINSTALLER.EXE", "PLAYERS/WMPLAYER.EXE", "README.TXT", "SETUP/DATA.ZIP",
                          "SETUP/DXSETUP.EXE", "SETUP/SETUP.INI", "TOOLS/DISC.DAT", "TOOLS/DISCTOOL.EXE"}));
    QCOMPARE(names(gMediaFiles, X),
             (QStringList{"SETUP/DATA.ZIP/PROGRAM/ACRORD32.EXE", "SETUP/DATA.ZIP/PROGRAM/HELP/GUIDE.TXT",
                          "SETUP/DATA.ZIP/PROGRAM/PLAYER/FLASHPLAYER.EXE", "SETUP/DATA.ZIP/PROGRAM/PLAYER/SPLASH.GIF",
                          "SETUP/DATA.ZIP/READER/AR505ENU.EXE", "SETUP/DXSETUP.EXE/DIRECTX/DXWEBSETUP.EXE",
                          "SETUP/DXSETUP.EXE/DIRECTX/README.TXT"}));
    // The unknown kinds and the hidden file are external files.
    QCOMPARE(names(gExternalFiles, D),
             (QStringList{".DISCINFO", "AUTORUN.INF", "DATA.XYZ", "DOCS/INDEX.HTM", "DOCS/MANUAL.PDF"}));
    // Only the two archives were expanded (below their paths on the disc): the programs are no archives.
    QCOMPARE(QDir(ExtractFolder()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList{"Setup"});
    QCOMPARE(QDir(ExtractFolder() + "/Setup").entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
             (QStringList{"Data.zip", "DXSETUP.EXE"}));
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
    QVERIFY(!db.isEmpty());

    // The catalogue exists: --demo lays the disc out again, then refuses to replace the catalogue.
    QString out;
    QVERIFY(runSetup({"--demo"}, &out) != 0);
    QVERIFY2(out.contains("Laid out the demo disc in " + disc()), qPrintable(out));
    QVERIFY2(out.contains("give --force to replace it"), qPrintable(out));
    QCOMPARE(ReadTestFile(m_app.file("kevro.db")), db);
    QCOMPARE(ReadTestFile(m_app.file("kevro.ini")), ini);
    QCOMPARE(ReadTestFile(m_app.file("notes.txt")), QByteArray("the station's own notes"));
    QVERIFY(!QFile::exists(disc() + "/STRAY.TXT"));
    QVERIFY(!QFileInfo(disc() + "/Elsewhere").isSymLink());
    QCOMPARE(ReadTestFile(elsewhere.filePath("KEEP.TXT")), QByteArray("not the demo disc's"));
    QVERIFY(QFile::exists(disc() + "/Setup/DXSETUP.EXE"));

    // --demo-disc touches nothing but the disc.
    WriteTestFile(disc() + "/STRAY.TXT", "again");
    QCOMPARE(runSetup({"--demo-disc"}), 0);
    QVERIFY(!QFile::exists(disc() + "/STRAY.TXT"));
    QCOMPARE(ReadTestFile(m_app.file("kevro.db")), db);
    QCOMPARE(ReadTestFile(m_app.file("kevro.ini")), ini);
    QCOMPARE(ReadTestFile(m_app.file("notes.txt")), QByteArray("the station's own notes"));
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
