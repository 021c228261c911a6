// The judgement of a disc's executables against a real catalogue on SQLite and on PostgreSQL: every
// row of the decision, the trees' shape and keys, the unknown list's marks, names with apostrophes, the
// empty catalogue, and two stations evaluating at the same moment on the shared server.

#include "CatalogueFixture.h"
#include "TestSupport.h"

#include "platform/Paths.h"
#include "review/ExeEvaluation.h"
#include "shell/MainMod.h"

#include <QDir>
#include <QLocale>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

namespace {

const QString Client = QStringLiteral("NORTHWIND");

// A disc of the test's own: files written under a temporary folder, stored upper case as a scan
// stores them.
class Disc final
{
public:
    QString add(const QString &relative, qsizetype bytes = 1500)
    {
        const QString real = WriteTestFile(m_dir.filePath(relative), QByteArray(bytes, 'x'));
        const QString stored = real.toUpper();
        AppendToList(m_files, stored);
        return stored;
    }
    // A member of an archive, laid out in the extract folder as the expansion leaves it.
    QString addMember(const QString &relative)
    {
        const QString real = WriteTestFile(ExtractFolder() + QLatin1Char('/') + relative, QByteArray(3000, 'm'));
        const QString stored = real.toUpper();
        AppendToList(m_files, stored);
        return stored;
    }
    QStringList files() const { return m_files; }

private:
    QTemporaryDir m_dir;
    QStringList m_files{QString()};
};

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

private:
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
    gExeTotals = ExeTotals();
    ClearRealPaths();
}

void TestReview::decisionTable()
{
    const long free = m_catalogue.addApp("Free Viewer", {"FREEVIEW.EXE"}, false);
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
    Q_UNUSED(free);

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
    const QString hidden = disc.add(".HIDDEN/SETUP.EXE");
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
    QVERIFY(result.unknown[3].inArchive);

    QCOMPARE(result.licensedCaption, QStringLiteral("Licensed Applications - 5"));
    QCOMPARE(result.unlicensedCaption, QStringLiteral("Unlicensed Applications - 2"));
    QCOMPARE(result.unknownCaption, QStringLiteral("Unknown Programs - 4"));
    QCOMPARE(gExeTotals.licensed, QStringLiteral("5"));
    QCOMPARE(gExeTotals.unlicensed, QStringLiteral("2"));
    QCOMPARE(gExeTotals.unknown, QStringLiteral("4"));
    // Nothing of the evaluation stays in the catalogue.
    QVERIFY(m_catalogue.column("Select APP_NAME From KEVRO_APP_RESULTS", "APP_NAME").isEmpty());
}

void TestReview::emptyCatalogueAndDiscWithoutExecutables()
{
    Disc disc;
    const QString a = disc.add("SETUP.EXE");
    disc.add("PICTURE.JPG");
    gExeTotals = {"7", "8", "9"};
    ExeEvaluation result = EvaluateExecutables(disc.files(), Client);
    QVERIFY(result.catalogueEmpty);
    QVERIFY(result.licensed.isEmpty() && result.unlicensed.isEmpty());
    QVERIFY(result.licensedCaption.isEmpty() && result.unlicensedCaption.isEmpty());
    QCOMPARE(result.unknown.size(), 1);
    QCOMPARE(result.unknown[0].path, a);
    QCOMPARE(result.unknownCaption, QStringLiteral("Unknown Programs - 1"));
    // The summary's application totals stay as they were.
    QCOMPARE(gExeTotals.licensed, QStringLiteral("7"));
    QCOMPARE(gExeTotals.unlicensed, QStringLiteral("8"));
    QCOMPARE(gExeTotals.unknown, QStringLiteral("1"));

    m_catalogue.addApp("Something", {"SETUP.EXE"}, false);
    Disc noExecutables;
    noExecutables.add("MOVIE.MPG");
    result = EvaluateExecutables(noExecutables.files(), Client);
    QCOMPARE(result.licensedCaption, QStringLiteral("Licensed Applications - 0"));
    QCOMPARE(result.unlicensedCaption, QStringLiteral("Unlicensed Applications - 0"));
    QCOMPARE(result.unknownCaption, QStringLiteral("Unknown Programs - 0"));
    QCOMPARE(gExeTotals.licensed, QStringLiteral("0"));
    QCOMPARE(gExeTotals.unknown, QStringLiteral("0"));
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
    QStringList licensedNames = names(result.licensed);
    QStringList sorted = licensedNames;
    sorted.sort();
    QCOMPARE(licensedNames, sorted);
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

QTEST_GUILESS_MAIN(TestReview)
#include "tst_review.moc"
