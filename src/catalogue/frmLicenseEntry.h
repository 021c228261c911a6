#pragma once

#include "controls/Form.h"
#include "controls/Menus.h"

class QCheckBox;
class QComboBox;
class QFrame;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;

// One licence of the chosen client: the application, and its period or none for good.
class frmLicenseEntry final : public Form
{
    Q_OBJECT
public:
    frmLicenseEntry();

    QLabel *picBanner;
    QLabel *lblResultComment, *lblEditMode;
    QGroupBox *frmFileEditBoxes;
    QLabel *lblLicenseFile, *lblStartDate, *lblEndDate, *lblRequiresLicense;
    QComboBox *drpLicenseFile;
    QLineEdit *txtStartDate, *txtEndDate;
    QCheckBox *chkPerminantLicense;
    QFrame *Line1, *linDark;
    QPushButton *cmdBack, *cmdSave;
    StandardMenus menus;

    // Adds the applications that take a licence per client; true when there were any.
    bool PopulateFileList();
    // Chooses a licence's application in the list; one the list does not hold (not filled, or no longer
    // taking a licence per client) is added for this licence alone.
    void ShowApplication(const QString &name);
    void ReturnToLicenseControl();
    // The look of the date boxes for a permanent licence or one with a period.
    void chkPerminantLicense_Click();

protected:
    void Form_QueryUnload(int &cancel, int unloadMode) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void cmdSave_Click();
};
