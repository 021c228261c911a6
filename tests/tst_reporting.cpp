// The end of a job: the report in both formats line by line, its file name, the overwrite question and
// the failures; the summary screen; the report viewer; kevro-check; and one whole job through the screens
// compared with the report kevro-check writes for the same disc and client.

#include "ArchiveFixtures.h"
#include "CatalogueFixture.h"
#include "DiscFixture.h"
#include "HostileDisc.h"
#include "JobReports.h"
#include "Operator.h"
#include "TestSupport.h"

#include "controls/FlexGrid.h"
#include "controls/Forms.h"
#include "platform/MsgBox.h"
#include "platform/Paths.h"
#include "platform/ShellOpen.h"
#include "platform/VbError.h"
#include "platform/WorkLock.h"
#include "reporting/ScanReport.h"
#include "reporting/frmReportViewer.h"
#include "reporting/frmScanSummary.h"
#include "review/ExeEvaluation.h"
#include "review/ViewerFiles.h"
#include "review/frmScanResultsEXEs.h"
#include "review/frmScanResultsOther.h"
#include "review/frmScanResultsText.h"
#include "scan/frmScanDisc.h"
#include "shell/MainMod.h"
#include "shell/MainModScreens.h"
#include "shell/frmMainMenu.h"

#include <QPlainTextEdit>
#include <QToolButton>
#include <QLabel>
#include <QProcess>
#include <QPushButton>
#include <QRegularExpression>

#include <csignal>
#include <sys/resource.h>

namespace {

const QString ClientName = QStringLiteral("Northwind Records");
const JobResultsSource NoResults = [] { return JobResults(); };

QStringList expectedLines(const QString &name)
{
    QString text = QString::fromUtf8(ReadTestFile(QStringLiteral(KEVRO_SOURCE_DIR "/tests/reports/") + name));
    if (text.endsWith(QLatin1Char('\n')))
        text.chop(1);
    return text.split(QLatin1Char('\n'));
}

template <class T> T *shown()
{
    auto *f = Forms::get<T>();
    return f->isVisible() ? f : nullptr;
}

// Next on each review screen in turn; the summary once it shows, or null.
frmScanSummary *nextToTheSummary()
{
    for (int i = 0; i < 8 && !shown<frmScanSummary>(); ++i)
        for (QWidget *w : QApplication::topLevelWidgets())
            if (w->isVisible() && w->findChild<QPushButton *>("cmdNext"))
                Click(w->findChild<QPushButton *>("cmdNext"));
    return shown<frmScanSummary>();
}

} // namespace

class TestReporting final : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void reportFormats_data();
    void reportFormats();
    void writerRules();
    void fileNamesAndTheOverwriteQuestion();
    void failuresLoseNothing();
    void summaryScreen();
    void reportViewer();
    void wholeJobThroughTheScreens_data();
    void wholeJobThroughTheScreens();
    void kevroCheckExitCodes();
    void kevroCheckRefusesWhileAnotherWorks();
    void hostileDiscThroughTheScreensAndKevroCheck();

private:
    void useCatalogue(const QString &engine);
    void fillCatalogue();
    // Main menu (client, catalogue number), Scan Disc, programs, text and external files, Next.
    void scanFromTheMainMenu(const QString &disc, const QString &catalogue, bool html);

    TempAppFolder m_app;
    CatalogueFixture m_catalogue;
    QStringList m_opened;
    long m_client = 0;
};

void TestReporting::initTestCase()
{
    InstallScreenServices();
    RefuseBoxesWithoutResponder();
    SetShellExecuteLauncher([this](const ShellExecuteRequest &r) {
        m_opened << r.file;
        return 42L;
    });
    useCatalogue(QStringLiteral("sqlite"));
}

void TestReporting::useCatalogue(const QString &engine)
{
    QCOMPARE(m_catalogue.create(engine, m_app.path()), QString());
    m_client = m_catalogue.addClient(ClientName);
    gClientCode = QString::number(m_client);
    m_catalogue.addClient(QStringLiteral("Contoso Discs"));
}

void TestReporting::init()
{
    for (const QString &f : QDir(ReportsFolder()).entryList(QDir::Files))
        if (!f.endsWith(QLatin1String(".jpg")))
            QFile::remove(ReportsFolder() + QLatin1Char('/') + f);
    // Some cases take the reports folder away; the players' harmless file lives there.
    QDir().mkpath(ReportsFolder());
    QFile::copy(QStringLiteral(KEVRO_BUILD_APP_DIR "/reports/htmlicon.jpg"), ReportsFolder() + QStringLiteral("/htmlicon.jpg"));
    // The scan set-up and the Options screen read a volume that exists.
    QFile::remove(IniFileName());
    WriteIniKey("Devices", "DefaultDevice", m_app.path());
    m_opened.clear();
    gClientCode = QString::number(m_client);
    gClientName = ClientName;
    gCatalogueNumber = QStringLiteral("KV-1001");
    ResetList(gMediaFiles);
    ResetList(gExternalFiles);
    ResetList(gCheckedItems);
}

void TestReporting::cleanup()
{
    SetEndProcessHook(nullptr);
    for (QWidget *w : QApplication::topLevelWidgets())
        w->hide();
    Forms::unload<frmScanResultsEXEs>();
    Forms::unload<frmScanResultsText>();
    Forms::unload<frmScanResultsOther>();
    Forms::unload<frmScanSummary>();
    Forms::unload<frmReportViewer>();
    Forms::unload<frmScanDisc>();
    Forms::unload<frmMainMenu>();
}

void TestReporting::fillCatalogue()
{
    m_catalogue.execute(QStringLiteral("Delete From KEVRO_LICENSES"));
    m_catalogue.execute(QStringLiteral("Delete From KEVRO_APP_COMPONENTS"));
    m_catalogue.execute(QStringLiteral("Delete From KEVRO_APPS"));
    m_catalogue.addApp(QStringLiteral("Acme Player"), {QStringLiteral("PLAYER.EXE")}, false);
    const long zeta = m_catalogue.addApp(QStringLiteral("Zeta Suite"), {QStringLiteral("ZETA.EXE")}, true);
    m_catalogue.addLicence(gClientCode, zeta, QStringLiteral("2030-12-31"));
    m_catalogue.addApp(QStringLiteral("Beta Tools"), {QStringLiteral("BETA.EXE")}, true);
    m_catalogue.addApp(QStringLiteral("Omega Edit"), {QStringLiteral("OMEGA.EXE")}, true);
}

void TestReporting::reportFormats_data()
{
    QTest::addColumn<QString>("expected"); // the job (all files, the checked ones, an empty disc), the format
    for (const char *name : {"full-all.html", "full-all.txt", "full-checked.html", "full-checked.txt", "empty.html",
                             "empty.txt"})
        QTest::newRow(name) << QString::fromLatin1(name);
}

void TestReporting::reportFormats()
{
    QFETCH(QString, expected);
    const ReportFormat format = expected.endsWith(".html") ? ReportFormat::Html : ReportFormat::Text;
    const bool full = !expected.startsWith("empty");
    Disc disc;
    fillCatalogue();
    if (full) {
        // Known, un-licensed and unknown programs, archive members, files of every kind.
        for (const auto &[name, bytes] : QList<std::pair<QString, int>>{
                 {"PLAYER.EXE", 4000}, {"BIN/ZETA.EXE", 9000}, {"BIN/BETA.EXE", 1500}, {"TOOLS/MYSTERY.EXE", 700},
                 {"DATA.ZIP", 12000}, {"DATA.ZIP/OMEGA.EXE", 5000}, {"DATA.ZIP/HELPER.EXE", 2100},
                 {"MEDIA/INTRO.AVI", 30000}, {"MEDIA/SONG.MP3", 6000}, {"MEDIA/COVER.JPG", 2500},
                 {"MEDIA/BANNER.JPEG", 1200}, {"DATA.ZIP/README.TXT", 300}, {"NOTES.TXT", 100}}) {
            if (name.startsWith("DATA.ZIP/"))
                disc.addMember(name, bytes);
            else
                disc.add(name, bytes);
        }
        gMediaFiles = disc.files();
        const QString autorun = disc.add(QStringLiteral("AUTORUN.INF"), 60);
        gExternalFiles = QStringList{autorun, disc.add(QStringLiteral("DATA.XYZ"), 0)};
        const auto stored = [](const char *tail) { return gMediaFiles.filter(QLatin1String(tail)).value(0); };
        // Ticks in the order an operator made them, several kinds interleaved.
        AddCheckedItem(stored("/NOTES.TXT") + " (" + FileSizeText(stored("/NOTES.TXT")) + ")", "Text");
        AddCheckedItem(stored("COVER.JPG") + " (3 KB)", "Image");
        AddCheckedItem(stored("SONG.MP3") + " (6 KB)", "Audio");
        AddCheckedItem(stored("README.TXT") + " (0 KB)", "Text");
        AddCheckedItem(stored("INTRO.AVI") + " (30 KB)", "Video");
        AddCheckedItem(autorun + " (1 KB)", "External");
    }
    JobResults results = ResultsOfEvaluation(EvaluateExecutables(gMediaFiles, gClientCode));
    if (full) {
        results.video = {QString::number(CountViewerFiles(ViewerKind::Video)), QStringLiteral("1")};
        // The audio screen was left by Back: its tick never reached the summary.
        results.audio = {QStringLiteral("1"), QStringLiteral("0")};
        results.images = {QString::number(CountViewerFiles(ViewerKind::Image)), QStringLiteral("1")};
        results.text = {QString::number(CountViewerFiles(ViewerKind::Text)), QStringLiteral("2")};
        results.external = {QString::number(CountViewerFiles(ViewerKind::External)), QStringLiteral("1")};
    }
    const QString path = ReportPath(gCatalogueNumber, format);
    WriteReportFile(path, format, results, !expected.startsWith("full-checked"));
    QVERIFY(sameLines(reportLines(path, disc.root()), expectedLines(expected)));
}

void TestReporting::writerRules()
{
    // The content setting is read afresh for every report, three letters, case-blind.
    QVERIFY(!ReportContentAll());
    WriteIniKey("Reports", "DefaultReportContent", "Allways");
    QVERIFY(ReportContentAll());

    // The checked heading goes by the number the caption starts with; the list may then be empty. (A
    // heading whose number is 0 is left out with its ticks: the report files show that.)
    JobResults r;
    r.video.checked = QStringLiteral("2 ");
    AddCheckedItem(QStringLiteral("/D/B.AVI (1 KB)"), QStringLiteral("video")); // not the kind "Video"
    const QString path = ReportPath(QStringLiteral("RULES"), ReportFormat::Text);
    WriteReportFile(path, ReportFormat::Text, r, false);
    const QStringList lines = reportLines(path, QString());
    QVERIFY(lines.contains(QStringLiteral("List of Checked Video Files:")) && !lines.contains("/D/B.AVI (1 KB)"));
}

void TestReporting::fileNamesAndTheOverwriteQuestion()
{
    MsgBoxResponder boxes;
    QDir(ReportsFolder()).removeRecursively(); // made again when missing
    // Each of the nine characters a file name cannot hold; the header keeps the number as typed.
    gCatalogueNumber = QStringLiteral("A\\B/C:D*E?F\"G<H>I|J");
    const QString cleaned = ReportsFolder() + QStringLiteral("/A_B_C_D_E_F_G_H_I_J");
    SaveReport(ReportFormat::Html, NoResults);
    QCOMPARE(m_opened, QStringList{cleaned + ".html"});
    QVERIFY(ReadTestFile(cleaned + ".html")
                .contains("Catalogue Code: A\\B/C:D*E?F\"G<H>I|J Client: Northwind Records</FONT>"));
    // The other format has its own file: no question.
    SaveReport(ReportFormat::Text, NoResults);
    QCOMPARE(boxes.prompts(), QStringList());

    // No keeps the old file untouched and opens nothing; Yes writes it anew and opens it.
    WriteTestFile(cleaned + ".txt", "kept");
    m_opened.clear();
    boxes.queue(vbNo);
    SaveReport(ReportFormat::Text, NoResults);
    QCOMPARE(boxes.prompts(), QStringList{"A report for this media already exists. Are you sure you want to "
                                          "overwrite this file?"});
    QCOMPARE(ReadTestFile(cleaned + ".txt"), QByteArray("kept"));
    QVERIFY(m_opened.isEmpty());
    boxes.queue(vbYes);
    SaveReport(ReportFormat::Text, NoResults);
    QVERIFY(ReadTestFile(cleaned + ".txt").startsWith("++++"));
    QCOMPARE(m_opened, QStringList{cleaned + ".txt"});
}

void TestReporting::failuresLoseNothing()
{
    MsgBoxResponder boxes;
    // The reports folder cannot be made: the name is taken by a file.
    QDir(ReportsFolder()).removeRecursively();
    WriteTestFile(ReportsFolder(), "not a folder");
    boxes.queue(vbOK);
    SaveReport(ReportFormat::Html, NoResults);
    QCOMPARE(boxes.prompts(), QStringList{"Error 58 occured while saving report.  Can not display report."});
    QFile::remove(ReportsFolder());
    QDir().mkpath(ReportsFolder());

    // The disc fills up half way: what was written stays, and the writer's own message has no blank
    // before "occured". No failure opened anything.
    boxes.clear();
    for (int i = 0; i < 3000; ++i)
        AppendToList(gExternalFiles, QStringLiteral("/D/FILE%1.XYZ").arg(i, 5, 10, QLatin1Char('0')));
    WriteIniKey("Reports", "DefaultReportContent", "ALL");
    JobResults many;
    many.external.total = QStringLiteral("3000");
    struct rlimit old {};
    getrlimit(RLIMIT_FSIZE, &old);
    const struct rlimit small {65536, old.rlim_max};
    const auto previous = std::signal(SIGXFSZ, SIG_IGN);
    QCOMPARE(setrlimit(RLIMIT_FSIZE, &small), 0);
    boxes.queue(vbOK);
    WriteReport(ReportPath(gCatalogueNumber, ReportFormat::Text), ReportFormat::Text, [&] { return many; });
    setrlimit(RLIMIT_FSIZE, &old);
    std::signal(SIGXFSZ, previous);
    QCOMPARE(boxes.prompts(), QStringList{QStringLiteral("Error 61occured while saving report.  Can not display report.")});
    const QByteArray partial = ReadTestFile(ReportPath(gCatalogueNumber, ReportFormat::Text));
    QVERIFY(partial.size() == 65536 && partial.startsWith("++++"));
    QVERIFY(m_opened.isEmpty());
}

void TestReporting::summaryScreen()
{
    MsgBoxResponder boxes;
    // The default report type at load: four letters, case-blind; anything else keeps HTML.
    for (const auto &[value, text] : QList<QPair<const char *, bool>>{{"text", true}, {"html5", false}, {"XML", false}}) {
        Forms::unload<frmScanSummary>();
        WriteIniKey("Reports", "DefaultReportType", value);
        QCOMPARE(Forms::get<frmScanSummary>()->optText->isChecked(), text);
    }

    // The reset leaves the external number and every found number alone; PrepareToScan runs it.
    const auto summary = [] { return Forms::get<frmScanSummary>()->show(), Forms::get<frmScanSummary>(); };
    auto *s = summary();
    QStringList after;
    for (QLabel *l : {s->lblVideoChecked, s->lblAudioChecked, s->lblImagesChecked, s->lblTextChecked,
                      s->lblExternalChecked, s->lblVideoTotal}) {
        l->setText(QStringLiteral("5"));
        Forms::get<frmScanDisc>()->PrepareToScan();
        after << l->text();
    }
    QCOMPARE(after, (QStringList{"0", "0", "0", "0", "5", "5"}));

    // Finish without a report: No stays, Yes goes home with the job's client code. A report answered No
    // still counts as created: Finish then asks nothing.
    boxes.queue(vbNo);
    Click(s->cmdFinish);
    QVERIFY(s->isVisible());
    boxes.queue(vbYes);
    Click(s->cmdFinish);
    QVERIFY(!Forms::isLoaded<frmScanSummary>() && shown<frmMainMenu>());
    QCOMPARE(Forms::get<frmMainMenu>()->cmbClientCode->currentText(), gClientCode);
    s = summary();
    WriteTestFile(ReportPath(gCatalogueNumber, ReportFormat::Html), "old");
    boxes.queue(vbNo);
    Click(s->cmdPrintReport);
    Click(s->cmdFinish);
    const QString notCreated = QStringLiteral("A scan report has not been created.  Are you sure you want to continue?");
    QCOMPARE(boxes.prompts(), (QStringList{notCreated, notCreated, "A report for this media already exists. Are you "
                                                                   "sure you want to overwrite this file?"}));
    QVERIFY(!Forms::isLoaded<frmScanSummary>());

    // Back with no box ticked: the scan set-up, and this screen is unloaded.
    s = summary();
    auto *scan = Forms::get<frmScanDisc>();
    for (QCheckBox *box : {scan->chkEXEFiles, scan->chkVideoFiles, scan->chkAudioFiles, scan->chkImageFiles,
                           scan->chkTextFiles, scan->chkOtherFiles})
        box->setChecked(false);
    Click(s->cmdPrevious);
    QVERIFY(!Forms::isLoaded<frmScanSummary>() && shown<frmScanDisc>());
}

void TestReporting::reportViewer()
{
    MsgBoxResponder boxes;
    // Only the pictures: the message, and a double click on the empty list opens nothing.
    boxes.queue(vbOK);
    auto *viewer = Forms::get<frmReportViewer>();
    viewer->show();
    QTRY_COMPARE(boxes.prompts(), QStringList{"No reports were found in the KEVRO reports directory."});
    QTest::mouseDClick(viewer->gridReports->viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(20, 10));
    QVERIFY(m_opened.isEmpty());
    // Back goes to the main menu; its Reports button lists anew. Reports added by hand show, sorted by
    // name; capitals and pictures do not.
    Click(viewer->cmdPrevious);
    QVERIFY(!Forms::isLoaded<frmReportViewer>() && shown<frmMainMenu>());
    for (const char *name : {"KV-2.txt", "KV-1.html", "KV-1.txt", "SHOUT.HTML", "notes.md", "Kv-0.html"})
        WriteTestFile(ReportsFolder() + QLatin1Char('/') + QLatin1String(name), "r");
    Click(Control<QToolButton>(Forms::get<frmMainMenu>(), "cmdReports"));
    FlexGrid *grid = Forms::get<frmReportViewer>()->gridReports;
    QTRY_COMPARE(grid->Rows(), 4);
    QStringList names;
    for (int r = 0; r < grid->Rows(); ++r)
        names << grid->TextMatrix(r, 1);
    QCOMPARE(names, (QStringList{"Kv-0.html", "KV-1.html", "KV-1.txt", "KV-2.txt"}));
    QCOMPARE(boxes.prompts().size(), 1);
    // A double click opens the row's report.
    const QPoint third = grid->visualRect(grid->model()->index(2, 1)).center();
    QTest::mouseClick(grid->viewport(), Qt::LeftButton, Qt::NoModifier, third);
    QTest::mouseDClick(grid->viewport(), Qt::LeftButton, Qt::NoModifier, third);
    QCOMPARE(m_opened, QStringList{ReportsFolder() + QStringLiteral("/KV-1.txt")});
}

void TestReporting::scanFromTheMainMenu(const QString &disc, const QString &catalogue, bool html)
{
    WriteIniKey("Devices", "DefaultDevice", disc);
    WriteIniKey("Reports", "DefaultReportType", html ? "HTML" : "TEXT");
    WriteIniKey("Reports", "DefaultReportContent", "ALL");
    auto *menu = Forms::get<frmMainMenu>();
    menu->show();
    QVERIFY(QTest::qWaitForWindowExposed(menu));
    QVERIFY(ChooseFromList(Control<QComboBox>(menu, "cmbClientName"), ClientName));
    QTest::keyClicks(Control<QLineEdit>(menu, "txtCatNo"), catalogue);
    Click(Control<QToolButton>(menu, "cmdScanDisc"));
    auto *scan = shown<frmScanDisc>();
    QVERIFY(scan);
    for (const char *box : {"chkVideoFiles", "chkAudioFiles", "chkImageFiles"})
        Click(Control<QCheckBox>(scan, box));
    Click(Control<QPushButton>(scan, "cmdNext"));
}

void TestReporting::wholeJobThroughTheScreens_data()
{
    QTest::addColumn<QString>("engine");
    QTest::addColumn<bool>("html");
    QTest::newRow("sqlite, html") << "sqlite" << true;
    QTest::newRow("postgresql, text") << "postgresql" << false;
}

void TestReporting::wholeJobThroughTheScreens()
{
    QFETCH(QString, engine);
    QFETCH(bool, html);
    if (engine == QLatin1String("postgresql") && !CatalogueFixture::postgresAvailable()) {
        if (qEnvironmentVariableIsSet("CI"))
            QFAIL("KEVRO_TEST_PG is not set: CI must run the PostgreSQL tests (make test starts the server)");
        QSKIP("no PostgreSQL server: run through `make test`, which starts one");
    }
    useCatalogue(engine);
    fillCatalogue();
    m_catalogue.addApp(QStringLiteral("O'Brien Tools"), {QStringLiteral("OBRIEN.EXE")}, true);

    // The master: programs in folders, a ZIP of programs, one program nobody knows.
    QTemporaryDir discDir;
    const QString disc = discDir.filePath(QStringLiteral("Master KV-77"));
    for (const auto &[name, bytes] : QList<std::pair<QString, QByteArray>>{
             {"PLAYER.EXE", QByteArray(4000, 'p')}, {"Bin/zeta.exe", QByteArray(9000, 'z')},
             {"Bin/O'Brien's/OBRIEN.EXE", QByteArray(1500, 'o')}, {"Tools/MYSTERY.EXE", QByteArray(700, 'm')},
             {"README.TXT", "Insert the disc."}, {"AUTORUN.INF", "[autorun]"}, {"Tools/DISC.DLL", QByteArray(3000, 'd')}})
        WriteTestFile(disc + "/" + name, bytes);
    QDir().mkpath(disc + QStringLiteral("/Setup"));
    QVERIFY(!WriteArchive(disc + QStringLiteral("/Setup/DATA.ZIP"),
                          {{"PROGRAM/ZETA.EXE", QByteArray(9000, 'z')}, {"PROGRAM/HELPER.EXE", QByteArray(2100, 'h')},
                           {"PROGRAM/GUIDE.TXT", QByteArray(1500, 'g')}})
                 .isEmpty());
    MsgBoxResponder boxes;
    scanFromTheMainMenu(disc, QStringLiteral("KV-77"), html);
    auto *summary = nextToTheSummary();
    QVERIFY(summary);
    Click(summary->cmdPrintReport);
    QCOMPARE(boxes.prompts(), QStringList());
    const QString report = ReportPath(QStringLiteral("KV-77"), html ? ReportFormat::Html : ReportFormat::Text);
    QCOMPARE(m_opened, QStringList{report});
    const QStringList screens = reportLines(report, disc);
    QVERIFY(screens.size() > 30);

    // kevro-check on the same disc for the same client writes the same report.
    QVERIFY(QFile::rename(report, report + QStringLiteral(".screens")));
    const CheckRun run = kevroCheck({QStringLiteral("--client"), QString::number(m_client),
                                     QStringLiteral("--catalogue"), QStringLiteral("KV-77"), disc});
    QVERIFY2(run.code == 0 && run.err.isEmpty() && run.out == report + QLatin1Char('\n'), qPrintable(run.err));
    QVERIFY(sameLines(reportLines(report, disc), screens));
    useCatalogue(QStringLiteral("sqlite"));
}

void TestReporting::kevroCheckExitCodes()
{
    QTemporaryDir discDir;
    const QString disc = discDir.path();
    WriteTestFile(disc + QStringLiteral("/SETUP.EXE"), "MZ");
    // An archive nobody can open without its password.
    WriteArchive(disc + "/ZIPPY.ZIP", {{"SECRET.EXE", QByteArray(5000, 's')}}, "zip", "zip:encryption=zipcrypt", "secret");
    const QString client = QString::number(m_client);

    // Usage errors, an unknown client, no volume, and a file that is no disc image.
    const QList<QPair<QStringList, int>> refused{
        {{}, 2}, {{"--client", client, disc}, 2}, {{"--client", client, "--catalogue", "X", "--report", "pdf", disc}, 2},
        {{"--client", client, "--catalogue", "X", "--content", "some", disc}, 2},
        {{"--client", client, "--catalogue", "X", disc, disc}, 2}, {{"--client", "999", "--catalogue", "X", disc}, 3},
        {{"--client", client, "--catalogue", "X", disc + "/nothing here"}, 5},
        {{"--client", client, "--catalogue", "X", disc + "/SETUP.EXE"}, 8}};
    for (const auto &[args, code] : refused) {
        const CheckRun r = kevroCheck(args);
        QVERIFY2(r.code == code, qPrintable(args.join(' ') + " gave " + QString::number(r.code) + ": " + r.err));
        QVERIFY2(r.out.isEmpty() && r.err.startsWith(QLatin1String("kevro-check: ")), qPrintable(r.err));
    }

    // A damaged archive is a warning line; the job goes on. No progress when not on a terminal. The
    // content flag holds for this run only.
    const QByteArray ini = "[Reports]\r\nDefaultReportType=TEXT\r\nDefaultReportContent=CHK\r\n";
    WriteTestFile(IniFileName(), ini);
    CheckRun ok = kevroCheck({"--client", client, "--catalogue", "KV/9", "--content", "all", disc});
    const QString txt = ReportsFolder() + QStringLiteral("/KV_9.txt");
    QVERIFY2(ok.code == 0 && ok.out == txt + QLatin1Char('\n') && ok.err.contains(QLatin1String("ZIPPY.ZIP")),
             qPrintable(ok.err));
    for (const QString &w : ok.err.split(QLatin1Char('\n'), Qt::SkipEmptyParts))
        QVERIFY2(w.startsWith(QLatin1String("kevro-check: warning: ")) && !w.contains(QLatin1Char('\r')), qPrintable(w));
    QCOMPARE(ReadTestFile(IniFileName()), ini);
    QVERIFY(reportLines(txt, disc).contains(QStringLiteral("{DISC}/SETUP.EXE (1 KB)")));

    // An existing report is replaced without a question; a report that cannot be written is refused.
    WriteTestFile(txt, "old");
    ok = kevroCheck({"--client", client, "--catalogue", "KV/9", disc});
    QVERIFY(ok.code == 0 && ReadTestFile(txt).startsWith("++++"));
    QDir().mkpath(ReportsFolder() + QStringLiteral("/KV_10.txt"));
    const CheckRun blocked = kevroCheck({"--client", client, "--catalogue", "KV/10", disc});
    QDir(ReportsFolder() + QStringLiteral("/KV_10.txt")).removeRecursively();
    QVERIFY2(blocked.code == 6 && blocked.err.contains(QLatin1String("KV_10.txt")), qPrintable(blocked.err));

    // The catalogue out of reach.
    QVERIFY(QFile::rename(m_app.file("odbc.ini"), m_app.file("odbc.away")));
    CatalogueTarget nowhere;
    nowhere.engine = DataSource::Engine::PostgreSQL;
    nowhere.host = QStringLiteral("127.0.0.1");
    nowhere.port = 1;
    QCOMPARE(WriteDataSourceEntry(nowhere, m_app.file("odbc.ini")), QString());
    const CheckRun unreachable = kevroCheck({"--client", client, "--catalogue", "X", disc});
    QFile::remove(m_app.file("odbc.ini"));
    QFile::rename(m_app.file("odbc.away"), m_app.file("odbc.ini"));
    QVERIFY2(unreachable.code == 4 && unreachable.err.contains(QLatin1String("catalogue database")),
             qPrintable(unreachable.err));
}

void TestReporting::kevroCheckRefusesWhileAnotherWorks()
{
    QTemporaryDir disc;
    WriteTestFile(disc.filePath(QStringLiteral("A.EXE")), "MZ");
    const QStringList args{"--client", QString::number(m_client), "--catalogue", "BUSY", disc.path()};

    // The desktop program at work in this application folder: it emptied the extract folder at its
    // start; what a scan of its own put there since must survive kevro-check.
    QProcess desktop;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    desktop.setProcessEnvironment(env);
    const QString before = WriteTestFile(ExtractFolder() + QStringLiteral("/LEFT.ZIP/OLD.EXE"), "old");
    desktop.start(QStringLiteral(KEVRO_BUILD_APP_DIR "/kevro"));
    QVERIFY(desktop.waitForStarted());
    QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(m_app.file("kevro.lock")) && !QFile::exists(before), 20000);
    const QString member = WriteTestFile(ExtractFolder() + QStringLiteral("/OTHER.ZIP/KEEP.EXE"), "in use");
    CheckRun r = kevroCheck(args);
    QVERIFY2(r.code == 7 && r.err.contains(AppPath()) && r.err.count(QLatin1Char('\n')) == 1, qPrintable(r.err));

    // A program that crashed leaves its lock behind: the next one takes over.
    ::kill(pid_t(desktop.processId()), SIGKILL);
    QVERIFY(desktop.waitForFinished(10000));
    QVERIFY(QFile::exists(m_app.file("kevro.lock")));
    {
        // Another kevro-check at work holds the same lock; so would a copy of another user.
        WorkLock other;
        QVERIFY(other.Take());
        QCOMPARE(kevroCheck(args).code, 7);
        QCOMPARE(ReadTestFile(member), QByteArray("in use"));
    }
    QCOMPARE(kevroCheck(args).code, 0);
    QVERIFY(!QFile::exists(member));
}

void TestReporting::hostileDiscThroughTheScreensAndKevroCheck()
{
    HostileDisc hostile;
    const QString disc = hostile.root();
    MsgBoxResponder boxes;
    boxes.queue(vbOK); // the link inside the ZIP is not extracted
    scanFromTheMainMenu(disc, QStringLiteral("HOSTILE"), false);

    // Unknown programs: line feed, override and case make "_" and a row more; each SETUP.EXE row opens its file.
    auto *exes = shown<frmScanResultsEXEs>();
    QVERIFY(exes);
    FlexGrid *unknown = exes->gridUnknownEXEs;
    QStringList names;
    for (int r = 1; r < unknown->Rows(); ++r)
        names << unknown->TextMatrix(r, 2);
    QCOMPARE(names, (QStringList{"EVIL_LICENSED APPLICATIONS - 99.EXE", "PHOTO_GPJ.EXE", "SETUP.EXE", "SETUP.EXE"}));
    for (int r : {3, 4}) {
        ClickRow(unknown, r);
        exes->mnuContextUnknownLaunchEXE->trigger();
    }
    QCOMPARE(QSet<QByteArray>({ReadTestFile(m_opened.value(0)), ReadTestFile(m_opened.value(1))}),
             QSet<QByteArray>({"lower-case setup", "upper-case setup"}));
    m_opened.clear();
    Click(exes->cmdNext);

    // Text: both README.TXT rows and the name that is not UTF-8 show their own text.
    auto *text = shown<frmScanResultsText>();
    QVERIFY(text);
    QStringList seen;
    for (int r = 1; r < text->gridTextResults->Rows(); ++r) {
        const QString name = text->gridTextResults->TextMatrix(r, 2);
        if (name == "README.TXT" || name == "BAD__NAME.TXT") {
            ClickRow(text->gridTextResults, r);
            seen << text->txtSelectedText->toPlainText();
        }
    }
    seen.sort();
    QCOMPARE(seen, (QStringList{"lower-case readme", "not UTF-8", "upper-case readme"}));
    Click(text->cmdNext);

    // External: the row's size is its own file's, and it opens that file.
    auto *other = shown<frmScanResultsOther>();
    QVERIFY(other);
    FlexGrid *external = other->gridTextResults;
    QCOMPARE(external->TextMatrix(1, 3), QStringLiteral("3 KB"));
    ClickRow(external, 1); // a double click's first press selects the row
    QTest::mouseDClick(external->viewport(), Qt::LeftButton, Qt::NoModifier, CellCentre(external, 1, 2));
    QCOMPARE(m_opened, QStringList{disc + "/a\tb.bin"});
    Click(other->cmdNext);

    // The report's lines are its own: none came from a name.
    auto *summary = shown<frmScanSummary>();
    QVERIFY(summary);
    Click(summary->cmdPrintReport);
    const QStringList lines = reportLines(ReportPath(QStringLiteral("HOSTILE"), ReportFormat::Text), disc);
    for (const QString &line : lines)
        QVERIFY2(!line.contains(QRegularExpression("[\\x00-\\x1f<>\\x{202e}]")), qPrintable(line));
    QVERIFY(lines.contains("{DISC}/EVIL_LICENSED APPLICATIONS - 99.EXE (1 KB)"));
    QCOMPARE(lines.filter("SETUP.EXE (1 KB)").size(), 2);
    QCOMPARE(lines.filter("{DISC}/README.TXT (1 KB)").size(), 4); // listed twice, checked twice
    QVERIFY(lines.contains("Total Text Files - 12") && lines.contains("Text Files Checked - 3"));
    QVERIFY(lines.contains("{DISC}/BAD__NAME.TXT (1 KB)") && lines.contains("{DISC}/A_B.BIN (3 KB)"));
    QCOMPARE(lines.filter("{APP}/EXTRACT/DATA.ZIP/SAME.TXT (1 KB)").size(), 2);

    // kevro-check: no markup of the disc's in HTML, one warning line that says what.
    const CheckRun run = kevroCheck({"--client", QString::number(m_client), "--catalogue", "HOSTILE", "--report",
                                     "html", "--content", "all", disc});
    QCOMPARE(run.code, 0);
    QCOMPARE(run.err, "kevro-check: warning: " + disc.toUpper() +
                          "/DATA.ZIP: link_kevro-check: warning: forged: a link, not a file\n");
    const QString html = QString::fromUtf8(ReadTestFile(ReportPath(QStringLiteral("HOSTILE"), ReportFormat::Html)));
    QVERIFY(!html.contains("<script") && html.contains(disc.toUpper() + "/_SCRIPT_X.TXT (1 KB)<BR>"));
    QCOMPARE(QDir(ExtractFolder()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList());
}

QTEST_MAIN(TestReporting)
#include "tst_reporting.moc"
