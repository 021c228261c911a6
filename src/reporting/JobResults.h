#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <functional>

struct ExeEvaluation;

// What a report reads of a job, as the screens show it: the application viewer's three captions, the
// applications of its two trees in their order, the rows of its unknown grid in their order, and the
// summary's numbers as they stand. The screens fill it from their controls; the batch job from the
// same evaluation and counts. Nothing in it is computed again for the report.
struct JobResults {
    struct UnknownFile {
        QString path; // the grid's path column
        QString size; // the grid's size column
    };
    struct KindCounts {
        QString total = QStringLiteral("0");
        QString checked = QStringLiteral("0");
    };

    QString unlicensedCaption;
    QStringList unlicensedApplications;
    QString licensedCaption;
    QStringList licensedApplications;
    QString unknownCaption;
    QList<UnknownFile> unknownFiles;

    KindCounts video, audio, images, text, external;
};

// Reads a job's results when the report needs them, not before.
using JobResultsSource = std::function<JobResults()>;

// The application viewer's part of a job's results as that screen shows an evaluation: the stored
// captions where the evaluation writes none, and the unknown files sorted by name as its grid sorts them.
JobResults ResultsOfEvaluation(const ExeEvaluation &evaluation);
