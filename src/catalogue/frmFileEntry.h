#pragma once

#include "controls/Form.h"
#include "controls/Menus.h"

class FlexGrid;
class HoverPictures;
class QCheckBox;
class QComboBox;
class QFrame;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTimer;

// One application of the catalogue with the file names of its components: added new (from the list or
// from the application viewer's unknown programs) or edited.
class frmFileEntry final : public Form
{
    Q_OBJECT
public:
    frmFileEntry();

    QLabel *picBanner;
    QLabel *lblResultComment, *lblEditMode, *lblFromForm;
    QGroupBox *fraFileEditBoxes;
    QLabel *lblAppName, *lblOwner, *lblWebLicense, *lblRequiresLicense;
    QLineEdit *txtAppName, *txtWebLicense;
    QComboBox *drpOwnerName, *drpOwnerID;
    QCheckBox *chkRequiresLicense, *chkPerProductLicense, *lblCheckClipboard;
    QTimer *tmrClipboardCheck;
    QGroupBox *fraAppComponents;
    FlexGrid *gridAppComponents;
    QLineEdit *txtEdit;
    QPushButton *cmdAddAppCompRecord, *cmdDelete;
    QLabel *lblAdd, *lblDelete;
    QLabel *picAddNormal, *picAddHover, *picDeleteNormal, *picDeleteHover;
    QFrame *Line1, *linDark;
    QPushButton *cmdBack, *cmdSave;
    StandardMenus menus;

    // Every component row has a file name and a description.
    bool GridIsFullyPopulated() const;
    void PopulateOwnerDropdown();
    void ReturnToCaller();
    void CheckClipboardForUrl();
    // A licence per product always requires one: the box is ticked and locked while this one is.
    void chkPerProductLicense_Click();
    // The component grid empty: its title row and one blank row.
    void SetUpComponentGrid();

protected:
    void Form_Load() override;
    void Form_QueryUnload(int &cancel, int unloadMode) override;

private:
    void commitCellEdit();
    void cmdDelete_Click();
    void cmdSave_Click();
    void saveApplication();
    void saveComponents(const QString &appKey);
    QString componentInsert(const QString &appKey, int row) const;

    HoverPictures *m_faces;
    // The key of the application an earlier save of this screen added: a save that failed after the
    // application's row was written leaves it to be updated, not added a second time.
    QString m_addedKey;
};
