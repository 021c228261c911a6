#include "CatalogueFixture.h"

#include "catalogue/Database.h"
#include "shell/MainMod.h"

#include <QDir>
#include <QFile>
#include <QSqlError>
#include <QSqlQuery>

QString Quoted(const QString &text)
{
    QString t = text;
    t.replace(QLatin1Char('\''), QStringLiteral("''"));
    return QLatin1Char('\'') + t + QLatin1Char('\'');
}

bool CatalogueFixture::postgresAvailable()
{
    return !qEnvironmentVariable("KEVRO_TEST_PG").isEmpty();
}

QString CatalogueFixture::create(const QString &engine, const QString &appFolder)
{
    m_target = CatalogueTarget();
    if (engine == QLatin1String("sqlite")) {
        m_target.sqliteFile = QDir(appFolder).filePath(QStringLiteral("kevro.db"));
    } else {
        const QStringList pg = qEnvironmentVariable("KEVRO_TEST_PG").split(QLatin1Char(' '));
        if (pg.size() < 4)
            return QStringLiteral("no PostgreSQL server");
        m_target.engine = DataSource::Engine::PostgreSQL;
        m_target.host = pg[0];
        m_target.port = pg[1].toInt();
        m_target.database = pg[2];
        m_target.user = pg[3];
    }
    // Only the application folder's own odbc.ini counts.
    qputenv("ODBCINI", QDir(appFolder).filePath(QStringLiteral("no-user-odbc.ini")).toLocal8Bit());
    qputenv("ODBCSYSINI", QDir(appFolder).filePath(QStringLiteral("no-system-odbc")).toLocal8Bit());
    const QString made = CreateCatalogue(m_target, true);
    if (!made.isEmpty())
        return made;
    const QString odbcIni = QDir(appFolder).filePath(QStringLiteral("odbc.ini"));
    QFile::remove(odbcIni);
    return WriteDataSourceEntry(m_target, odbcIni);
}

void CatalogueFixture::execute(const QString &sql)
{
    OpenDatabase();
    gConnection->Execute(sql);
    CloseDatabase();
}

void CatalogueFixture::refuseInsert(const QString &table, const QString &column, const QString &value)
{
    // Trigger bodies hold several statements: they go to the engine directly.
    QStringList sql;
    if (m_target.engine == DataSource::Engine::PostgreSQL) {
        sql << QStringLiteral("CREATE OR REPLACE FUNCTION kevro_test_refuse() RETURNS trigger LANGUAGE plpgsql AS $$ "
                              "BEGIN IF NEW.%1 = %2 THEN RAISE EXCEPTION 'refused' USING ERRCODE = 'check_violation'; "
                              "END IF; RETURN NEW; END $$")
                   .arg(column, Quoted(value))
            << QStringLiteral("CREATE TRIGGER kevro_test_refuse BEFORE INSERT ON %1 FOR EACH ROW "
                              "EXECUTE FUNCTION kevro_test_refuse()")
                   .arg(table);
    } else {
        sql << QStringLiteral("CREATE TRIGGER kevro_test_refuse BEFORE INSERT ON %1 WHEN NEW.%2 = %3 "
                              "BEGIN SELECT RAISE(ABORT, 'refused'); END")
                   .arg(table, column, Quoted(value));
    }
    OpenDatabase();
    for (const QString &statement : sql) {
        QSqlQuery q(gConnection->Database());
        if (!q.exec(statement))
            qFatal("%s", qPrintable(q.lastError().text()));
    }
    CloseDatabase();
}

QStringList CatalogueFixture::column(const QString &sql, const QString &name)
{
    QStringList out;
    OpenDatabase();
    Recordset rs;
    rs.Open(sql, gConnection.get());
    if (rs.RecordCount() > 0) {
        for (rs.MoveFirst(); !rs.Eof(); rs.MoveNext())
            out << NullToEmpty(rs.Fields(name)).toString();
    }
    CloseDatabase();
    return out;
}

long CatalogueFixture::addApp(const QString &name, const QStringList &components, bool requiresLicence, bool perMedia,
                              const QString &webLicence)
{
    execute(QStringLiteral("Insert Into KEVRO_APPS (APP_NAME, APP_OWNER, APP_WEB_LICENSE, APP_DATE_EDITED, "
                           "APP_LICENSE_PER_MEDIA, APP_REQUIRES_LICENSE) Values (%1, 1, %2, %3, %4, %5)")
                .arg(Quoted(name), Quoted(webLicence), Quoted(NowText()), perMedia ? "True" : "False",
                     requiresLicence ? "True" : "False"));
    const long id = column(QStringLiteral("Select APP_ID From KEVRO_APPS Where APP_NAME = %1 Order By APP_ID")
                               .arg(Quoted(name)),
                           QStringLiteral("APP_ID"))
                        .last()
                        .toLong();
    for (const QString &exe : components) {
        execute(QStringLiteral("Insert Into KEVRO_APP_COMPONENTS (EXE_APP, EXE_NAME, EXE_DESCRIPTION) "
                               "Values (%1, %2, '')")
                    .arg(id)
                    .arg(Quoted(exe)));
    }
    return id;
}

long CatalogueFixture::addAppWithoutLicenceFlag(const QString &name, const QStringList &components)
{
    const long id = addApp(name, components, false);
    execute(QStringLiteral("Update KEVRO_APPS Set APP_REQUIRES_LICENSE = NULL Where APP_ID = %1").arg(id));
    return id;
}

long CatalogueFixture::addClient(const QString &name)
{
    execute(QStringLiteral("Insert Into KEVRO_CLIENTS (CLIENT_NAME) Values (%1)").arg(Quoted(name)));
    return column(QStringLiteral("Select CLIENT_ID From KEVRO_CLIENTS Where CLIENT_NAME = %1 Order By CLIENT_ID")
                      .arg(Quoted(name)),
                  QStringLiteral("CLIENT_ID"))
        .constLast()
        .toLong();
}

void CatalogueFixture::addLicence(const QString &client, long appId, const QString &validTo)
{
    execute(QStringLiteral("Insert Into KEVRO_LICENSES (LICENSE_CLIENT, LICENSE_APP, LICENSE_DATE_ADDED, "
                           "LICENSE_VALID_FROM, LICENSE_VALID_TO, LICENSE_PERMINANT) "
                           "Values (%1, %2, %3, '1999-01-01', %4, False)")
                .arg(Quoted(client))
                .arg(appId)
                .arg(Quoted(NowText()), Quoted(validTo)));
}
