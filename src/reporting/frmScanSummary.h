#pragma once

#include "controls/Form.h"
#include "controls/Menus.h"
#include "reporting/JobResults.h"

class QFrame;
class QGroupBox;
class QLabel;
class QPushButton;
class QRadioButton;

// The last screen of a job: how many files of each kind were found and checked, the report, and the
// way home. It computes nothing: the review screens write its numbers, and the report reads them back,
// so it is also the store of the job's counts.
class frmScanSummary final : public Form
{
    Q_OBJECT
public:
    frmScanSummary();

    QLabel *picBanner;
    QGroupBox *frmSummary;
    QLabel *lblFound;
    QLabel *lblChecked;
    QLabel *lblUnLicensedEXEs;
    QLabel *lblUnlicensedTotal;
    QLabel *lblDash1;
    QLabel *lblLicensedEXEs;
    QLabel *lblLicensedTotal;
    QLabel *lblDash2;
    QLabel *lblUnknownEXEs;
    QLabel *lblUnknownTotal;
    QLabel *lblDash3;
    QLabel *lblVideoResults;
    QLabel *lblVideoTotal;
    QLabel *lblVideoChecked;
    QLabel *lblAudioFiles;
    QLabel *lblAudioTotal;
    QLabel *lblAudioChecked;
    QLabel *lblImageFiles;
    QLabel *lblImagesTotal;
    QLabel *lblImagesChecked;
    QLabel *lblTextfiles;
    QLabel *lblTextTotal;
    QLabel *lblTextChecked;
    QLabel *lblExternal;
    QLabel *lblExternalTotal;
    QLabel *lblExternalChecked;
    QGroupBox *frmDetailedReport;
    QRadioButton *optHTML;
    QRadioButton *optText;
    QPushButton *cmdPrintReport;
    QFrame *Line1;
    QFrame *linDark;
    QPushButton *cmdPrevious;
    QPushButton *cmdFinish;
    StandardMenus menus;

    // The four viewers' checked numbers back to "0"; the external one keeps its number on purpose.
    void ResetCheckedValues();
    // True once the Full Report button was clicked since the screen was loaded, whatever came of it.
    bool ReportCreated() const { return m_reportCreated; }
    // What the report reads of the job: the application viewer's lists and this screen's numbers.
    JobResults ResultsShown();

protected:
    void Form_Load() override;
    void Form_QueryUnload(int &cancel, int unloadMode) override;

private:
    void cmdPrintReport_Click();
    void cmdFinish_Click();
    void cmdPrevious_Click();
    void ReturnToMainMenu();

    bool m_reportCreated = false;
};
