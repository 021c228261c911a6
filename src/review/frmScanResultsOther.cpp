#include "review/frmScanResultsOther.h"

#include "controls/FlexGrid.h"
#include "controls/Forms.h"
#include "controls/KeyCodes.h"
#include "platform/MsgBox.h"
#include "platform/Paths.h"
#include "platform/ShellOpen.h"
#include "platform/VbError.h"
#include "reporting/frmScanSummary.h"
#include "scan/frmScanDisc.h"
#include "shell/MainMod.h"
#include "shell/Progress.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QFileInfo>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QScopedValueRollback>

#include <cmath>

namespace {
constexpr long FormWidth = 11400;
constexpr long FormHeight = 7680;
constexpr int PathColumn = 1;
constexpr int NameColumn = 2;
constexpr int SizeColumn = 3;
constexpr int ExtensionColumn = 4;
constexpr int TickColumn = 5;
constexpr int BlockRows = 500;

QString Str(long n)
{
    return n < 0 ? QString::number(n) : QLatin1Char(' ') + QString::number(n);
}

// Format(value, "0.00").
QString TwoPlaces(double value)
{
    return QString::number(value, 'f', 2);
}
} // namespace

frmScanResultsOther::frmScanResultsOther()
    : ViewerScreen("frmScanResultsOther", QStringLiteral("KEVRO - External File Viewer"),
                   {"gridTextResults", 5610, 1400, QStringLiteral(" unknown files found"), QStringLiteral("External"),
                    false, nullptr, TickColumn, false},
                   FormWidth, FormHeight)
{
    gridTextResults = Grid();
    PlaceTw(lblResultComment, 240, 1020, 5400, 270);
    lblExtensionLimiter = Named(new QLabel(QStringLiteral("Limit By Extension"), m_central), "lblExtensionLimiter");
    lblExtensionLimiter->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    PlaceTw(lblExtensionLimiter, 6480, 1000, 2400, 300);
    txtExtensionLimiter = Named(new QLineEdit(m_central), "txtExtensionLimiter");
    PlaceTw(txtExtensionLimiter, 9000, 975, 1320, 330);
    cmdGo = Named(new QPushButton(QStringLiteral("Go"), m_central), "cmdGo");
    PlaceTw(cmdGo, 10440, 960, 720, 360);
    PlaceTw(gridTextResults, 240, 1380, 10920, 4560);
    lblFileDetails = Named(new QLabel(m_central), "lblFileDetails");
    PlaceTw(lblFileDetails, 240, 6000, 10920, 270);
    PlaceTw(lblCurrentPath, 240, 6300, 10920, 270);

    mnuContext = Named(new QMenu(this), "mnuContext");
    mnuContextOpenWithDefaultViewer =
        Named(mnuContext->addAction(QStringLiteral("&Open With Default Viewer")), "mnuContextOpenWithDefaultViewer");
    mnuContextAddPathToClipboard =
        Named(mnuContext->addAction(QStringLiteral("Copy &Path to Clipboard")), "mnuContextAddPathToClipboard");

    txtExtensionLimiter->installEventFilter(this);
    On(cmdGo, &QPushButton::clicked, this, [this] { ShowExternalFiles(); });
    On(gridTextResults, &FlexGrid::DblClick, this, [this] {
        if (gridTextResults->Rows() > 0 && gridTextResults->MouseRow() > 0)
            OpenAndTick();
    });
    // The heading row (current after the fill and after a heading sort) is no file: nothing to open.
    On(mnuContextOpenWithDefaultViewer, &QAction::triggered, this, [this] {
        if (HasDataRow())
            OpenAndTick();
    });
    On(mnuContextAddPathToClipboard, &QAction::triggered, this, [this] {
        if (!HasDataRow())
            return;
        QApplication::clipboard()->clear();
        QApplication::clipboard()->setText(RowPath());
    });
    On(cmdNext, &QPushButton::clicked, this,
       [this] { GoNext({{nullptr, QStringLiteral("frmScanSummary")}}, false); });
    On(cmdPrevious, &QPushButton::clicked, this, [this] { cmdPrevious_Click(); });
}

void frmScanResultsOther::Form_Load()
{
    ShowExternalFiles();
}

void frmScanResultsOther::Form_Activate()
{
    cmdNext->setFocus();
}

bool frmScanResultsOther::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == txtExtensionLimiter && event->type() == QEvent::KeyPress) {
        const auto *key = static_cast<QKeyEvent *>(event);
        if (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) {
            RunHandler([this] { ShowExternalFiles(); });
            return true;
        }
    }
    return ViewerScreen::eventFilter(watched, event);
}

QLabel *frmScanResultsOther::SummaryTotal(frmScanSummary *summary) const
{
    return summary->lblExternalTotal;
}

QLabel *frmScanResultsOther::SummaryChecked(frmScanSummary *summary) const
{
    return summary->lblExternalChecked;
}

void frmScanResultsOther::ShowExternalFiles(const QString &)
{
    FlexGrid *g = gridTextResults;
    const QScopedValueRollback<bool> busy(m_busy, true);
    try {
        SetCheckedCount(0);
        int count = 0, batch = 0;
        double externalMegabytes = 0;
        QString buffer = QStringLiteral("\tPath\tFile Name\tFile Size\tFile Ext.\r");
        QList<long> rowData{0};
        Occurrences occurrence;
        DoEvents();
        g->setRedraw(false);
        g->setRows(0);
        g->setCols(6);
        g->setColWidth(0, long(picZipIcon->pixmap().width()) * TwipsPerPixel + 80);
        g->setColWidth(PathColumn, 0);
        g->setColWidth(NameColumn, 5610);
        g->setColWidth(SizeColumn, 1400);
        g->setColWidth(ExtensionColumn, 1000);
        g->setColWidth(TickColumn, long(picTick->pixmap().width()) * TwipsPerPixel);
        QApplication::setOverrideCursor(Qt::WaitCursor);
        const QString limit = txtExtensionLimiter->text().toUpper();
        const int last = int(gExternalFiles.size()) - 1;
        for (int i = 0; i <= last; ++i) {
            ResumeNextOn({VbErr::FileNotFound, VbErr::BadFileName}, [&] {
                const QString &path = gExternalFiles[i];
                const int n = occurrence(path);
                // Gone, or no file to size: not listed.
                const StoredFileInfo info = InfoOf(path, n);
                if (path.isEmpty() || !info.exists || info.isDir)
                    return;
                const double kb = info.size / 1024.0;
                externalMegabytes += kb / 1024.0;
                const QString size = QString::number(std::llround(kb)) + QStringLiteral(" KB");
                if (path.toUpper().right(limit.size()) != limit)
                    return;
                buffer += FileIconKey(path, n) + QLatin1Char('\t') + path + QLatin1Char('\t') + FileNameOnly(path) +
                          QLatin1Char('\t') + size + QLatin1Char('\t') + ExtensionOf(path) + QLatin1Char('\r');
                rowData.append(n);
                ++count;
                ++batch;
            });
            if (batch == 125 || batch == 250 || batch == 375)
                DoEvents();
            if (i == last || (batch == BlockRows && i != 0)) {
                if (last > BlockRows - 1)
                    UpdateProgressBox(double(i) / last * 100,
                                      QStringLiteral("Processed") + Str(i) + QStringLiteral(" of") + Str(last) +
                                          QStringLiteral(" external files..."),
                                      this);
                FlushBlock(buffer, rowData, count, batch, ExtensionColumn);
                batch = 0;
            }
        }
        QApplication::restoreOverrideCursor();
        g->setColAlignment(PathColumn, FlexGrid::flexAlignLeftCenter);
        g->setColAlignment(NameColumn, FlexGrid::flexAlignLeftCenter);
        g->setColAlignment(SizeColumn, FlexGrid::flexAlignRightCenter);
        g->setColAlignment(ExtensionColumn, FlexGrid::flexAlignLeftCenter);
        if (g->Rows() > 1)
            g->setFixedRows(1);
        else
            g->setRows(0);
        UnloadProgressBox();
        lblResultComment->setText(QString::number(count) + QStringLiteral(" unknown files found"));
        Forms::get<frmScanSummary>()->lblExternalTotal->setText(QString::number(count));
        if (count > 0) {
            MarkPass();
            RemoveEmptyFirstRow();
        }
        g->setRedraw(true);
        g->setVisible(true);
        const double total = FolderSizeBytes(gScanDrive) / 1024 / 1024;
        lblFileDetails->setText(QStringLiteral("External Files ") + TwoPlaces(externalMegabytes) +
                                QStringLiteral(" MB / ") + QStringLiteral("Total Files (Uncompressed) ") +
                                TwoPlaces(total) + QStringLiteral(" MB"));
    } catch (const VbError &e) {
        if (QApplication::overrideCursor())
            QApplication::restoreOverrideCursor();
        MsgBox(QStringLiteral("Error ") + QString::number(e.number) + QStringLiteral(" occured."), vbCritical);
    }
}

void frmScanResultsOther::SelectRow()
{
    lblCurrentPath->setText(RowPath());
}

void frmScanResultsOther::OpenAndTick()
{
    const QScopedValueRollback<bool> busy(m_busy, true);
    // Ticked even when no program is associated: the operator has tried to open it.
    OpenWithDefaultProgram(RowFile());
    TickRow();
    gridTextResults->setCol(0);
}

void frmScanResultsOther::HeadingClicked()
{
    FlexGrid *g = gridTextResults;
    g->setCol(g->MouseCol() == ExtensionColumn ? ExtensionColumn : g->MouseCol() == SizeColumn ? SizeColumn : NameColumn);
    // The extension and name columns share their direction.
    if (g->Col() == ExtensionColumn || g->Col() == NameColumn) {
        g->setSort(m_nameSortAscending ? FlexGrid::flexSortGenericDescending : FlexGrid::flexSortGenericAscending);
        m_nameSortAscending = !m_nameSortAscending;
    } else {
        g->setSort(m_sizeSortAscending ? FlexGrid::flexSortNumericDescending : FlexGrid::flexSortNumericAscending);
        m_sizeSortAscending = !m_sizeSortAscending;
    }
    g->setCol(0);
    g->setRow(0);
}

void frmScanResultsOther::cmdPrevious_Click()
{
    const auto *scan = Forms::get<frmScanDisc>();
    GoBack({{scan->chkTextFiles, QStringLiteral("frmScanResultsText")},
            {scan->chkImageFiles, QStringLiteral("frmScanResultsImages")},
            {scan->chkVideoFiles, QStringLiteral("frmScanResultsVideo")},
            {scan->chkAudioFiles, QStringLiteral("frmScanResultsAudio")},
            {scan->chkEXEFiles, QStringLiteral("frmScanResultsEXEs")},
            {nullptr, QStringLiteral("frmScanDisc")}});
}
