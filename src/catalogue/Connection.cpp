#include "catalogue/Connection.h"

#include "platform/IniProfile.h"
#include "platform/Paths.h"
#include "platform/VbError.h"

#include <QDateTime>
#include <QFileInfo>
#include <QLocale>
#include <QRegularExpression>
#include <QSqlDriver>
#include <QSqlError>
#include <QSqlField>
#include <QSqlQuery>
#include <QSqlRecord>

#include <atomic>

namespace {
VbError sqlFailure(const QSqlError &e, DataSource::Engine engine, const QString &sql = QString())
{
    QString text = e.databaseText().trimmed();
    if (text.isEmpty())
        text = e.text().trimmed();
    if (!sql.isEmpty())
        text += QStringLiteral(" [") + sql.simplified() + QLatin1Char(']');
    return VbError(Connection::NumberFor(e, engine), text);
}
VbError noCurrentRecord()
{
    return VbError(DbErr::NoCurrentRecord, QStringLiteral("Either BOF or EOF is True, or the current record has been "
                                                          "deleted. Requested operation requires a current record."));
}
} // namespace

Connection::Connection()
{
    static std::atomic<int> counter{0};
    m_name = QStringLiteral("kevro-%1").arg(++counter);
}

Connection::~Connection()
{
    Close();
}

QSqlDatabase Connection::Database() const
{
    return QSqlDatabase::database(m_name, false);
}

bool Connection::IsOpen() const
{
    return m_open && Database().isOpen();
}

void Connection::Open(const QString &connectionString, const QString &userId, const QString &password, long)
{
    Close();
    const QMap<QString, QString> parts = ParseConnectionString(connectionString);
    const QString dsn = parts.value(QStringLiteral("DSN"));
    const auto source = ResolveDataSource(dsn);
    if (!source) {
        throw VbError(DbErr::ConnectionFailed,
                      QStringLiteral("Data source name not found and no default driver specified: ") + dsn);
    }
    const QString uid = userId.isEmpty() ? parts.value(QStringLiteral("UID")) : userId;
    const QString pwd = password.isEmpty() ? parts.value(QStringLiteral("PWD")) : password;
    m_engine = source->engine;
    // The catalogue must exist: opening never creates an empty database in its place.
    if (m_engine == DataSource::Engine::SQLite && !QFileInfo(source->database).isFile())
        throw VbError(DbErr::ConnectionFailed, QStringLiteral("Database file not found: ") + source->database);
    QString error;
    if (!OpenQtDatabase(*source, m_name, uid, pwd, &error).isValid())
        throw VbError(DbErr::ConnectionFailed, error);
    m_open = true;
}

QSqlDatabase OpenQtDatabase(const DataSource &source, const QString &connectionName, const QString &user,
                            const QString &password, QString *error)
{
    const QString uid = user.isEmpty() ? source.user : user;
    const QString pwd = password.isEmpty() ? source.password : password;
    {
        QSqlDatabase db;
        switch (source.engine) {
        case DataSource::Engine::SQLite:
            db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), connectionName);
            db.setDatabaseName(source.database);
            db.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=5000"));
            break;
        case DataSource::Engine::PostgreSQL:
            db = QSqlDatabase::addDatabase(QStringLiteral("QPSQL"), connectionName);
            db.setHostName(source.server);
            db.setPort(source.port);
            db.setDatabaseName(source.database);
            db.setUserName(uid);
            db.setPassword(pwd);
            db.setConnectOptions(QStringLiteral("connect_timeout=10"));
            break;
        case DataSource::Engine::Odbc:
            db = QSqlDatabase::addDatabase(QStringLiteral("QODBC"), connectionName);
            if (source.file == AppPath() + QStringLiteral("/odbc.ini")) {
                // The driver manager does not know the application folder's entry: hand it every key.
                QString keys;
                for (const auto &[key, value] : GetPrivateProfileSection(source.name, source.file))
                    keys += key + QLatin1Char('=') + value + QLatin1Char(';');
                db.setDatabaseName(keys + QStringLiteral("UID=") + uid + QStringLiteral(";PWD=") + pwd + QLatin1Char(';'));
            } else {
                // Qt puts "DSN=" in front itself; a second DSN key would confuse some drivers.
                db.setDatabaseName(source.name + QStringLiteral(";UID=") + uid + QStringLiteral(";PWD=") + pwd);
            }
            break;
        }
        if (db.isValid() && db.open()) {
            if (source.engine == DataSource::Engine::PostgreSQL) {
                // Dates travel as the machine's regional text: the server reads them in the same order.
                QSqlQuery q(db);
                q.exec(QStringLiteral("SET DateStyle TO 'ISO, %1'").arg(LocaleDateOrder()));
            }
            return db;
        }
        if (error)
            *error = !db.isValid() ? QStringLiteral("No database driver for ") + source.driver
                                   : db.lastError().text().trimmed();
    }
    QSqlDatabase::removeDatabase(connectionName);
    return QSqlDatabase();
}

void Connection::Close()
{
    if (!QSqlDatabase::contains(m_name))
        return;
    {
        QSqlDatabase db = QSqlDatabase::database(m_name, false);
        db.close();
    }
    QSqlDatabase::removeDatabase(m_name);
    m_open = false;
}

QString Connection::PrepareStatement(const QString &sql)
{
    // One statement only, and no comments: look at everything outside the string literals.
    QChar quote;
    const int n = sql.size();
    for (int i = 0; i < n; ++i) {
        const QChar c = sql[i];
        if (!quote.isNull()) {
            if (c == quote) {
                if (i + 1 < n && sql[i + 1] == quote)
                    ++i; // a doubled quote stays inside
                else
                    quote = QChar();
            }
            continue;
        }
        if (c == QLatin1Char('\'') || c == QLatin1Char('"')) {
            quote = c;
        } else if (c == QLatin1Char(';')) {
            for (int j = i + 1; j < n; ++j) {
                if (!sql[j].isSpace() && sql[j] != QLatin1Char(';'))
                    throw VbError(DbErr::CommandError,
                                  QStringLiteral("Only one statement may be sent at a time: ") + sql.simplified());
            }
            break;
        } else if ((c == QLatin1Char('-') && i + 1 < n && sql[i + 1] == QLatin1Char('-')) ||
                   (c == QLatin1Char('/') && i + 1 < n && sql[i + 1] == QLatin1Char('*'))) {
            throw VbError(DbErr::CommandError, QStringLiteral("Comments are not accepted in a statement: ") +
                                                   sql.simplified());
        }
    }
    if (!quote.isNull())
        throw VbError(DbErr::CommandError, QStringLiteral("Unterminated string in statement: ") + sql.simplified());
    // "Delete KEVRO_APPS.APP_ID From KEVRO_APPS ..." and "DELETE * FROM ...": no engine here takes a column
    // or a star between DELETE and FROM.
    static const QRegularExpression deleteWhat(QStringLiteral("^\\s*DELETE\\s+(?!FROM\\b)\\S+\\s+FROM\\b"),
                                               QRegularExpression::CaseInsensitiveOption);
    QString text = sql;
    return text.replace(deleteWhat, QStringLiteral("DELETE FROM"));
}

long Connection::NumberFor(const QSqlError &error, DataSource::Engine engine)
{
    const QString code = error.nativeErrorCode();
    switch (engine) {
    case DataSource::Engine::SQLite:
        switch (code.toInt() & 0xFF) {
        case 0: // refused by Qt before it reached the engine
        case 1: // syntax, no such table or column
            return DbErr::CommandError;
        case 19:
            return DbErr::ConstraintViolation;
        case 5: // busy
        case 6: // locked
            return DbErr::Busy;
        case 18: // too big
        case 20: // type mismatch
        case 25: // out of range
            return DbErr::DataError;
        default: // read-only, I/O, full, damaged, not a database...
            return DbErr::EngineFailure;
        }
    case DataSource::Engine::PostgreSQL:
        if (code.startsWith(QLatin1String("23")))
            return DbErr::ConstraintViolation;
        if (code.startsWith(QLatin1String("42")) || code.startsWith(QLatin1String("0A")))
            return DbErr::CommandError;
        if (code.startsWith(QLatin1String("22")))
            return DbErr::DataError;
        if (code.startsWith(QLatin1String("40")) || code == QLatin1String("55P03") || code == QLatin1String("57014"))
            return DbErr::Busy;
        if (code.isEmpty() && error.type() != QSqlError::ConnectionError)
            return DbErr::CommandError;
        return DbErr::EngineFailure;
    case DataSource::Engine::Odbc: {
        // Qt hands on the driver's native code, not the SQLSTATE: the driver's words tell a constraint.
        const QString text = error.databaseText();
        if (text.contains(QLatin1String("constraint"), Qt::CaseInsensitive) ||
            text.contains(QLatin1String("violat"), Qt::CaseInsensitive) || text.contains(QLatin1String("23000")))
            return DbErr::ConstraintViolation;
        if (text.contains(QLatin1String("locked"), Qt::CaseInsensitive) ||
            text.contains(QLatin1String("busy"), Qt::CaseInsensitive))
            return DbErr::Busy;
        return DbErr::CommandError;
    }
    }
    return DbErr::CommandError;
}

QSqlQuery Connection::run(const QString &sql)
{
    if (!IsOpen())
        throw VbError(DbErr::ObjectClosed, QStringLiteral("Operation is not allowed when the object is closed."));
    const QString text = PrepareStatement(sql);
    QSqlQuery q(Database());
    if (!q.exec(text))
        throw sqlFailure(q.lastError(), m_engine, sql);
    return q;
}

void Connection::Execute(const QString &sql, long)
{
    run(sql);
}

QVariant Connection::ExecuteInsert(const QString &sql)
{
    QSqlQuery q = run(sql);
    // Asked only after an insert: on PostgreSQL it is a query of its own.
    if (!Database().driver()->hasFeature(QSqlDriver::LastInsertId))
        return QVariant();
    return q.lastInsertId();
}

void Connection::BeginTrans()
{
    if (!IsOpen())
        throw VbError(DbErr::ObjectClosed, QStringLiteral("Operation is not allowed when the object is closed."));
    QSqlDatabase db = Database();
    if (!db.transaction())
        throw sqlFailure(db.lastError(), m_engine, QStringLiteral("BEGIN"));
}

void Connection::CommitTrans()
{
    QSqlDatabase db = Database();
    if (!db.commit())
        throw sqlFailure(db.lastError(), m_engine, QStringLiteral("COMMIT"));
}

void Connection::RollbackTrans()
{
    QSqlDatabase db = Database();
    if (!db.rollback())
        throw sqlFailure(db.lastError(), m_engine, QStringLiteral("ROLLBACK"));
}

void Recordset::Open(const QString &sql, Connection *connection, int, int, long)
{
    if (!connection || !connection->IsOpen())
        throw VbError(DbErr::ObjectClosed, QStringLiteral("Operation is not allowed when the object is closed."));
    const QString text = Connection::PrepareStatement(sql);
    m_columns.clear();
    m_rows.clear();
    m_pos = 0;
    QSqlQuery q(connection->Database());
    q.setForwardOnly(true);
    if (!q.exec(text))
        throw sqlFailure(q.lastError(), connection->Engine(), sql);
    const QSqlRecord record = q.record();
    QList<bool> isBool;
    for (int i = 0; i < record.count(); ++i) {
        m_columns << record.fieldName(i).toUpper();
        isBool << (record.field(i).metaType().id() == QMetaType::Bool);
    }
    while (q.next()) {
        QList<QVariant> row;
        row.reserve(m_columns.size());
        for (int i = 0; i < m_columns.size(); ++i) {
            QVariant v = q.value(i);
            if (isBool[i] && !v.isNull())
                v = QVariant(v.toBool());
            row << v;
        }
        m_rows << row;
    }
}

void Recordset::MoveFirst()
{
    if (m_rows.isEmpty())
        throw noCurrentRecord();
    m_pos = 0;
}

void Recordset::MoveNext()
{
    if (Eof())
        throw noCurrentRecord();
    ++m_pos;
}

QVariant Recordset::Fields(const QString &name) const
{
    const int column = m_columns.indexOf(name.toUpper());
    if (column < 0)
        throw VbError(DbErr::ItemNotFound, QStringLiteral("Item cannot be found in the collection corresponding to "
                                                          "the requested name or ordinal."));
    if (Eof() || Bof())
        throw noCurrentRecord();
    return m_rows[m_pos][column];
}

void Recordset::Close()
{
    m_rows.clear();
    m_columns.clear();
    m_pos = 0;
}

QString LocaleDateOrder()
{
    const QString f = QLocale::system().dateFormat(QLocale::ShortFormat);
    const int d = f.indexOf(QLatin1Char('d')), m = f.indexOf(QLatin1Char('M')), y = f.indexOf(QLatin1Char('y'));
    if (y >= 0 && (d < 0 || y < d) && (m < 0 || y < m))
        return QStringLiteral("YMD");
    return (d >= 0 && m >= 0 && d < m) ? QStringLiteral("DMY") : QStringLiteral("MDY");
}

bool IsValidDate(const QString &text)
{
    static const QRegularExpression shape(QStringLiteral("^(\\d{1,4})([/.-])(\\d{1,2})\\2(\\d{1,4})$"));
    const QRegularExpressionMatch m = shape.match(text.trimmed());
    if (!m.hasMatch())
        return false;
    const QString a = m.captured(1), b = m.captured(3), c = m.captured(4);
    QString order = LocaleDateOrder();
    if (a.size() > 2)
        order = QStringLiteral("YMD");
    const QString year = order == QLatin1String("YMD") ? a : c;
    const QString month = order == QLatin1String("MDY") ? a : b;
    const QString day = order == QLatin1String("DMY") ? a : order == QLatin1String("MDY") ? b : c;
    if (year.size() == 3 || day.size() > 2 || month.size() > 2)
        return false;
    int y = year.toInt();
    if (year.size() <= 2)
        y += y < 30 ? 2000 : 1900;
    return QDate(y, month.toInt(), day.toInt()).isValid();
}

QString DateText(const QVariant &value)
{
    if (value.isNull())
        return QString();
    if (value.typeId() != QMetaType::QDate && value.typeId() != QMetaType::QDateTime)
        return value.toString();
    // The short date as digits; a short date with month names (the C locale's) becomes digits in its order.
    QString format = QLocale::system().dateFormat(QLocale::ShortFormat);
    static const QRegularExpression digits(QStringLiteral("^[dMy]+([/.-])[dMy]+\\1[dMy]+$"));
    if (!digits.match(format).hasMatch()) {
        const QString order = LocaleDateOrder();
        format = order == QLatin1String("YMD")   ? QStringLiteral("yyyy-MM-dd")
                 : order == QLatin1String("MDY") ? QStringLiteral("MM/dd/yyyy")
                                                 : QStringLiteral("dd/MM/yyyy");
    }
    if (!format.contains(QLatin1String("yyyy")))
        format.replace(QLatin1String("yy"), QLatin1String("yyyy"));
    return QLocale::c().toString(value.toDate(), format);
}

QString NowText()
{
    const QLocale locale = QLocale::system();
    QString date = locale.dateFormat(QLocale::ShortFormat);
    if (!date.contains(QLatin1String("yyyy")))
        date.replace(QLatin1String("yy"), QLatin1String("yyyy"));
    QString time = locale.timeFormat(QLocale::LongFormat);
    time.remove(QRegularExpression(QStringLiteral("\\s*t+\\s*"))); // no time zone: the server would shift it
    return locale.toString(QDateTime::currentDateTime(), date + QLatin1Char(' ') + time.trimmed());
}
