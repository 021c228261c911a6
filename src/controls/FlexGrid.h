#pragma once

#include <QPixmap>
#include <QTableView>

class FlexGridModel;

// The hierarchical flex grid the screens were written against: a block of text cells addressed by row
// and column, the first FixedRows rows being headings, with a current cell (Row, Col) and a selection
// reaching to (RowSel, ColSel). Row 0 is drawn as the heading when FixedRows is 1.
class FlexGrid final : public QTableView
{
    Q_OBJECT
public:
    enum Alignment {
        flexAlignLeftTop = 0,
        flexAlignLeftCenter = 1,
        flexAlignLeftBottom = 2,
        flexAlignCenterTop = 3,
        flexAlignCenterCenter = 4,
        flexAlignCenterBottom = 5,
        flexAlignRightTop = 6,
        flexAlignRightCenter = 7,
        flexAlignRightBottom = 8,
        flexAlignGeneral = 9,
    };
    enum SortOrder {
        flexSortNone = 0,
        flexSortGenericAscending = 1,
        flexSortGenericDescending = 2,
        flexSortNumericAscending = 3,
        flexSortNumericDescending = 4,
    };
    enum SelectionMode { flexSelectionFree = 0, flexSelectionByRow = 1, flexSelectionByColumn = 2 };

    explicit FlexGrid(QWidget *parent = nullptr);
    ~FlexGrid() override;

    int Rows() const;
    void setRows(int rows);
    int Cols() const;
    void setCols(int cols);
    int FixedRows() const;
    void setFixedRows(int rows);

    int Row() const { return m_row; }
    // True while RowColChange comes from the operator: a click on a cell or a key that moves the current
    // cell. Code that sets Row or Col, a fill, a sort, focus or the window's activation move it otherwise.
    bool MovedByOperator() const { return m_byOperator; }
    // The current row is a row of data, not a heading (and the grid has one).
    bool CurrentIsDataRow() const { return Rows() > FixedRows() && Row() >= FixedRows(); }
    void setRow(int row);
    int Col() const { return m_col; }
    void setCol(int col);
    int RowSel() const { return m_rowSel; }
    void setRowSel(int row);
    int ColSel() const { return m_colSel; }
    void setColSel(int col);

    // The selection as text: cells joined by tabs, rows by carriage returns. Written, the text goes into
    // the selection from its top-left cell; what reaches past the selection is dropped, and cells the
    // text does not reach keep what they hold.
    QString Clip() const;
    void setClip(const QString &text);

    // A number kept with each row that is never shown and moves with the row when the grid sorts.
    long RowData(int row) const;
    void setRowData(int row, long value);

    QString TextMatrix(int row, int col) const;
    void setTextMatrix(int row, int col, const QString &text);
    // The current cell's text.
    QString Text() const;
    void setText(const QString &text);

    long ColWidth(int col) const;
    void setColWidth(int col, long twips);
    int ColAlignment(int col) const;
    void setColAlignment(int col, int alignment);

    // The current cell's picture and its place in the cell.
    QPixmap CellPicture() const;
    void setCellPicture(const QPixmap &picture);
    int CellPictureAlignment() const;
    void setCellPictureAlignment(int alignment);
    bool HasCellPicture(int row, int col) const;

    // Sorts the rows below the headings by the columns from Col to ColSel.
    void setSort(int order);

    void AddItem(const QString &tabbedText, int index = -1);
    void RemoveItem(int index);
    // Empties every cell's text and picture; rows and columns stay.
    void Clear();

    int MouseRow() const { return m_mouseRow; }
    int MouseCol() const { return m_mouseCol; }
    bool Redraw() const { return m_redraw; }
    void setRedraw(bool on);
    QString ToolTipText() const { return m_toolTip; }
    void setToolTipText(const QString &text);
    int TopRow() const;
    void setTopRow(int row);
    int SelectionModeValue() const { return m_selectionMode; }
    void setSelectionModeValue(int mode);

    // The current cell's place inside the grid, in twips.
    long CellLeft() const;
    long CellTop() const;
    long CellWidth() const;
    long CellHeight() const;

Q_SIGNALS:
    // Mouse buttons as 1 left, 2 right, 4 middle; positions in twips.
    void MouseDown(int button, int shift, long x, long y);
    void MouseUp(int button, int shift, long x, long y);
    void MouseMove(int button, int shift, long x, long y);
    void Click();
    void DblClick();
    void KeyDown(int keyCode, int shift);
    void KeyPress(int keyAscii);
    // Before the current cell moves, while Row and Col still name the cell being left.
    void LeaveCell();
    void RowColChange();
    void SelChange();

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    friend class FlexGridModel;
    void checkCell(int row, int col) const;
    void trackMouse(const QPoint &viewportPos, bool overHeader);
    void refresh(bool structure);
    void showSelection();
    void applyColumnWidths();
    void setCurrent(int row, int col, bool fromUser);

    FlexGridModel *m_model;
    int m_row = 0;
    int m_col = 0;
    int m_rowSel = 0;
    int m_colSel = 0;
    int m_mouseRow = 0;
    int m_mouseCol = 0;
    bool m_redraw = true;
    bool m_pendingReset = false;
    bool m_syncing = false;
    bool m_pressed = false;
    bool m_keyMove = false;    // a key that moves the current cell is being handled
    bool m_byOperator = false; // RowColChange is being sent for the operator's move
    int m_selectionMode = flexSelectionFree;
    QString m_toolTip;
    QList<long> m_colWidths; // twips, -1 the default
};
