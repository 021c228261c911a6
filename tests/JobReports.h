#pragma once

#include <QString>
#include <QStringList>

// A job's report read back as the tests compare it, and kevro-check run as a plant's script runs it.

// The report as lines, this run's folders and clock put back into the placeholders of the expected
// files: {DISC} and {APP} for the upper-case disc and application folders, {NOW} for the date and time.
// Every line must end in CR LF.
QStringList reportLines(const QString &path, const QString &disc);

// Compares line by line, so that a difference names its line.
bool sameLines(const QStringList &actual, const QStringList &expected);

struct CheckRun {
    int code = -1;
    QString out;
    QString err;
};
CheckRun kevroCheck(const QStringList &args);
