#pragma once

#include "controls/Form.h"
#include "controls/Menus.h"

class DriveList;
class QCheckBox;
class QFrame;
class QGroupBox;
class QLabel;
class QPushButton;

// The step between the main menu and the scan: the operator picks the volume to scan and the kinds of
// file to review. It stays loaded, hidden, during the scan and the review: later screens read its boxes.
class frmScanDisc final : public Form
{
    Q_OBJECT
public:
    frmScanDisc();

    QLabel *picBanner;
    QLabel *lblDriveToScan;
    DriveList *Drive1;
    QPushButton *cmdChooseFolder; // any folder may be scanned as a volume: masters arrive as folder copies
    QPushButton *cmdChooseImage;  // and any disc image file, read without mounting it
    QGroupBox *frmFilesToScan;
    QCheckBox *chkEXEFiles;
    QCheckBox *chkVideoFiles;
    QCheckBox *chkAudioFiles;
    QCheckBox *chkImageFiles;
    QCheckBox *chkTextFiles;
    QCheckBox *chkOtherFiles;
    QCheckBox *chkShowProgressBar;
    QFrame *Line1;
    QFrame *linDark;
    QPushButton *cmdPrevious;
    QPushButton *cmdNext;
    StandardMenus menus;

    // Clears what an earlier scan left behind: the review screens and the summary's checked numbers.
    void PrepareToScan();

protected:
    void Form_Load() override;
    void Form_QueryUnload(int &cancel, int unloadMode) override;

private:
    void Drive1_Change();
    void cmdNext_Click();
    void cmdPrevious_Click();
    void cmdChooseFolder_Click();
    void cmdChooseImage_Click();
};
