#pragma once

#include "controls/Form.h"
#include "controls/Menus.h"

class FlexGrid;
class HoverPictures;
class QAction;
class QFrame;
class QLabel;
class QMenu;
class QPushButton;

// The licences of the client chosen on the main menu: one row per licensed application.
class frmLicenseControl final : public Form
{
    Q_OBJECT
public:
    frmLicenseControl();

    QLabel *picBanner;
    QLabel *lblResultComment;
    FlexGrid *gridLicenses;
    QPushButton *cmdAddRecord, *cmdEditRecord, *cmdDeleteRecord;
    QLabel *lblAddRecord, *lblEditRecord, *lblDeleteRecord;
    QLabel *picAddNormal, *picAddHover, *picEditNormal, *picEditHover, *picDeleteNormal, *picDeleteHover;
    QFrame *Line1, *linDark;
    QPushButton *cmdPrevious;
    StandardMenus menus;
    QMenu *mnuLicenseGridContext;
    QAction *mnuLicenseGridContextAdd;
    QAction *mnuLicenseGridContextDelete;

    void InitializeForm();
    void DisplayLicenseDetails();
    void ConfirmDelete();

protected:
    void Form_Load() override;
    void Form_QueryUnload(int &cancel, int unloadMode) override;

private:
    void DeleteSelectedLicense();
    void LoadLicenseForEdit();
    void cmdAddRecord_Click();
    void editRecord();
    void cmdPrevious_Click();

    HoverPictures *m_faces;
};
