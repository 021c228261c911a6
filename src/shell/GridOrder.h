#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <vector>

// The order in which the grids sort their rows, kept apart from any grid so that a list written
// without a screen (the batch job's report) comes out in the order a grid shows it.

// The grid's sort kinds.
enum GridSortKind : int {
    GridSortGenericAscending = 1,
    GridSortGenericDescending = 2,
    GridSortNumericAscending = 3,
    GridSortNumericDescending = 4,
};

// A text that reads as a number as a whole (blanks around it allowed).
bool IsWholeNumber(const QString &text, double *value);
// The leading number of a text, as Val reads it: blanks skipped, digits, one point, an exponent.
double LeadingNumber(const QString &text);

// The stable order of rows by their key cells, compared column by column: a generic sort puts whole
// numbers first, by value, then texts without regard to case; a numeric sort takes each cell's
// leading number. keys holds, for each row, its key cells. Returns the row indexes in sorted order.
std::vector<int> GridSortOrder(const QList<QStringList> &keys, int kind);
