#pragma once

#include "controls/Form.h"
#include "controls/Menus.h"

class CAutoComplete;
class HoverPictures;
class QComboBox;
class QFrame;
class QLabel;
class QLineEdit;
class QToolButton;

// The hub: the operator picks the client and types the catalogue number for a job, then goes on to a
// scan, the reports or the catalogue's screens. Every move away slides the menu out and unloads it.
class frmMainMenu final : public Form
{
    Q_OBJECT
public:
    frmMainMenu();

    QLabel *lblClient;
    QComboBox *cmbClientCode;
    QLabel *lblClientName;
    QComboBox *cmbClientName;
    QLineEdit *txtClientSearch;
    QLabel *lblCatNo;
    QLineEdit *txtCatNo;
    QToolButton *cmdScanDisc;
    QLabel *lblScanDisc;
    QToolButton *cmdReports;
    QLabel *lblReports;
    QToolButton *cmdClients;
    QLabel *lblClientControl;
    QToolButton *cmdFileControl;
    QLabel *lblFileControl;
    QToolButton *cmdLicenseControl;
    QLabel *lblLicenseControl;
    QLabel *picScanEngineTitle;
    QLabel *picDatabaseTitle;
    QLabel *picBanner;
    QLabel *picLogo;
    QFrame *linDivider;
    QFrame *shpSlip;
    QLabel *picScanDiscNormal, *picScanDiscHover, *picReportsNormal, *picReportsHover, *picClientsNormal,
        *picClientsHover, *picApplicationsNormal, *picApplicationsHover, *picLicensesNormal, *picLicencesHover;
    StandardMenus menus;

    CAutoComplete *AutoComplete() const { return m_autoComplete; }
    // Goes to the report viewer, placed where the main menu stands.
    void OpenReportsForm();
    // The transition: the buttons slide out to the left, then the logo to the right.
    void SlideMenuOut(int steps);

protected:
    void Form_Load() override;
    void Form_QueryUnload(int &cancel, int unloadMode) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    HoverPictures *m_faces = nullptr;
    void JobUpdate();
    void cmbClientCode_Click(int index);
    void cmbClientName_Click(int index);
    void cmbClientName_Change();
    void txtClientSearch_Change();
    bool ClientChosen();
    void ScanDisc();
    void ClientControl();
    void FileControl();
    void LicenseControl();
    void ShowNormalPictures();
    QList<QToolButton *> buttons() const;
    QList<QLabel *> buttonLabels() const;

    CAutoComplete *m_autoComplete = nullptr;
    bool m_settingName = false; // the screen itself is putting a list entry into cmbClientName
};
