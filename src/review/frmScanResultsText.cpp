#include "review/frmScanResultsText.h"

#include "controls/FlexGrid.h"
#include "controls/Forms.h"
#include "platform/MsgBox.h"
#include "platform/Paths.h"
#include "platform/ShellOpen.h"
#include "platform/VbError.h"
#include "reporting/frmScanSummary.h"
#include "review/ViewerFiles.h"
#include "scan/frmScanDisc.h"
#include "shell/MainMod.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QFile>
#include <QLabel>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>

namespace {
constexpr long FormWidth = 11400;
constexpr long FormHeight = 7680;
constexpr char EndOfFile = 0x1A;
} // namespace

frmScanResultsText::frmScanResultsText()
    : ViewerScreen("frmScanResultsText", QStringLiteral("KEVRO - Text Viewer"),
                   {"gridTextResults", 2420, 800, QStringLiteral(" text files found"), QStringLiteral("Text"), false,
                    TextScreenListsFile},
                   FormWidth, FormHeight)
{
    gridTextResults = Grid();
    lblResultComment->setText(QStringLiteral("Text files found"));
    PlaceTw(lblResultComment, 240, 1020, 5400, 270);
    PlaceTw(gridTextResults, 240, 1290, 5400, 4860);
    chkSendToIE = Named(new QCheckBox(QStringLiteral("Open With Default Viewer"), m_central), "chkSendToIE");
    PlaceTw(chkSendToIE, 5820, 990, 5340, 300);
    txtSelectedText = Named(new QPlainTextEdit(m_central), "txtSelectedText");
    txtSelectedText->setReadOnly(true);
    txtSelectedText->setLineWrapMode(QPlainTextEdit::NoWrap);
    PlaceTw(txtSelectedText, 5820, 1290, 5340, 4860);
    PlaceTw(lblCurrentPath, 240, 6240, 10920, 270);

    mnuContext = Named(new QMenu(this), "mnuContext");
    mnuContextOpenWithDefaultViewer =
        Named(mnuContext->addAction(QStringLiteral("&Open With Default Viewer")), "mnuContextOpenWithDefaultViewer");
    mnuContextAddPathToClipboard =
        Named(mnuContext->addAction(QStringLiteral("Copy &Path to Clipboard")), "mnuContextAddPathToClipboard");

    On(chkSendToIE, &QCheckBox::clicked, this, [this] { chkSendToIE_Click(); });
    On(gridTextResults, &FlexGrid::DblClick, this, [this] {
        if (gridTextResults->Rows() >= 1 && gridTextResults->MouseRow() >= 1)
            OpenWithDefaultProgram(RowFile());
    });
    On(mnuContextOpenWithDefaultViewer, &QAction::triggered, this, [this] {
        if (HasDataRow())
            OpenWithDefaultProgram(RowFile());
    });
    On(mnuContextAddPathToClipboard, &QAction::triggered, this, [this] {
        if (!HasDataRow())
            return;
        QApplication::clipboard()->clear();
        QApplication::clipboard()->setText(RowPath());
    });
    On(cmdNext, &QPushButton::clicked, this, [this] { cmdNext_Click(); });
    On(cmdPrevious, &QPushButton::clicked, this, [this] { cmdPrevious_Click(); });
}

void frmScanResultsText::Form_Load()
{
    Fill();
}

QLabel *frmScanResultsText::SummaryTotal(frmScanSummary *summary) const
{
    return summary->lblTextTotal;
}

QLabel *frmScanResultsText::SummaryChecked(frmScanSummary *summary) const
{
    return summary->lblTextChecked;
}

bool frmScanResultsText::LoadTextFile(const QString &file)
{
    try {
        if (chkSendToIE->isChecked()) {
            OpenWithDefaultProgram(file);
            return true;
        }
        QFile f(file);
        if (!f.open(QIODevice::ReadOnly))
            RaiseVbError(f.exists() ? VbErr::PermissionDenied : VbErr::FileNotFound);
        if (f.size() > TextBoxLimit)
            RaiseVbError(VbErr::OutOfMemory);
        QByteArray bytes = f.readAll();
        if (bytes.size() != f.size())
            RaiseVbError(VbErr::DeviceIOError);
        // Reading a whole file as text stops at its end-of-file character: the read runs past the end.
        QString text = DecodeTextFile(bytes);
        if (text.contains(QChar(EndOfFile)))
            RaiseVbError(VbErr::InputPastEndOfFile);
        // The text box ends its text at the first NUL.
        const qsizetype nul = text.indexOf(QChar(0));
        if (nul >= 0)
            text.truncate(nul);
        txtSelectedText->setPlainText(text);
        gridTextResults->setFocus();
        return true;
    } catch (const VbError &e) {
        if (e.number == VbErr::OutOfMemory) {
            if (MsgBox(QStringLiteral("Text file is too large to display, would you like to open it in the default "
                                      "viewer?"),
                       vbYesNo | vbExclamation) == vbYes)
                OpenWithDefaultProgram(file);
        } else {
            MsgBox(QStringLiteral("Can not display file as text."), vbExclamation);
        }
        gridTextResults->setFocus();
        return false;
    }
}

void frmScanResultsText::ShowTextFile()
{
    ShowPath();
    if (!LoadTextFile(RowFile()))
        return;
    TickRow();
}

void frmScanResultsText::chkSendToIE_Click()
{
    // Neither road ticks the row; only the selection does.
    if (gridTextResults->Rows() < 1) {
        txtSelectedText->setEnabled(!chkSendToIE->isChecked());
        return;
    }
    const QString file = RowFile();
    if (chkSendToIE->isChecked()) {
        txtSelectedText->clear();
        txtSelectedText->setEnabled(false);
        DoEvents();
        LoadTextFile(file);
    } else {
        txtSelectedText->setEnabled(true);
        LoadTextFile(file);
    }
}

void frmScanResultsText::cmdNext_Click()
{
    const auto *scan = Forms::get<frmScanDisc>();
    GoNext({{scan->chkOtherFiles, QStringLiteral("frmScanResultsOther")}, {nullptr, QStringLiteral("frmScanSummary")}},
           false);
}

void frmScanResultsText::cmdPrevious_Click()
{
    const auto *scan = Forms::get<frmScanDisc>();
    // Video before Audio, against the forward order.
    GoBack({{scan->chkImageFiles, QStringLiteral("frmScanResultsImages")},
            {scan->chkVideoFiles, QStringLiteral("frmScanResultsVideo")},
            {scan->chkAudioFiles, QStringLiteral("frmScanResultsAudio")},
            {scan->chkEXEFiles, QStringLiteral("frmScanResultsEXEs")},
            {nullptr, QStringLiteral("frmScanDisc")}});
}
