// The evaluation's speed on a plant-sized job, on the embedded SQLite catalogue:
//   indexed    EvaluateExecutables over 10,000 executables of a generated disc against a catalogue of
//              100,000 component names (20,000 applications of five components, a third of them
//              needing a licence, the client holding a licence for half of those);
//   row walk   the same judgement the way the catalogue was first walked: every catalogue row compared
//              with every file name, the licence rows walked for every matching row, on a share of
//              the same disc small enough to run, scaled up to the whole disc;
//   reference  the sqlite3 shell joining the same disc's names with the catalogue in one statement
//              (an indexed lookup per name), which is what a database would do with the question.
// Both sides read the same catalogue in the same run; the best of three rounds counts.
//
// bench_evaluation_speed [FOLDER]   (default: build/bench-evaluation, laid out once and kept)

#include "catalogue/CatalogueSetup.h"
#include "catalogue/Database.h"
#include "platform/Paths.h"
#include "review/ExeEvaluation.h"
#include "shell/MainMod.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QHash>
#include <QProcess>
#include <QSqlQuery>
#include <QStandardPaths>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <limits>

namespace {
constexpr int Applications = 20000;
constexpr int ComponentsPerApp = 5;
constexpr int Executables = 10000;
constexpr int RowWalkShare = 50; // files judged by the row walk, scaled up to the whole disc
const QString Client = QStringLiteral("4");

QString componentName(int app, int c)
{
    return QStringLiteral("C%1X%2.EXE").arg(app).arg(c);
}

void insertRows()
{
    QSqlDatabase db = gConnection->Database();
    db.transaction();
    QSqlQuery app(db), component(db), licence(db);
    app.prepare("INSERT INTO KEVRO_APPS (APP_ID, APP_NAME, APP_OWNER, APP_WEB_LICENSE, APP_LICENSE_PER_MEDIA, "
                "APP_REQUIRES_LICENSE) VALUES (?, ?, 1, '', 0, ?)");
    component.prepare("INSERT INTO KEVRO_APP_COMPONENTS (EXE_APP, EXE_NAME, EXE_DESCRIPTION) VALUES (?, ?, '')");
    licence.prepare("INSERT INTO KEVRO_LICENSES (LICENSE_CLIENT, LICENSE_APP) VALUES (?, ?)");
    for (int a = 1; a <= Applications; ++a) {
        const bool needsLicence = a % 3 == 0;
        app.addBindValue(a);
        app.addBindValue(QStringLiteral("Application %1").arg(a, 5, 10, QLatin1Char('0')));
        app.addBindValue(needsLicence ? 1 : 0);
        app.exec();
        for (int c = 0; c < ComponentsPerApp; ++c) {
            component.addBindValue(a);
            component.addBindValue(componentName(a, c));
            component.exec();
        }
        if (needsLicence && a % 2 == 0) {
            licence.addBindValue(Client);
            licence.addBindValue(a);
            licence.exec();
        }
    }
    db.commit();
}

void fillCatalogue()
{
    OpenDatabase();
    insertRows();
    CloseDatabase();
}

// Seven in ten files are components of some application, the rest unknown; files sit in 200 folders.
QStringList layOutDisc(const QString &root)
{
    QStringList paths;
    for (int i = 0; i < Executables; ++i) {
        const QString name = i % 10 < 7 ? componentName(1 + (i * 7919) % Applications, i % ComponentsPerApp)
                                         : QStringLiteral("UNKNOWN%1.EXE").arg(i);
        const QString path = QStringLiteral("%1/FOLDER%2/%3").arg(root).arg(i % 200).arg(name);
        if (!QFile::exists(path)) {
            QDir().mkpath(QFileInfo(path).path());
            QFile f(path);
            f.open(QIODevice::WriteOnly);
            f.write(QByteArray(512 + i % 4096, 'x'));
        }
        // The scan records each file's real path as it lists it; so does this disc.
        RegisterRealPath(path.toUpper(), path);
        paths << path.toUpper();
    }
    return paths;
}

// The judgement as the catalogue was first walked: all rows for every file, the licences for every
// matching row. Returns the number of files it found known, to be compared with the indexed side.
int rowWalk(const QStringList &disc)
{
    OpenDatabase();
    Recordset catalogue, licences;
    catalogue.Open("Select KEVRO_APPS.APP_ID, KEVRO_APP_COMPONENTS.EXE_NAME, KEVRO_APPS.APP_NAME, "
                   "KEVRO_APPS.APP_REQUIRES_LICENSE, KEVRO_APPS.APP_LICENSE_PER_MEDIA From KEVRO_APP_COMPONENTS "
                   "Inner Join KEVRO_APPS On KEVRO_APP_COMPONENTS.EXE_APP = KEVRO_APPS.APP_ID",
                   gConnection.get());
    licences.Open("Select KEVRO_LICENSES.LICENSE_APP From KEVRO_LICENSES Where KEVRO_LICENSES.LICENSE_CLIENT='" +
                      Client + "'",
                  gConnection.get());
    int known = 0;
    for (const QString &path : disc) {
        const QString exe = FileNameOnly(path);
        bool unknown = true, licensed = false;
        QString appName;
        for (catalogue.MoveFirst(); !catalogue.Eof(); catalogue.MoveNext()) {
            if (catalogue.Fields("EXE_NAME").toString().toUpper() != exe.toUpper())
                continue;
            appName = catalogue.Fields("APP_NAME").toString();
            unknown = false;
            if (catalogue.Fields("APP_REQUIRES_LICENSE").toBool()) {
                const int id = catalogue.Fields("APP_ID").toInt();
                for (licences.MoveFirst(); !licences.Eof(); licences.MoveNext()) {
                    if (licences.Fields("LICENSE_APP").toInt() == id)
                        licensed = true;
                }
            } else {
                licensed = true;
            }
        }
        Q_UNUSED(licensed);
        known += unknown ? 0 : 1;
    }
    CloseDatabase();
    return known;
}

double bestOf(int rounds, const std::function<void()> &run)
{
    double best = std::numeric_limits<double>::infinity();
    for (int i = 0; i < rounds; ++i) {
        QElapsedTimer t;
        t.start();
        run();
        best = std::min(best, t.nsecsElapsed() / 1e6);
    }
    return best;
}
} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const QString folder = argc > 1 ? QString::fromLocal8Bit(argv[1])
                                    : QCoreApplication::applicationDirPath() + QStringLiteral("/../bench-evaluation");
    QDir().mkpath(folder);
    const QString home = QDir(folder).canonicalPath();
    qputenv("KEVRO_HOME", home.toLocal8Bit());
    qputenv("ODBCINI", (home + "/no-user-odbc.ini").toLocal8Bit());
    qputenv("ODBCSYSINI", (home + "/no-system-odbc").toLocal8Bit());
    QDir().mkpath(home + "/extract");
    CatalogueTarget target;
    target.sqliteFile = home + "/kevro.db";
    if (!QFile::exists(target.sqliteFile)) {
        std::printf("laying out a catalogue of %d components...\n", Applications * ComponentsPerApp);
        if (!CreateCatalogue(target, true).isEmpty() || !WriteDataSourceEntry(target, home + "/odbc.ini").isEmpty())
            return 1;
        fillCatalogue();
    }
    QStringList disc = layOutDisc(home + "/disc");

    ExeEvaluation result;
    const double indexed = bestOf(3, [&] { result = EvaluateExecutables(disc, Client); });
    int knownFiles = 0;
    for (const auto *tree : {&result.licensed, &result.unlicensed}) {
        for (const ApplicationRoot &r : *tree)
            knownFiles += int(r.files.size());
    }
    const QStringList share = disc.mid(0, RowWalkShare);
    int shareKnown = 0;
    const double walkedShare = bestOf(1, [&] { shareKnown = rowWalk(share); });
    const double walkedWhole = walkedShare * Executables / RowWalkShare;

    double reference = -1;
    const QString sqlite3 = QStandardPaths::findExecutable("sqlite3");
    if (!sqlite3.isEmpty()) {
        QStringList values;
        for (const QString &p : disc)
            values << "('" + FileNameOnly(p) + "')";
        const QString sql = "CREATE TEMP TABLE DISC(NAME TEXT); INSERT INTO DISC VALUES " + values.join(',') +
                            "; SELECT COUNT(*) FROM DISC JOIN KEVRO_APP_COMPONENTS ON EXE_NAME = NAME;";
        reference = bestOf(3, [&] {
            QProcess p;
            p.start(sqlite3, {target.sqliteFile});
            p.write(sql.toUtf8());
            p.closeWriteChannel();
            p.waitForFinished(-1);
        });
    }

    std::printf("evaluation of %d executables against %d components (SQLite), best of 3:\n", Executables,
                Applications * ComponentsPerApp);
    std::printf("  indexed    %9.1f ms  (%d known: %lld licensed and %lld un-licensed applications, %lld unknown)\n",
                indexed, knownFiles, qlonglong(result.licensed.size()), qlonglong(result.unlicensed.size()),
                qlonglong(result.unknown.size()));
    std::printf("  row walk   %9.1f ms for %d files (%d known), %.0f ms scaled to the whole disc\n", walkedShare,
                RowWalkShare, shareKnown, walkedWhole);
    std::printf("  ratio      row walk / indexed = %.0fx\n", walkedWhole / indexed);
    if (reference >= 0)
        std::printf("  reference  sqlite3 join of the disc's names: %.1f ms; indexed / sqlite3 = %.2fx\n", reference,
                    indexed / reference);
    else
        std::printf("  reference  sqlite3 not installed (Debian package sqlite3): ratio skipped\n");
    return 0;
}
