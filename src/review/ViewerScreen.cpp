#include "review/ViewerScreen.h"

#include "controls/FlexGrid.h"
#include "controls/Forms.h"
#include "controls/Pictures.h"
#include "controls/ScreenParts.h"
#include "platform/FileSystem.h"
#include "platform/MsgBox.h"
#include "platform/ShellOpen.h"
#include "platform/Paths.h"
#include "platform/VbError.h"
#include "reporting/ScanReport.h"
#include "reporting/frmScanSummary.h"
#include "review/ReviewScreens.h"
#include "shell/MainMod.h"
#include "shell/MainModScreens.h"
#include "shell/Progress.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QCursor>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QScopeGuard>
#include <QScopedValueRollback>

namespace {
// Input kept from some controls of a window: clicks and keys on them, and every access key of the window.
class HoldInput final : public QObject
{
public:
    HoldInput(QWidget *window, const QList<QObject *> &held) : m_window(window), m_held(held) {}

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        switch (event->type()) {
        case QEvent::Shortcut: {
            const auto *widget = qobject_cast<QWidget *>(watched);
            return widget && widget->window() == m_window;
        }
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonRelease:
        case QEvent::MouseButtonDblClick:
        case QEvent::KeyPress:
        case QEvent::KeyRelease:
            return m_held.contains(watched);
        default:
            return false;
        }
    }

private:
    QWidget *m_window;
    const QList<QObject *> &m_held;
};
constexpr int MarkColumn = 0;
constexpr int PathColumn = 1;
constexpr int NameColumn = 2;
constexpr int SizeColumn = 3;
constexpr int TickColumn = 4;
constexpr int BlockRows = 500;
constexpr int LeftButton = 1;
constexpr int RightButton = 2;


// A number as the runtime's Str gives it: a leading blank for a number that is not negative.
QString Str(long n)
{
    return n < 0 ? QString::number(n) : QLatin1Char(' ') + QString::number(n);
}
} // namespace

ViewerScreen::ViewerScreen(const char *objectName, const QString &title, const Kind &kind, long width, long height)
    : m_kind(kind)
{
    setObjectName(QLatin1String(objectName));
    setWindowTitle(title);
    m_central = new QWidget(this);
    setCentralWidget(m_central);
    menus = BuildStandardMenus(this);
    setFixedSize(TwipsToPixels(width), TwipsToPixels(height) + menuBar()->sizeHint().height());
    BannerPicture(m_central, width);

    m_grid = Named(new FlexGrid(m_central), kind.gridName);
    m_grid->setSelectionModeValue(FlexGrid::flexSelectionByRow);
    lblResultComment = Named(new QLabel(m_central), "lblResultComment");
    lblCurrentPath = Named(new QLabel(m_central), "lblCurrentPath");
    lblCurrentPath->setTextInteractionFlags(Qt::TextSelectableByMouse);
    picZipIcon = PictureHolder(m_central, "picZipIcon", QStringLiteral("zip"));
    picHiddenIcon = PictureHolder(m_central, "picHiddenIcon", QStringLiteral("hidden"));
    picTick = PictureHolder(m_central, "picTick", QStringLiteral("tick"));
    Line1 = RuleLine(m_central, "Line1", "#c9d3de", 240, height - 1020, width - 480);
    linDark = RuleLine(m_central, "linDark", "#7f8c99", 240, height - 990, width - 480);
    cmdPrevious = Named(new QPushButton(QStringLiteral("< &Back"), m_central), "cmdPrevious");
    PlaceTw(cmdPrevious, width - 3060, height - 720, 1260, 450);
    cmdNext = Named(new QPushButton(QStringLiteral("&Next >"), m_central), "cmdNext");
    cmdNext->setDefault(true);
    PlaceTw(cmdNext, width - 1620, height - 720, 1260, 450);

    On(m_grid, &FlexGrid::RowColChange, this, [this] { rowChanged(); });
    m_heldStill = {m_grid, m_grid->viewport(), cmdNext, cmdPrevious};
    On(m_grid, &FlexGrid::MouseUp, this, [this](int button) { gridMouseUp(button); });
    On(m_grid, &FlexGrid::MouseMove, this, [this](int button) { gridMouseMove(button); });
    On(menus.mnuFileExit, &QAction::triggered, this, [] { ExitApplication(); });
    ConnectOptionsAndHelp(this, menus);
    // The Scan Engine and Database entries do nothing on the review screens.
}

void ViewerScreen::Form_QueryUnload(int &, int unloadMode)
{
    if (unloadMode == vbFormControlMenu)
        ExitApplication();
}

void ViewerScreen::FlushBlock(QString &buffer, QList<long> &rowData, int total, int batch, int lastColumn)
{
    FlexGrid *g = m_grid;
    g->setRows(total + 1);
    DoEvents();
    // Each later block starts on the last row the block before it wrote: the heading row is not
    // counted, so that row is overwritten and the grid's last row stays blank.
    g->setRow(total - batch);
    g->setCol(MarkColumn);
    g->setRowSel(total);
    g->setColSel(lastColumn);
    g->setClip(buffer);
    // Each row keeps which of the files sharing its path it lists.
    for (int k = 0; k < rowData.size() && total - batch + k < g->Rows(); ++k)
        g->setRowData(total - batch + k, rowData[k]);
    buffer.clear();
    rowData.clear();
}

void ViewerScreen::Fill()
{
    FlexGrid *g = m_grid;
    const QScopedValueRollback<bool> busy(m_busy, true);
    try {
        m_checkedCount = 0;
        int total = 0, batch = 0;
        g->setRedraw(false);
        g->setCols(5);
        g->setColWidth(MarkColumn, long(picZipIcon->pixmap().width()) * TwipsPerPixel + 80);
        g->setColWidth(PathColumn, 0);
        g->setColWidth(NameColumn, m_kind.nameWidth);
        g->setColWidth(SizeColumn, m_kind.sizeWidth);
        g->setColWidth(TickColumn, long(picTick->pixmap().width()) * TwipsPerPixel);
        QString buffer = QStringLiteral("\tPath\tFile Name\tFile Size\r");
        QList<long> rowData{0};
        Occurrences occurrence;
        const int last = int(gMediaFiles.size()) - 1;
        for (int i = 0; i <= last; ++i) {
            ResumeNextOn({VbErr::FileNotFound, VbErr::BadFileName}, [&] {
                const QString &path = gMediaFiles[i];
                const int n = occurrence(path);
                if (!m_kind.lists(path))
                    return;
                buffer += FileIconKey(path, n) + QLatin1Char('\t') + path + QLatin1Char('\t') + FileNameOnly(path) +
                          QLatin1Char('\t') + FileSizeText(path, n) + QStringLiteral("\t\r");
                rowData.append(n);
                ++total;
                ++batch;
            });
            if (i == last || batch == BlockRows) {
                if (batch > BlockRows - 1)
                    UpdateProgressBox(last > 0 ? double(i) / last * 100 : 100,
                                      QStringLiteral("Processed") + Str(i) + QStringLiteral(" of") + Str(last) +
                                          QStringLiteral(" internal files..."),
                                      this);
                FlushBlock(buffer, rowData, total, batch, SizeColumn);
                batch = 0;
            }
        }
        UnloadProgressBox();
        if (g->Rows() > 1)
            g->setFixedRows(1);
        else
            g->setRows(0);
        lblResultComment->setText(QString::number(total) + m_kind.countText);
        SummaryTotal(Forms::get<frmScanSummary>())->setText(QString::number(total));
        if (m_kind.marksBeforeSort)
            MarkPass();
        if (total > 0) {
            g->setCol(NameColumn);
            g->setSort(FlexGrid::flexSortGenericAscending);
            g->setColAlignment(NameColumn, FlexGrid::flexAlignLeftCenter);
        }
        if (m_kind.marksBeforeSort)
            MarkSortedRows();
        else
            MarkPass();
        if (total > 0)
            RemoveEmptyFirstRow();
        if (g->Rows() > 0) {
            g->setRow(0);
            g->setCol(MarkColumn);
        }
        g->setRedraw(true);
        g->setVisible(true);
    } catch (const VbError &e) {
        MsgBox(QStringLiteral("Error ") + QString::number(e.number) + QStringLiteral(" occured."), vbExclamation);
    }
}

void ViewerScreen::MarkPass()
{
    FlexGrid *g = m_grid;
    for (int r = 1; r < g->Rows(); ++r) {
        const QString mark = g->TextMatrix(r, MarkColumn);
        if (mark != QLatin1String("Zip") && mark != QLatin1String("Hidden"))
            continue;
        g->setCol(MarkColumn);
        g->setRow(r);
        g->setText(QString());
        g->setCellPicture(mark == QLatin1String("Zip") ? picZipIcon->pixmap() : picHiddenIcon->pixmap());
        g->setColAlignment(MarkColumn, FlexGrid::flexAlignCenterCenter);
        g->setCellPictureAlignment(FlexGrid::flexAlignCenterCenter);
    }
}

void ViewerScreen::MarkSortedRows()
{
    // The mark texts are gone: each row's path is tested afresh, the archive's mark first.
    FlexGrid *g = m_grid;
    const QString extract = StoredExtractFolder() + QLatin1Char('/');
    for (int r = 1; r < g->Rows(); ++r) {
        const QString path = g->TextMatrix(r, PathColumn);
        const bool hidden = InfoOf(path, int(g->RowData(r))).hidden;
        const bool zipped = path.left(extract.size()) == extract;
        if (!zipped && !hidden)
            continue;
        g->setCol(MarkColumn);
        g->setRow(r);
        g->setCellPicture(zipped ? picZipIcon->pixmap() : picHiddenIcon->pixmap());
        g->setCellPictureAlignment(FlexGrid::flexAlignCenterCenter);
    }
}

void ViewerScreen::RemoveEmptyFirstRow()
{
    FlexGrid *g = m_grid;
    if (g->Rows() > 1 && g->TextMatrix(1, PathColumn).isEmpty()) {
        g->setRow(1);
        g->RemoveItem(1);
        g->setRowSel(1);
    }
}

QPushButton *ViewerScreen::TransportButton(QWidget *parent, const char *name, const QString &picture,
                                           const QString &tip, long left)
{
    auto *b = Named(new QPushButton(parent), name);
    b->setIcon(QIcon(LoadPicture(picture)));
    b->setIconSize(QSize(32, 24));
    b->setToolTip(tip);
    PlaceTw(b, left, 60, 720, 420);
    return b;
}

QString ViewerScreen::RowPath() const
{
    return m_grid->TextMatrix(m_grid->Row(), PathColumn);
}

QString ViewerScreen::RowFile() const
{
    return RealPath(RowPath(), int(m_grid->RowData(m_grid->Row())));
}

QString ViewerScreen::ShowPath()
{
    const QString path = RowPath();
    m_grid->setToolTipText(ChangePathIfCompressed(path));
    lblCurrentPath->setText(path);
    return path;
}

void ViewerScreen::TickRow()
{
    const QScopedValueRollback<bool> busy(m_busy, true);
    FlexGrid *g = m_grid;
    g->setCol(m_kind.tickColumn);
    if (!g->CellPicture().isNull())
        return; // a row is ticked once, however often it is visited
    g->setCellPicture(picTick->pixmap());
    if (m_kind.centreTick)
        g->setCellPictureAlignment(FlexGrid::flexAlignCenterCenter);
    ++m_checkedCount;
    AddCheckedItem(g->TextMatrix(g->Row(), PathColumn) + QStringLiteral(" (") + g->TextMatrix(g->Row(), SizeColumn) +
                       QLatin1Char(')'),
                   m_kind.kindWord);
    g->setCol(MarkColumn);
}

void ViewerScreen::rowChanged()
{
    // Only the operator opens a row: focus, activation, a fill, a sort or code moving the row open nothing.
    if (m_busy || !m_grid->MovedByOperator() || !m_grid->CurrentIsDataRow())
        return;
    const QScopedValueRollback<bool> busy(m_busy, true);
    OpenRow();
}

void ViewerScreen::OpenRow()
{
    // A player waits for its file and lets events through meanwhile: until the row is opened and ticked,
    // a click or key on the grid or on the chain's buttons would open, tick or count another row. Held at
    // the application, before every other filter, so no road (an access key neither) gets past.
    HoldInput hold(this, m_heldStill);
    qApp->installEventFilter(&hold);
    const auto release = qScopeGuard([&] { qApp->removeEventFilter(&hold); });
    SelectRow();
}

bool ViewerScreen::HasDataRow() const
{
    return m_grid->CurrentIsDataRow();
}

void ViewerScreen::gridMouseUp(int button)
{
    FlexGrid *g = m_grid;
    if (button == RightButton) {
        if (g->Rows() > 0 && g->MouseRow() >= 1)
            ContextMenu()->popup(QCursor::pos());
        return;
    }
    if (button != LeftButton || g->MouseRow() >= 1 || g->Rows() < 1)
        return;
    const QScopedValueRollback<bool> busy(m_busy, true);
    HeadingClicked();
}

void ViewerScreen::HeadingClicked()
{
    FlexGrid *g = m_grid;
    // Any heading but the size's sorts by name.
    g->setCol(g->MouseCol() == SizeColumn ? SizeColumn : NameColumn);
    if (g->Col() == NameColumn) {
        g->setSort(m_nameSortAscending ? FlexGrid::flexSortGenericDescending : FlexGrid::flexSortGenericAscending);
        m_nameSortAscending = !m_nameSortAscending;
    } else {
        g->setSort(m_sizeSortAscending ? FlexGrid::flexSortNumericDescending : FlexGrid::flexSortNumericAscending);
        m_sizeSortAscending = !m_sizeSortAscending;
    }
    g->setCol(MarkColumn);
    g->setRow(0);
}

void ViewerScreen::gridMouseMove(int button)
{
    FlexGrid *g = m_grid;
    if (!m_kind.drag || button != LeftButton || g->RowSel() == g->Row() || m_busy)
        return;
    const QScopedValueRollback<bool> busy(m_busy, true);
    g->setRow(g->RowSel());
    if (g->Row() >= 1)
        OpenRow();
}

void ViewerScreen::WriteCheckedLabel()
{
    SummaryChecked(Forms::get<frmScanSummary>())->setText(QString::number(m_checkedCount));
}

void ViewerScreen::GoNext(const Chain &chain, bool checkedFirst, const std::function<void()> &stopPlayers)
{
    QString next;
    for (const auto &[box, name] : chain) {
        if (!box || box->isChecked()) {
            next = name;
            break;
        }
    }
    Form *target = ReviewScreenNamed(next);
    if (!target)
        return; // that screen is not part of the program yet
    QApplication::setOverrideCursor(Qt::WaitCursor);
    if (checkedFirst)
        WriteCheckedLabel();
    if (stopPlayers)
        stopPlayers();
    target->Move(Left(), Top());
    target->show();
    hide();
    if (!checkedFirst)
        WriteCheckedLabel();
    QApplication::restoreOverrideCursor();
}

void ViewerScreen::GoBack(const Chain &chain)
{
    QString previous;
    for (const auto &[box, name] : chain) {
        if (!box || box->isChecked()) {
            previous = name;
            break;
        }
    }
    Form *target = ReviewScreenNamed(previous);
    if (!target)
        return;
    target->Move(Left(), Top());
    target->show();
    hide();
}
