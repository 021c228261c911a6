// Every shape of statement the screens send, word for word, against the embedded SQLite catalogue and
// against a real PostgreSQL server: reads, inserts, updates, both delete forms, DELETE * FROM,
// True/False, Group By/Having, quoted numbers into number columns, local-format dates, the licences'
// select with its two blanks; the numbers of the failures the screens test; a refused second
// statement; and a failed connection ending the program.

#include "TestSupport.h"

#include "catalogue/CatalogueSetup.h"
#include "catalogue/Database.h"
#include "platform/MsgBox.h"
#include "platform/VbError.h"
#include "shell/MainMod.h"

#include <QDate>
#include <QScopeGuard>
#include <QDateTime>
#include <QLocale>
#include <QProcess>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTest>

namespace {
QString sql(const QStringList &pieces)
{
    return pieces.join(QString());
}

void run(const QStringList &pieces)
{
    gConnection->Execute(sql(pieces), -1);
}

Recordset open(const QStringList &pieces)
{
    Recordset rs;
    rs.Open(sql(pieces), gConnection.get(), 3, 3);
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

QStringList column(const QStringList &pieces, const QString &name)
{
    return column(open(pieces), name);
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
    void owners();
    void applicationsAndComponents();
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
    QVERIFY(gConnection && gConnection->IsOpen());
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
    return open({"Select KEVRO_CLIENTS.CLIENT_ID, ", "KEVRO_CLIENTS.CLIENT_NAME ", "From KEVRO_CLIENTS ",
                 "Where CLIENT_NAME = '", name, "'"})
        .Fields("CLIENT_ID")
        .toLongLong();
}

long TestCatalogue::newApp(const QString &name, bool perMedia, bool requiresLicence)
{
    run({"Insert Into KEVRO_APPS( ", "APP_NAME, ", "APP_OWNER, ", "APP_WEB_LICENSE, ", "APP_DATE_EDITED, ",
         "APP_LICENSE_PER_MEDIA, ", "APP_REQUIRES_LICENSE) ", "Values(", "'", RemoveApostrophes(name), "', ", "'",
         "1", "', ", "'", "https://example.org/licence", "', ", "'", NowText(), "', ", perMedia ? "True" : "False",
         ", ", requiresLicence ? "True" : "False", ")"});
    Recordset rs;
    rs.Open(sql({"Select APP_ID ", "From KEVRO_APPS ", "Where APP_NAME = '", RemoveApostrophes(name), "'"}),
            gConnection.get(), 3, 3, -1);
    return rs.Fields("APP_ID").toLongLong();
}

void TestCatalogue::clients()
{
    // The main menu's read of an empty table: both EOF and BOF, and the walk does not start.
    Recordset empty = open({"SELECT CLIENT_ID, CLIENT_NAME ", " FROM KEVRO_CLIENTS", " ORDER BY CLIENT_NAME ASC"});
    QVERIFY(empty.Eof() && empty.Bof());

    const long zeta = newClient("Zeta Pictures");
    const long acme = newClient("Acme Music");
    QVERIFY(zeta > 0 && acme > 0 && zeta != acme);
    Recordset rs = open({"SELECT CLIENT_ID, CLIENT_NAME ", " FROM KEVRO_CLIENTS", " ORDER BY CLIENT_NAME ASC"});
    QCOMPARE(column(rs, "CLIENT_NAME"), (QStringList{"Acme Music", "Zeta Pictures"}));
    // A key reads as a number, whatever case the engine gives the column's name.
    rs.MoveFirst();
    QVERIFY(rs.Fields("client_id").typeId() != QMetaType::QString);
    QCOMPARE(rs.Fields("CLIENT_ID").toLongLong(), qlonglong(acme));

    // The client screen's update, with the operator's apostrophe dropped, and its trailing blank.
    run({"Update KEVRO_CLIENTS Set ", "CLIENT_NAME = '", RemoveApostrophes("Acme's Music"), "' ", "Where CLIENT_ID = ",
         QString::number(acme), " "});
    QCOMPARE(column({"Select CLIENT_NAME From KEVRO_CLIENTS Where CLIENT_ID = ", QString::number(acme)}, "CLIENT_NAME"),
             QStringList{"Acmes Music"});

    // An empty name is refused by the database, with the number the screens test.
    QCOMPARE(failureOf(clientInsert("")), DbErr::ConstraintViolation);
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

    // The one-row delete, with a column between Delete and From.
    run({"Delete KEVRO_CLIENTS.CLIENT_ID ", "From KEVRO_CLIENTS ", "Where KEVRO_CLIENTS.CLIENT_ID=",
         QString::number(zeta)});
    QCOMPARE(column({"Select CLIENT_NAME From KEVRO_CLIENTS"}, "CLIENT_NAME"), QStringList{"Acmes Music"});
    // The wholesale delete of an import.
    run({"DELETE * FROM KEVRO_CLIENTS"});
    QVERIFY(open({"Select CLIENT_NAME From KEVRO_CLIENTS"}).Eof());
}

void TestCatalogue::owners()
{
    run({"Insert Into KEVRO_OWNERS( ", "OWNER_NAME) ", "Values(", "'", "Adobe", "')"});
    run({"Insert Into KEVRO_OWNERS( ", "OWNER_NAME) ", "Values(", "'", "Apple", "')"});
    Recordset rs = open({"Select KEVRO_OWNERS.OWNER_ID, ", "KEVRO_OWNERS.OWNER_NAME ", "From KEVRO_OWNERS ",
                         "Order By OWNER_NAME"});
    rs.MoveFirst();
    const QString adobe = rs.Fields("OWNER_ID").toString();
    // Owner keys fit the 16-bit integer the catalogue screen reads them into.
    QVERIFY(rs.Fields("OWNER_ID").toInt() > 0 && rs.Fields("OWNER_ID").toInt() <= 32767);
    run({"Update KEVRO_OWNERS Set ", "OWNER_NAME = '", "Adobe Systems", "' ", "Where OWNER_ID = ", adobe, " "});
    QCOMPARE(failureOf({"Update KEVRO_OWNERS Set ", "OWNER_NAME = '", "", "' ", "Where OWNER_ID = ", adobe, " "}),
             DbErr::ConstraintViolation);
    // The owner screen's delete names the table without its final S in the column, and still works.
    run({"Delete KEVRO_OWNER.OWNER_ID ", "From KEVRO_OWNERS ", "Where KEVRO_OWNERS.OWNER_ID=", adobe});
    QCOMPARE(column({"SELECT OWNER_ID, OWNER_NAME ", " FROM KEVRO_OWNERS", " ORDER BY OWNER_NAME"}, "OWNER_NAME"),
             QStringList{"Apple"});
}

void TestCatalogue::applicationsAndComponents()
{
    run({"Insert Into KEVRO_OWNERS( ", "OWNER_NAME) ", "Values(", "'", "Macromedia", "')"});
    const long flash = newApp("Flash's Player", false, true);
    const long free = newApp("Free Viewer", false, false);
    newApp("Media Player", true, true);
    const QString key = QString::number(flash);

    // Components: EXE_APP bare, texts quoted.
    for (const auto &[name, description] : {std::pair{"FLASH.EXE", "Player"}, {"flashsetup.exe", "Set-up"}})
        run({"Insert Into KEVRO_APP_COMPONENTS( ", "EXE_APP, ", "EXE_NAME, ", "EXE_DESCRIPTION) ", "Values(", key,
             ", ", "'", name, "', ", "'", description, "')"});
    Recordset components =
        open({"Select KEVRO_APP_COMPONENTS.EXE_ID, KEVRO_APP_COMPONENTS.EXE_NAME, ",
              "KEVRO_APP_COMPONENTS.EXE_DESCRIPTION ", "From KEVRO_APP_COMPONENTS ",
              "Where KEVRO_APP_COMPONENTS.EXE_APP=", key});
    QCOMPARE(components.RecordCount(), 2);
    components.MoveFirst();
    const QString firstComponent = components.Fields("EXE_ID").toString();

    // The edit screen's read through the inner join; booleans read as booleans.
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
    QCOMPARE(app.Fields("APP_OWNER").toInt(), 1);
    const QVariant edited = app.Fields("APP_DATE_EDITED");
    QVERIFY(!edited.isNull());

    // The update quotes the owner key and leaves the date of creation alone.
    QTest::qWait(1100);
    run({"Update KEVRO_APPS Set ", "APP_NAME = '", "Flash Player", "', ", "APP_OWNER = '", "1", "', ",
         "APP_WEB_LICENSE = '", "", "', ", "APP_REQUIRES_LICENSE =", "False", ", APP_LICENSE_PER_MEDIA =", "True",
         " Where APP_ID =", key});
    Recordset again = open({"Select APP_NAME, APP_DATE_EDITED, APP_LICENSE_PER_MEDIA From KEVRO_APPS ",
                            "Where APP_ID = ", key});
    QCOMPARE(again.Fields("APP_NAME").toString(), QString("Flash Player"));
    QCOMPARE(again.Fields("APP_DATE_EDITED"), edited);
    QCOMPARE(again.Fields("APP_LICENSE_PER_MEDIA"), QVariant(true));
    run({"Update KEVRO_APP_COMPONENTS Set ", "EXE_NAME = '", "FLASH6.EXE", "', ", "EXE_DESCRIPTION = '", "Player 6",
         "' ", "Where EXE_ID = ", firstComponent});

    // The licence screen's list: only applications that need a licence and are not per media.
    const auto licensable = [] {
        return column({"Select APP_NAME ", "From KEVRO_APPS ", "Where APP_REQUIRES_LICENSE = True AND ",
                       "APP_LICENSE_PER_MEDIA = False ", "Order By APP_NAME"},
                      "APP_NAME");
    };
    QCOMPARE(licensable(), QStringList{});
    run({"Update KEVRO_APPS Set APP_REQUIRES_LICENSE = True, APP_LICENSE_PER_MEDIA = False Where APP_ID = ",
         QString::number(free)});
    QCOMPARE(licensable(), QStringList{"Free Viewer"});

    // Both deletes: a component at once, the application without its components.
    run({"Delete EXE_ID ", "From KEVRO_APP_COMPONENTS ", "Where EXE_ID=", firstComponent});
    run({"Delete KEVRO_APPS.APP_ID ", "From KEVRO_APPS ", "Where KEVRO_APPS.APP_ID=", key});
    QVERIFY(open({"Select APP_ID From KEVRO_APPS Where APP_ID = ", key}).Eof());
    QCOMPARE(column({"Select EXE_NAME From KEVRO_APP_COMPONENTS"}, "EXE_NAME"), QStringList{"flashsetup.exe"});
}

void TestCatalogue::licences()
{
    QFETCH_GLOBAL(QString, engine);
    const long client = newClient("Northwind");
    const QString clientCode = QString::number(client);
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
    QCOMPARE(rs.Fields("LICENSE_APP").toLongLong(), app.toLongLong());
    QCOMPARE(rs.Fields("LICENSE_PERMINANT"), QVariant(true));
    QVERIFY(rs.Fields("LICENSE_VALID_FROM").isNull());
    const QString firstId = rs.Fields("LICENSE_ID").toString();
    rs.MoveNext();
    const QString secondId = rs.Fields("LICENSE_ID").toString();
    const QVariant from = rs.Fields("LICENSE_VALID_FROM");
    if (engine == "postgresql")
        QCOMPARE(from.toDate(), QDate(2026, 2, 3)); // read in the station's day/month order
    else
        QCOMPARE(from.toString(), QString("03/02/2026")); // stored as sent
    rs.MoveNext();
    QVERIFY(rs.Eof());

    // The licence list, with its closing ";".
    QCOMPARE(column({"Select KEVRO_APPS.APP_ID, KEVRO_APPS.APP_NAME, ",
                     "KEVRO_LICENSES.LICENSE_ID, KEVRO_LICENSES.LICENSE_CLIENT ",
                     "From KEVRO_LICENSES Inner Join KEVRO_APPS ON ", "KEVRO_LICENSES.LICENSE_APP = KEVRO_APPS.APP_ID ",
                     "Where KEVRO_LICENSES.LICENSE_CLIENT='", clientCode, "' ", "Order By APP_NAME;"},
                    "APP_NAME"),
             (QStringList{"DirectX", "DirectX"}));

    // Group By with Having in place of Where.
    Recordset one = open({"Select KEVRO_LICENSES.LICENSE_ID, KEVRO_LICENSES.LICENSE_APP, ",
                          "KEVRO_APPS.APP_NAME, KEVRO_LICENSES.LICENSE_VALID_FROM, ",
                          "KEVRO_LICENSES.LICENSE_VALID_TO, KEVRO_LICENSES.LICENSE_PERMINANT ",
                          "From KEVRO_LICENSES Inner Join KEVRO_APPS On ",
                          "KEVRO_LICENSES.LICENSE_APP = KEVRO_APPS.APP_ID ",
                          "Group By KEVRO_LICENSES.LICENSE_ID, KEVRO_LICENSES.LICENSE_APP, ",
                          "KEVRO_APPS.APP_NAME, KEVRO_LICENSES.LICENSE_VALID_FROM, ",
                          "KEVRO_LICENSES.LICENSE_VALID_TO, KEVRO_LICENSES.LICENSE_PERMINANT ",
                          "Having KEVRO_LICENSES.LICENSE_ID=", secondId, ";"});
    QCOMPARE(one.RecordCount(), 1);
    QCOMPARE(one.Fields("LICENSE_PERMINANT"), QVariant(false));
    QCOMPARE(column({"Select KEVRO_APPS.APP_ID ", "From KEVRO_APPS ", "Where KEVRO_APPS.APP_NAME='", "DirectX", "' ",
                     "Group By KEVRO_APPS.APP_ID;"},
                    "APP_ID"),
             QStringList{app});

    // The update quotes the application's key; turned permanent, the dates stay as they were.
    run({"Update KEVRO_LICENSES Set ", "LICENSE_CLIENT = '", clientCode, "', ", "LICENSE_APP = '", app, "', ",
         "LICENSE_PERMINANT =", "True", " Where LICENSE_ID =", secondId});
    Recordset updated = open({"Select LICENSE_PERMINANT, LICENSE_VALID_TO From KEVRO_LICENSES Where LICENSE_ID = ",
                              secondId});
    QCOMPARE(updated.Fields("LICENSE_PERMINANT"), QVariant(true));
    QVERIFY(!updated.Fields("LICENSE_VALID_TO").isNull());
    run({"Update KEVRO_LICENSES Set ", "LICENSE_CLIENT = '", clientCode, "', ", "LICENSE_APP = '", app, "', ",
         "LICENSE_VALID_FROM = '", "01/03/2026", "', ", "LICENSE_VALID_TO = '", "31/12/2026", "', ",
         "LICENSE_PERMINANT =", "False", " Where LICENSE_ID =", firstId});
}

void TestCatalogue::oneStatementOnly()
{
    newClient("Keep Me");
    // A second statement is refused before it reaches the engine: nothing of it runs.
    QCOMPARE(failureOf({"Insert Into KEVRO_CLIENTS(CLIENT_NAME) Values('x'); DELETE FROM KEVRO_CLIENTS"}),
             DbErr::CommandError);
    QCOMPARE(failureOf({"Update KEVRO_CLIENTS Set CLIENT_NAME = 'y' -- Where CLIENT_ID = 1"}), DbErr::CommandError);
    QCOMPARE(failureOf({"Update KEVRO_CLIENTS Set CLIENT_NAME = 'y' /* note */"}), DbErr::CommandError);
    QCOMPARE(column({"Select CLIENT_NAME From KEVRO_CLIENTS"}, "CLIENT_NAME"), QStringList{"Keep Me"});
    // Inside a string, a ";" or a "--" is only text; so is a doubled quote; a closing ";" is fine.
    run({"Insert Into KEVRO_CLIENTS(CLIENT_NAME) Values('A; B -- C /* D')"});
    run({"Insert Into KEVRO_CLIENTS(CLIENT_NAME) Values('It''s');  "});
    QCOMPARE(column({"Select CLIENT_NAME From KEVRO_CLIENTS Order By CLIENT_NAME"}, "CLIENT_NAME"),
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
    QVERIFY(!out.contains("opened"));
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
    const long id = newClient("Through ODBC");
    QVERIFY(id > 0);
    QCOMPARE(failureOf(clientInsert("O'Brien")), DbErr::CommandError);
    QCOMPARE(failureOf(clientInsert("")), DbErr::ConstraintViolation);
    run({"Delete KEVRO_CLIENTS.CLIENT_ID ", "From KEVRO_CLIENTS ", "Where KEVRO_CLIENTS.CLIENT_ID=", QString::number(id)});
    QVERIFY(open({"Select CLIENT_NAME From KEVRO_CLIENTS"}).Eof());
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
