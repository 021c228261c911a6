#pragma once

#include "catalogue/CatalogueSetup.h"

#include <QString>
#include <QStringList>

// A catalogue of the test's own on SQLite or on the PostgreSQL server of the test run, reached through
// the application folder's odbc.ini as the program reaches it. Rows go in through the one connection.
class CatalogueFixture final
{
public:
    // engine "sqlite" or "postgresql"; an empty text when it could be made, else why not.
    QString create(const QString &engine, const QString &appFolder);
    static bool postgresAvailable();

    // Adds an application with its component names; returns its APP_ID.
    long addApp(const QString &name, const QStringList &components, bool requiresLicence, bool perMedia = false,
                const QString &webLicence = QString());
    // An application whose licence column is NULL.
    long addAppWithoutLicenceFlag(const QString &name, const QStringList &components);
    // Adds a client; returns its CLIENT_ID.
    long addClient(const QString &name);
    void addLicence(const QString &client, long appId, const QString &validTo = QStringLiteral("2001-12-31"));
    void execute(const QString &sql);
    // From now on the catalogue refuses, as a broken rule, an insert into the table whose column holds
    // that value; other rows go in as before.
    void refuseInsert(const QString &table, const QString &column, const QString &value);
    // The values of one column of a query, in the order the engine gives them.
    QStringList column(const QString &sql, const QString &name);

private:
    CatalogueTarget m_target;
};

// A text as a string literal of a statement, its quotes doubled.
QString Quoted(const QString &text);
