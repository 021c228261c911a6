#pragma once

#include "review/ViewerScreen.h"

class QAction;
class QCheckBox;
class QMenu;
class QPlainTextEdit;

// The text files of a scan: the selected one shown in a text box, or handed to the desktop's viewer.
class frmScanResultsText final : public ViewerScreen
{
    Q_OBJECT
public:
    frmScanResultsText();

    FlexGrid *gridTextResults;
    QPlainTextEdit *txtSelectedText;
    QCheckBox *chkSendToIE;
    QMenu *mnuContext;
    QAction *mnuContextOpenWithDefaultViewer;
    QAction *mnuContextAddPathToClipboard;

    // The largest file the text box takes: a text of more would keep the screen busy for seconds and
    // take hundreds of megabytes laid out, so it counts as too large for the box.
    static constexpr qint64 TextBoxLimit = 32 * 1024 * 1024;

    // True when the file was shown or handed to the desktop's viewer.
    bool LoadTextFile(const QString &file); // a real path
    // Shows the file of the current row and ticks it.
    void ShowTextFile();

protected:
    void Form_Load() override;
    void SelectRow() override { ShowTextFile(); }
    QLabel *SummaryTotal(frmScanSummary *summary) const override;
    QLabel *SummaryChecked(frmScanSummary *summary) const override;
    QMenu *ContextMenu() const override { return mnuContext; }

private:
    void chkSendToIE_Click();
    void cmdNext_Click();
    void cmdPrevious_Click();
};
