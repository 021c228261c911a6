#include "reporting/JobResults.h"

#include "review/ExeEvaluation.h"
#include "shell/GridOrder.h"

JobResults ResultsOfEvaluation(const ExeEvaluation &evaluation)
{
    JobResults r;
    const auto captionOr = [](const QString &written, const QString &stored) {
        return written.isNull() ? stored : written;
    };
    r.unlicensedCaption = captionOr(evaluation.unlicensedCaption, StoredUnlicensedCaption);
    r.licensedCaption = captionOr(evaluation.licensedCaption, StoredLicensedCaption);
    r.unknownCaption = captionOr(evaluation.unknownCaption, StoredUnknownCaption);
    for (const ApplicationRoot &root : evaluation.unlicensed)
        r.unlicensedApplications << root.name;
    for (const ApplicationRoot &root : evaluation.licensed)
        r.licensedApplications << root.name;

    // The grid sorts its data rows by the file name column, generic ascending.
    QList<QStringList> keys;
    keys.reserve(evaluation.unknown.size());
    for (const UnknownExe &u : evaluation.unknown)
        keys.append(QStringList{u.fileName});
    for (int i : GridSortOrder(keys, GridSortGenericAscending)) {
        const UnknownExe &u = evaluation.unknown[i];
        r.unknownFiles.append({u.path, u.sizeText});
    }
    return r;
}
