// The job as data: kevro-check's record of a job validates against its schema (Debian's jsonschema) and
// agrees with the report; --fail-on tells a pipeline what it must know; the programs a name hides are
// found by their headers, and what only looks like one is not.

#include "ArchiveFixtures.h"
#include "CatalogueFixture.h"
#include "JobReports.h"
#include "TestSupport.h"

#include "platform/Paths.h"
#include "reporting/ScanReport.h"
#include "shell/MainMod.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QSet>
#include <QStandardPaths>
#include <QTest>

namespace {
// Validates a record against the repository's schema with Debian's python3-jsonschema; "" when valid.
QString schemaErrors(const QByteArray &record)
{
    QProcess p;
    p.start(QStringLiteral("/usr/bin/python3"),
            {QStringLiteral("-c"), QStringLiteral("import json, sys, jsonschema\n"
                                                  "schema = json.load(open(sys.argv[1]))\n"
                                                  "jsonschema.Draft7Validator.check_schema(schema)\n"
                                                  "jsonschema.validate(json.load(sys.stdin), schema)\n"),
             QStringLiteral(KEVRO_SOURCE_DIR "/schemas/job-record.schema.json")});
    p.write(record);
    p.closeWriteChannel();
    if (!p.waitForFinished(60000))
        return QStringLiteral("the validator did not finish");
    return p.exitCode() == 0 ? QString() : QString::fromUtf8(p.readAllStandardError()).right(600);
}

QByteArray le32(uint32_t v)
{
    return QByteArray(reinterpret_cast<const char *>(&v), 4);
}
QByteArray be32(uint32_t v)
{
    const char b[4] = {char(v >> 24), char(v >> 16), char(v >> 8), char(v)};
    return QByteArray(b, 4);
}
} // namespace

class TestRecord final : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void recordAgreesWithTheReport_data();
    void recordAgreesWithTheReport();
    void failOnTellsThePipeline();
    void programsUnderOtherNames();

private:
    QJsonObject record(const QStringList &args, CheckRun *run = nullptr);

    TempAppFolder m_app;
    CatalogueFixture m_catalogue;
    QTemporaryDir m_work;
    QString m_client, m_master, m_pe;
};

void TestRecord::initTestCase()
{
    m_pe = QStringLiteral(KEVRO_PE_DIR "/english.exe");
    if (!QFileInfo::exists(m_pe) || QProcess::execute("/usr/bin/python3", {"-c", "import jsonschema"}) != 0)
        QSKIP("the test executables or python3-jsonschema are missing (make test installs them)");
    QCOMPARE(m_catalogue.create(QStringLiteral("sqlite"), m_app.path()), QString());
    m_catalogue.execute("INSERT INTO KEVRO_OWNERS (OWNER_NAME) VALUES ('Acme')");
    m_catalogue.addApp(QStringLiteral("Free Player"), {QStringLiteral("PLAYER.EXE")}, false);
    m_catalogue.addApp(QStringLiteral("Acme Disc Menu"), {QStringLiteral("DISCMENU.EXE")}, true);
    m_client = QString::number(m_catalogue.addClient(QStringLiteral("Northwind Records")));

    // A master with a licensed, an un-licensed and an unknown program, a ZIP, hidden files, media.
    m_master = m_work.filePath(QStringLiteral("Master"));
    WriteTestFile(m_master + "/PLAYER.EXE", QByteArray("MZ") + QByteArray(900, 'p'));
    WriteTestFile(m_master + "/Menu/DISCMENU.EXE", ReadTestFile(m_pe));
    WriteTestFile(m_master + "/Tools/MYSTERY.EXE", QByteArray(700, 'm'));
    WriteTestFile(m_master + "/.hidden.txt", "hidden");
    WriteTestFile(m_master + "/Media/Clip.avi", QByteArray(3000, 'a'));
    WriteTestFile(m_master + "/Docs/Manual.pdf", QByteArray(2000, 'd'));
    WriteArchive(m_master + "/Setup/DATA.ZIP", {{"Program/Help.txt", "help"}, {"Program/Other.exe", "unknown"}});
}

QJsonObject TestRecord::record(const QStringList &args, CheckRun *run)
{
    const QString path = m_work.filePath(QStringLiteral("record.json"));
    QFile::remove(path);
    const CheckRun r = kevroCheck(QStringList{"--client", m_client, "--catalogue", "REC", "--content", "all",
                                              "--report", "text", "--record", path} +
                                  args);
    if (run)
        *run = r;
    const QByteArray json = ReadTestFile(path);
    const QString errors = schemaErrors(json);
    if (!errors.isEmpty())
        qWarning("%s", qPrintable(errors));
    return errors.isEmpty() ? QJsonDocument::fromJson(json).object() : QJsonObject();
}

void TestRecord::recordAgreesWithTheReport_data()
{
    QTest::addColumn<bool>("image");
    QTest::newRow("a folder") << false;
    QTest::newRow("an image") << true;
}

void TestRecord::recordAgreesWithTheReport()
{
    QFETCH(bool, image);
    QString volume = m_master;
    if (image) {
        volume = m_work.filePath(QStringLiteral("master.iso"));
        if (QProcess::execute("xorriso", {"-as", "mkisofs", "-quiet", "-R", "-J", "-o", volume, m_master}) != 0)
            QSKIP("xorriso is missing (make test installs it)");
    }
    CheckRun run;
    const QJsonObject r = record({volume}, &run);
    QCOMPARE(run.code, 0);
    QVERIFY(!r.isEmpty());
    QCOMPARE(r["volume"].toObject()["type"].toString(), image ? "image" : "folder");
    QCOMPARE(r["client"].toObject()["name"].toString(), QStringLiteral("Northwind Records"));
    QCOMPARE(r["report"].toString(), ReportPath(QStringLiteral("REC"), ReportFormat::Text));
    QVERIFY(r["started"].toString() <= r["ended"].toString());

    // Every file of the report's all-lists is a file of the record, and no other.
    const QStringList report = reportLines(ReportPath(QStringLiteral("REC"), ReportFormat::Text), QString());
    QSet<QString> listed;
    for (qsizetype i = report.indexOf("VIDEO RESULTS"); i > 0 && i < report.size(); ++i) {
        QString line = report[i];
        line.replace(QStringLiteral("{APP}"), AppPath().toUpper());
        if (line.startsWith('/') && line.endsWith(')'))
            listed.insert(line.left(line.lastIndexOf(" (")));
    }
    QSet<QString> viewed; // the files some viewer or the external list shows
    for (const QJsonValue &v : r["files"].toArray()) {
        const QJsonObject f = v.toObject();
        if (f["kind"].toString() != "program" && f["kind"].toString() != "archive" && f["kind"].toString() != "other")
            viewed.insert(f["path"].toString());
        // The members know their archive; the hidden file is hidden.
        if (f["path"].toString().endsWith("/PROGRAM/HELP.TXT")) {
            QVERIFY(f["archive"].toString().endsWith("/SETUP/DATA.ZIP"));
            QCOMPARE(f["relative"].toString(), QStringLiteral("PROGRAM/HELP.TXT"));
        }
        if (f["path"].toString().endsWith("/.HIDDEN.TXT"))
            QVERIFY(f["hidden"].toBool());
    }
    QCOMPARE(viewed, listed);
    // The verdicts of every .EXE and no other file, as the report's application block states them.
    QMap<QString, QString> verdicts;
    for (const QJsonValue &v : r["executables"].toArray())
        verdicts.insert(v.toObject()["path"].toString().section('/', -1), v.toObject()["verdict"].toString());
    QCOMPARE(verdicts, (QMap<QString, QString>{{"PLAYER.EXE", "licensed"}, {"DISCMENU.EXE", "unlicensed"},
                                               {"MYSTERY.EXE", "unknown"}, {"OTHER.EXE", "unknown"}}));
    const QJsonObject summary = r["summary"].toObject();
    QVERIFY(report.contains("Licensed Applications - " + QString::number(summary["licensed_applications"].toInt())));
    QVERIFY(report.contains("Unlicensed Applications - " + QString::number(summary["unlicensed_applications"].toInt())));
    QVERIFY(report.contains("Unknown Programs - " + QString::number(summary["unknown_programs"].toInt())));
    QVERIFY(report.contains("Total Video Files - " + QString::number(summary["video"].toInt())));
    QVERIFY(report.contains("Total External Files - " + QString::number(summary["external"].toInt())));

    // "-": the record on standard output, the report's path on standard error.
    const CheckRun toStdout = kevroCheck({"--client", m_client, "--catalogue", "REC", "--record", "-", volume});
    QCOMPARE(toStdout.code, 0);
    QVERIFY(toStdout.err.endsWith(ReportPath(QStringLiteral("REC"), ReportFormat::Html) + '\n'));
    QCOMPARE(schemaErrors(toStdout.out.toUtf8()), QString());
}

void TestRecord::failOnTellsThePipeline()
{
    const QString unknownOnly = m_work.filePath(QStringLiteral("unknown-only"));
    WriteTestFile(unknownOnly + "/MYSTERY.EXE", "MZ");
    WriteTestFile(unknownOnly + "/PLAYER.EXE", "MZ");
    const QString clean = m_work.filePath(QStringLiteral("clean"));
    WriteTestFile(clean + "/PLAYER.EXE", "MZ");
    const QList<std::tuple<QString, QString, int>> cases{
        {"", m_master, 0},           {"unlicensed", m_master, 10},  {"unknown", m_master, 10},
        {"unlicensed", unknownOnly, 0}, {"unknown", unknownOnly, 11}, {"unknown", clean, 0}};
    for (const auto &[failOn, volume, code] : cases) {
        QStringList args{"--client", m_client, "--catalogue", "FAIL"};
        if (!failOn.isEmpty())
            args << "--fail-on" << failOn;
        QFile::remove(ReportPath(QStringLiteral("FAIL"), ReportFormat::Html));
        const CheckRun run = kevroCheck(args << volume);
        QVERIFY2(run.code == code, qPrintable(failOn + " " + volume + ": " + QString::number(run.code)));
        // The report stands whatever the code.
        QVERIFY(QFileInfo::exists(ReportPath(QStringLiteral("FAIL"), ReportFormat::Html)));
    }
    QCOMPARE(kevroCheck({"--client", m_client, "--catalogue", "X", "--fail-on", "warnings", clean}).code, 2);
}

void TestRecord::programsUnderOtherNames()
{
    const QString disc = m_work.filePath(QStringLiteral("hiding"));
    const QByteArray pe = ReadTestFile(m_pe);
    QByteArray dll = pe;
    const uint32_t peAt = *reinterpret_cast<const uint32_t *>(pe.constData() + 0x3C);
    dll[peAt + 22 + 1] = char(dll[peAt + 22 + 1] | 0x20); // Characteristics: a DLL
    WriteTestFile(disc + "/SETUP.BIN", pe);
    WriteTestFile(disc + "/Lib/HELPER.DLL", dll);
    WriteTestFile(disc + "/LAUNCHER", pe);
    WriteTestFile(disc + "/tool.elf", ReadTestFile(QStringLiteral("/bin/true")));
    WriteTestFile(disc + "/App.macho", le32(0xFEEDFACFu) + le32(0x01000007) + le32(3) + le32(2) + QByteArray(64, '\0'));
    WriteTestFile(disc + "/Universal.app", be32(0xCAFEBABEu) + be32(1) + be32(0x01000007) + be32(3) + be32(64) +
                                               be32(32) + be32(12) + QByteArray(100, '\0'));
    WriteTestFile(disc + "/Main.class", be32(0xCAFEBABEu) + QByteArray("\0\0\0\x34", 4) + QByteArray(200, 'j'));
    WriteTestFile(disc + "/NOTES.TXT", "MZ is how this note begins, and it is no program at all." + QByteArray(100, ' '));
    WriteTestFile(disc + "/CUT.BIN", pe.left(peAt + 30));
    CheckRun run;
    const QJsonObject r = record({disc}, &run);
    QCOMPARE(run.code, 0);
    QVERIFY(!r.isEmpty());
    // Every file: what its headers say, and for a Windows program the catalogue component its version
    // names, with that application's verdict.
    QMap<QString, QString> found;
    for (const QJsonValue &v : r["files"].toArray()) {
        const QJsonObject f = v.toObject();
        const QJsonObject e = f["executable"].toObject();
        const QJsonObject c = e["catalogue_component"].toObject();
        found.insert(f["relative"].toString(),
                     f["executable"].isNull() ? QStringLiteral("-")
                                              : e["format"].toString() + ' ' + QString::number(e["bits"].toInt()) + ' ' +
                                                    e["role"].toString() +
                                                    (c.isEmpty() ? QString() : ", " + c["application"].toString() +
                                                                                   ' ' + c["verdict"].toString()));
    }
    const QString menu = QStringLiteral(", Acme Disc Menu unlicensed");
    QCOMPARE(found, (QMap<QString, QString>{{"SETUP.BIN", "pe 32 program" + menu},
                                            {"LIB/HELPER.DLL", "pe 32 library" + menu},
                                            {"LAUNCHER", "pe 32 program" + menu},
                                            {"TOOL.ELF", "elf 64 program"},
                                            {"APP.MACHO", "mach-o 64 program"},
                                            {"UNIVERSAL.APP", "mach-o 0 program"},
                                            {"MAIN.CLASS", "-"},
                                            {"NOTES.TXT", "-"},
                                            {"CUT.BIN", "-"}}));
    // One warning line for each program whose name does not say it is one.
    const QStringList lines = run.err.split('\n', Qt::SkipEmptyParts);
    QCOMPARE(lines.filter("holds a").size(), 6);
    QVERIFY(lines.contains("kevro-check: warning: " + disc.toUpper() +
                           "/SETUP.BIN holds a Windows program (OriginalFilename DISCMENU.EXE: Acme Disc Menu, "
                           "un-licensed for this client)"));
    QVERIFY(lines.contains("kevro-check: warning: " + disc.toUpper() + "/LIB/HELPER.DLL holds a Windows library "
                                                                      "(OriginalFilename DISCMENU.EXE: Acme Disc "
                                                                      "Menu, un-licensed for this client)"));
    QCOMPARE(r["warnings"].toArray().size(), lines.size());
}

QTEST_MAIN(TestRecord)
#include "tst_record.moc"
