#pragma once

#include "catalogue/DataSource.h"
#include "platform/VbError.h"

#include <QList>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>
#include <QStringList>
#include <QVariant>

class QSqlError;

// A connection to the catalogue through the data source the connection string names. Statements go
// one at a time; nothing is held open between units of work.
class Connection final
{
public:
    Connection();
    ~Connection();
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;

    int CursorLocation = 2;

    // Raises DbErr::ConnectionFailed with the engine's words when the data source cannot be reached.
    void Open(const QString &connectionString, const QString &userId = QString(), const QString &password = QString(),
              long options = -1);
    // Runs one Insert, Update or Delete; nothing of its result is looked at.
    void Execute(const QString &sql, long options = -1);
    // Runs one Insert and returns the key the engine generated for its row; null where the engine's
    // driver cannot tell (the driver manager's road).
    QVariant ExecuteInsert(const QString &sql);
    void Close();
    bool IsOpen() const;
    // A unit of work whose statements others see only when it commits. Failures raise like Execute's.
    void BeginTrans();
    void CommitTrans();
    void RollbackTrans();

    DataSource::Engine Engine() const { return m_engine; }
    QSqlDatabase Database() const;

    // The text sent for a statement: one statement only (a second one or a comment outside the string
    // literals is refused with DbErr::CommandError), and "DELETE x FROM" made "DELETE FROM".
    static QString PrepareStatement(const QString &sql);
    // The failure for an engine's error, with the number the screens test.
    static long NumberFor(const QSqlError &error, DataSource::Engine engine);

private:
    // One statement sent; a failure raises with the engine's number.
    QSqlQuery run(const QString &sql);
    QString m_name;
    DataSource::Engine m_engine = DataSource::Engine::Odbc;
    bool m_open = false;
};

// A static, client-side result: every row is read when it opens, and it can be walked again.
class Recordset final
{
public:
    void Open(const QString &sql, Connection *connection, int cursorType = 3, int lockType = 3, long options = -1);
    bool Eof() const { return m_rows.isEmpty() || m_pos >= m_rows.size(); }
    bool Bof() const { return m_rows.isEmpty() || m_pos < 0; }
    void MoveFirst();
    void MoveNext();
    // The current row's value of the named column (any case); null for NULL, a bool for a boolean
    // column on every engine.
    QVariant Fields(const QString &name) const;
    void Close();
    int RecordCount() const { return m_rows.size(); }

private:
    QStringList m_columns; // upper case
    QList<QList<QVariant>> m_rows;
    int m_pos = 0;
};

// The present date and time as the machine's regional settings write them, for the date columns.
QString NowText();
// The order of day, month and year in the machine's short date: "DMY", "MDY" or "YMD".
QString LocaleDateOrder();
// A date read from the catalogue as the machine's short date writes it, four-digit year, so that it reads
// back as typed; a text stored as it was sent stays as it is.
QString DateText(const QVariant &value);
// Whether a typed text is a date as the database reads it: day, month and year in the machine's short
// date order (or year first, as 2026-12-31), separated by '/', '-' or '.', with a real day of a real
// month; a two-digit year is 1930..2029. "31/02/2026", "tomorrow" and a date in the other day/month
// order are not dates.
bool IsValidDate(const QString &text);

// Opens a Qt database connection of the given name to a data source, the one way every part of this
// system connects: SQLite by its file, PostgreSQL by server, port and database with the session's
// DateStyle in the locale's order, anything else through the ODBC driver manager. The user and
// password given win over the source's own. On failure the connection is removed again, the returned
// database is invalid and *error says why.
QSqlDatabase OpenQtDatabase(const DataSource &source, const QString &connectionName, const QString &user,
                            const QString &password, QString *error);
