// Disc images scanned without mounting them: one master made into every kind of image a plant receives
// (ISO 9660 with Rock Ridge and Joliet, Joliet only, a UDF bridge, UDF only, a raw CD of a file per track)
// gives the report of the
// master as a folder, with the image's paths, in the image's own order; a raw CD image in two sessions,
// names no folder can hold, and damaged images are read too.

#include "ArchiveFixtures.h"
#include "CatalogueFixture.h"
#include "JobReports.h"
#include "TestSupport.h"

#include "platform/DiscImage.h"
#include "platform/MsgBox.h"
#include "platform/Paths.h"
#include "reporting/ScanReport.h"
#include "review/VersionInformation.h"
#include "scan/MediaWalker.h"
#include "shell/MainMod.h"

#include <QDir>
#include <QProcess>
#include <QStandardPaths>
#include <QTest>

namespace {
const QString Client = QStringLiteral("1");

bool run(const QString &program, const QStringList &args)
{
    QProcess p;
    p.start(program, args);
    return p.waitForFinished(60000) && p.exitStatus() == QProcess::NormalExit && p.exitCode() == 0;
}

uint32_t le32(const QByteArray &b, qsizetype at)
{
    const auto *p = reinterpret_cast<const unsigned char *>(b.constData() + at);
    return uint32_t(p[0]) | uint32_t(p[1]) << 8 | uint32_t(p[2]) << 16 | uint32_t(p[3]) << 24;
}

void putBoth32(QByteArray &b, qsizetype at, uint32_t v)
{
    for (int i = 0; i < 4; ++i) {
        b[at + i] = char(v >> (8 * i));
        b[at + 7 - i] = char(v >> (8 * i));
    }
}

// The place of the root folder's record of a folder (its identifier's length, then the identifier).
qsizetype rootRecord(const QByteArray &iso, const QByteArray &folder)
{
    return iso.indexOf(char(folder.size()) + folder, qsizetype(le32(iso, 16 * 2048 + 156 + 2)) * 2048) - 32;
}

// The raw sectors of a plain image as a CD holds them: each with its sync and header, mode 1.
QByteArray rawSectors(const QByteArray &data)
{
    QByteArray raw;
    const QByteArray sync = QByteArray(1, '\0') + QByteArray(10, '\xff') + QByteArray(1, '\0');
    for (qsizetype s = 0; s + 2048 <= data.size(); s += 2048)
        raw += sync + QByteArray("\0\0\0\x01", 4) + data.mid(s, 2048) + QByteArray(288, '\0');
    return raw;
}

// The walk over a volume, the extract folder emptied first; the media list it leaves.
QStringList walk(MediaWalker &walker, const QString &volume)
{
    ResetExtractFolder();
    walker.SetDrive(volume);
    walker.ScanFiles();
    return gMediaFiles;
}
} // namespace

class TestImage final : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void imageJobsReportTheMaster_data();
    void imageJobsReportTheMaster();
    void whatImagesHold();
    void damagedImagesEndInAReport_data();
    void damagedImagesEndInAReport();

private:
    QString image(const QString &kind);

    TempAppFolder m_app;
    CatalogueFixture m_catalogue;
    QTemporaryDir m_work;
    QString m_master;
    QStringList m_folderReport;
};

void TestImage::initTestCase()
{
    for (const char *tool : {"xorriso", "genisoimage"})
        if (QStandardPaths::findExecutable(QLatin1String(tool)).isEmpty())
            QSKIP("xorriso and genisoimage are missing (make test installs them)");
    QCOMPARE(m_catalogue.create(QStringLiteral("sqlite"), m_app.path()), QString());
    m_catalogue.execute("INSERT INTO KEVRO_OWNERS (OWNER_NAME) VALUES ('Acme')");
    m_catalogue.addApp(QStringLiteral("Acme Disc Menu"), {QStringLiteral("DISCMENU.EXE")}, false);
    QCOMPARE(QString::number(m_catalogue.addClient(QStringLiteral("Northwind Records"))), Client);

    // The master: folders, hidden files, a ZIP, a self-extractor, a program the catalogue knows, one it
    // does not, long and non-ASCII names, and two names whose records sort otherwise than the names.
    m_master = m_work.filePath(QStringLiteral("Master"));
    for (const auto &[name, bytes] : QList<std::pair<QString, QByteArray>>{
             {"README.TXT", "Insert the disc."}, {".hidden.txt", "hidden by its name"}, {"z.txt", "zed"},
             {"_z.txt", "underscore zed"}, {"Docs/Guide.txt", "the guide"},
             {"Docs/Übersicht der Änderungen für Bühnentechnik.txt", "notes"},
             {"Setup/DISCMENU.EXE", "MZ" + QByteArray(3000, 'm')}, {"Setup/Mystery.exe", "MZ" + QByteArray(700, 'y')},
             {"Setup/DATA.ZIP", ArchiveBytes({{"Program/Help.txt", "help"}, {"Program/Tool.exe", "MZ tool"}})},
             {"Setup/Install.exe", "MZ" + QByteArray(1022, '\x90') + ArchiveBytes({{"Payload/Read.me", "payload"}})},
             {"Media/Cover.bmp", "BM" + QByteArray(5000, 'b')}, {"Media/Data.xyz", QByteArray(2000, 'x')}})
        WriteTestFile(m_master + "/" + name, bytes);

    // The folder job: the reference for every image.
    const CheckRun folder = kevroCheck({"--client", Client, "--catalogue", "MASTER", "--report", "text", "--content",
                                        "all", m_master});
    QCOMPARE(folder.code, 0);
    m_folderReport = reportLines(ReportPath(QStringLiteral("MASTER"), ReportFormat::Text), m_master);
}

QString TestImage::image(const QString &kind)
{
    const QString iso = m_work.filePath(kind + ".iso");
    if (kind == "cue") {
        // An audio track of 300 sectors, then the data track, its file holding its 150 sectors of pregap
        // (INDEX 00): the data begin at the disc's sector 450, where the image was made for.
        if (!run("xorriso", {"-as", "mkisofs", "-quiet", "-R", "-J", "-C", "0,450", "-o", iso, m_master}))
            return QString();
        WriteTestFile(m_work.filePath("audio.bin"), QByteArray(300 * 2352, '\0'));
        WriteTestFile(m_work.filePath("data.bin"), QByteArray(150 * 2352, '\0') + rawSectors(ReadTestFile(iso)));
        return WriteTestFile(m_work.filePath("cd.cue"),
                             "FILE \"audio.bin\" BINARY\n  TRACK 01 AUDIO\n    INDEX 01 00:00:00\n"
                             "FILE \"data.bin\" BINARY\n  TRACK 02 MODE1/2352\n    INDEX 00 00:00:00\n"
                             "    INDEX 01 00:02:00\n");
    }
    QStringList args{"-quiet", "-J", "-joliet-long", "-o", iso, m_master};
    if (kind != "joliet")
        args.prepend(kind == "rrj" ? "-R" : "-udf");
    if (!run(kind == "rrj" ? "xorriso" : "genisoimage", kind == "rrj" ? QStringList{"-as", "mkisofs"} + args : args))
        return QString();
    if (kind == "udf") {
        // UDF only: the image without its ISO 9660 descriptors, as a UDF-only master has none.
        QByteArray bytes = ReadTestFile(iso);
        for (qsizetype s = 16; s < 32 && bytes.mid(s * 2048 + 1, 5) == "CD001"; ++s)
            bytes.replace(s * 2048, 2048, QByteArray(2048, '\0'));
        WriteTestFile(iso, bytes);
    }
    return iso;
}

void TestImage::imageJobsReportTheMaster_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("format");
    QTest::newRow("ISO with Rock Ridge and Joliet") << "rrj" << "ISO 9660 with Rock Ridge and Joliet";
    QTest::newRow("Joliet only") << "joliet" << "ISO 9660 with Joliet";
    QTest::newRow("UDF bridge") << "bridge" << "UDF 1.02";
    QTest::newRow("UDF only") << "udf" << "UDF 1.02";
    QTest::newRow("raw CD, a file per track, pregaps in the files") << "cue" << "ISO 9660 with Rock Ridge and Joliet";
}

void TestImage::imageJobsReportTheMaster()
{
    QFETCH(QString, kind);
    QFETCH(QString, format);
    const QString path = image(kind);
    QString why;
    const auto opened = DiscImage::Open(path, &why);
    QVERIFY2(opened, qPrintable(path + ": " + why));
    QCOMPARE(opened->Format(), format);

    const CheckRun job =
        kevroCheck({"--client", Client, "--catalogue", "MASTER", "--report", "text", "--content", "all", path});
    QVERIFY2(job.code == 0 && job.err.isEmpty(), qPrintable(job.err));
    const QStringList lines = reportLines(ReportPath(QStringLiteral("MASTER"), ReportFormat::Text), path);
    // The same lines as the folder's, the image's path standing for the folder's.
    QStringList a = lines, b = m_folderReport;
    a.sort();
    b.sort();
    QVERIFY(sameLines(a, b));
    QVERIFY(lines.contains("{APP}/EXTRACT/SETUP/INSTALL.EXE/PAYLOAD/READ.ME (1 KB)"));
    // In the order of the records: ISO 9660 identifiers sort "Z.TXT" before "_Z.TXT" (the names the other
    // way round); Joliet and UDF records keep their names' order.
    const qsizetype zed = lines.indexOf("{DISC}/Z.TXT (1 KB)"), underscore = lines.indexOf("{DISC}/_Z.TXT (1 KB)");
    QVERIFY(zed > 0 && underscore > 0);
    QCOMPARE(zed < underscore, kind == "rrj" || kind == "cue");
}

void TestImage::whatImagesHold()
{
    // A file hidden by its directory record, and an image written in two sessions: the last one shows.
    const QString iso = m_work.filePath("sessions.iso");
    QVERIFY(run("xorriso", {"-outdev", iso, "-map", m_master + "/Setup/Mystery.exe", "/FIRST.EXE", "-commit"}));
    QVERIFY(run("xorriso", {"-dev", iso, "-map", m_master + "/README.TXT", "/SECOND.TXT", "-commit"}));
    const QString joliet = m_work.filePath("flagged.iso");
    QVERIFY(run("genisoimage", {"-quiet", "-J", "-hidden", "Mystery.exe", "-o", joliet, m_master + "/Setup"}));
    MsgBoxResponder boxes;
    MediaWalker walker;
    walk(walker, joliet);
    QVERIFY(InfoOf(joliet.toUpper() + "/MYSTERY.EXE").hidden && !InfoOf(joliet.toUpper() + "/DISCMENU.EXE").hidden);
    const QStringList last = walk(walker, iso);
    QVERIFY(last.contains(iso.toUpper() + "/SECOND.TXT") && last.contains(iso.toUpper() + "/FIRST.EXE"));

    // Folders past the eighth level, which Rock Ridge moves aside and links back to their place; each
    // file's bytes come out of the image when asked for.
    const QString deep = m_work.filePath("deep");
    WriteTestFile(deep + "/a/b/c/d/e/f/g/h/i/j/Deep.txt", "ten folders down");
    QVERIFY(run("genisoimage", {"-quiet", "-R", "-o", deep + ".iso", deep}));
    walk(walker, deep + ".iso");
    QCOMPARE(ReadTestFile(RealPath((deep + ".iso").toUpper() + "/A/B/C/D/E/F/G/H/I/J/DEEP.TXT")), "ten folders down");

    // A CD in two sessions (a CD-Extra's layout): the second behind lead-out, lead-in and pregap, at the
    // disc's addresses its image was made for; the cue sheet with a byte-order mark, as some tools write.
    const QString one = m_work.filePath("s1"), two = m_work.filePath("s2");
    WriteTestFile(one + "/ONE.TXT", "first session");
    WriteTestFile(two + "/TWO.TXT", "second session");
    QVERIFY(run("xorriso", {"-as", "mkisofs", "-quiet", "-R", "-J", "-o", one + ".iso", one}));
    const qint64 first = QFileInfo(one + ".iso").size() / 2048;
    QVERIFY(run("xorriso", {"-as", "mkisofs", "-quiet", "-R", "-J", "-C", QString("0,%1").arg(first + 11400), "-o",
                            two + ".iso", two}));
    WriteTestFile(m_work.filePath("sessions.bin"),
                  rawSectors(ReadTestFile(one + ".iso")) + rawSectors(ReadTestFile(two + ".iso")));
    const QString cue = WriteTestFile(
        m_work.filePath("sessions.cue"),
        "\xef\xbb\xbf" "FILE \"sessions.bin\" BINARY\r\n  TRACK 01 MODE1/2352\r\n    INDEX 01 00:00:00\r\n"
        "REM SESSION 02\r\n  TRACK 02 MODE1/2352\r\n    INDEX 01 " +
            QString::asprintf("%02lld:%02lld:%02lld\r\n", first / 75 / 60, first / 75 % 60, first % 75).toUtf8());
    walk(walker, cue);
    QCOMPARE(ReadTestFile(RealPath(cue.toUpper() + "/TWO.TXT")), QByteArray("second session"));

    // Rock Ridge names no folder can hold ("..", one with a separator): renamed, and nothing of theirs
    // reaches outside the extract folder.
    const QString names = m_work.filePath("names");
    WriteTestFile(names + "/aa", "dots");
    WriteArchive(names + "/bbbbbbbb.zip", {{"Member.txt", "member"}});
    const QString namesIso = m_work.filePath("names.iso");
    QVERIFY(run("xorriso", {"-as", "mkisofs", "-quiet", "-R", "-o", namesIso, names}));
    QByteArray bytes = ReadTestFile(namesIso);
    for (const auto &[from, to] : {std::pair<QByteArray, QByteArray>{"aa", ".."}, {"bbbbbbbb.zip", "../../xx.zip"}}) {
        const qsizetype at = bytes.indexOf("NM" + QByteArray(1, char(5 + from.size())) + '\x01' + '\0' + from);
        QVERIFY(at > 0);
        bytes.replace(at + 5, from.size(), to.leftJustified(from.size(), '_', true));
    }
    WriteTestFile(namesIso, bytes);
    boxes.queue(vbOK);
    const QStringList listed = walk(walker, namesIso);
    QVERIFY2(gExternalFiles.contains(namesIso.toUpper() + "/__") && listed.contains(namesIso.toUpper() + "/.._.._XX.ZIP"),
             qPrintable(listed.join('\n') + gExternalFiles.join('\n')));
    QVERIFY(listed.contains(ExtractFolder().toUpper() + "/.._.._XX.ZIP/MEMBER.TXT"));
    QVERIFY(!QFileInfo::exists(QFileInfo(AppPath()).path() + "/xx.zip"));
    QCOMPARE(boxes.prompts(), QStringList{"Error 57"}); // the only box of all these walks

    // A program's version information is read where it lies in the image: nothing is copied out for it.
    const QString pe = QStringLiteral(KEVRO_PE_DIR "/english.exe");
    if (QFileInfo::exists(pe)) {
        const QString programs = m_work.filePath("programs.iso");
        QVERIFY(run("xorriso", {"-as", "mkisofs", "-quiet", "-R", "-o", programs, "-graft-points", "/SETUP/MENU.EXE=" + pe}));
        walk(walker, programs);
        VersionInformation info;
        QVERIFY(info.ReadVersionInformation(programs.toUpper() + "/SETUP/MENU.EXE"));
        QCOMPARE(info.CompanyName, QStringLiteral("Acme Software Ltd"));
        QVERIFY(!QFileInfo::exists(ExtractFolder() + "/.image"));
    }

    // A UDF partition map that says "metadata" in a plain map's six bytes is a map of no kind read: the
    // image is told as none, and nothing follows the map it is not.
    const QString udf = WriteTestFile(m_work.filePath("shortmap.udf"), QByteArray(20 * 1024 * 1024, '\0'));
    QVERIFY(run("mkudffs", {"--media-type=hd", "--blocksize=2048", udf}));
    bytes = ReadTestFile(udf);
    for (qsizetype at = 0; at + 2048 <= bytes.size(); at += 2048)
        if (bytes[at] == 6 && bytes[at + 1] == 0 && bytes[at + 440] == 1) // a logical volume's first map
            bytes[at + 440] = 2;
    WriteTestFile(udf, bytes);
    QString why;
    QVERIFY(!DiscImage::Open(udf, &why));
    QVERIFY2(why.startsWith("the UDF volume"), qPrintable(why));
}

void TestImage::damagedImagesEndInAReport_data()
{
    QTest::addColumn<QString>("damage");
    QTest::addColumn<QString>("warning");
    QTest::newRow("cut short") << "truncated" << "outside the image";
    QTest::newRow("a folder that is its parent") << "loop" << "leads back to a folder already listed";
    QTest::newRow("a folder past the end") << "folder past the end" << "outside the image";
    QTest::newRow("an archive past the end") << "file past the end" << "SETUP/DATA.ZIP";
}

void TestImage::damagedImagesEndInAReport()
{
    QFETCH(QString, damage);
    QFETCH(QString, warning);
    QByteArray bytes = ReadTestFile(image("rrj"));
    const qsizetype root = qsizetype(le32(bytes, 16 * 2048 + 156 + 2));
    if (damage == "truncated")
        bytes.truncate((root + 1) * 2048); // the root folder's records stand; nothing behind them
    else if (damage == "loop")
        putBoth32(bytes, rootRecord(bytes, "DOCS") + 2, uint32_t(root));
    else if (damage == "folder past the end")
        putBoth32(bytes, rootRecord(bytes, "MEDIA") + 2, 0x7FFFFF00u);
    else // the archive's record in its folder
        putBoth32(bytes, bytes.indexOf("DATA.ZIP", qsizetype(le32(bytes, rootRecord(bytes, "SETUP") + 2)) * 2048) - 33 + 2,
                  0x7FFFFF00u);
    const QString damaged = WriteTestFile(m_work.filePath("damaged.iso"), bytes);
    const CheckRun job = kevroCheck({"--client", Client, "--catalogue", "DAMAGED", damaged});
    QVERIFY2(job.code == 0 && job.err.startsWith("kevro-check: warning: ") && job.err.contains(warning),
             qPrintable(job.err + job.out));
}

QTEST_MAIN(TestImage)
#include "tst_image.moc"
