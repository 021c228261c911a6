#pragma once

#include <QString>
#include <QStringList>

#include <functional>

// How the benchmarks time what they compare.

// The wall time of one run of a piece of work, in milliseconds.
double timed(const std::function<void()> &run);

// A program run to its end with its output thrown away: whether it succeeded, its wall time and its
// peak resident memory (from wait4).
struct Child {
    bool ok = false;
    double ms = 0;
    long peakKb = 0;
};
Child runMeasured(const QString &program, const QStringList &args);
