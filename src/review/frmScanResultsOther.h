#pragma once

#include "review/ViewerScreen.h"

class QAction;
class QLineEdit;
class QMenu;

// The files of a scan of no recognised kind, with their sizes and extensions, limited by a tail the
// operator types; a file is opened with the desktop's program for it and ticked.
class frmScanResultsOther final : public ViewerScreen
{
    Q_OBJECT
public:
    frmScanResultsOther();

    FlexGrid *gridTextResults;
    QLabel *lblExtensionLimiter;
    QLineEdit *txtExtensionLimiter;
    QPushButton *cmdGo;
    QLabel *lblFileDetails;
    QMenu *mnuContext;
    QAction *mnuContextOpenWithDefaultViewer;
    QAction *mnuContextAddPathToClipboard;

    // The fill, limited by the text of txtExtensionLimiter (the argument is not used).
    void ShowExternalFiles(const QString &filter = QString());

protected:
    void Form_Load() override;
    void Form_Activate() override;
    void SelectRow() override;
    void HeadingClicked() override;
    QLabel *SummaryTotal(frmScanSummary *summary) const override;
    QLabel *SummaryChecked(frmScanSummary *summary) const override;
    QMenu *ContextMenu() const override { return mnuContext; }
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void OpenAndTick();
    void cmdPrevious_Click();

    bool m_nameSortAscending = false;
    bool m_sizeSortAscending = false;
};
