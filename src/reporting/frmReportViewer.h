#pragma once

#include "controls/Form.h"
#include "controls/Menus.h"

class FlexGrid;
class QAction;
class QCheckBox;
class QFrame;
class QLabel;
class QLineEdit;
class QMenu;
class QPushButton;

// The saved reports: the ".txt" and ".html" files of the reports folder, listed anew each time the
// screen becomes the active window, and opened on a double click.
class frmReportViewer final : public Form
{
    Q_OBJECT
public:
    frmReportViewer();

    QLabel *picBanner;
    FlexGrid *gridReports;
    QLabel *Label1;
    QLineEdit *txtSearch;
    QPushButton *cmdPerformSearch;
    QCheckBox *chkShowAllFiles;
    QFrame *Line1;
    QFrame *linDark;
    QPushButton *cmdPrevious;
    StandardMenus menus;
    QMenu *mnuFileGridContext;
    QAction *mnuFileGridContextEdit;
    QAction *mnuFileGridContextDelete;

    // Lists the reports of the reports folder, sorted by name.
    void FillReportList();

protected:
    void Form_Activate() override;
    void Form_QueryUnload(int &cancel, int unloadMode) override;

private:
    void gridReports_DblClick();
    void cmdPrevious_Click();
};
