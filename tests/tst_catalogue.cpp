// The catalogue's connection against the embedded SQLite catalogue and a real PostgreSQL server, below
// the screens (tst_catalogue_screens sends their statements through them): keys read as numbers,
// True/False, quoted numbers into number columns, dates in the station's day/month order; the numbers
// of the failures the screens tell apart; a refused second statement; a failed connection ending the
// program; other drivers through the driver manager.

#include "TestSupport.h"

#include "catalogue/CatalogueSetup.h"
#include "catalogue/Database.h"
#include "platform/VbError.h"
#include "shell/MainMod.h"

#include <QDate>
#include <QScopeGuard>
#include <QLocale>
#include <QProcess>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTest>

namespace {
void run(const QStringList &pieces)
{
    gConnection->Execute(pieces.join(QString()), -1);
}

Recordset open(const QStringList &pieces)
{
    Recordset rs;
    rs.Open(pieces.join(QString()), gConnection.get(), 3, 3);
    return rs;
}

long failureOf(const QStringList &pieces)
{
    try {
        run(pieces);
    } catch (const VbError &e) {
        return e.number;
    }
    return 0;
}

// The client screen's insert of one name, as it sends it.
QStringList clientInsert(const QString &name)
{
    return {"Insert Into KEVRO_CLIENTS( ", "CLIENT_NAME) ", "Values(", "'", name, "')"};
}

QStringList column(Recordset rs, const QString &name)
{
    QStringList out;
    if (!rs.Eof() && !rs.Bof()) {
        for (rs.MoveFirst(); !rs.Eof(); rs.MoveNext())
            out << NullToEmpty(rs.Fields(name)).toString();
    }
    return out;
}
} // namespace

class TestCatalogue final : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase_data();
    void initTestCase();
    void init();
    void cleanup();
    void clients();
    void applications();
    void licences();
    void oneStatementOnly();
    void failedConnectionEndsTheProgram();
    void otherDriversThroughTheDriverManager();

private:
    CatalogueTarget target(const QString &engine) const;
    long newClient(const QString &name);
    long newApp(const QString &name, bool perMedia, bool requiresLicence);

    TempAppFolder m_app;
    QString m_pg;
};

void TestCatalogue::initTestCase_data()
{
    QTest::addColumn<QString>("engine");
    QTest::newRow("sqlite") << "sqlite";
    QTest::newRow("postgresql") << "postgresql";
}

void TestCatalogue::initTestCase()
{
    m_pg = qEnvironmentVariable("KEVRO_TEST_PG");
    // Only the application folder's own odbc.ini counts here.
    qputenv("ODBCINI", m_app.file("no-user-odbc.ini").toLocal8Bit());
    qputenv("ODBCSYSINI", m_app.file("no-system-odbc").toLocal8Bit());
}

CatalogueTarget TestCatalogue::target(const QString &engine) const
{
    CatalogueTarget t;
    if (engine == "sqlite") {
        t.sqliteFile = m_app.file("kevro.db");
    } else {
        const QStringList pg = m_pg.split(' ');
        t.engine = DataSource::Engine::PostgreSQL;
        t.host = pg.value(0);
        t.port = pg.value(1).toInt();
        t.database = pg.value(2);
        t.user = pg.value(3);
    }
    return t;
}

void TestCatalogue::init()
{
    QFETCH_GLOBAL(QString, engine);
    if (engine == "postgresql" && m_pg.isEmpty()) {
        if (qEnvironmentVariableIsSet("CI"))
            QFAIL("KEVRO_TEST_PG is not set: CI must run the PostgreSQL tests (make test starts the server)");
        QSKIP("no PostgreSQL server: run through `make test`, which starts one");
    }
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedKingdom));
    const CatalogueTarget t = target(engine);
    QCOMPARE(CreateCatalogue(t, true), QString());
    // The set-up never replaces a catalogue unless told to.
    QVERIFY(CreateCatalogue(t, false).contains("--force"));
    QFile::remove(m_app.file("odbc.ini"));
    QCOMPARE(WriteDataSourceEntry(t, m_app.file("odbc.ini")), QString());
    OpenDatabase();
}

void TestCatalogue::cleanup()
{
    if (gConnection)
        CloseDatabase();
    QLocale::setDefault(QLocale::system());
}

long TestCatalogue::newClient(const QString &name)
{
    run(clientInsert(name));
    return open({"Select CLIENT_ID From KEVRO_CLIENTS Where CLIENT_NAME = '", name, "'"})
        .Fields("CLIENT_ID")
        .toLongLong();
}

long TestCatalogue::newApp(const QString &name, bool perMedia, bool requiresLicence)
{
    run({"Insert Into KEVRO_APPS( ", "APP_NAME, ", "APP_OWNER, ", "APP_WEB_LICENSE, ", "APP_DATE_EDITED, ",
         "APP_LICENSE_PER_MEDIA, ", "APP_REQUIRES_LICENSE) ", "Values(", "'", RemoveApostrophes(name), "', ", "'",
         "1", "', ", "'", "https://example.org/licence", "', ", "'", NowText(), "', ", perMedia ? "True" : "False",
         ", ", requiresLicence ? "True" : "False", ")"});
    return open({"Select APP_ID ", "From KEVRO_APPS ", "Where APP_NAME = '", RemoveApostrophes(name), "'"})
        .Fields("APP_ID")
        .toLongLong();
}

void TestCatalogue::clients()
{
    // The main menu's read of an empty table: both EOF and BOF, and the walk does not start.
    Recordset empty = open({"SELECT CLIENT_ID, CLIENT_NAME ", " FROM KEVRO_CLIENTS", " ORDER BY CLIENT_NAME ASC"});
    QVERIFY(empty.Eof() && empty.Bof());

    newClient("Zeta Pictures");
    const long acme = newClient("Acme Music");
    Recordset rs = open({"SELECT CLIENT_ID, CLIENT_NAME ", " FROM KEVRO_CLIENTS", " ORDER BY CLIENT_NAME ASC"});
    QCOMPARE(column(rs, "CLIENT_NAME"), (QStringList{"Acme Music", "Zeta Pictures"}));
    // A key reads as a number, whatever case the engine gives the column's name.
    rs.MoveFirst();
    QVERIFY(rs.Fields("client_id").typeId() != QMetaType::QString);
    QCOMPARE(rs.Fields("CLIENT_ID").toLongLong(), qlonglong(acme));

    // An empty name is refused by the database, with the number the screens test.
    QCOMPARE(failureOf(clientInsert("")), DbErr::ConstraintViolation);
    QCOMPARE(failureOf({"Insert Into KEVRO_OWNERS(OWNER_NAME) Values('')"}), DbErr::ConstraintViolation);
    // A name that was not cleaned breaks the statement.
    QCOMPARE(failureOf(clientInsert("O'Brien")), DbErr::CommandError);

    // Neither of those two numbers for a value the column cannot take, a catalogue that another
    // connection holds locked, or one open read-only: the screens' general message tells them.
    QFETCH_GLOBAL(QString, engine);
    const QStringList insert = clientInsert("Fabrikam");
    if (engine == "postgresql") {
        QCOMPARE(failureOf({"Update KEVRO_CLIENTS Set CLIENT_NAME = '", QString(300, 'L'), "'"}), DbErr::DataError);
    } else {
        run({"PRAGMA busy_timeout = 0"});
        {
            QSqlDatabase holder = QSqlDatabase::addDatabase("QSQLITE", "holder");
            holder.setDatabaseName(m_app.file("kevro.db"));
            QVERIFY(holder.open() && QSqlQuery(holder).exec("BEGIN EXCLUSIVE"));
            QCOMPARE(failureOf(insert), DbErr::Busy);
        }
        QSqlDatabase::removeDatabase("holder");
        run({"PRAGMA query_only = 1"});
        QCOMPARE(failureOf(insert), DbErr::EngineFailure);
        run({"PRAGMA query_only = 0"});
    }

}

void TestCatalogue::applications()
{
    run({"Insert Into KEVRO_OWNERS( ", "OWNER_NAME) ", "Values(", "'", "Macromedia", "')"});
    const QString key = QString::number(newApp("Flash's Player", false, true));

    // The edit screen's read through the inner join, on the owner's key sent quoted into a number
    // column; booleans read as booleans.
    Recordset app = open({"Select KEVRO_APPS.APP_ID, KEVRO_APPS.APP_NAME,", "KEVRO_APPS.APP_OWNER , KEVRO_OWNERS.OWNER_NAME, ",
                          "KEVRO_APPS.APP_REQUIRES_LICENSE, KEVRO_APPS.APP_LICENSE_PER_MEDIA, ",
                          "KEVRO_APPS.APP_WEB_LICENSE, KEVRO_APPS.APP_DATE_EDITED ",
                          "From KEVRO_APPS Inner Join KEVRO_OWNERS On ", "KEVRO_APPS.APP_OWNER = KEVRO_OWNERS.OWNER_ID ",
                          "Where KEVRO_APPS.APP_ID=", key});
    QCOMPARE(app.Fields("APP_NAME").toString(), QString("Flashs Player"));
    QCOMPARE(app.Fields("OWNER_NAME").toString(), QString("Macromedia"));
    QCOMPARE(app.Fields("APP_REQUIRES_LICENSE").typeId(), int(QMetaType::Bool));
    QCOMPARE(app.Fields("APP_REQUIRES_LICENSE").toBool(), true);
    QCOMPARE(app.Fields("APP_LICENSE_PER_MEDIA"), QVariant(false));
    const QVariant edited = app.Fields("APP_DATE_EDITED");
    QVERIFY(!edited.isNull());

    // The update quotes the owner key and leaves the date of creation alone, a second later too.
    QTest::qWait(1100);
    run({"Update KEVRO_APPS Set ", "APP_NAME = '", "Flash Player", "', ", "APP_OWNER = '", "1", "', ",
         "APP_WEB_LICENSE = '", "", "', ", "APP_REQUIRES_LICENSE =", "False", ", APP_LICENSE_PER_MEDIA =", "True",
         " Where APP_ID =", key});
    Recordset again = open({"Select APP_DATE_EDITED, APP_LICENSE_PER_MEDIA From KEVRO_APPS Where APP_ID = ", key});
    QCOMPARE(again.Fields("APP_DATE_EDITED"), edited);
    QCOMPARE(again.Fields("APP_LICENSE_PER_MEDIA"), QVariant(true));

}

void TestCatalogue::licences()
{
    QFETCH_GLOBAL(QString, engine);
    const QString clientCode = QString::number(newClient("Northwind"));
    const QString app = QString::number(newApp("DirectX", false, true));

    // A permanent licence leaves the dates out; a dated one sends them as the operator typed them,
    // here in the day/month order of a British station.
    run({"Insert Into KEVRO_LICENSES( ", "LICENSE_CLIENT, ", "LICENSE_APP, ", "LICENSE_DATE_ADDED, ",
         "LICENSE_PERMINANT) ", "Values(", "'", clientCode, "', ", "'", app, "', ", "'", NowText(), "', ", "True",
         ")"});
    run({"Insert Into KEVRO_LICENSES( ", "LICENSE_CLIENT, ", "LICENSE_APP, ", "LICENSE_DATE_ADDED, ",
         "LICENSE_VALID_FROM, ", "LICENSE_VALID_TO, ", "LICENSE_PERMINANT) ", "Values(", "'", clientCode, "', ", "'",
         app, "', ", "'", NowText(), "', ", "'", "03/02/2026", "', ", "'", "28/02/2027", "', ", "False", ")"});

    // The evaluation's select, with two blanks behind LICENSE_PERMINANT.
    Recordset rs = open({"Select KEVRO_LICENSES.LICENSE_ID, KEVRO_LICENSES.LICENSE_CLIENT, ",
                         "KEVRO_LICENSES.LICENSE_VALID_FROM, KEVRO_LICENSES.LICENSE_VALID_TO, ",
                         "KEVRO_LICENSES.LICENSE_PERMINANT,  KEVRO_LICENSES.LICENSE_APP ", "From KEVRO_LICENSES ",
                         "Where KEVRO_LICENSES.LICENSE_CLIENT='", clientCode, "'"});
    QCOMPARE(rs.RecordCount(), 2);
    rs.MoveFirst();
    QCOMPARE(rs.Fields("LICENSE_PERMINANT"), QVariant(true));
    QVERIFY(rs.Fields("LICENSE_VALID_FROM").isNull());
    rs.MoveNext();
    QCOMPARE(rs.Fields("LICENSE_PERMINANT"), QVariant(false));
    const QVariant from = rs.Fields("LICENSE_VALID_FROM");
    if (engine == "postgresql")
        QCOMPARE(from.toDate(), QDate(2026, 2, 3)); // read in the station's day/month order
    else
        QCOMPARE(from.toString(), QString("03/02/2026")); // stored as sent
}

void TestCatalogue::oneStatementOnly()
{
    newClient("Keep Me");
    // A second statement is refused before it reaches the engine: nothing of it runs.
    QCOMPARE(failureOf({"Insert Into KEVRO_CLIENTS(CLIENT_NAME) Values('x'); DELETE FROM KEVRO_CLIENTS"}),
             DbErr::CommandError);
    QCOMPARE(failureOf({"Update KEVRO_CLIENTS Set CLIENT_NAME = 'y' -- Where CLIENT_ID = 1"}), DbErr::CommandError);
    QCOMPARE(failureOf({"Update KEVRO_CLIENTS Set CLIENT_NAME = 'y' /* note */"}), DbErr::CommandError);
    QCOMPARE(column(open({"Select CLIENT_NAME From KEVRO_CLIENTS"}), "CLIENT_NAME"), QStringList{"Keep Me"});
    // Inside a string, a ";" or a "--" is only text; so is a doubled quote; a closing ";" is fine.
    run({"Insert Into KEVRO_CLIENTS(CLIENT_NAME) Values('A; B -- C /* D')"});
    run({"Insert Into KEVRO_CLIENTS(CLIENT_NAME) Values('It''s');  "});
    QCOMPARE(column(open({"Select CLIENT_NAME From KEVRO_CLIENTS Order By CLIENT_NAME"}), "CLIENT_NAME"),
             (QStringList{"A; B -- C /* D", "It's", "Keep Me"}));
    QCOMPARE(failureOf({"Select * From NO_SUCH_TABLE"}), DbErr::CommandError);
    // Reading past the end or a column that is not there fails as a recordset does.
    Recordset rs = open({"Select CLIENT_NAME From KEVRO_CLIENTS"});
    try {
        rs.Fields("CLIENT_ID");
        QFAIL("no such column");
    } catch (const VbError &e) {
        QCOMPARE(e.number, DbErr::ItemNotFound);
    }
}

void TestCatalogue::failedConnectionEndsTheProgram()
{
    QFETCH_GLOBAL(QString, engine);
    CloseDatabase();
    const QString child = QCoreApplication::applicationDirPath() + "/dbopen_child";
    int code = -1;
    QString out;
    const auto runChild = [&] {
        QProcess p;
        p.start(child);
        p.waitForFinished(60000);
        code = p.exitCode();
        out = QString::fromLocal8Bit(p.readAllStandardOutput() + p.readAllStandardError());
    };
    runChild();
    QCOMPARE(code, 0);
    QVERIFY2(out.contains("opened\nclosed"), qPrintable(out));

    // The catalogue goes away: the operator is told and the program ends.
    if (engine == "sqlite") {
        QVERIFY(QFile::rename(m_app.file("kevro.db"), m_app.file("moved.db")));
    } else {
        CatalogueTarget t = target(engine);
        t.port = 1; // nothing listens there
        QFile::remove(m_app.file("odbc.ini"));
        QCOMPARE(WriteDataSourceEntry(t, m_app.file("odbc.ini")), QString());
    }
    runChild();
    QCOMPARE(code, 1);
    QVERIFY2(out.contains("Could not connect to the KEVRO Database.  Database may be deleted or moved, network may be "
                          "down or ODBC settings may be incorrect.  Can not continue."),
             qPrintable(out));
    if (engine == "sqlite") {
        // Nothing was created in the catalogue's place.
        QVERIFY(!QFile::exists(m_app.file("kevro.db")));
        QFile::rename(m_app.file("moved.db"), m_app.file("kevro.db"));
    }

    // No data source at all.
    QFile::remove(m_app.file("odbc.ini"));
    runChild();
    QCOMPARE(code, 1);
    QVERIFY(out.contains("Could not connect to the KEVRO Database."));
}

void TestCatalogue::otherDriversThroughTheDriverManager()
{
    QFETCH_GLOBAL(QString, engine);
    if (engine != "sqlite")
        QSKIP("one engine behind the driver manager is enough");
    const QString driver = "/usr/lib/x86_64-linux-gnu/odbc/libsqlite3odbc.so";
    if (!QFile::exists(driver))
        QSKIP("the SQLite ODBC driver (libsqliteodbc) is not installed");
    CloseDatabase();
    // A driver known to the driver manager by a name that says nothing of its engine, and a station
    // DSN in the user's odbc.ini: KEVRO goes through the driver manager.
    WriteTestFile(m_app.file("odbcsys/odbcinst.ini"), "[PlantDriver]\nDriver=" + driver.toUtf8() + "\n");
    WriteTestFile(m_app.file("user-odbc.ini"),
                  "[KEVRO]\nDriver=PlantDriver\nDatabase=" + m_app.file("kevro.db").toUtf8() + "\n");
    qputenv("ODBCSYSINI", m_app.file("odbcsys").toLocal8Bit());
    qputenv("ODBCINI", m_app.file("user-odbc.ini").toLocal8Bit());
    auto restore = qScopeGuard([this] {
        qputenv("ODBCINI", m_app.file("no-user-odbc.ini").toLocal8Bit());
        qputenv("ODBCSYSINI", m_app.file("no-system-odbc").toLocal8Bit());
    });
    OpenDatabase();
    QCOMPARE(gConnection->Engine(), DataSource::Engine::Odbc);
    QVERIFY(newClient("Through ODBC") > 0);
    QCOMPARE(failureOf(clientInsert("O'Brien")), DbErr::CommandError);
    QCOMPARE(failureOf(clientInsert("")), DbErr::ConstraintViolation);
    CloseDatabase();

    // The same driver named in the application folder's own odbc.ini, which the driver manager does
    // not read: the entry's keys go to it directly.
    qputenv("ODBCINI", m_app.file("no-user-odbc.ini").toLocal8Bit());
    QFile::remove(m_app.file("odbc.ini"));
    WriteTestFile(m_app.file("odbc.ini"), "[KEVRO]\nDriver=PlantDriver\nDatabase=" + m_app.file("kevro.db").toUtf8() + "\n");
    OpenDatabase();
    QCOMPARE(gConnection->Engine(), DataSource::Engine::Odbc);
    QVERIFY(newClient("From the application folder") > 0);
}

QTEST_GUILESS_MAIN(TestCatalogue)
#include "tst_catalogue.moc"
