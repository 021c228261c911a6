// kevro-setup: creates KEVRO's catalogue and points the data source KEVRO at it.
//
//   kevro-setup [--demo] [--force]                     the embedded default: kevro.db in the application folder
//   kevro-setup --sqlite FILE [--demo] [--force]
//   kevro-setup --postgresql [--host H] [--port P] [--database D] [--user U] [--demo] [--force]
//   kevro-setup --postgresql --role-sql                 prints the statements that make the role and database
//   --dsn-only                                          writes the data source entry and touches no table
//   --odbc-ini FILE                                     where the entry goes (default: the application folder's)
//   --demo-disc                                         only lays out the demo disc (which --demo also does)

#include "catalogue/CatalogueSetup.h"
#include "catalogue/DemoDisc.h"
#include "platform/Paths.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <clocale>
#include <cstdio>

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    std::setlocale(LC_ALL, "");
    QCoreApplication::setApplicationName("kevro-setup");
    QCommandLineParser p;
    p.setApplicationDescription("Creates KEVRO's catalogue database and the data source entry KEVRO.");
    p.addHelpOption();
    p.addOptions({
        {"sqlite", "The catalogue is a SQLite file (default: kevro.db in the application folder).", "file"},
        {"postgresql", "The catalogue lives on a PostgreSQL server."},
        {"host", "PostgreSQL server.", "host", "localhost"},
        {"port", "PostgreSQL port.", "port", "5432"},
        {"database", "PostgreSQL database.", "name", "kevro"},
        {"user", "PostgreSQL role the stations log in as.", "role", "kevro"},
        {"password", "The role's password (default: the one KEVRO logs in with).", "password"},
        {"demo", "Load the demo catalogue and lay out the demo disc (demo-disc/ in the application folder); "
                 "without a kevro.ini, write one that scans it."},
        {"demo-disc", "Only lay out the demo disc (and kevro.ini when there is none)."},
        {"force", "Replace an existing catalogue."},
        {"dsn-only", "Only write the data source entry."},
        {"odbc-ini", "The odbc.ini to write the entry to.", "file"},
        {"role-sql", "Print the statements that make the PostgreSQL role and database, and stop."},
    });
    p.process(app);

    CatalogueTarget target;
    if (p.isSet("postgresql")) {
        target.engine = DataSource::Engine::PostgreSQL;
        target.host = p.value("host");
        target.port = p.value("port").toInt();
        target.database = p.value("database");
        target.user = p.value("user");
        target.password = p.value("password");
    } else {
        target.sqliteFile = p.isSet("sqlite") ? p.value("sqlite") : AppPath() + "/kevro.db";
    }
    if (p.isSet("role-sql")) {
        std::printf("%s", qPrintable(PostgresRoleStatements(target)));
        return 0;
    }
    auto fail = [](const QString &what) {
        std::fprintf(stderr, "kevro-setup: %s\n", qPrintable(what));
        return 1;
    };
    // The demo disc comes first and stands on its own: a catalogue refused below leaves it laid out.
    if (p.isSet("demo") || p.isSet("demo-disc")) {
        const QString disc = AppPath() + "/demo-disc";
        if (const QString e = LayOutDemoDisc(disc); !e.isEmpty())
            return fail(e);
        std::printf("Laid out the demo disc in %s.\n", qPrintable(disc));
        if (const QString e = WriteDemoSettings(AppPath() + "/kevro.ini", disc); !e.isEmpty())
            return fail(e);
        if (p.isSet("demo-disc"))
            return 0;
    }
    if (!p.isSet("dsn-only")) {
        if (const QString e = CreateCatalogue(target, p.isSet("force")); !e.isEmpty())
            return fail(e);
        std::printf("Created the catalogue's six tables.\n");
        if (p.isSet("demo")) {
            if (const QString e = LoadDemoCatalogue(target); !e.isEmpty())
                return fail(e);
            std::printf("Loaded the demo catalogue.\n");
        }
    }
    const QString odbcIni = p.isSet("odbc-ini") ? p.value("odbc-ini") : AppPath() + "/odbc.ini";
    if (const QString e = WriteDataSourceEntry(target, odbcIni); !e.isEmpty())
        return fail(e);
    std::printf("Data source KEVRO written to %s.\n", qPrintable(odbcIni));
    return 0;
}
