// The judgement of a disc's executables against real catalogues on SQLite and PostgreSQL (the decision, the
// trees' keys, unknown files, the empty catalogue, two stations at once on the server) and its viewer.

#include "ArchiveFixtures.h"
#include "CatalogueFixture.h"
#include "DiscFixture.h"
#include "Operator.h"
#include "TestSupport.h"

#include "controls/Forms.h"
#include "platform/MsgBox.h"
#include "platform/ShellOpen.h"
#include "review/frmScanResultsEXEs.h"
#include "scan/frmScanDisc.h"
#include "shell/MainModScreens.h"
#include "platform/Paths.h"
#include "platform/VbError.h"
#include "review/ExeEvaluation.h"
#include "shell/MainMod.h"

#include <QHeaderView>
#include <QLocale>
#include <QPlainTextEdit>
#include <QProcess>
#include <QPushButton>
#include <QTreeWidget>

namespace {
const QString Client = QStringLiteral("NORTHWIND");

// A tree as "name: tag tag", a root a line, its files' tags in order.
QStringList tree(const QList<ApplicationRoot> &roots)
{
    QStringList out;
    for (const ApplicationRoot &r : roots) {
        QStringList tags;
        for (const ApplicationFile &f : r.files)
            tags << f.tag;
        tags.sort();
        out << r.name + ": " + tags.join(' ');
    }
    return out;
}
} // namespace

class TestReview final : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase_data();
    void initTestCase();
    void init();
    void decisionTable();
    void emptyCatalogueAndDiscWithoutExecutables();
    void everyFileUnderItsOwnApplication();
    void rowsLeftBehindAreShownAndRemoved();
    void stationsNeverSeeEachOthersRows();
    void simplerJudgementByLicenceRows();
    void viewerShowsTheJudgement();
    void treesGridAndTheirMenus();

private:
    QStringList m_opened;
    long m_openResult = 42;
    TempAppFolder m_app;
    CatalogueFixture m_catalogue;
};

void TestReview::initTestCase_data()
{
    QTest::addColumn<QString>("engine");
    QTest::newRow("sqlite") << "sqlite";
    QTest::newRow("postgresql") << "postgresql";
}

void TestReview::initTestCase()
{
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedKingdom));
    InstallScreenServices();
    RefuseBoxesWithoutResponder();
    SetShellExecuteLauncher([this](const ShellExecuteRequest &r) {
        m_opened << r.file;
        return m_openResult;
    });
}

void TestReview::init()
{
    QFETCH_GLOBAL(QString, engine);
    if (engine == "postgresql" && !CatalogueFixture::postgresAvailable()) {
        if (qEnvironmentVariableIsSet("CI"))
            QFAIL("KEVRO_TEST_PG is not set: CI must run the PostgreSQL tests (make test starts the server)");
        QSKIP("no PostgreSQL server: run through `make test`, which starts one");
    }
    QCOMPARE(m_catalogue.create(engine, m_app.path()), QString());
    ClearRealPaths();
    Forms::unload<frmScanResultsEXEs>();
    m_opened.clear();
    m_openResult = 42;
    gClientCode = Client;
    QFile::remove(IniFileName());
}

void TestReview::decisionTable()
{
    m_catalogue.addApp("Free Viewer", {"FREEVIEW.EXE"}, false);
    m_catalogue.addAppWithoutLicenceFlag("Null Flag Tool", {"NULLFLAG.EXE"});
    m_catalogue.addLicence(Client, m_catalogue.addApp("Expired Suite", {"EXPIRED.EXE"}, true), "2001-12-31");
    m_catalogue.addLicence("CONTOSO", m_catalogue.addApp("Contoso Only", {"FOREIGN.EXE"}, true));
    m_catalogue.addApp("Unheld Studio", {"UNHELD.EXE", "lower.exe"}, true);
    m_catalogue.addLicence(Client, m_catalogue.addApp("Per Media Player", {"PERMEDIA.EXE"}, true, true));
    // One component name in a free application and in one that needs a licence the client lacks.
    m_catalogue.addApp("Paid Shared", {"SHARED.EXE"}, true);
    m_catalogue.addApp("Free Shared", {"SHARED.EXE"}, false);
    m_catalogue.addApp("No Components", {}, true);
    // An application without a name judges only its own files.
    const long nameless = m_catalogue.addApp("Nameless", {"NAMELESS.EXE"}, true);
    m_catalogue.execute("UPDATE KEVRO_APPS SET APP_NAME = NULL WHERE APP_ID = " + QString::number(nameless));

    Disc disc;
    const QString viewer1 = disc.add("APPS/FREEVIEW.EXE"), viewer2 = disc.add("COPY/FREEVIEW.EXE");
    const QString nullFlag = disc.add("NULLFLAG.EXE"), expired = disc.add("EXPIRED.EXE");
    const QString foreign = disc.add("FOREIGN.EXE"), unheld = disc.add("UNHELD.EXE"), lower = disc.add("LOWER.EXE");
    const QString perMedia = disc.add("PERMEDIA.EXE"), shared = disc.add("SHARED.EXE");
    disc.add("UNHELD.EXE.BAK");
    disc.add("README.TXT");
    const QString unknownB = disc.add("B/ZULU.EXE", 2048), unknownA = disc.add("A/ZULU.EXE", 0);
    const QString hidden = disc.add("HIDDEN/.SETUP.EXE");
    const QString member = disc.addMember("PACK.ZIP/INNER/UNKNOWN.EXE");
    const ExeEvaluation result = EvaluateExecutables(disc.files(), Client);
    // The shared name goes under whichever matching row the engine gives last.
    const QStringList sharedOwners = m_catalogue.column(
        "Select KEVRO_APPS.APP_ID, KEVRO_APP_COMPONENTS.EXE_NAME, KEVRO_APPS.APP_NAME, KEVRO_APPS.APP_REQUIRES_LICENSE, "
        "KEVRO_APPS.APP_LICENSE_PER_MEDIA From KEVRO_APP_COMPONENTS Inner Join KEVRO_APPS On "
        "KEVRO_APP_COMPONENTS.EXE_APP = KEVRO_APPS.APP_ID Where KEVRO_APP_COMPONENTS.EXE_NAME = 'SHARED.EXE'",
        "APP_NAME");
    // Each tree in the order of the names, each root with exactly its files.
    QStringList licensed{"Expired Suite: " + expired, "Free Viewer: " + viewer1 + ' ' + viewer2,
                         "Null Flag Tool: " + nullFlag, "Per Media Player: " + perMedia,
                         sharedOwners.last() + ": " + shared};
    licensed.sort();
    QCOMPARE(tree(result.licensed), licensed);
    QCOMPARE(tree(result.unlicensed),
             (QStringList{"Contoso Only: " + foreign, "Unheld Studio: " + lower + ' ' + unheld}));

    // Unknown files in the scan's order, each with its size and marks; the same name twice counts twice.
    QStringList unknown;
    for (const UnknownExe &u : result.unknown)
        unknown << QStringList{u.path, u.sizeText, u.hidden ? "hidden" : "", u.inArchive ? "member" : ""}.join('|');
    QCOMPARE(unknown, (QStringList{unknownB + "|2 KB||", unknownA + "|0 KB||", hidden + "|1 KB|hidden|",
                                   member + "|3 KB||member"}));
    QCOMPARE(QStringList({result.licensedCaption, result.unlicensedCaption, result.unknownCaption}),
             QStringList({"Licensed Applications - 5", "Unlicensed Applications - 2", "Unknown Programs - 4"}));
    // Nothing of the evaluation stays in the catalogue.
    QVERIFY(m_catalogue.column("Select APP_NAME From KEVRO_APP_RESULTS", "APP_NAME").isEmpty());

    // A file of the nameless application is the one the Null stops, as a Null read into a name does.
    disc.add("NAMELESS.EXE");
    QVERIFY_THROWS_EXCEPTION(VbError, EvaluateExecutables(disc.files(), Client));
    QVERIFY(m_catalogue.column("Select APP_NAME From KEVRO_APP_RESULTS", "APP_NAME").isEmpty());
}

void TestReview::emptyCatalogueAndDiscWithoutExecutables()
{
    Disc disc;
    const QString a = disc.add("SETUP.EXE");
    disc.add("PICTURE.JPG");
    ExeEvaluation result = EvaluateExecutables(disc.files(), Client);
    QVERIFY(result.catalogueEmpty && result.licensed.isEmpty() && result.unlicensed.isEmpty());
    QVERIFY(result.licensedCaption.isEmpty() && result.unlicensedCaption.isEmpty());
    QCOMPARE(result.unknown.value(0).path, a);
    QCOMPARE(result.unknownCaption, QStringLiteral("Unknown Programs - 1"));

    m_catalogue.addApp("Something", {"SETUP.EXE"}, false);
    Disc noExecutables;
    noExecutables.add("MOVIE.MPG");
    result = EvaluateExecutables(noExecutables.files(), Client);
    QCOMPARE(QStringList({result.licensedCaption, result.unlicensedCaption, result.unknownCaption}),
             QStringList({"Licensed Applications - 0", "Unlicensed Applications - 0", "Unknown Programs - 0"}));
    // A scan that found nothing at all.
    result = EvaluateExecutables(QStringList{QString()}, Client);
    QVERIFY(result.unknown.isEmpty() && result.licensed.isEmpty());
}

void TestReview::everyFileUnderItsOwnApplication()
{
    // Twelve applications: the eleventh's first file and the first's eleventh would once have shared a
    // key. One application is licensed for one file (its name shared with a free application) and
    // un-licensed for another, so it stands in both trees.
    for (int i = 1; i <= 12; ++i)
        m_catalogue.addApp(QStringLiteral("App %1").arg(i, 2, 10, QLatin1Char('0')),
                           {QStringLiteral("APP%1.EXE").arg(i)}, false);
    m_catalogue.addApp("O'Reilly Tools", {"OREILLY.EXE", "MIXED.EXE"}, true);
    m_catalogue.addApp("Another Free", {"MIXED.EXE"}, false);
    Disc disc;
    for (int copy = 0; copy < 11; ++copy)
        disc.add(QStringLiteral("COPY%1/APP1.EXE").arg(copy));
    for (int i = 2; i <= 12; ++i)
        disc.add(QStringLiteral("D/APP%1.EXE").arg(i));
    const QString apostrophe = disc.add("O'BRIEN'S FILES/OREILLY.EXE");
    const QString mixed = disc.add("MIXED.EXE");

    const ExeEvaluation result = EvaluateExecutables(disc.files(), Client);
    // Every key in both trees, a root's or a file's, is its own: fourteen roots, twenty-four files.
    QStringList keys;
    for (const ApplicationRoot &root : result.licensed + result.unlicensed) {
        keys << root.key;
        for (const ApplicationFile &f : root.files)
            keys << f.key;
    }
    QCOMPARE(keys.size(), 14 + 24);
    QCOMPARE(QSet<QString>(keys.begin(), keys.end()).size(), 14 + 24);

    // Which application MIXED.EXE goes under depends on the engine's order; wherever it goes, the
    // apostrophe's application is in the un-licensed tree with its own file, and only there.
    QCOMPARE(tree(result.unlicensed), QStringList{"O'Reilly Tools: " + apostrophe});
    const QStringList licensed = tree(result.licensed);
    QVERIFY(licensed.contains("O'Reilly Tools: " + mixed) != licensed.contains("Another Free: " + mixed));
    QCOMPARE(licensed.size(), 13);
    QVERIFY(std::is_sorted(licensed.begin(), licensed.end()));
}

void TestReview::rowsLeftBehindAreShownAndRemoved()
{
    m_catalogue.addApp("Tool", {"TOOL.EXE"}, false);
    // What an evaluation that died before this program kept its rows in one transaction left behind.
    m_catalogue.execute("Insert Into KEVRO_APP_RESULTS (APP_NAME, EXE_PATH, EXE_NAME, APP_LICENSED) "
                        "Values ('Ghost', '/GONE/GHOST.EXE', 'GHOST.EXE', False)");
    Disc disc;
    disc.add("TOOL.EXE");
    const ExeEvaluation result = EvaluateExecutables(disc.files(), Client);
    QCOMPARE(tree(result.unlicensed), QStringList{"Ghost: /GONE/GHOST.EXE"});
    QCOMPARE(result.unlicensed[0].files[0].text, QStringLiteral("GHOST.EXE (Error)"));
    QVERIFY(m_catalogue.column("Select APP_NAME From KEVRO_APP_RESULTS", "APP_NAME").isEmpty());
}

void TestReview::stationsNeverSeeEachOthersRows()
{
    QFETCH_GLOBAL(QString, engine);
    if (engine != "postgresql")
        QSKIP("stations share a catalogue only on a server");
    for (const QString station : {"A", "B"})
        for (int k = 0; k < 40; ++k)
            m_catalogue.addApp(QStringLiteral("Station %1 app %2").arg(station).arg(k, 2, 10, QLatin1Char('0')),
                               {QStringLiteral("%1%2.EXE").arg(station).arg(k)}, false);
    // Two stations evaluate discs of their own at the same moment, several times over; each must find
    // exactly its own files, never one of the other's, and lose none to the other's emptying.
    QProcess stations[2];
    for (int i = 0; i < 2; ++i) {
        stations[i].setProcessChannelMode(QProcess::MergedChannels);
        stations[i].start(QStringLiteral(KEVRO_EVAL_CHILD), {i == 0 ? "A" : "B", "400", "6"});
    }
    for (QProcess &p : stations) {
        QVERIFY(p.waitForFinished(120000));
        const QString out = QString::fromUtf8(p.readAll());
        QVERIFY2(p.exitCode() == 0 && out.contains("rounds 6 ok"), qPrintable(out));
    }
}

void TestReview::simplerJudgementByLicenceRows()
{
    // The licence's application number is matched with the component's own number: a licence for
    // application 1 holds whatever component is numbered 1.
    m_catalogue.addApp("First", {"FIRST.EXE"}, true);
    m_catalogue.addApp("Second", {"SECOND.EXE"}, true);
    const QString firstComponent = "Select EXE_ID From KEVRO_APP_COMPONENTS Where EXE_NAME = 'FIRST.EXE'";
    m_catalogue.addLicence(Client, m_catalogue.column(firstComponent, "EXE_ID").value(0).toLong());
    Disc disc;
    const QString first = disc.add("FIRST.EXE"), second = disc.add("SECOND.EXE"), other = disc.add("OTHER.EXE");
    disc.add("NOTES.TXT");
    const ExeLists lists = ListExecutablesByLicence(disc.files(), Client);
    QCOMPARE(lists.licensed, QStringList{first});
    QCOMPARE(lists.unlicensed, QStringList{second});
    QCOMPARE(lists.unknown, QStringList{other});
}

namespace {
QStringList gridColumn(FlexGrid *grid, int col)
{
    QStringList out;
    for (int r = 0; r < grid->Rows(); ++r)
        out << grid->TextMatrix(r, col);
    return out;
}

QTreeWidgetItem *nodeWithText(QTreeWidget *tree, const QString &text)
{
    const auto found = tree->findItems(text, Qt::MatchExactly | Qt::MatchRecursive);
    return found.isEmpty() ? nullptr : found.first();
}

void clickNode(QTreeWidget *tree, QTreeWidgetItem *node, Qt::MouseButton button = Qt::LeftButton)
{
    QTest::mouseClick(tree->viewport(), button, {}, tree->visualItemRect(node).center());
}

void clickHeading(FlexGrid *grid, int col)
{
    QHeaderView *h = grid->horizontalHeader();
    QTest::mouseClick(h->viewport(), Qt::LeftButton, {},
                      QPoint(h->sectionViewportPosition(col) + h->sectionSize(col) / 2, h->height() / 2));
}
} // namespace

void TestReview::viewerShowsTheJudgement()
{
    QFETCH_GLOBAL(QString, engine);
    if (engine != "sqlite")
        QSKIP("the screen is the same on every engine");
    m_catalogue.addApp("Viewer", {"VIEW.EXE"}, false);
    Disc disc;
    disc.add("VIEW.EXE");
    disc.add("B/ZULU.EXE", 40000);
    disc.add("A/MIKE.EXE", 9000);
    disc.add("SECRET/.ALPHA.EXE");
    disc.addMember("PACK.ZIP/INNER/.BRAVO.EXE");
    gMediaFiles = disc.files();
    auto *v = Forms::get<frmScanResultsEXEs>();
    v->show();
    QCOMPARE(v->treLicensedEXEs->topLevelItem(0)->text(0), QStringLiteral("Viewer"));
    QCOMPARE(v->treLicensedEXEs->topLevelItem(0)->child(0)->text(0), QStringLiteral("VIEW.EXE (1 KB)"));
    // Title row, rows by file name whatever the disc's order; marks on the hidden file and the member,
    // none on the others. (Which mark wins is tst_helpers' FileIconKey.)
    FlexGrid *grid = v->gridUnknownEXEs;
    QCOMPARE(gridColumn(grid, 2), QStringList({"File Name", ".ALPHA.EXE", ".BRAVO.EXE", "MIKE.EXE", "ZULU.EXE"}));
    QVERIFY(grid->HasCellPicture(1, 0) && grid->HasCellPicture(2, 0));
    QVERIFY(!grid->HasCellPicture(3, 0) && !grid->HasCellPicture(4, 0));
    // Headings: the first click on a name sorts as the list already stands, the second reverses it; a
    // click on the size sorts by the number, the next the other way.
    clickHeading(grid, 2);
    clickHeading(grid, 2);
    QCOMPARE(grid->TextMatrix(1, 2), QStringLiteral("ZULU.EXE"));
    clickHeading(grid, 3);
    clickHeading(grid, 3);
    QCOMPARE(gridColumn(grid, 3), QStringList({"File Size", "39 KB", "9 KB", "3 KB", "1 KB"}));

    // Back throws the judgement away and shows the set-up screen again.
    WriteIniKey("Devices", "DefaultDevice", AppPath());
    QTest::mouseClick(v->cmdPrevious, Qt::LeftButton);
    QVERIFY(!Forms::isLoaded<frmScanResultsEXEs>() && Forms::get<frmScanDisc>()->isVisible());
    Forms::unload<frmScanDisc>();

    // No unknown program: not even the title row stays, and clicks on the empty grid do nothing.
    Disc known;
    known.add("VIEW.EXE");
    gMediaFiles = known.files();
    v = Forms::get<frmScanResultsEXEs>();
    v->show();
    grid = v->gridUnknownEXEs;
    QTest::mouseClick(grid->viewport(), Qt::RightButton, {}, QPoint(20, 10));
    QTest::mouseClick(grid->viewport(), Qt::LeftButton, {}, QPoint(20, 10));
    QVERIFY(!v->mnuContextUnknown->isVisible() && grid->Rows() == 0);
    QCOMPARE(v->txtFileInfo->toPlainText(), QString());
}

void TestReview::treesGridAndTheirMenus()
{
    QFETCH_GLOBAL(QString, engine);
    const QString corpus = CorpusFolder();
    if (engine != "sqlite" || corpus.isEmpty())
        QSKIP(corpus.isEmpty() ? "skipped: no corpus" : "the screen is the same on every engine");
    const QString pidgin = corpus + "/pe/secana+PeNet__test__PeNet.Test__Binaries__pidgin.exe";
    m_catalogue.addApp("Pidgin", {"PIDGIN.EXE"}, false);
    m_catalogue.addApp("Packed Tool", {"TOOL.EXE"}, true);
    m_catalogue.addApp("With Page", {"PAGE.EXE"}, false, false, "https://example.org/terms");
    m_catalogue.addApp("No Page", {"NOPAGE.EXE"}, false);
    m_catalogue.addApp("O'Neil Utilities", {"ONEIL.EXE"}, false);
    Disc disc;
    const QString pidginPath = disc.addCopy("PIDGIN.EXE", pidgin);
    const QString member = disc.addMember("SETUP.ZIP/BIN/TOOL.EXE");
    disc.add("PLAIN.EXE");
    disc.addCopy("CHAT.EXE", pidgin);
    gMediaFiles = disc.files();
    auto *v = Forms::get<frmScanResultsEXEs>();
    v->show();
    QTreeWidget *licensed = v->treLicensedEXEs, *unlicensed = v->treUnlicensedEXEs;
    QTreeWidgetItem *pidginRoot = nodeWithText(licensed, "Pidgin");
    QVERIFY(pidginRoot);

    // A file's node: its version information and its path as the tool tip; a root clears both.
    clickNode(licensed, nodeWithText(licensed, "PIDGIN.EXE (" + FileSizeText(pidginPath) + ")"));
    QCOMPARE(v->txtFileInfo->toPlainText().section('\n', 0, 1), QStringLiteral("Company Name:\nThe Pidgin developer community"));
    QCOMPARE(licensed->toolTip(), pidginPath);
    clickNode(licensed, pidginRoot);
    QVERIFY(v->txtFileInfo->toPlainText().isEmpty() && licensed->toolTip().isEmpty());
    // An archive member names the archive's place in the extract folder.
    QTreeWidgetItem *memberNode = unlicensed->topLevelItem(0)->child(0);
    clickNode(unlicensed, memberNode);
    QCOMPARE(unlicensed->toolTip(), QStringLiteral("Archive file: /SETUP.ZIP/BIN/TOOL.EXE"));
    QCOMPARE(v->txtFileInfo->toPlainText(), QStringLiteral("(No version information for this file)"));

    // A right click works on the node already selected and never selects one: on a root only the
    // licence page, on a file only the launch.
    licensed->setCurrentItem(pidginRoot);
    clickNode(licensed, pidginRoot->child(0), Qt::RightButton);
    QCOMPARE(licensed->currentItem(), pidginRoot);
    QVERIFY(v->mnuContextLicensed->isVisible());
    QVERIFY(v->mnuContextLicensedShowWebsite->isVisible() && !v->mnuContextLicensedLaunchEXE->isVisible());
    v->mnuContextLicensed->hide();
    clickNode(unlicensed, memberNode, Qt::RightButton);
    QVERIFY(v->mnuContextUnlicensed->isVisible());
    QVERIFY(v->mnuContextUnlicensedLaunchExe->isVisible() && !v->mnuContextUnlicensedShowWebsite->isVisible());
    // Launch hands the file to the desktop's opener; a refusal is the operator's message.
    MsgBoxResponder boxes;
    boxes.queue(vbOK);
    m_openResult = ShellExecuteNoAssociation;
    v->mnuContextUnlicensedLaunchExe->trigger();
    v->mnuContextUnlicensed->hide();
    // Licence pages: the address when there is one, else the message. An application removed meanwhile:
    // nothing at all. A name with a quote is looked up like any other.
    m_openResult = 42;
    boxes.queue(vbOK, 2);
    v->DisplaySelectedLicenseWebsite("With Page");
    v->DisplaySelectedLicenseWebsite("No Page");
    m_catalogue.execute("Delete From KEVRO_APPS Where APP_NAME = 'With Page'");
    v->DisplaySelectedLicenseWebsite("With Page");
    v->DisplaySelectedLicenseWebsite("O'Neil Utilities");
    QCOMPARE(m_opened, (QStringList{RealPath(member), "https://example.org/terms"}));
    const QString noPage = QStringLiteral("No web-site listed for this program.");
    QCOMPARE(boxes.prompts(), (QStringList{"Program can not run - it may be corrupt.", noPage, noPage}));

    // The search takes the company name of the current row, and the bare name after a file without
    // version data. A right click opens the menu over the current row and never moves it.
    FlexGrid *grid = v->gridUnknownEXEs;
    QCOMPARE(gridColumn(grid, 2), QStringList({"File Name", "CHAT.EXE", "PLAIN.EXE"}));
    for (int row : {1, 2}) {
        if (row == 2)
            WriteIniKey("Web", "SearchHost", "https://search.example.net");
        ClickRow(grid, row);
        QTest::mouseClick(grid->viewport(), Qt::RightButton, {}, CellCentre(grid, 2, 2));
        QVERIFY(grid->Row() == row && v->mnuContextUnknown->isVisible());
        v->mnuContextUnknownSearchOnWeb->trigger();
        v->mnuContextUnknown->hide();
    }
    QCOMPARE(m_opened.mid(2), (QStringList{"https://www.google.com/search?q=The Pidgin developer community CHAT.EXE",
                                           "https://search.example.net/search?q=PLAIN.EXE"}));
}

QTEST_MAIN(TestReview)
#include "tst_review.moc"
