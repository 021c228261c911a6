#include "catalogue/DataSource.h"

#include "platform/IniProfile.h"
#include "platform/Paths.h"

#include <QDir>
#include <QFileInfo>

QStringList DataSourceFiles()
{
    QStringList files;
    const QString user = qEnvironmentVariable("ODBCINI");
    files << (user.isEmpty() ? QDir::homePath() + QStringLiteral("/.odbc.ini") : user);
    const QString sys = qEnvironmentVariable("ODBCSYSINI");
    files << (sys.isEmpty() ? QStringLiteral("/etc/odbc.ini") : sys + QStringLiteral("/odbc.ini"));
    files << AppPath() + QStringLiteral("/odbc.ini");
    return files;
}

std::optional<DataSource> ResolveDataSource(const QString &name)
{
    for (const QString &file : DataSourceFiles()) {
        if (!QFileInfo::exists(file) || !ProfileHasSection(name, file))
            continue;
        DataSource ds;
        ds.name = name;
        ds.file = file;
        for (const auto &[key, value] : GetPrivateProfileSection(name, file)) {
            const QString k = key.toUpper();
            if (k == QLatin1String("DRIVER"))
                ds.driver = value;
            else if (k == QLatin1String("DATABASE"))
                ds.database = value;
            else if (k == QLatin1String("SERVERNAME") || k == QLatin1String("SERVER") || k == QLatin1String("HOST"))
                ds.server = value;
            else if (k == QLatin1String("PORT"))
                ds.port = value.toInt() > 0 ? value.toInt() : 5432;
            else if (k == QLatin1String("USERNAME") || k == QLatin1String("USER") || k == QLatin1String("UID"))
                ds.user = value;
            else if (k == QLatin1String("PASSWORD") || k == QLatin1String("PWD"))
                ds.password = value;
        }
        const QString driver = ds.driver.toLower();
        if (driver.contains(QLatin1String("sqlite")))
            ds.engine = DataSource::Engine::SQLite;
        else if (driver.contains(QLatin1String("psql")) || driver.contains(QLatin1String("postgres")))
            ds.engine = DataSource::Engine::PostgreSQL;
        else
            ds.engine = DataSource::Engine::Odbc;
        // A relative database file lies beside the odbc.ini that names it.
        if (ds.engine == DataSource::Engine::SQLite && !ds.database.isEmpty() && QFileInfo(ds.database).isRelative())
            ds.database = QFileInfo(file).absoluteDir().filePath(ds.database);
        if (ds.server.isEmpty())
            ds.server = QStringLiteral("localhost");
        return ds;
    }
    return std::nullopt;
}

QMap<QString, QString> ParseConnectionString(const QString &connectionString)
{
    QMap<QString, QString> out;
    for (const QString &part : connectionString.split(QLatin1Char(';'), Qt::SkipEmptyParts)) {
        const int eq = part.indexOf(QLatin1Char('='));
        if (eq < 0)
            continue;
        out.insert(part.left(eq).trimmed().toUpper(), part.mid(eq + 1));
    }
    return out;
}
