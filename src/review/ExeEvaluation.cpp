#include "review/ExeEvaluation.h"

#include "catalogue/Database.h"
#include "platform/FileSystem.h"
#include "platform/Paths.h"
#include "platform/VbError.h"
#include "shell/MainMod.h"

#include <QHash>
#include <QSet>

namespace {

const QString CatalogueSql = QStringLiteral("Select KEVRO_APPS.APP_ID, KEVRO_APP_COMPONENTS.EXE_NAME, ") +
                             QStringLiteral("KEVRO_APPS.APP_NAME, KEVRO_APPS.APP_REQUIRES_LICENSE, ") +
                             QStringLiteral("KEVRO_APPS.APP_LICENSE_PER_MEDIA ") +
                             QStringLiteral("From KEVRO_APP_COMPONENTS Inner Join KEVRO_APPS ") +
                             QStringLiteral("On KEVRO_APP_COMPONENTS.EXE_APP = KEVRO_APPS.APP_ID");

QString LicenceSql(const QString &clientCode)
{
    return QStringLiteral("Select KEVRO_LICENSES.LICENSE_ID, KEVRO_LICENSES.LICENSE_CLIENT, ") +
           QStringLiteral("KEVRO_LICENSES.LICENSE_VALID_FROM, KEVRO_LICENSES.LICENSE_VALID_TO, ") +
           QStringLiteral("KEVRO_LICENSES.LICENSE_PERMINANT,  KEVRO_LICENSES.LICENSE_APP ") +
           QStringLiteral("From KEVRO_LICENSES ") + QStringLiteral("Where KEVRO_LICENSES.LICENSE_CLIENT='") +
           clientCode + QStringLiteral("'");
}

// A value taken from the disc or the catalogue into a string literal: its quotes doubled, so that a
// folder called O'Brien is judged like any other.
QString Literal(const QString &value)
{
    QString doubled = value;
    doubled.replace(QLatin1Char('\''), QStringLiteral("''"));
    return QLatin1Char('\'') + doubled + QLatin1Char('\'');
}

QString InsertSql(const QString &appName, const QString &path, const QString &exeName, bool licensed)
{
    return QStringLiteral("Insert Into KEVRO_APP_RESULTS( ") + QStringLiteral("APP_NAME, ") +
           QStringLiteral("EXE_PATH, ") + QStringLiteral("EXE_NAME, ") + QStringLiteral("APP_LICENSED) ") +
           QStringLiteral("Values(") + Literal(appName) + QStringLiteral(", ") + Literal(path) +
           QStringLiteral(", ") + Literal(exeName) + QStringLiteral(", ") +
           (licensed ? QStringLiteral("True)") : QStringLiteral("False)"));
}

const QString ResultsSql = QStringLiteral("Select APP_NAME, EXE_NAME, EXE_PATH, APP_LICENSED ") +
                           QStringLiteral("From KEVRO_APP_RESULTS ") + QStringLiteral("Order By APP_NAME");
const QString EmptyResultsSql =
    QStringLiteral("Delete KEVRO_APP_RESULTS.APP_NAME ") + QStringLiteral("From KEVRO_APP_RESULTS");

// A whole number as the runtime converts a column to a 32-bit integer.
int32_t ToLong(const QVariant &value)
{
    if (value.isNull())
        RaiseVbError(VbErr::InvalidUseOfNull);
    return int32_t(value.toLongLong());
}

QString ToText(const QVariant &value)
{
    if (value.isNull())
        RaiseVbError(VbErr::InvalidUseOfNull);
    return value.toString();
}

// One component row of the catalogue, in the recordset's own order. Its application's number and name
// are read only when a file matches it, so one row with a Null name judges no other file.
struct Component {
    QVariant appId;
    QVariant appName;
    bool requiresLicence;
};

// The catalogue indexed by upper-cased component name and the client's licences by application: each
// executable costs its own matching rows, never a walk of the whole catalogue.
class Catalogue
{
public:
    void load(Recordset &components, Recordset &licences)
    {
        for (components.MoveFirst(); !components.Eof(); components.MoveNext()) {
            const QVariant name = components.Fields(QStringLiteral("EXE_NAME"));
            if (name.isNull())
                continue; // a null name compares equal to nothing
            const QVariant needs = components.Fields(QStringLiteral("APP_REQUIRES_LICENSE"));
            m_rows.append({components.Fields(QStringLiteral("APP_ID")), components.Fields(QStringLiteral("APP_NAME")),
                           !needs.isNull() && needs.toBool()});
            m_byName[name.toString().toUpper()].append(m_rows.size() - 1);
        }
        if (licences.RecordCount() > 0) {
            for (licences.MoveFirst(); !licences.Eof(); licences.MoveNext()) {
                const QVariant app = licences.Fields(QStringLiteral("LICENSE_APP"));
                if (!app.isNull())
                    m_licensedApps.insert(ToLong(app));
            }
        }
    }

    // The verdict on one file name: the last matching row's application, licensed when any matching
    // row needs no licence or names an application the client holds a licence for, whatever its dates.
    bool judge(const QString &exeName, QString &appName, bool &licensed, QVariant *appId = nullptr) const
    {
        const auto it = m_byName.constFind(exeName.toUpper());
        if (it == m_byName.constEnd())
            return false;
        licensed = false;
        for (const int row : *it) {
            const Component &c = m_rows[row];
            appName = ToText(c.appName);
            if (appId)
                *appId = c.appId;
            if (!c.requiresLicence || m_licensedApps.contains(ToLong(c.appId)))
                licensed = true;
        }
        return true;
    }

private:
    QList<Component> m_rows;
    QHash<QString, QList<int>> m_byName;
    QSet<int32_t> m_licensedApps;
};

// The trees from the results table: one root per application name in each tree, each file under the
// root of its own application. Keys carry a separator, so no two can be the same.
void FillApplicationTrees(ExeEvaluation &result)
{
    Recordset rs;
    rs.Open(ResultsSql, gConnection.get());
    struct Tree {
        QList<ApplicationRoot> *roots;
        QString rootLetter, childLetter;
        QHash<QString, int> rootOf;
    };
    Tree licensed{&result.licensed, QStringLiteral("C"), QStringLiteral("D"), {}};
    Tree unlicensed{&result.unlicensed, QStringLiteral("A"), QStringLiteral("B"), {}};
    if (rs.RecordCount() > 0) {
        Occurrences occurrence;
        for (rs.MoveFirst(); !rs.Eof(); rs.MoveNext()) {
            const QVariant flag = rs.Fields(QStringLiteral("APP_LICENSED"));
            Tree &tree = (!flag.isNull() && !flag.toBool()) ? unlicensed : licensed;
            const QString name = ToText(rs.Fields(QStringLiteral("APP_NAME")));
            auto found = tree.rootOf.constFind(name);
            if (found == tree.rootOf.constEnd()) {
                const int number = int(tree.roots->size()) + 1;
                tree.roots->append({tree.rootLetter + QString::number(number), name, {}});
                found = tree.rootOf.insert(name, number - 1);
            }
            ApplicationRoot &root = (*tree.roots)[*found];
            const QString path = ToText(rs.Fields(QStringLiteral("EXE_PATH")));
            const int n = occurrence(path);
            const QString text = ToText(rs.Fields(QStringLiteral("EXE_NAME"))) + QStringLiteral(" (") +
                                 FileSizeText(path, n) + QStringLiteral(")");
            root.files.append({tree.childLetter + QString::number(*found + 1) + QLatin1Char('-') +
                                   QString::number(root.files.size()),
                               text, path, n});
        }
    }
    result.unlicensedCaption = QStringLiteral("Unlicensed Applications - ") + QString::number(result.unlicensed.size());
    result.licensedCaption = QStringLiteral("Licensed Applications - ") + QString::number(result.licensed.size());
}

UnknownExe Unknown(const QString &path, int occurrence)
{
    // A file that went away since the scan is simply not marked hidden.
    return {path, FileNameOnly(path), FileSizeText(path, occurrence), IsInExtractFolder(path),
            InfoOf(path, occurrence).hidden, occurrence};
}

} // namespace

ExeEvaluation EvaluateExecutables(const QStringList &mediaFiles, const QString &clientCode)
{
    const QString exeTail = QStringLiteral(".EXE");
    ExeEvaluation result;
    OpenDatabase();
    Recordset components, licences;
    components.Open(CatalogueSql, gConnection.get());
    licences.Open(LicenceSql(clientCode), gConnection.get());

    if (components.RecordCount() == 0) {
        result.catalogueEmpty = true;
        Occurrences occurrence;
        for (const QString &path : mediaFiles) {
            if (path.right(4) != exeTail)
                continue;
            const int n = occurrence(path);
            result.unknown.append(Unknown(path, n));
            result.verdicts.append({path, n, ExeVerdict::Unknown, {}, {}});
        }
    } else {
        Catalogue catalogue;
        catalogue.load(components, licences);
        // Another station's evaluation never sees these rows: they live and die in one transaction.
        gConnection->BeginTrans();
        try {
            Occurrences occurrence;
            for (const QString &path : mediaFiles) {
                if (path.right(4) != exeTail)
                    continue;
                const int n = occurrence(path);
                const QString exeName = FileNameOnly(path);
                QString appName;
                bool licensed = false;
                QVariant appId;
                const bool known = catalogue.judge(exeName, appName, licensed, &appId);
                result.verdicts.append({path, n,
                                        !known      ? ExeVerdict::Unknown
                                        : licensed ? ExeVerdict::Licensed
                                                   : ExeVerdict::Unlicensed,
                                        appName, appId});
                if (!known)
                    result.unknown.append(Unknown(path, n));
                else if (!appName.isEmpty())
                    gConnection->Execute(InsertSql(appName, path, exeName, licensed));
            }
            components.Close();
            FillApplicationTrees(result);
            gConnection->Execute(EmptyResultsSql);
            gConnection->CommitTrans();
        } catch (const VbError &) {
            ResumeNext([] { gConnection->RollbackTrans(); });
            throw;
        }
    }
    CloseDatabase();

    result.unknownCaption = QStringLiteral("Unknown Programs - ") + QString::number(result.unknown.size());
    return result;
}

QList<NameVerdict> JudgeNames(const QStringList &exeNames, const QString &clientCode)
{
    QList<NameVerdict> out;
    if (exeNames.isEmpty())
        return out;
    OpenDatabase();
    Recordset components, licences;
    components.Open(CatalogueSql, gConnection.get());
    licences.Open(LicenceSql(clientCode), gConnection.get());
    Catalogue catalogue;
    if (components.RecordCount() > 0)
        catalogue.load(components, licences);
    CloseDatabase();
    for (const QString &name : exeNames) {
        // A program that gives no name is no component, even where a component's name is empty.
        NameVerdict v;
        v.known = !name.isEmpty() && catalogue.judge(name, v.application, v.licensed, &v.applicationId);
        out.append(v);
    }
    return out;
}

std::optional<QString> WebLicenceOf(const QString &appName)
{
    OpenDatabase();
    Recordset rs;
    // The name comes from the catalogue and may hold a quote: it is doubled, as for the disc's values.
    rs.Open(QStringLiteral("SELECT APP_WEB_LICENSE ") + QStringLiteral("From KEVRO_APPS ") +
                QStringLiteral("Where APP_NAME = ") + Literal(appName) + QStringLiteral(" ") +
                QStringLiteral("GROUP BY APP_WEB_LICENSE"),
            gConnection.get(), 3, 3, -1);
    std::optional<QString> address;
    if (rs.RecordCount() > 0) {
        rs.MoveFirst();
        address = NullToEmpty(rs.Fields(QStringLiteral("APP_WEB_LICENSE"))).toString();
    }
    CloseDatabase();
    return address;
}

ExeLists ListExecutablesByLicence(const QStringList &mediaFiles, const QString &clientCode)
{
    const auto names = [](Recordset &rs) {
        QSet<QString> out;
        if (rs.RecordCount() > 0) {
            for (rs.MoveFirst(); !rs.Eof(); rs.MoveNext())
                out.insert(NullToEmpty(rs.Fields(QStringLiteral("EXE_NAME"))).toString().toUpper());
        }
        return out;
    };
    OpenDatabase();
    Recordset held, outside;
    // Both join the licence's application with the component's own number, not its application's.
    held.Open(QStringLiteral("SELECT KEVRO_APP_COMPONENTS.EXE_NAME ") +
                  QStringLiteral("FROM KEVRO_LICENSES LEFT JOIN KEVRO_APP_COMPONENTS ON KEVRO_LICENSES.LICENSE_APP = "
                                 "KEVRO_APP_COMPONENTS.EXE_ID ") +
                  QStringLiteral("GROUP BY KEVRO_APP_COMPONENTS.EXE_NAME, KEVRO_LICENSES.LICENSE_CLIENT ") +
                  QStringLiteral("HAVING KEVRO_LICENSES.LICENSE_CLIENT='") + clientCode + QStringLiteral("'"),
              gConnection.get());
    outside.Open(QStringLiteral("SELECT KEVRO_APP_COMPONENTS.EXE_NAME ") + QStringLiteral("FROM KEVRO_APP_COMPONENTS ") +
                     QStringLiteral("WHERE KEVRO_APP_COMPONENTS.EXE_ID Not In ") +
                     QStringLiteral("(SELECT LICENSE_APP FROM KEVRO_APP_COMPONENTS, ") +
                     QStringLiteral("KEVRO_LICENSES WHERE EXE_ID = LICENSE_APP AND LICENSE_CLIENT = '") + clientCode +
                     QStringLiteral("');"),
                 gConnection.get());
    const QSet<QString> licensed = names(held), unlicensed = names(outside);
    CloseDatabase();
    ExeLists lists;
    for (const QString &path : mediaFiles) {
        if (path.right(4) != QLatin1String(".EXE"))
            continue;
        const QString name = FileNameOnly(path).toUpper();
        if (licensed.contains(name))
            lists.licensed << path;
        else if (unlicensed.contains(name))
            lists.unlicensed << path;
        else
            lists.unknown << path;
    }
    return lists;
}
