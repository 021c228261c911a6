#pragma once

#include <functional>

#include "controls/Form.h"
#include "controls/Menus.h"

#include <QList>
#include <QPair>
#include <QString>

#include <cstdint>

class FlexGrid;
class QCheckBox;
class QFrame;
class QLabel;
class QMenu;
class QPushButton;
class frmScanSummary;

// The pattern every review screen of one kind of file follows: a grid filled from the scan's list in
// blocks, archive and hidden marks, a tick when the operator has opened a file, sorting by the
// headings, the chain of screens, and the way the ticks reach the summary. A screen adds its own
// selection procedure (what opening a file means) and what it shows beside the grid.
class ViewerScreen : public Form
{
    Q_OBJECT
public:
    FlexGrid *Grid() const { return m_grid; }
    int16_t CheckedCount() const { return m_checkedCount; }

    QLabel *lblResultComment = nullptr;
    QLabel *lblCurrentPath = nullptr;
    QLabel *picZipIcon = nullptr;
    QLabel *picHiddenIcon = nullptr;
    QLabel *picTick = nullptr;
    QPushButton *cmdPrevious = nullptr;
    QPushButton *cmdNext = nullptr;
    QFrame *Line1 = nullptr;
    QFrame *linDark = nullptr;
    StandardMenus menus;

protected:
    // What differs between the screens: the grid's name, the widths of the name and size columns, the
    // count text, the kind word of a tick, whether the tick column is centred, which files it lists, the
    // tick's column, and whether dragging selects.
    struct Kind {
        const char *gridName;
        long nameWidth;
        long sizeWidth;
        QString countText;
        QString kindWord;
        bool centreTick;
        bool (*lists)(const QString &path);
        int tickColumn = 4;
        bool drag = true;
        // The audio screen sets its marks before the sort and sets them again on the sorted rows.
        bool marksBeforeSort = false;
    };
    ViewerScreen(const char *objectName, const QString &title, const Kind &kind, long width, long height);

    // The screen's own selection procedure: show (and tick) the file of the current row.
    virtual void SelectRow() = 0;
    // Runs SelectRow with the grid and the chain's buttons deaf to the operator until it is done.
    void OpenRow();
    // The current row is a file's row, not the heading (a pop-up's entries act on files only).
    bool HasDataRow() const;
    // The summary's total and checked labels of this kind.
    virtual QLabel *SummaryTotal(frmScanSummary *summary) const = 0;
    virtual QLabel *SummaryChecked(frmScanSummary *summary) const = 0;
    // The grid's right-button pop-up.
    virtual QMenu *ContextMenu() const = 0;

    void Form_QueryUnload(int &cancel, int unloadMode) override;

    // The fill from gMediaFiles in text blocks of at most 500 rows.
    void Fill();
    // One block of the fill: Rows raised, the block written from the last row the block before wrote;
    // rowData holds each written line's occurrence of its path (the heading's included).
    void FlushBlock(QString &buffer, QList<long> &rowData, int total, int batch, int lastColumn);
    // The mark texts of column 0 become pictures; then an empty first data row goes.
    void MarkPass();
    void MarkSortedRows();
    void RemoveEmptyFirstRow();
    // A left click on the heading row; by default the name and size sorts with their own flags.
    virtual void HeadingClicked();
    void SetCheckedCount(int16_t n) { m_checkedCount = n; }
    // Ticks the current row once; the kind word goes with the CheckedItem.
    void TickRow();
    // The row's path on the grid's tool tip ("Archive file: " and the path behind the extract folder for
    // a member) and on lblCurrentPath; returns the path.
    QString ShowPath();
    // The path of the current row: the row's key.
    QString RowPath() const;
    // The real file of the current row, to open: its own, also where rows share a path.
    QString RowFile() const;
    // A player's transport button with its picture, placed in twips on the players' button bar.
    static QPushButton *TransportButton(QWidget *parent, const char *name, const QString &picture,
                                        const QString &tip, long left);
    // The chain: the first screen whose box is ticked, else the last one named (the summary or the set-up).
    using Chain = QList<QPair<QCheckBox *, QString>>;
    // Images, Audio and Video write their checked number first and stop their players (stopPlayers) before
    // they move on; Text and Other write it once the next screen shows.
    void GoNext(const Chain &chain, bool checkedFirst, const std::function<void()> &stopPlayers = {});
    void GoBack(const Chain &chain);
    void WriteCheckedLabel();

    // True while the screen itself moves the grid's current cell: no selection procedure then.
    bool m_busy = false;
    QWidget *m_central = nullptr;

private:
    void gridMouseUp(int button);
    void gridMouseMove(int button);
    void rowChanged();

    Kind m_kind;
    FlexGrid *m_grid = nullptr;
    int16_t m_checkedCount = 0;
    QList<QObject *> m_heldStill; // what takes no input while a row opens
    bool m_nameSortAscending = false;
    bool m_sizeSortAscending = false;
};
