#pragma once

#include "reporting/JobResults.h"
#include "review/ExeEvaluation.h"
#include "review/ExecutableFormat.h"

#include <QDateTime>
#include <QJsonDocument>
#include <QList>
#include <QPair>
#include <QString>
#include <QStringList>

// A whole job as one JSON document for a plant's own systems (the order system that releases a title,
// the audit trail): who, what, when, every file of the scan in the walk's order, every executable's
// verdict with the application that decided it, every file that holds a program whatever its name, the
// summary's counts and every warning. Its fields are those of schemas/job-record.schema.json.
struct JobRecordInput {
    QString clientCode;
    QString clientName;
    QString catalogueNumber;
    QString volume;        // the folder or image file scanned
    QString imageFormat;   // the image's kind; empty for a folder
    QDateTime started;
    QDateTime ended;
    QString reportPath;
    const ExeEvaluation *evaluation = nullptr;
    JobResults results;    // the summary's counts
    QList<ProgramFile> programs;
    QList<NameVerdict> programComponents; // for each program: what the catalogue says of its original name
    // The archives the scan expanded: the stored form of each one's folder in the extract folder, and
    // the archive's own stored path.
    QList<QPair<QString, QString>> archives;
    QStringList warnings;
};

QJsonDocument MakeJobRecord(const JobRecordInput &input);

// The line kevro-check writes for a program whose name does not say it is one, e.g.
// "/DISC/SETUP.BIN holds a Windows program (OriginalFilename SETUP.EXE: Contoso Setup, un-licensed for
// this client)"; empty for a file named ".EXE".
QString HiddenProgramLine(const ProgramFile &program, const NameVerdict &component);
