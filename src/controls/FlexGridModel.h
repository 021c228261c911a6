#pragma once

#include "controls/FlexGrid.h"
#include "shell/GridOrder.h"

#include <QAbstractTableModel>
#include <QHash>
#include <QList>
#include <QPixmap>
#include <QString>

// A cell's picture and where it sits in the cell.
struct CellPic {
    QPixmap picture;
    int alignment = FlexGrid::flexAlignLeftCenter;
};

// A row's cells are made on first write: a new row costs nothing until text goes into it.
struct GridRow {
    QList<QString> cells;
    QHash<int, CellPic> pictures; // by column; most rows have none
    long data = 0;                // RowData: travels with the row through sorts, never shown

    QString at(int c) const { return c < cells.size() ? cells[c] : QString(); }
    QString &ref(int c)
    {
        if (cells.size() <= c)
            cells.resize(c + 1);
        return cells[c];
    }
};

// The grid's alignment numbers as Qt's.
Qt::Alignment FlexAlignmentToQt(int alignment);

// The cells of a FlexGrid. Row 0 is the heading when FixedRows is 1; the view sees the rows below it.
class FlexGridModel final : public QAbstractTableModel
{
public:
    explicit FlexGridModel(FlexGrid *grid) : QAbstractTableModel(grid), m_grid(grid) {}

    QList<GridRow> rows;
    int cols = 2;
    int fixedRows = 1;
    QList<int> colAlign;

    int visibleFixed() const { return std::min<int>(fixedRows, 1); }
    int rowCount(const QModelIndex &parent = {}) const override
    {
        return parent.isValid() ? 0 : std::max<int>(0, rows.size() - visibleFixed());
    }
    int columnCount(const QModelIndex &parent = {}) const override { return parent.isValid() ? 0 : cols; }
    QVariant data(const QModelIndex &index, int role) const override;
    QVariant headerData(int section, Qt::Orientation o, int role) const override;
    Qt::Alignment alignmentFor(int col, const QString &text) const;

    // Appends blank rows, telling the view only of the new rows.
    void appendRows(int count);
    void reset();
    void cellChanged(int r, int c);

private:
    FlexGrid *m_grid;
};
