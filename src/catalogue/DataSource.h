#pragma once

#include <QMap>
#include <QString>

#include <optional>

// A data source as the station's ODBC set-up names it: the section of that name in an odbc.ini.
struct DataSource {
    enum class Engine { SQLite, PostgreSQL, Odbc };
    QString name;
    QString file; // the odbc.ini it was found in
    QString driver;
    Engine engine = Engine::Odbc;
    QString database; // SQLite: the database file; PostgreSQL: the database's name
    QString server;
    int port = 5432;
    QString user;
    QString password;
};

// Finds the data source: the user's odbc.ini ($ODBCINI, else ~/.odbc.ini), then the system's
// ($ODBCSYSINI/odbc.ini, else /etc/odbc.ini), then the application folder's own odbc.ini.
std::optional<DataSource> ResolveDataSource(const QString &name);
// The files searched, in that order.
QStringList DataSourceFiles();

// "KEY=value;KEY=value;" with the keys in upper case.
QMap<QString, QString> ParseConnectionString(const QString &connectionString);
