#include "controls/FlexGridModel.h"

#include <algorithm>
#include <cmath>

Qt::Alignment FlexAlignmentToQt(int a)
{
    switch (a) {
    case FlexGrid::flexAlignLeftTop:
        return Qt::AlignLeft | Qt::AlignTop;
    case FlexGrid::flexAlignLeftBottom:
        return Qt::AlignLeft | Qt::AlignBottom;
    case FlexGrid::flexAlignCenterTop:
        return Qt::AlignHCenter | Qt::AlignTop;
    case FlexGrid::flexAlignCenterCenter:
        return Qt::AlignCenter;
    case FlexGrid::flexAlignCenterBottom:
        return Qt::AlignHCenter | Qt::AlignBottom;
    case FlexGrid::flexAlignRightTop:
        return Qt::AlignRight | Qt::AlignTop;
    case FlexGrid::flexAlignRightCenter:
        return Qt::AlignRight | Qt::AlignVCenter;
    case FlexGrid::flexAlignRightBottom:
        return Qt::AlignRight | Qt::AlignBottom;
    default:
        return Qt::AlignLeft | Qt::AlignVCenter;
    }
}

QVariant FlexGridModel::data(const QModelIndex &index, int role) const
{
    const int r = index.row() + visibleFixed();
    if (r >= rows.size())
        return {};
    const GridRow &row = rows[r];
    switch (role) {
    case Qt::DisplayRole:
        return row.at(index.column());
    case Qt::TextAlignmentRole:
        return int(alignmentFor(index.column(), row.at(index.column())));
    case Qt::DecorationRole: {
        const auto it = row.pictures.constFind(index.column());
        return it == row.pictures.constEnd() || it->picture.isNull() ? QVariant() : QVariant(it->picture);
    }
    case Qt::UserRole: {
        const auto it = row.pictures.constFind(index.column());
        return int(FlexAlignmentToQt(it == row.pictures.constEnd() ? 1 : it->alignment));
    }
    case Qt::ToolTipRole:
        return m_grid->ToolTipText().isEmpty() ? QVariant() : QVariant(m_grid->ToolTipText());
    default:
        return {};
    }
}

QVariant FlexGridModel::headerData(int section, Qt::Orientation o, int role) const
{
    if (o != Qt::Horizontal || fixedRows == 0 || rows.isEmpty())
        return {};
    if (role == Qt::DisplayRole)
        return rows[0].at(section);
    if (role == Qt::TextAlignmentRole)
        return int(Qt::AlignLeft | Qt::AlignVCenter);
    return {};
}

Qt::Alignment FlexGridModel::alignmentFor(int col, const QString &text) const
{
    const int a = col < colAlign.size() ? colAlign[col] : FlexGrid::flexAlignGeneral;
    if (a == FlexGrid::flexAlignGeneral) {
        double v;
        return IsWholeNumber(text, &v) ? (Qt::AlignRight | Qt::AlignVCenter) : (Qt::AlignLeft | Qt::AlignVCenter);
    }
    return FlexAlignmentToQt(a);
}

void FlexGridModel::appendRows(int count)
{
    const int first = rowCount();
    beginInsertRows({}, first, first + count - 1);
    rows.resize(rows.size() + count);
    endInsertRows();
}

void FlexGridModel::reset()
{
    beginResetModel();
    endResetModel();
}

void FlexGridModel::cellChanged(int r, int c)
{
    if (r < visibleFixed()) {
        Q_EMIT headerDataChanged(Qt::Horizontal, c, c);
        return;
    }
    const QModelIndex i = index(r - visibleFixed(), c);
    Q_EMIT dataChanged(i, i);
}
