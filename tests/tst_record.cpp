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
#include <QTest>
#include <QtEndian>

namespace {
// Validates a record against the repository's schema with Debian's python3-jsonschema; "" when valid.
QString schemaErrors(const QByteArray &record)
{
    QProcess p;
    p.start(QStringLiteral("/usr/bin/python3"),
            {QStringLiteral("-c"), QStringLiteral("import json, sys, jsonschema; s = json.load(open(sys.argv[1])); "
                                                  "jsonschema.Draft7Validator.check_schema(s); "
                                                  "jsonschema.validate(json.load(sys.stdin), s)"),
             QStringLiteral(KEVRO_SOURCE_DIR "/schemas/job-record.schema.json")});
    p.write(record);
    p.closeWriteChannel();
    if (!p.waitForFinished(60000))
        return QStringLiteral("the validator did not finish");
    return p.exitCode() == 0 ? QString() : QString::fromUtf8(p.readAllStandardError()).right(600);
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
    // kevro-check's run with a record; the record, or nothing when it failed or is not valid.
    QJsonObject record(const QString &volume, CheckRun &run);

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
    for (const auto &[name, bytes] : QList<std::pair<QString, QByteArray>>{
             {"PLAYER.EXE", "MZ" + QByteArray(900, 'p')}, {"Menu/DISCMENU.EXE", ReadTestFile(m_pe)},
             {"Tools/MYSTERY.EXE", QByteArray(700, 'm')}, {".hidden.txt", "hidden"},
             {"Media/Clip.avi", QByteArray(3000, 'a')}, {"Docs/Manual.pdf", QByteArray(2000, 'd')},
             {"Setup/DATA.ZIP", ArchiveBytes({{"Program/Help.txt", "help"}, {"Program/Other.exe", "unknown"}})}})
        WriteTestFile(m_master + "/" + name, bytes);
}

QJsonObject TestRecord::record(const QString &volume, CheckRun &run)
{
    const QString path = m_work.filePath(QStringLiteral("record.json"));
    QFile::remove(path);
    run = kevroCheck({"--client", m_client, "--catalogue", "REC", "--content", "all", "--report", "text", "--record",
                      path, volume});
    const QByteArray json = ReadTestFile(path);
    const QString errors = schemaErrors(json);
    if (!errors.isEmpty() || run.code != 0)
        qWarning("exit %d: %s", run.code, qPrintable(errors + run.err));
    return errors.isEmpty() && run.code == 0 ? QJsonDocument::fromJson(json).object() : QJsonObject();
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
    const QJsonObject r = record(volume, run);
    QVERIFY(!r.isEmpty());
    QCOMPARE(r["volume"].toObject()["type"].toString(), image ? "image" : "folder");
    QCOMPARE(r["report"].toString(), ReportPath(QStringLiteral("REC"), ReportFormat::Text));

    // Every file of the report's all-lists is a file of the record that some viewer or the external list
    // shows, and no other; the members know their archive; the hidden file is hidden.
    const QStringList report = reportLines(ReportPath(QStringLiteral("REC"), ReportFormat::Text), QString());
    QSet<QString> listed, viewed;
    for (qsizetype i = report.indexOf("VIDEO RESULTS"); i > 0 && i < report.size(); ++i) {
        const QString line = QString(report[i]).replace(QStringLiteral("{APP}"), AppPath().toUpper());
        if (line.startsWith('/') && line.endsWith(')'))
            listed.insert(line.left(line.lastIndexOf(" (")));
    }
    for (const QJsonValue &v : r["files"].toArray()) {
        const QJsonObject f = v.toObject();
        if (!QStringList{"program", "archive", "other"}.contains(f["kind"].toString()))
            viewed.insert(f["path"].toString());
        if (f["path"].toString().endsWith("/PROGRAM/HELP.TXT"))
            QVERIFY(f["archive"].toString().endsWith("/SETUP/DATA.ZIP") && f["relative"].toString() == "PROGRAM/HELP.TXT");
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
    for (const auto &[key, line] : {std::pair{"licensed_applications", "Licensed Applications - "},
             {"unlicensed_applications", "Unlicensed Applications - "}, {"unknown_programs", "Unknown Programs - "},
             {"video", "Total Video Files - "}, {"external", "Total External Files - "}})
        QVERIFY2(report.contains(line + QString::number(summary[key].toInt())), key);

    // "-": the record on standard output, the report's path on standard error.
    const CheckRun toStdout = kevroCheck({"--client", m_client, "--catalogue", "REC", "--record", "-", volume});
    QVERIFY(toStdout.code == 0 && toStdout.err.endsWith(ReportPath(QStringLiteral("REC"), ReportFormat::Html) + '\n'));
    QCOMPARE(schemaErrors(toStdout.out.toUtf8()), QString());
}

void TestRecord::failOnTellsThePipeline()
{
    const QString unknownOnly = m_work.filePath(QStringLiteral("unknown-only")), clean = m_work.filePath("clean");
    for (const QString &program : {unknownOnly + "/MYSTERY.EXE", unknownOnly + "/PLAYER.EXE", clean + "/PLAYER.EXE"})
        WriteTestFile(program, "MZ");
    const QList<std::tuple<QString, QString, int>> cases{{"", m_master, 0}, {"unlicensed", m_master, 10},
        {"unknown", m_master, 10}, {"unlicensed", unknownOnly, 0}, {"unknown", unknownOnly, 11}, {"unknown", clean, 0}};
    for (const auto &[failOn, volume, code] : cases) {
        QStringList args{"--client", m_client, "--catalogue", "FAIL"};
        if (!failOn.isEmpty())
            args << "--fail-on" << failOn;
        QFile::remove(ReportPath(QStringLiteral("FAIL"), ReportFormat::Html));
        const CheckRun run = kevroCheck(args << volume);
        QVERIFY2(run.code == code, qPrintable(failOn + " " + volume + ": " + QString::number(run.code)));
        QVERIFY(QFileInfo::exists(ReportPath(QStringLiteral("FAIL"), ReportFormat::Html))); // whatever the code
    }
    QCOMPARE(kevroCheck({"--client", m_client, "--catalogue", "X", "--fail-on", "warnings", clean}).code, 2);
}

void TestRecord::programsUnderOtherNames()
{
    const QString disc = m_work.filePath(QStringLiteral("hiding"));
    const QByteArray pe = ReadTestFile(m_pe);
    QByteArray dll = pe;
    const uint32_t peAt = qFromLittleEndian<uint32_t>(pe.constData() + 0x3C);
    dll[peAt + 22 + 1] = char(dll[peAt + 22 + 1] | 0x20); // Characteristics: a DLL
    for (const auto &[name, bytes] : QList<std::pair<QString, QByteArray>>{
             {"SETUP.BIN", pe}, {"Lib/HELPER.DLL", dll}, {"LAUNCHER", pe}, {"tool.elf", ReadTestFile("/bin/true")},
             {"App.macho", QByteArray::fromHex("cffaedfe070000010300000002000000") + QByteArray(64, '\0')},
             {"Universal.app", QByteArray::fromHex("cafebabe00000001010000070000000300000040000000200000000c") +
                                   QByteArray(100, '\0')},
             {"Main.class", QByteArray::fromHex("cafebabe00000034") + QByteArray(200, 'j')},
             {"NOTES.TXT", "MZ is how this note begins, and it is no program at all." + QByteArray(100, ' ')},
             {"CUT.BIN", pe.left(peAt + 30)}})
        WriteTestFile(disc + "/" + name, bytes);
    CheckRun run;
    const QJsonObject r = record(disc, run);
    QVERIFY(!r.isEmpty());
    // Every file: what its headers say, and for a Windows program the catalogue component its version
    // names, with that application's verdict.
    QMap<QString, QString> found;
    for (const QJsonValue &v : r["files"].toArray()) {
        const QJsonObject f = v.toObject(), e = f["executable"].toObject(), c = e["catalogue_component"].toObject();
        QStringList what{e["format"].toString(), QString::number(e["bits"].toInt()), e["role"].toString()};
        if (!c.isEmpty())
            what << c["application"].toString() << c["verdict"].toString();
        found.insert(f["relative"].toString(), f["executable"].isNull() ? QStringLiteral("-") : what.join(' '));
    }
    const QString menu = QStringLiteral(" Acme Disc Menu unlicensed");
    QCOMPARE(found, (QMap<QString, QString>{{"SETUP.BIN", "pe 32 program" + menu}, {"LIB/HELPER.DLL", "pe 32 library" + menu},
                                            {"LAUNCHER", "pe 32 program" + menu}, {"TOOL.ELF", "elf 64 program"},
                                            {"APP.MACHO", "mach-o 64 program"}, {"UNIVERSAL.APP", "mach-o 0 program"},
                                            {"MAIN.CLASS", "-"}, {"NOTES.TXT", "-"}, {"CUT.BIN", "-"}}));
    // One warning line for each program whose name does not say it is one.
    const QStringList lines = run.err.split('\n', Qt::SkipEmptyParts);
    QCOMPARE(lines.filter("holds a").size(), 6);
    QVERIFY(lines.contains("kevro-check: warning: " + disc.toUpper() + "/LIB/HELPER.DLL holds a Windows library "
                           "(OriginalFilename DISCMENU.EXE: Acme Disc Menu, un-licensed for this client)"));
    QCOMPARE(r["warnings"].toArray().size(), lines.size());
    // No .EXE on this disc, yet an un-licensed application is on it: a release gate says so.
    QCOMPARE(kevroCheck({"--client", m_client, "--catalogue", "HIDE", "--fail-on", "unlicensed", disc}).code, 10);
}

QTEST_MAIN(TestRecord)
#include "tst_record.moc"
