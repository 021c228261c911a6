// One station's evaluations, for the test of two stations on one server: eval_child STATION FILES ROUNDS.
// The disc holds FILES executables named STATION0.EXE … STATION39.EXE over many folders; every round
// must find exactly those files under exactly this station's applications.

#include "review/ExeEvaluation.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments();
    if (args.size() < 4)
        return 2;
    const QString station = args[1];
    const int files = args[2].toInt();
    const int rounds = args[3].toInt();
    QStringList disc;
    for (int i = 0; i < files; ++i)
        disc << QStringLiteral("/DISC-%1/FOLDER%2/%1%3.EXE").arg(station).arg(i).arg(i % 40);
    const QString ownPrefix = QStringLiteral("Station %1 app ").arg(station);
    for (int round = 1; round <= rounds; ++round) {
        const ExeEvaluation result = EvaluateExecutables(disc, QStringLiteral("NORTHWIND"));
        int found = 0;
        for (const ApplicationRoot &root : result.licensed) {
            if (!root.name.startsWith(ownPrefix)) {
                std::printf("round %d: another station's application %s\n", round, qPrintable(root.name));
                return 1;
            }
            found += int(root.files.size());
        }
        if (found != files || !result.unlicensed.isEmpty() || !result.unknown.isEmpty()) {
            std::printf("round %d: %d of %d files found\n", round, found, files);
            return 1;
        }
    }
    std::printf("rounds %d ok\n", rounds);
    return 0;
}
