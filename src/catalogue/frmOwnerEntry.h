#pragma once

#include "controls/Form.h"
#include "controls/Menus.h"

class FlexGrid;
class HoverPictures;
class InPlaceEditing;
class QFrame;
class QLabel;
class QLineEdit;
class QPushButton;

// The owners of the catalogue's applications, edited in place on the grid and written by one save.
class frmOwnerEntry final : public Form
{
    Q_OBJECT
public:
    frmOwnerEntry();

    QLabel *picBanner;
    QLabel *lblResultComment;
    QLabel *lblEditMode;
    FlexGrid *gridOwners;
    QLineEdit *txtEdit;
    QPushButton *cmdAddRecord, *cmdDeleteRecord, *cmdSaveRecords;
    QLabel *lblAddRecord, *lblDeleteRecord, *lblSaveRecord;
    QLabel *picSaveNormal, *picSaveHover, *picAddNormal, *picAddHover, *picDeleteNormal, *picDeleteHover;
    QFrame *Line1, *linDark;
    QPushButton *cmdBack;
    StandardMenus menus;

    void ShowDBOwners();

protected:
    void Form_Load() override;
    void Form_QueryUnload(int &cancel, int unloadMode) override;

private:
    void CommitCellEdit();
    void StartCellEdit();
    void ReturnToApplications();
    void cmdSaveRecords_Click();

    InPlaceEditing *m_editing;
    HoverPictures *m_faces;
};
