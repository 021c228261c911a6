#pragma once

#include "controls/Form.h"
#include "controls/Menus.h"

class FlexGrid;
class HoverPictures;
class QAction;
class QCheckBox;
class QFrame;
class QLabel;
class QLineEdit;
class QMenu;
class QPushButton;

// The catalogue's applications: the list, and the ways to add, edit and delete one and to keep the
// owners.
class frmFileControl final : public Form
{
    Q_OBJECT
public:
    frmFileControl();

    QLabel *picBanner;
    QLabel *Label1;
    QLineEdit *txtSearch;
    QPushButton *cmdPerformSearch;
    QCheckBox *chkShowAllFiles;
    FlexGrid *gridFiles;
    QPushButton *cmdAddRecord, *cmdEditRecord, *cmdDeleteRecord, *cmdOwners;
    QLabel *lblAddRecord, *lblEditRecord, *lblDeleteRecord, *lblOwners;
    QLabel *picAddNormal, *picAddHover, *picEditNormal, *picEditHover, *picDeleteNormal, *picDeleteHover,
        *picOwnersNormal, *picOwnersHover;
    QFrame *Line1, *linDark;
    QPushButton *cmdPrevious;
    StandardMenus menus;
    QMenu *mnuFileGridContext;
    QAction *mnuFileGridContextEdit;
    QAction *mnuFileGridContextDelete;

    void InitializeForm();
    void ShowFilesInDB();
    void DeleteSelectedRecord();
    void EditSelectedRecord();

protected:
    void Form_Load() override;
    void Form_QueryUnload(int &cancel, int unloadMode) override;

private:
    void cmdAddRecord_Click();
    void cmdOwners_Click();
    void cmdPrevious_Click();

    HoverPictures *m_faces;
};
