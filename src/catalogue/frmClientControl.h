#pragma once

#include "controls/CommonDialog.h"
#include "controls/Form.h"
#include "controls/Menus.h"

class FlexGrid;
class HoverPictures;
class InPlaceEditing;
class QAction;
class QCheckBox;
class QFrame;
class QGroupBox;
class QLabel;
class QLineEdit;
class QMenu;
class QPushButton;
class QRadioButton;

// The clients for whom discs are checked: their names edited in the grid and written by one save, and a
// list of names imported from a text file, replacing or adding to the clients.
class frmClientControl final : public Form
{
    Q_OBJECT
public:
    frmClientControl();

    QLabel *picBanner;
    FlexGrid *gridClients;
    QLineEdit *txtEdit;
    QPushButton *cmdSaveRecords, *cmdAddRecord, *cmdDeleteRecord;
    QLabel *lblSaveRecord, *lblAddRecord, *lblDeleteRecord;
    QGroupBox *fraImportOptions;
    QLabel *lblFilePath;
    QLineEdit *txtFilePath;
    QPushButton *cmdBrowse;
    QRadioButton *optReplace, *optAppend;
    QPushButton *cmdImport;
    QFrame *Line1, *linDark;
    QPushButton *cmdPrevious;
    QLabel *picSaveNormal, *picSaveHover, *picAddNormal, *picAddHover, *picDeleteNormal, *picDeleteHover;
    QLabel *Label1;
    QLineEdit *txtSearch;
    QPushButton *cmdPerformSearch;
    QCheckBox *chkShowAllFiles;
    CommonDialog dlgTextFile;
    StandardMenus menus;
    QMenu *mnuFileGridContext;

    // Writes every row in state "Insert" or "Update".
    void SaveRecords();
    // Fills the grid from the database.
    void ShowDBClients();

protected:
    void Form_Load() override;
    void Form_QueryUnload(int &cancel, int unloadMode) override;

private:
    void CommitCellEdit();
    void BeginCellEdit();
    void AddClientRow();
    void DeleteClientRow();
    void ImportClientList();
    void cmdBrowse_Click();
    void cmdPrevious_Click();

    InPlaceEditing *m_editing;
    HoverPictures *m_faces;
};
