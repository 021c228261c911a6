#include "controls/FlexGrid.h"

#include "controls/FlexGridModel.h"
#include "shell/GridOrder.h"

#include "platform/Events.h"
#include "platform/VbError.h"
#include "controls/KeyCodes.h"
#include "controls/Twips.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QStyledItemDelegate>

#include <algorithm>
#include <cmath>

namespace {
class PictureDelegate final : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;
    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        QStyledItemDelegate::paint(painter, option, index);
        const QVariant pic = index.data(Qt::DecorationRole);
        if (!pic.isValid())
            return;
        const QPixmap pm = pic.value<QPixmap>();
        const auto align = Qt::Alignment(index.data(Qt::UserRole).toInt());
        const QRect cell = option.rect.adjusted(1, 1, -1, -1);
        const QSize size = pm.size().scaled(cell.size().boundedTo(pm.size()), Qt::KeepAspectRatio);
        const QRect target = QStyle::alignedRect(Qt::LeftToRight, align, size, cell);
        painter->drawPixmap(target, pm);
    }
};
} // namespace

FlexGrid::FlexGrid(QWidget *parent) : QTableView(parent), m_model(new FlexGridModel(this))
{
    m_model->rows.resize(2);
    m_model->colAlign = {flexAlignGeneral, flexAlignGeneral};
    m_colWidths = {-1, -1};
    setModel(m_model);
    setItemDelegate(new PictureDelegate(this));
    verticalHeader()->hide();
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 6);
    horizontalHeader()->setSectionResizeMode(QHeaderView::Interactive);
    horizontalHeader()->setHighlightSections(false);
    horizontalHeader()->setSectionsClickable(false);
    horizontalHeader()->setStretchLastSection(false);
    horizontalHeader()->viewport()->installEventFilter(this);
    setSelectionBehavior(QAbstractItemView::SelectItems);
    setSelectionMode(QAbstractItemView::NoSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setWordWrap(false);
    setAlternatingRowColors(false);
    setTabKeyNavigation(false);
    setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    connect(selectionModel(), &QItemSelectionModel::currentChanged, this, [this](const QModelIndex &cur) {
        if (m_syncing || !cur.isValid())
            return;
        // Only the keys that move the current cell are the operator's. The view also makes a cell current
        // by itself (focus coming in as the window is activated, rows going), which moves nothing here.
        if (!m_keyMove) {
            showSelection();
            return;
        }
        setCurrent(cur.row() + m_model->visibleFixed(), cur.column(), true);
    });
}

FlexGrid::~FlexGrid() = default;

void FlexGrid::checkCell(int row, int col) const
{
    if (row < 0 || row >= m_model->rows.size() || col < 0 || col >= m_model->cols)
        throw MakeVbError(VbErr::GridSubscriptOutOfRange);
}

void FlexGrid::refresh(bool structure)
{
    if (!m_redraw) {
        m_pendingReset = true;
        return;
    }
    if (structure) {
        m_syncing = true;
        m_model->reset();
        applyColumnWidths();
        m_syncing = false;
    }
    showSelection();
    viewport()->update();
    horizontalHeader()->setVisible(m_model->fixedRows > 0);
}

int FlexGrid::Rows() const
{
    return m_model->rows.size();
}

void FlexGrid::setRows(int rows)
{
    if (rows < 0)
        throw MakeVbError(VbErr::InvalidPropertyValue);
    auto &r = m_model->rows;
    if (rows == r.size())
        return;
    if (m_redraw && rows > r.size()) {
        if (r.size() >= m_model->visibleFixed()) {
            m_model->appendRows(rows - r.size());
            return;
        }
    }
    r.resize(rows);
    m_model->fixedRows = std::min(m_model->fixedRows, rows);
    const int last = std::max(0, rows - 1);
    m_row = std::min(m_row, last);
    m_rowSel = std::min(m_rowSel, last);
    refresh(true);
}

int FlexGrid::Cols() const
{
    return m_model->cols;
}

void FlexGrid::setCols(int cols)
{
    if (cols < 0)
        throw MakeVbError(VbErr::InvalidPropertyValue);
    m_model->cols = cols;
    for (GridRow &row : m_model->rows) {
        if (row.cells.size() > cols)
            row.cells.resize(cols);
        for (auto it = row.pictures.begin(); it != row.pictures.end();)
            it = it.key() >= cols ? row.pictures.erase(it) : std::next(it);
    }
    m_model->colAlign.resize(cols, flexAlignGeneral);
    m_colWidths.resize(cols, -1);
    const int last = std::max(0, cols - 1);
    m_col = std::min(m_col, last);
    m_colSel = std::min(m_colSel, last);
    refresh(true);
}

int FlexGrid::FixedRows() const
{
    return m_model->fixedRows;
}

void FlexGrid::setFixedRows(int rows)
{
    if (rows < 0 || rows > Rows())
        throw MakeVbError(VbErr::InvalidPropertyValue);
    m_model->fixedRows = rows;
    // The current cell stays off the fixed rows, as it does when the operator moves it.
    if (m_row < rows && rows < Rows())
        m_row = m_rowSel = rows;
    refresh(true);
}

void FlexGrid::setCurrent(int row, int col, bool fromUser)
{
    const bool moved = row != m_row || col != m_col;
    if (moved)
        Q_EMIT LeaveCell();
    m_row = m_rowSel = row;
    m_col = m_colSel = col;
    if (!fromUser)
        showSelection();
    else if (m_selectionMode != flexSelectionFree)
        showSelection();
    if (moved) {
        m_byOperator = true;
        Q_EMIT RowColChange();
        m_byOperator = false;
    }
}

void FlexGrid::setRow(int row)
{
    if (row < 0 || row >= Rows())
        throw MakeVbError(VbErr::InvalidRowValue);
    const bool moved = row != m_row;
    if (moved)
        Q_EMIT LeaveCell();
    m_row = m_rowSel = row;
    showSelection();
    if (moved)
        Q_EMIT RowColChange();
}

void FlexGrid::setCol(int col)
{
    if (col < 0 || col >= Cols())
        throw MakeVbError(VbErr::InvalidColValue);
    const bool moved = col != m_col;
    if (moved)
        Q_EMIT LeaveCell();
    m_col = m_colSel = col;
    showSelection();
    if (moved)
        Q_EMIT RowColChange();
}

void FlexGrid::setRowSel(int row)
{
    if (row < 0 || row >= Rows())
        throw MakeVbError(VbErr::InvalidRowValue);
    m_rowSel = row;
    showSelection();
}

void FlexGrid::setColSel(int col)
{
    if (col < 0 || col >= Cols())
        throw MakeVbError(VbErr::InvalidColValue);
    m_colSel = col;
    showSelection();
}

void FlexGrid::showSelection()
{
    if (!m_redraw || m_syncing)
        return;
    m_syncing = true;
    const int fixed = m_model->visibleFixed();
    QItemSelection sel;
    const int r0 = std::max(std::min(m_row, m_rowSel), fixed) - fixed;
    const int r1 = std::max(m_row, m_rowSel) - fixed;
    int c0 = std::min(m_col, m_colSel), c1 = std::max(m_col, m_colSel);
    if (m_selectionMode == flexSelectionByRow) {
        c0 = 0;
        c1 = m_model->cols - 1;
    }
    if (r1 >= 0 && r0 <= r1 && c1 >= 0 && m_model->rowCount() > 0)
        sel.select(m_model->index(r0, c0), m_model->index(std::min(r1, m_model->rowCount() - 1), c1));
    if (m_row >= fixed && m_row - fixed < m_model->rowCount() && m_col < m_model->cols)
        selectionModel()->setCurrentIndex(m_model->index(m_row - fixed, m_col), QItemSelectionModel::NoUpdate);
    else
        selectionModel()->clearCurrentIndex(); // a key then moves to the first row below the heading
    // The grid draws its own highlight; the view's own selection mode stays off for the mouse.
    selectionModel()->select(sel, QItemSelectionModel::ClearAndSelect);
    m_syncing = false;
}

QString FlexGrid::Clip() const
{
    QStringList lines;
    const int r0 = std::min(m_row, m_rowSel), r1 = std::max(m_row, m_rowSel);
    const int c0 = std::min(m_col, m_colSel), c1 = std::max(m_col, m_colSel);
    for (int r = r0; r <= r1 && r < Rows(); ++r) {
        QStringList cells;
        for (int c = c0; c <= c1 && c < Cols(); ++c)
            cells << m_model->rows[r].at(c);
        lines << cells.join(QLatin1Char('\t'));
    }
    return lines.join(QLatin1Char('\r'));
}

void FlexGrid::setClip(const QString &text)
{
    const int r0 = std::min(m_row, m_rowSel), r1 = std::max(m_row, m_rowSel);
    const int c0 = std::min(m_col, m_colSel), c1 = std::max(m_col, m_colSel);
    int r = r0;
    qsizetype pos = 0;
    const qsizetype n = text.size();
    while (pos < n && r <= r1 && r < Rows()) {
        qsizetype end = text.indexOf(QLatin1Char('\r'), pos);
        if (end < 0)
            end = n;
        QStringView line = QStringView(text).mid(pos, end - pos);
        if (line.startsWith(QLatin1Char('\n')))
            line = line.mid(1);
        GridRow &row = m_model->rows[r];
        if (row.cells.size() < std::min(c1 + 1, Cols()))
            row.cells.resize(std::min(c1 + 1, Cols()));
        int c = c0;
        qsizetype cpos = 0;
        while (c <= c1 && c < Cols()) {
            qsizetype tab = line.indexOf(QLatin1Char('\t'), cpos);
            const bool last = tab < 0;
            if (last)
                tab = line.size();
            row.cells[c] = line.mid(cpos, tab - cpos).toString();
            ++c;
            if (last)
                break;
            cpos = tab + 1;
        }
        ++r;
        pos = end + 1;
    }
    refresh(true);
}

long FlexGrid::RowData(int row) const
{
    checkCell(row, 0);
    return m_model->rows[row].data;
}

void FlexGrid::setRowData(int row, long value)
{
    checkCell(row, 0);
    m_model->rows[row].data = value;
}

QString FlexGrid::TextMatrix(int row, int col) const
{
    checkCell(row, col);
    return m_model->rows[row].at(col);
}

void FlexGrid::setTextMatrix(int row, int col, const QString &text)
{
    checkCell(row, col);
    m_model->rows[row].ref(col) = text;
    if (m_redraw)
        m_model->cellChanged(row, col);
    else
        m_pendingReset = true;
}

QString FlexGrid::Text() const
{
    return TextMatrix(m_row, m_col);
}

void FlexGrid::setText(const QString &text)
{
    setTextMatrix(m_row, m_col, text);
}

long FlexGrid::ColWidth(int col) const
{
    if (col < 0 || col >= Cols())
        throw MakeVbError(VbErr::SubscriptOutOfRange);
    return m_colWidths[col] >= 0 ? m_colWidths[col] : PixelsToTwips(columnWidth(col));
}

void FlexGrid::setColWidth(int col, long twips)
{
    if (col < 0 || col >= Cols())
        throw MakeVbError(VbErr::SubscriptOutOfRange);
    m_colWidths[col] = twips;
    applyColumnWidths();
}

void FlexGrid::applyColumnWidths()
{
    for (int c = 0; c < m_colWidths.size() && c < m_model->cols; ++c) {
        const long w = m_colWidths[c];
        setColumnHidden(c, w == 0);
        if (w > 0)
            setColumnWidth(c, TwipsToPixels(w));
    }
}

int FlexGrid::ColAlignment(int col) const
{
    if (col < 0 || col >= Cols())
        throw MakeVbError(VbErr::SubscriptOutOfRange);
    return m_model->colAlign[col];
}

void FlexGrid::setColAlignment(int col, int alignment)
{
    if (col < 0 || col >= Cols())
        throw MakeVbError(VbErr::SubscriptOutOfRange);
    m_model->colAlign[col] = alignment;
    refresh(false);
}

QPixmap FlexGrid::CellPicture() const
{
    checkCell(m_row, m_col);
    return m_model->rows[m_row].pictures.value(m_col).picture;
}

void FlexGrid::setCellPicture(const QPixmap &picture)
{
    checkCell(m_row, m_col);
    auto &pics = m_model->rows[m_row].pictures;
    auto it = pics.find(m_col);
    if (picture.isNull()) {
        // An alignment set for the cell stays for the next picture.
        if (it != pics.end() && it->alignment == CellPic{}.alignment)
            pics.erase(it);
        else if (it != pics.end())
            it->picture = QPixmap();
    } else {
        pics[m_col].picture = picture;
    }
    if (m_redraw)
        m_model->cellChanged(m_row, m_col);
}

int FlexGrid::CellPictureAlignment() const
{
    checkCell(m_row, m_col);
    return m_model->rows[m_row].pictures.value(m_col).alignment;
}

void FlexGrid::setCellPictureAlignment(int alignment)
{
    checkCell(m_row, m_col);
    // Held for the cell even before it has a picture: the picture set afterwards takes it.
    m_model->rows[m_row].pictures[m_col].alignment = alignment;
    if (m_redraw)
        m_model->cellChanged(m_row, m_col);
}

bool FlexGrid::HasCellPicture(int row, int col) const
{
    checkCell(row, col);
    return !m_model->rows[row].pictures.value(col).picture.isNull();
}

void FlexGrid::setSort(int order)
{
    if (order == flexSortNone)
        return;
    if (order < flexSortGenericAscending || order > flexSortNumericDescending)
        throw MakeVbError(VbErr::InvalidPropertyValue);
    const int first = m_model->fixedRows;
    auto &rows = m_model->rows;
    if (first >= rows.size())
        return;
    const int c0 = std::min(m_col, m_colSel), c1 = std::max(m_col, m_colSel);
    QList<QStringList> keys;
    keys.reserve(rows.size() - first);
    for (int i = first; i < rows.size(); ++i) {
        QStringList k;
        for (int c = c0; c <= c1; ++c)
            k << rows[i].at(c);
        keys.append(k);
    }
    const std::vector<int> order_ = GridSortOrder(keys, order);
    QList<GridRow> sorted;
    sorted.reserve(rows.size());
    for (int i = 0; i < first; ++i)
        sorted.append(std::move(rows[i]));
    for (int i : order_)
        sorted.append(std::move(rows[first + i]));
    rows = std::move(sorted);
    refresh(true);
}

void FlexGrid::AddItem(const QString &tabbedText, int index)
{
    GridRow row;
    const QStringList fields = tabbedText.split(QLatin1Char('\t'));
    for (int c = 0; c < fields.size() && c < m_model->cols; ++c)
        row.ref(c) = fields[c];
    auto &rows = m_model->rows;
    if (index < 0)
        index = rows.size();
    if (index > rows.size())
        throw MakeVbError(VbErr::SubscriptOutOfRange);
    rows.insert(index, row);
    refresh(true);
}

void FlexGrid::RemoveItem(int index)
{
    auto &rows = m_model->rows;
    if (index < 0 || index >= rows.size())
        throw MakeVbError(VbErr::SubscriptOutOfRange);
    rows.removeAt(index);
    m_model->fixedRows = std::min<int>(m_model->fixedRows, rows.size());
    const int last = std::max<int>(0, rows.size() - 1);
    m_row = std::min(m_row, last);
    m_rowSel = std::min(m_rowSel, last);
    refresh(true);
}

void FlexGrid::Clear()
{
    for (GridRow &row : m_model->rows) {
        for (QString &c : row.cells)
            c.clear();
        row.pictures.clear();
    }
    refresh(true);
}

void FlexGrid::setRedraw(bool on)
{
    m_redraw = on;
    if (on && m_pendingReset) {
        m_pendingReset = false;
        refresh(true);
    }
}

void FlexGrid::setToolTipText(const QString &text)
{
    m_toolTip = text;
    setToolTip(text);
}

int FlexGrid::TopRow() const
{
    const int r = rowAt(0);
    return (r < 0 ? 0 : r) + m_model->visibleFixed();
}

void FlexGrid::setTopRow(int row)
{
    if (row < 0 || row >= Rows())
        throw MakeVbError(VbErr::InvalidRowValue);
    const int viewRow = row - m_model->visibleFixed();
    if (viewRow >= 0 && viewRow < m_model->rowCount())
        scrollTo(m_model->index(viewRow, 0), QAbstractItemView::PositionAtTop);
}

void FlexGrid::setSelectionModeValue(int mode)
{
    m_selectionMode = mode;
    setSelectionBehavior(mode == flexSelectionByRow ? QAbstractItemView::SelectRows
                                                    : QAbstractItemView::SelectItems);
    showSelection();
}

long FlexGrid::CellLeft() const
{
    return PixelsToTwips(viewport()->x() + columnViewportPosition(m_col));
}

long FlexGrid::CellTop() const
{
    const int fixed = m_model->visibleFixed();
    if (m_row < fixed)
        return PixelsToTwips(horizontalHeader()->y());
    return PixelsToTwips(viewport()->y() + rowViewportPosition(m_row - fixed));
}

long FlexGrid::CellWidth() const
{
    return PixelsToTwips(columnWidth(m_col));
}

long FlexGrid::CellHeight() const
{
    const int fixed = m_model->visibleFixed();
    return PixelsToTwips(m_row < fixed ? horizontalHeader()->height() : rowHeight(m_row - fixed));
}

void FlexGrid::trackMouse(const QPoint &viewportPos, bool overHeader)
{
    const int fixed = m_model->visibleFixed();
    int col = columnAt(viewportPos.x());
    if (col < 0)
        col = std::max(0, Cols() - 1);
    m_mouseCol = col;
    if (overHeader && fixed > 0) {
        m_mouseRow = 0;
        return;
    }
    const int r = rowAt(viewportPos.y());
    // Below the last row the mouse counts as over the last row.
    m_mouseRow = r < 0 ? std::max(0, Rows() - 1) : r + fixed;
}

void FlexGrid::mousePressEvent(QMouseEvent *event)
{
    const QPoint p = event->position().toPoint();
    trackMouse(p, false);
    const int r = rowAt(p.y()), c = columnAt(p.x());
    // Only the left button moves the current cell: a right click leaves it where it is, so a context
    // menu acts on the current row and never selects (and opens) the row under the mouse.
    if (r >= 0 && c >= 0 && event->button() == Qt::LeftButton) {
        m_pressed = true;
        setCurrent(r + m_model->visibleFixed(), c, false);
        Q_EMIT SelChange();
    }
    setFocus(Qt::MouseFocusReason);
    const QPoint vp = viewport()->mapTo(this, p);
    Q_EMIT MouseDown(VbButtonsOf(event->button()), VbShiftOf(event->modifiers()), PixelsToTwips(vp.x()),
                     PixelsToTwips(vp.y()));
}

void FlexGrid::mouseMoveEvent(QMouseEvent *event)
{
    const QPoint p = event->position().toPoint();
    trackMouse(p, false);
    if (m_pressed && (event->buttons() & Qt::LeftButton)) {
        const int r = rowAt(p.y()), c = columnAt(p.x());
        if (r >= 0 && c >= 0) {
            const int row = r + m_model->visibleFixed();
            if (row != m_rowSel || c != m_colSel) {
                m_rowSel = row;
                m_colSel = c;
                showSelection();
                Q_EMIT SelChange();
            }
        }
    }
    const QPoint vp = viewport()->mapTo(this, p);
    Q_EMIT MouseMove(VbButtonsOf(event->buttons()), VbShiftOf(event->modifiers()), PixelsToTwips(vp.x()),
                     PixelsToTwips(vp.y()));
}

void FlexGrid::mouseReleaseEvent(QMouseEvent *event)
{
    const QPoint p = event->position().toPoint();
    trackMouse(p, false);
    m_pressed = false;
    const QPoint vp = viewport()->mapTo(this, p);
    Q_EMIT MouseUp(VbButtonsOf(event->button()), VbShiftOf(event->modifiers()), PixelsToTwips(vp.x()),
                   PixelsToTwips(vp.y()));
    if (event->button() == Qt::LeftButton)
        Q_EMIT Click();
}

void FlexGrid::mouseDoubleClickEvent(QMouseEvent *event)
{
    trackMouse(event->position().toPoint(), false);
    Q_EMIT DblClick();
}

bool FlexGrid::eventFilter(QObject *watched, QEvent *event)
{
    // The heading row is the header: clicks on it reach the screen with MouseRow 0.
    if (watched == horizontalHeader()->viewport()) {
        auto *me = dynamic_cast<QMouseEvent *>(event);
        if (me && (event->type() == QEvent::MouseButtonPress || event->type() == QEvent::MouseButtonRelease ||
                   event->type() == QEvent::MouseMove)) {
            const QPoint p = me->position().toPoint();
            trackMouse(p, true);
            const QPoint g = horizontalHeader()->viewport()->mapTo(this, p);
            const long x = PixelsToTwips(g.x()), y = PixelsToTwips(g.y());
            if (event->type() == QEvent::MouseButtonPress)
                Q_EMIT MouseDown(VbButtonsOf(me->button()), VbShiftOf(me->modifiers()), x, y);
            else if (event->type() == QEvent::MouseMove)
                Q_EMIT MouseMove(VbButtonsOf(me->buttons()), VbShiftOf(me->modifiers()), x, y);
            else {
                Q_EMIT MouseUp(VbButtonsOf(me->button()), VbShiftOf(me->modifiers()), x, y);
                if (me->button() == Qt::LeftButton)
                    Q_EMIT Click();
            }
        }
    }
    return QTableView::eventFilter(watched, event);
}

void FlexGrid::keyPressEvent(QKeyEvent *event)
{
    Q_EMIT KeyDown(VbKeyCode(event), VbShift(event));
    const int ascii = VbKeyAscii(event);
    if (ascii != 0)
        Q_EMIT KeyPress(ascii);
    switch (event->key()) {
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
    case Qt::Key_Home:
    case Qt::Key_End: {
        const QScopedValueRollback<bool> keys(m_keyMove, true);
        QTableView::keyPressEvent(event);
        break;
    }
    default:
        event->accept();
    }
}
