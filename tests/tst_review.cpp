// The judgement of a disc's executables against a real catalogue on SQLite and on PostgreSQL: every
// row of the decision, the trees' shape and keys, the unknown list's marks, names with apostrophes, the
// empty catalogue, and two stations evaluating at the same moment on the shared server.

#include "ArchiveFixtures.h"
#include "CatalogueFixture.h"
#include "DiscFixture.h"
#include "Operator.h"
#include "TestSupport.h"

#include "controls/FlexGrid.h"
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

#include <QAction>
#include <QFile>
#include <QHeaderView>
#include <QLabel>
#include <QLocale>
#include <QMenu>
#include <QPlainTextEdit>
#include <QProcess>
#include <QPushButton>
#include <QTest>
#include <QTreeWidget>

namespace {

const QString Client = QStringLiteral("NORTHWIND");

QStringList names(const QList<ApplicationRoot> &roots)
{
    QStringList out;
    for (const ApplicationRoot &r : roots)
        out << r.name;
    return out;
}

const ApplicationRoot *rootNamed(const QList<ApplicationRoot> &roots, const QString &name)
{
    for (const ApplicationRoot &r : roots) {
        if (r.name == name)
            return &r;
    }
    return nullptr;
}

QStringList tags(const ApplicationRoot *root)
{
    QStringList out;
    if (root) {
        for (const ApplicationFile &f : root->files)
            out << f.tag;
    }
    out.sort();
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
    frmScanResultsEXEs *openViewer(const Disc &disc);
    bool onlyOnSQLite();
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
    // What the desktop would have opened, and what it answers.
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
    const long expired = m_catalogue.addApp("Expired Suite", {"EXPIRED.EXE"}, true);
    m_catalogue.addLicence(Client, expired, "2001-12-31");
    const long foreign = m_catalogue.addApp("Contoso Only", {"FOREIGN.EXE"}, true);
    m_catalogue.addLicence("CONTOSO", foreign);
    m_catalogue.addApp("Unheld Studio", {"UNHELD.EXE", "lower.exe"}, true);
    const long perMedia = m_catalogue.addApp("Per Media Player", {"PERMEDIA.EXE"}, true, true);
    m_catalogue.addLicence(Client, perMedia);
    // One component name in a free application and in one that needs a licence the client lacks.
    m_catalogue.addApp("Paid Shared", {"SHARED.EXE"}, true);
    m_catalogue.addApp("Free Shared", {"SHARED.EXE"}, false);
    m_catalogue.addApp("No Components", {}, true);
    // An application without a name judges only its own files.
    const long nameless = m_catalogue.addApp("Nameless", {"NAMELESS.EXE"}, true);
    m_catalogue.execute("UPDATE KEVRO_APPS SET APP_NAME = NULL WHERE APP_ID = " + QString::number(nameless));

    Disc disc;
    const QString viewer1 = disc.add("APPS/FREEVIEW.EXE");
    const QString viewer2 = disc.add("COPY/FREEVIEW.EXE");
    const QString nullFlag = disc.add("NULLFLAG.EXE");
    const QString expiredExe = disc.add("EXPIRED.EXE");
    const QString foreignExe = disc.add("FOREIGN.EXE");
    const QString unheld = disc.add("UNHELD.EXE");
    const QString lower = disc.add("LOWER.EXE");
    const QString perMediaExe = disc.add("PERMEDIA.EXE");
    const QString shared = disc.add("SHARED.EXE");
    disc.add("UNHELD.EXE.BAK");
    disc.add("README.TXT");
    const QString unknownB = disc.add("B/ZULU.EXE", 2048);
    const QString unknownA = disc.add("A/ZULU.EXE", 0);
    const QString hidden = disc.add("HIDDEN/.SETUP.EXE");
    const QString member = disc.addMember("PACK.ZIP/INNER/UNKNOWN.EXE");

    const ExeEvaluation result = EvaluateExecutables(disc.files(), Client);
    QVERIFY(!result.catalogueEmpty);

    // The shared name goes under whichever matching row the engine gives last.
    const QStringList sharedOwners = m_catalogue.column(
        "Select KEVRO_APPS.APP_ID, KEVRO_APP_COMPONENTS.EXE_NAME, KEVRO_APPS.APP_NAME, KEVRO_APPS.APP_REQUIRES_LICENSE, "
        "KEVRO_APPS.APP_LICENSE_PER_MEDIA From KEVRO_APP_COMPONENTS Inner Join KEVRO_APPS On "
        "KEVRO_APP_COMPONENTS.EXE_APP = KEVRO_APPS.APP_ID Where KEVRO_APP_COMPONENTS.EXE_NAME = 'SHARED.EXE'",
        "APP_NAME");
    QCOMPARE(sharedOwners.size(), 2);
    const QString sharedName = sharedOwners.last();

    QStringList licensed{"Expired Suite", "Free Viewer", "Null Flag Tool", "Per Media Player", sharedName};
    licensed.sort();
    QCOMPARE(names(result.licensed), licensed);
    QCOMPARE(names(result.unlicensed), QStringList({"Contoso Only", "Unheld Studio"}));
    QCOMPARE(tags(rootNamed(result.licensed, "Free Viewer")), QStringList({viewer1, viewer2}));
    QCOMPARE(tags(rootNamed(result.licensed, "Null Flag Tool")), QStringList{nullFlag});
    QCOMPARE(tags(rootNamed(result.licensed, "Expired Suite")), QStringList{expiredExe});
    QCOMPARE(tags(rootNamed(result.licensed, "Per Media Player")), QStringList{perMediaExe});
    QCOMPARE(tags(rootNamed(result.licensed, sharedName)), QStringList{shared});
    QCOMPARE(tags(rootNamed(result.unlicensed, "Contoso Only")), QStringList{foreignExe});
    QStringList unheldTags{unheld, lower};
    unheldTags.sort();
    QCOMPARE(tags(rootNamed(result.unlicensed, "Unheld Studio")), unheldTags);

    // A file's text is its name and size; its tag the stored path.
    const ApplicationRoot *viewer = rootNamed(result.licensed, "Free Viewer");
    QCOMPARE(viewer->files.first().text, QStringLiteral("FREEVIEW.EXE (1 KB)"));

    // Unknown files in the scan's order, each with its marks; the same name twice counts twice.
    QCOMPARE(result.unknown.size(), 4);
    QCOMPARE(result.unknown[0].path, unknownB);
    QCOMPARE(result.unknown[1].path, unknownA);
    QCOMPARE(result.unknown[1].fileName, QStringLiteral("ZULU.EXE"));
    QCOMPARE(result.unknown[0].sizeText, QStringLiteral("2 KB"));
    QCOMPARE(result.unknown[1].sizeText, QStringLiteral("0 KB"));
    QCOMPARE(result.unknown[2].path, hidden);
    QCOMPARE(result.unknown[3].path, member);
    QVERIFY(!result.unknown[0].hidden && !result.unknown[0].inArchive);
    QVERIFY(result.unknown[2].hidden && !result.unknown[2].inArchive);
    QVERIFY(result.unknown[3].inArchive && !result.unknown[3].hidden);

    QCOMPARE(result.licensedCaption, QStringLiteral("Licensed Applications - 5"));
    QCOMPARE(result.unlicensedCaption, QStringLiteral("Unlicensed Applications - 2"));
    QCOMPARE(result.unknownCaption, QStringLiteral("Unknown Programs - 4"));
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
    QVERIFY(result.catalogueEmpty);
    QVERIFY(result.licensed.isEmpty() && result.unlicensed.isEmpty());
    QVERIFY(result.licensedCaption.isEmpty() && result.unlicensedCaption.isEmpty());
    QCOMPARE(result.unknown.size(), 1);
    QCOMPARE(result.unknown[0].path, a);
    QCOMPARE(result.unknownCaption, QStringLiteral("Unknown Programs - 1"));

    m_catalogue.addApp("Something", {"SETUP.EXE"}, false);
    Disc noExecutables;
    noExecutables.add("MOVIE.MPG");
    result = EvaluateExecutables(noExecutables.files(), Client);
    QCOMPARE(result.licensedCaption, QStringLiteral("Licensed Applications - 0"));
    QCOMPARE(result.unlicensedCaption, QStringLiteral("Unlicensed Applications - 0"));
    QCOMPARE(result.unknownCaption, QStringLiteral("Unknown Programs - 0"));
    // A scan that found nothing at all.
    result = EvaluateExecutables(QStringList{QString()}, Client);
    QVERIFY(result.unknown.isEmpty() && result.licensed.isEmpty());
}

void TestReview::everyFileUnderItsOwnApplication()
{
    // Twelve applications: the eleventh's first file and the first's eleventh would once have shared a
    // key. One application is licensed for one file (its name shared with a free application) and
    // un-licensed for another, so it stands in both trees.
    QStringList appNames;
    for (int i = 1; i <= 12; ++i) {
        const QString name = QStringLiteral("App %1").arg(i, 2, 10, QLatin1Char('0'));
        appNames << name;
        m_catalogue.addApp(name, {QStringLiteral("APP%1.EXE").arg(i)}, false);
    }
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
    QSet<QString> keys;
    int files = 0;
    for (const auto *tree : {&result.licensed, &result.unlicensed}) {
        for (const ApplicationRoot &root : *tree) {
            QVERIFY2(!keys.contains(root.key), qPrintable(root.key));
            keys.insert(root.key);
            for (const ApplicationFile &f : root.files) {
                QVERIFY2(!keys.contains(f.key), qPrintable(f.key));
                keys.insert(f.key);
                ++files;
            }
        }
    }
    QCOMPARE(files, 11 + 11 + 2);
    QCOMPARE(rootNamed(result.licensed, "App 01")->files.size(), 11);
    for (int i = 2; i <= 12; ++i)
        QCOMPARE(rootNamed(result.licensed, appNames[i - 1])->files.size(), 1);

    // Which application MIXED.EXE goes under depends on the engine's order; wherever it goes, the
    // apostrophe's application is in the un-licensed tree with its own file, and only there.
    const ApplicationRoot *oreilly = rootNamed(result.unlicensed, "O'Reilly Tools");
    QVERIFY(oreilly);
    QVERIFY(tags(oreilly).contains(apostrophe));
    const ApplicationRoot *mixedRoot = rootNamed(result.licensed, "O'Reilly Tools");
    if (!mixedRoot)
        mixedRoot = rootNamed(result.licensed, "Another Free");
    QVERIFY(mixedRoot);
    QCOMPARE(tags(mixedRoot), QStringList{mixed});
    QCOMPARE(result.unlicensed.size(), 1);
    QCOMPARE(result.unlicensedCaption, QStringLiteral("Unlicensed Applications - 1"));
    QCOMPARE(result.licensedCaption, QStringLiteral("Licensed Applications - 13"));
    const QStringList licensedNames = names(result.licensed);
    QVERIFY(std::is_sorted(licensedNames.begin(), licensedNames.end()));
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
    QCOMPARE(names(result.unlicensed), QStringList{"Ghost"});
    QCOMPARE(result.unlicensed[0].files[0].text, QStringLiteral("GHOST.EXE (Error)"));
    QVERIFY(m_catalogue.column("Select APP_NAME From KEVRO_APP_RESULTS", "APP_NAME").isEmpty());
}

void TestReview::stationsNeverSeeEachOthersRows()
{
    QFETCH_GLOBAL(QString, engine);
    if (engine != "postgresql")
        QSKIP("stations share a catalogue only on a server");
    for (const QString station : {"A", "B"}) {
        for (int k = 0; k < 40; ++k)
            m_catalogue.addApp(QStringLiteral("Station %1 app %2").arg(station).arg(k, 2, 10, QLatin1Char('0')),
                               {QStringLiteral("%1%2.EXE").arg(station).arg(k)}, false);
    }
    // Two stations evaluate discs of their own at the same moment, several times over; each must find
    // exactly its own files, never one of the other's, and lose none to the other's emptying.
    QList<QProcess *> stations;
    for (const QString station : {"A", "B"}) {
        auto *p = new QProcess(this);
        p->setProcessChannelMode(QProcess::MergedChannels);
        p->start(QStringLiteral(KEVRO_EVAL_CHILD), {station, "400", "6"});
        stations << p;
    }
    for (QProcess *p : stations) {
        QVERIFY(p->waitForFinished(120000));
        const QString out = QString::fromUtf8(p->readAll());
        QVERIFY2(p->exitCode() == 0, qPrintable(out));
        QVERIFY2(out.contains("rounds 6 ok"), qPrintable(out));
    }
}

void TestReview::simplerJudgementByLicenceRows()
{
    // The licence's application number is matched with the component's own number: a licence for
    // application 1 holds whatever component is numbered 1.
    m_catalogue.addApp("First", {"FIRST.EXE"}, true);
    m_catalogue.addApp("Second", {"SECOND.EXE"}, true);
    const long firstComponent =
        m_catalogue.column("Select EXE_ID From KEVRO_APP_COMPONENTS Where EXE_NAME = 'FIRST.EXE'", "EXE_ID")
            .first()
            .toLong();
    m_catalogue.addLicence(Client, firstComponent);
    Disc disc;
    const QString first = disc.add("FIRST.EXE");
    const QString second = disc.add("SECOND.EXE");
    const QString other = disc.add("OTHER.EXE");
    disc.add("NOTES.TXT");
    const ExeLists lists = ListExecutablesByLicence(disc.files(), Client);
    QCOMPARE(lists.licensed, QStringList{first});
    QCOMPARE(lists.unlicensed, QStringList{second});
    QCOMPARE(lists.unknown, QStringList{other});
}

bool TestReview::onlyOnSQLite()
{
    QFETCH_GLOBAL(QString, engine);
    return engine == "sqlite";
}

frmScanResultsEXEs *TestReview::openViewer(const Disc &disc)
{
    gMediaFiles = disc.files();
    auto *v = Forms::get<frmScanResultsEXEs>();
    v->show();
    return v;
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

QString corpusFile(const QString &name)
{
    const QString corpus = CorpusFolder();
    return corpus.isEmpty() ? QString() : corpus + "/pe/" + name;
}
} // namespace

void TestReview::viewerShowsTheJudgement()
{
    if (!onlyOnSQLite())
        QSKIP("the screen is the same on every engine");
    m_catalogue.addApp("Viewer", {"VIEW.EXE"}, false);
    m_catalogue.addApp("Studio", {"STUDIO.EXE"}, true);
    Disc disc;
    disc.add("VIEW.EXE");
    disc.add("STUDIO.EXE");
    disc.add("B/ZULU.EXE", 40000);
    disc.add("A/MIKE.EXE", 9000);
    const QString hidden = disc.add("SECRET/.ALPHA.EXE");
    const QString member = disc.addMember("PACK.ZIP/INNER/.BRAVO.EXE");
    auto *v = openViewer(disc);

    QCOMPARE(v->lblLicensedPrograms->text(), QStringLiteral("Licensed Applications - 1"));
    QCOMPARE(v->lblUnlicensedPrograms->text(), QStringLiteral("Unlicensed Applications - 1"));
    QCOMPARE(v->lblUnknownPrograms->text(), QStringLiteral("Unknown Programs - 4"));
    QCOMPARE(v->treLicensedEXEs->topLevelItem(0)->text(0), QStringLiteral("Viewer"));
    QCOMPARE(v->treLicensedEXEs->topLevelItem(0)->child(0)->text(0), QStringLiteral("VIEW.EXE (1 KB)"));
    QCOMPARE(v->treUnlicensedEXEs->topLevelItem(0)->text(0), QStringLiteral("Studio"));

    // Title row, the hidden path column, rows by file name whatever the disc's order.
    FlexGrid *grid = v->gridUnknownEXEs;
    QCOMPARE(grid->FixedRows(), 1);
    QCOMPARE(gridColumn(grid, 2), QStringList({"File Name", ".ALPHA.EXE", ".BRAVO.EXE", "MIKE.EXE", "ZULU.EXE"}));
    QCOMPARE(gridColumn(grid, 3), QStringList({"File Size", "1 KB", "3 KB", "9 KB", "39 KB"}));
    QCOMPARE(grid->ColWidth(1), 0L);
    // Marks: hidden, and the archive's mark for a member that is hidden too; none for the others.
    QCOMPARE(grid->TextMatrix(1, 1), hidden);
    QCOMPARE(grid->TextMatrix(2, 1), member);
    QVERIFY(grid->HasCellPicture(1, 0) && grid->HasCellPicture(2, 0));
    QVERIFY(!grid->HasCellPicture(3, 0) && !grid->HasCellPicture(4, 0));
    grid->setRow(2);
    grid->setCol(0);
    QCOMPARE(grid->CellPicture().cacheKey(), v->picZipIcon->pixmap().cacheKey());
    grid->setRow(1);
    QCOMPARE(grid->CellPicture().cacheKey(), v->picHiddenIcon->pixmap().cacheKey());

    // Headings: the first click on a name sorts as the list already stands, the second reverses it; a
    // click on the size sorts by the number.
    clickHeading(grid, 2);
    QCOMPARE(grid->TextMatrix(1, 2), QStringLiteral(".ALPHA.EXE"));
    clickHeading(grid, 2);
    QCOMPARE(grid->TextMatrix(1, 2), QStringLiteral("ZULU.EXE"));
    clickHeading(grid, 3);
    QCOMPARE(gridColumn(grid, 3).mid(1), QStringList({"1 KB", "3 KB", "9 KB", "39 KB"}));
    QCOMPARE(grid->Col(), 0);
    clickHeading(grid, 3);
    QCOMPARE(grid->TextMatrix(1, 3), QStringLiteral("39 KB"));

    // Back throws the judgement away and shows the set-up screen again.
    WriteIniKey("Devices", "DefaultDevice", AppPath());
    QTest::mouseClick(v->cmdPrevious, Qt::LeftButton);
    QVERIFY(!Forms::isLoaded<frmScanResultsEXEs>());
    QVERIFY(Forms::get<frmScanDisc>()->isVisible());
    Forms::unload<frmScanDisc>();

    // No unknown program: not even the title row stays, and clicks on the empty grid do nothing.
    Disc known;
    known.add("VIEW.EXE");
    v = openViewer(known);
    grid = v->gridUnknownEXEs;
    QCOMPARE(grid->Rows(), 0);
    QCOMPARE(v->lblUnknownPrograms->text(), QStringLiteral("Unknown Programs - 0"));
    QTest::mouseClick(grid->viewport(), Qt::RightButton, {}, QPoint(20, 10));
    QTest::mouseClick(grid->viewport(), Qt::LeftButton, {}, QPoint(20, 10));
    QVERIFY(!v->mnuContextUnknown->isVisible());
    QVERIFY(!v->mnuContextUnknownLaunchEXE->isVisible() && !v->mnuContextUnknownSearchOnWeb->isVisible());
    QCOMPARE(grid->Rows(), 0);
    QCOMPARE(v->txtFileInfo->toPlainText(), QString());
}

void TestReview::treesGridAndTheirMenus()
{
    if (!onlyOnSQLite())
        QSKIP("the screen is the same on every engine");
    const QString pidgin = corpusFile("secana+PeNet__test__PeNet.Test__Binaries__pidgin.exe");
    if (pidgin.isEmpty())
        QSKIP("skipped: no corpus");
    m_catalogue.addApp("Pidgin", {"PIDGIN.EXE"}, false);
    m_catalogue.addApp("Packed Tool", {"TOOL.EXE"}, true);
    m_catalogue.addApp("With Page", {"PAGE.EXE"}, false, false, "https://example.org/terms");
    m_catalogue.addApp("No Page", {"NOPAGE.EXE"}, false);
    m_catalogue.addApp("O'Neil Utilities", {"ONEIL.EXE"}, false);
    Disc disc;
    const QString pidginPath = disc.addCopy("PIDGIN.EXE", pidgin);
    QVERIFY(!pidginPath.isEmpty());
    const QString member = disc.addMember("SETUP.ZIP/BIN/TOOL.EXE");
    for (const char *name : {"PAGE.EXE", "NOPAGE.EXE", "ONEIL.EXE", "PLAIN.EXE"})
        disc.add(QLatin1String(name));
    QVERIFY(!disc.addCopy("CHAT.EXE", pidgin).isEmpty());
    auto *v = openViewer(disc);
    QTreeWidget *licensed = v->treLicensedEXEs;
    QTreeWidget *unlicensed = v->treUnlicensedEXEs;
    QTreeWidgetItem *pidginRoot = nodeWithText(licensed, "Pidgin");
    QVERIFY(pidginRoot);

    // A file's node: its version information and its path as the tool tip; a root clears both.
    clickNode(licensed, nodeWithText(licensed, "PIDGIN.EXE (" + FileSizeText(pidginPath) + ")"));
    QCOMPARE(v->txtFileInfo->toPlainText().section('\n', 0, 1), QStringLiteral("Company Name:\nThe Pidgin developer community"));
    QVERIFY(v->txtFileInfo->toPlainText().endsWith("Product Version:\n2.10.11"));
    QCOMPARE(licensed->toolTip(), pidginPath);
    clickNode(licensed, pidginRoot);
    QCOMPARE(v->txtFileInfo->toPlainText(), QString());
    QCOMPARE(licensed->toolTip(), QString());
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
    QVERIFY(!v->mnuContextUnlicensedAddToLicenced->isVisible());
    // Launch hands the file to the desktop's opener; a refusal is the operator's message.
    MsgBoxResponder boxes;
    boxes.queue(vbOK);
    m_openResult = ShellExecuteNoAssociation;
    v->mnuContextUnlicensedLaunchExe->trigger();
    v->mnuContextUnlicensed->hide();
    QCOMPARE(m_opened, QStringList{RealPath(member)});
    QCOMPARE(boxes.prompts(), QStringList{"Program can not run - it may be corrupt."});
    QCOMPARE(boxes.boxes().first().style, int(vbCritical));

    // Licence pages: the address when there is one, else the message. An application removed meanwhile:
    // nothing at all. A name with a quote is looked up like any other.
    boxes.clear();
    m_opened.clear();
    m_openResult = 42;
    const QString noPage = QStringLiteral("No web-site listed for this program.");
    v->DisplaySelectedLicenseWebsite("With Page");
    QCOMPARE(m_opened, QStringList{"https://example.org/terms"});
    boxes.queue(vbOK);
    v->DisplaySelectedLicenseWebsite("No Page");
    QCOMPARE(boxes.prompts(), QStringList{noPage});
    QCOMPARE(boxes.boxes().first().style, int(vbInformation));
    m_opened.clear();
    m_catalogue.execute("Delete From KEVRO_APPS Where APP_NAME = 'With Page'");
    v->DisplaySelectedLicenseWebsite("With Page");
    QCOMPARE(m_opened, QStringList());
    boxes.queue(vbOK);
    v->DisplaySelectedLicenseWebsite("O'Neil Utilities");
    QCOMPARE(boxes.prompts(), QStringList(2, noPage));

    // The search takes the company name of the current row, and the bare name after a file without
    // version data. A right click opens the menu over the current row and never moves it.
    FlexGrid *grid = v->gridUnknownEXEs;
    QCOMPARE(gridColumn(grid, 2), QStringList({"File Name", "CHAT.EXE", "PLAIN.EXE"}));
    ClickRow(grid, 1);
    QTest::mouseClick(grid->viewport(), Qt::RightButton, {}, CellCentre(grid, 2, 2));
    QCOMPARE(grid->Row(), 1);
    QVERIFY(v->mnuContextUnknown->isVisible() && v->mnuContextUnknownSearchOnWeb->isVisible());
    v->mnuContextUnknownSearchOnWeb->trigger();
    v->mnuContextUnknown->hide();
    QCOMPARE(m_opened.last(), QStringLiteral("https://www.google.com/search?q=The Pidgin developer community CHAT.EXE"));
    WriteIniKey("Web", "SearchHost", "https://search.example.net");
    ClickRow(grid, 2);
    QTest::mouseClick(grid->viewport(), Qt::RightButton, {}, CellCentre(grid, 2, 2));
    v->mnuContextUnknownSearchOnWeb->trigger();
    v->mnuContextUnknown->hide();
    QCOMPARE(m_opened.last(), QStringLiteral("https://search.example.net/search?q=PLAIN.EXE"));
}

QTEST_MAIN(TestReview)
#include "tst_review.moc"
