#pragma once

#include "catalogue/DataSource.h"

#include <QString>

// The installation's side of the catalogue: the six tables, the data source entry that points at
// them, and a demo catalogue. The program itself never creates, alters or drops a table.
struct CatalogueTarget {
    DataSource::Engine engine = DataSource::Engine::SQLite;
    QString sqliteFile;
    QString host = QStringLiteral("localhost");
    int port = 5432;
    QString database = QStringLiteral("kevro");
    QString user = QStringLiteral("kevro");
    QString password; // empty: the password of the program's connection string
};

// Creates the six tables. An existing catalogue is refused unless replace is set, which drops it first.
// Returns an empty text on success, else what went wrong.
QString CreateCatalogue(const CatalogueTarget &target, bool replace);
// Loads the demo catalogue: owners, applications with their component names, clients and licences
// such that the demo disc comes out licensed, un-licensed and unknown.
QString LoadDemoCatalogue(const CatalogueTarget &target);
// Writes the [KEVRO] entry for the target into an odbc.ini (the application folder's, by default).
QString WriteDataSourceEntry(const CatalogueTarget &target, const QString &odbcIni);
// The two statements a PostgreSQL superuser runs once to make the role and the database.
QString PostgresRoleStatements(const CatalogueTarget &target);
