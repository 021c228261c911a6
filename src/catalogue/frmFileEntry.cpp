#include "catalogue/frmFileEntry.h"

#include "catalogue/Database.h"
#include "catalogue/RecordButtons.h"
#include "catalogue/frmFileControl.h"
#include "controls/FlexGrid.h"
#include "controls/Forms.h"
#include "controls/KeyCodes.h"
#include "controls/ScreenParts.h"
#include "platform/Events.h"
#include "platform/MsgBox.h"
#include "platform/ShellOpen.h"
#include "platform/VbError.h"
#include "review/frmScanResultsEXEs.h"
#include "shell/MainMod.h"
#include "shell/MainModScreens.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QEvent>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QPushButton>
#include <QTimer>

namespace {
constexpr long FormWidth = 9360;
constexpr long FormHeight = 8040;

QString truth(bool on)
{
    return on ? QStringLiteral("True") : QStringLiteral("False");
}

// Commits the floating box when the component grid takes the focus.
class FocusCommit final : public QObject
{
public:
    FocusCommit(QObject *parent, std::function<void()> commit) : QObject(parent), m_commit(std::move(commit)) {}

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::FocusIn)
            RunHandler(m_commit);
        return QObject::eventFilter(watched, event);
    }

private:
    std::function<void()> m_commit;
};
} // namespace

frmFileEntry::frmFileEntry()
{
    QWidget *central = WorkingScreen(this, "frmFileEntry", QStringLiteral("KEVRO - Application Entry"), FormWidth,
                                     FormHeight, menus, &picBanner);

    lblResultComment = Named(new QLabel(QStringLiteral("Add Record"), central), "lblResultComment");
    lblResultComment->setStyleSheet(QStringLiteral("font-weight: bold;"));
    PlaceTw(lblResultComment, 240, 1020, 6000, 285);
    lblEditMode = Named(new QLabel(central), "lblEditMode");
    lblEditMode->hide();
    lblFromForm = Named(new QLabel(central), "lblFromForm");
    lblFromForm->hide();

    fraFileEditBoxes = Named(new QGroupBox(QStringLiteral("Application Information"), central), "fraFileEditBoxes");
    PlaceTw(fraFileEditBoxes, 240, 1380, 8880, 2700);
    QWidget *f = fraFileEditBoxes;
    lblAppName = Named(new QLabel(QStringLiteral("Application Name:"), f), "lblAppName");
    PlaceTw(lblAppName, 180, 390, 1800, 285);
    txtAppName = Named(new QLineEdit(f), "txtAppName");
    PlaceTw(txtAppName, 2040, 345, 4560, 345);
    lblOwner = Named(new QLabel(QStringLiteral("App Owner:"), f), "lblOwner");
    PlaceTw(lblOwner, 180, 825, 1800, 285);
    drpOwnerName = Named(new QComboBox(f), "drpOwnerName");
    PlaceTw(drpOwnerName, 2040, 780, 4560, 345);
    drpOwnerID = Named(new QComboBox(f), "drpOwnerID");
    drpOwnerID->setEditable(true);
    drpOwnerID->hide();
    lblWebLicense = Named(new QLabel(QStringLiteral("Web License:"), f), "lblWebLicense");
    PlaceTw(lblWebLicense, 180, 1260, 1800, 285);
    txtWebLicense = Named(new QLineEdit(f), "txtWebLicense");
    PlaceTw(txtWebLicense, 2040, 1215, 6600, 345);
    chkRequiresLicense = Named(new QCheckBox(f), "chkRequiresLicense");
    // Room for every caption to read whole in a wide desktop font: the clipboard's box on a row of its own.
    PlaceTw(chkRequiresLicense, 2040, 1740, 255, 285);
    lblRequiresLicense = Named(new QLabel(QStringLiteral("Requires License"), f), "lblRequiresLicense");
    PlaceTw(lblRequiresLicense, 2340, 1740, 2100, 285);
    chkPerProductLicense = Named(new QCheckBox(QStringLiteral("License Per Product"), f), "chkPerProductLicense");
    PlaceTw(chkPerProductLicense, 4560, 1725, 2940, 315);
    lblCheckClipboard = Named(new QCheckBox(QStringLiteral("Monitor Clipboard for URLs"), f), "lblCheckClipboard");
    PlaceTw(lblCheckClipboard, 2040, 2160, 3900, 315);
    tmrClipboardCheck = Named(new QTimer(this), "tmrClipboardCheck");
    tmrClipboardCheck->setInterval(100);

    fraAppComponents = Named(new QGroupBox(QStringLiteral("Application Components"), central), "fraAppComponents");
    PlaceTw(fraAppComponents, 240, 4200, 8880, 2700);
    gridAppComponents = Named(new FlexGrid(fraAppComponents), "gridAppComponents");
    PlaceTw(gridAppComponents, 180, 330, 7020, 2220);
    txtEdit = Named(new QLineEdit(fraAppComponents), "txtEdit");
    txtEdit->hide();
    cmdAddAppCompRecord =
        RecordButton(fraAppComponents, "cmdAddAppCompRecord", "lblAdd", QStringLiteral("Add"), 7740, 330, &lblAdd);
    cmdDelete =
        RecordButton(fraAppComponents, "cmdDelete", "lblDelete", QStringLiteral("Delete"), 7740, 1440, &lblDelete);
    m_faces = new HoverPictures(central);
    RecordFaces(m_faces, central, cmdAddAppCompRecord, "picAddNormal", "picAddHover", QStringLiteral("add"),
                &picAddNormal, &picAddHover);
    RecordFaces(m_faces, central, cmdDelete, "picDeleteNormal", "picDeleteHover", QStringLiteral("delete"),
                &picDeleteNormal, &picDeleteHover);

    Line1 = RuleLine(central, "Line1", "#c9d3de", 240, 7080, 8880);
    linDark = RuleLine(central, "linDark", "#7f8c99", 240, 7110, 8880);
    cmdBack = Named(new QPushButton(QStringLiteral("< &Back"), central), "cmdBack");
    PlaceTw(cmdBack, 6480, 7350, 1260, 450);
    cmdSave = Named(new QPushButton(QStringLiteral("&Save"), central), "cmdSave");
    cmdSave->setDefault(true);
    cmdSave->setEnabled(false);
    PlaceTw(cmdSave, 7860, 7350, 1260, 450);

    // The components are edited in the floating box; neither a row's state nor Save changes with it.
    // Only a component's cell opens it: never the heading, nor a grid with no component.
    On(gridAppComponents, &FlexGrid::DblClick, this, [this] {
        if (gridAppComponents->CurrentIsDataRow())
            FlexGridEditStart(gridAppComponents, txtEdit, vbKeySpace);
    });
    On(gridAppComponents, &FlexGrid::KeyPress, this, [this](int keyAscii) {
        if (gridAppComponents->CurrentIsDataRow())
            FlexGridEditStart(gridAppComponents, txtEdit, keyAscii);
    });
    On(gridAppComponents, &FlexGrid::LeaveCell, this, [this] { commitCellEdit(); });
    gridAppComponents->installEventFilter(new FocusCommit(this, [this] { commitCellEdit(); }));
    OnKeyDown(txtEdit,
              [this](int keyCode, int shift) { FlexGridEditKeyCode(gridAppComponents, txtEdit, keyCode, shift); });

    On(cmdAddAppCompRecord, &QPushButton::clicked, this, [this] {
        FlexGrid *g = gridAppComponents;
        g->AddItem(QStringLiteral("\t\t\tInsert"));
        // The first component after the last was deleted: the current row leaves the heading.
        if (g->Row() < g->FixedRows())
            g->setRow(g->FixedRows());
        cmdDelete->setEnabled(true);
    });
    On(cmdDelete, &QPushButton::clicked, this, [this] { cmdDelete_Click(); });
    // Also when the box is set by code, as when an application is opened for editing.
    On(chkPerProductLicense, &QCheckBox::toggled, this, [this] { chkPerProductLicense_Click(); });
    On(lblCheckClipboard, &QCheckBox::clicked, this, [this](bool on) {
        if (on) {
            QApplication::clipboard()->clear();
            tmrClipboardCheck->start();
        } else {
            tmrClipboardCheck->stop();
        }
    });
    On(tmrClipboardCheck, &QTimer::timeout, this, [this] { CheckClipboardForUrl(); });
    for (QLineEdit *box : {txtAppName, txtWebLicense})
        On(box, &QLineEdit::textChanged, this, [this] { cmdSave->setEnabled(true); });
    On(drpOwnerName, &QComboBox::currentIndexChanged, this, [this] { cmdSave->setEnabled(true); });
    On(chkRequiresLicense, &QCheckBox::stateChanged, this, [this] { cmdSave->setEnabled(true); });
    On(cmdSave, &QPushButton::clicked, this, [this] { cmdSave_Click(); });
    On(cmdBack, &QPushButton::clicked, this, [this] { ReturnToCaller(); });
    On(menus.mnuFileExit, &QAction::triggered, this, [] { EndProcess(0); });
    ConnectOptionsAndHelp(this, menus);
}

void frmFileEntry::Form_Load()
{
    m_faces->ShowNormalPictures();
    PopulateOwnerDropdown();
    SetUpComponentGrid();
    gridAppComponents->setTextMatrix(1, 3, QStringLiteral("Insert"));
    cmdSave->setEnabled(false);
}

void frmFileEntry::Form_QueryUnload(int &, int unloadMode)
{
    if (unloadMode == vbFormControlMenu)
        EndProcess(0);
}

void frmFileEntry::chkPerProductLicense_Click()
{
    const bool on = chkPerProductLicense->isChecked();
    if (on)
        chkRequiresLicense->setChecked(true);
    chkRequiresLicense->setEnabled(!on);
    lblRequiresLicense->setEnabled(!on);
}

void frmFileEntry::SetUpComponentGrid()
{
    FlexGrid *g = gridAppComponents;
    g->Clear();
    g->setRows(2);
    g->setCols(4);
    g->setFixedRows(1);
    g->setColWidth(0, 0);
    g->setColWidth(1, 2280);
    g->setColWidth(2, 4380);
    g->setColWidth(3, 0);
    g->setTextMatrix(0, 1, QStringLiteral("File Name"));
    g->setTextMatrix(0, 2, QStringLiteral("File Description"));
    g->setTextMatrix(0, 3, QStringLiteral("Flag noting whether Update or Insert required"));
}

void frmFileEntry::PopulateOwnerDropdown()
{
    OpenDatabase();
    Recordset rs;
    rs.Open(QStringLiteral("SELECT OWNER_ID, OWNER_NAME ") + QStringLiteral(" FROM KEVRO_OWNERS") +
                QStringLiteral(" ORDER BY OWNER_NAME"),
            gConnection.get());
    while (!rs.Eof()) {
        drpOwnerID->addItem(rs.Fields(QStringLiteral("OWNER_ID")).toString());
        drpOwnerName->addItem(NullToEmpty(rs.Fields(QStringLiteral("OWNER_NAME"))).toString());
        rs.MoveNext();
    }
    drpOwnerName->setCurrentIndex(-1);
    drpOwnerID->setCurrentIndex(-1);
    CloseDatabase();
}

void frmFileEntry::commitCellEdit()
{
    if (!txtEdit->isVisible())
        return;
    gridAppComponents->setText(txtEdit->text());
    txtEdit->hide();
}

bool frmFileEntry::GridIsFullyPopulated() const
{
    for (int r = 1; r < gridAppComponents->Rows(); ++r)
        if (gridAppComponents->TextMatrix(r, 1).isEmpty() || gridAppComponents->TextMatrix(r, 2).isEmpty())
            return false;
    return true;
}

void frmFileEntry::CheckClipboardForUrl()
{
    DoEvents();
    const QString text = QApplication::clipboard()->text();
    if (text.left(7).toUpper() == QLatin1String("HTTP://") || text.left(4).toUpper() == QLatin1String("WWW."))
        txtWebLicense->setText(text);
    // Whatever it held, as long as the box is ticked.
    QApplication::clipboard()->clear();
}

void frmFileEntry::cmdDelete_Click()
{
    FlexGrid *g = gridAppComponents;
    if (!gridAppComponents->CurrentIsDataRow())
        return;
    if (MsgBox(QStringLiteral("Are you sure you want to delete this component?"), vbYesNo | vbExclamation) != vbYes)
        return;
    // The component goes at once, whatever happens to the rest of the screen.
    const QString key = g->TextMatrix(g->Row(), 0);
    if (!key.isEmpty()) {
        OpenDatabase();
        gConnection->Execute(QStringLiteral("Delete EXE_ID ") + QStringLiteral("From KEVRO_APP_COMPONENTS ") +
                             QStringLiteral("Where EXE_ID=") + key);
        CloseDatabase();
    }
    txtEdit->hide();
    if (g->Rows() >= 3) {
        g->RemoveItem(g->Row());
    } else {
        // The heading stays, so that a component added now is a row below it and saved with the rest.
        g->setRows(g->FixedRows());
        cmdDelete->setEnabled(false);
    }
}

QString frmFileEntry::componentInsert(const QString &appKey, int row) const
{
    return QStringLiteral("Insert Into KEVRO_APP_COMPONENTS( ") + QStringLiteral("EXE_APP, ") +
           QStringLiteral("EXE_NAME, ") + QStringLiteral("EXE_DESCRIPTION) ") + QStringLiteral("Values(") + appKey +
           QStringLiteral(", ") + QStringLiteral("'") + RemoveApostrophes(gridAppComponents->TextMatrix(row, 1)) +
           QStringLiteral("', ") + QStringLiteral("'") + RemoveApostrophes(gridAppComponents->TextMatrix(row, 2)) +
           QStringLiteral("')");
}

void frmFileEntry::cmdSave_Click()
{
    try {
        saveApplication();
    } catch (const VbError &e) {
        // What was sent before the failure stays: an application can be left without its components.
        MsgBox(QStringLiteral("Error ") + QString::number(e.number) +
                   QStringLiteral(" occurred.  Can not save record."),
               vbCritical);
        cmdSave->setEnabled(true);
    }
}

void frmFileEntry::saveApplication()
{
    commitCellEdit();
    if (txtAppName->text().isEmpty()) {
        MsgBox(QStringLiteral("You must enter a filename"), vbExclamation);
        return;
    }
    if (drpOwnerName->currentText().isEmpty()) {
        MsgBox(QStringLiteral("You must select an application owner.  Create application owners on the previous "
                              "screen, if none are available."),
               vbExclamation);
        return;
    }
    if (!GridIsFullyPopulated()) {
        MsgBox(QStringLiteral("All application component fields must be completed before saving."), vbExclamation);
        return;
    }
    OpenDatabase();
    const QString name = RemoveApostrophes(txtAppName->text());
    const QString owner = drpOwnerID->itemText(drpOwnerName->currentIndex());
    const QString web = RemoveApostrophes(txtWebLicense->text());
    const bool adding = lblEditMode->text() == QLatin1String("Add");
    QString key;
    if (adding && m_addedKey.isEmpty()) {
        gConnection->Execute(
            QStringLiteral("Insert Into KEVRO_APPS( ") + QStringLiteral("APP_NAME, ") + QStringLiteral("APP_OWNER, ") +
            QStringLiteral("APP_WEB_LICENSE, ") + QStringLiteral("APP_DATE_EDITED, ") +
            QStringLiteral("APP_LICENSE_PER_MEDIA, ") + QStringLiteral("APP_REQUIRES_LICENSE) ") +
            QStringLiteral("Values(") + QStringLiteral("'") + name + QStringLiteral("', ") + QStringLiteral("'") +
            owner + QStringLiteral("', ") + QStringLiteral("'") + web + QStringLiteral("', ") + QStringLiteral("'") +
            NowText() + QStringLiteral("', ") + truth(chkPerProductLicense->isChecked()) + QStringLiteral(", ") +
            truth(chkRequiresLicense->isChecked()) + QStringLiteral(")"));
        // With two applications of one name the first found gets the components.
        Recordset rs;
        rs.Open(QStringLiteral("Select APP_ID ") + QStringLiteral("From KEVRO_APPS ") +
                    QStringLiteral("Where APP_NAME = '") + name + QStringLiteral("'"),
                gConnection.get(), 3, 3, -1);
        if (rs.Bof() && rs.Eof()) {
            MsgBox(QStringLiteral("Could not save application components.  App header record does not exist."),
                   vbCritical);
        } else {
            key = rs.Fields(QStringLiteral("APP_ID")).toString();
            m_addedKey = key;
        }
    } else {
        // Edited, or added by a save that failed further on: the application's row is there to update.
        if (adding) {
            key = m_addedKey;
        } else {
            auto *list = Forms::get<frmFileControl>();
            key = list->gridFiles->TextMatrix(list->gridFiles->Row(), 0);
        }
        gConnection->Execute(QStringLiteral("Update KEVRO_APPS Set ") + QStringLiteral("APP_NAME = '") + name +
                             QStringLiteral("', ") + QStringLiteral("APP_OWNER = '") + owner + QStringLiteral("', ") +
                             QStringLiteral("APP_WEB_LICENSE = '") + web + QStringLiteral("', ") +
                             QStringLiteral("APP_REQUIRES_LICENSE =") + truth(chkRequiresLicense->isChecked()) +
                             QStringLiteral(", APP_LICENSE_PER_MEDIA =") + truth(chkPerProductLicense->isChecked()) +
                             QStringLiteral(" Where APP_ID =") + key);
    }
    if (!key.isEmpty())
        saveComponents(key);
    if (adding) {
        MsgBox(QStringLiteral("Record added to KEVRO database"), vbInformation);
        CloseDatabase();
        txtAppName->setFocus();
    } else {
        MsgBox(QStringLiteral("Record updated in KEVRO database"), vbInformation);
        CloseDatabase();
    }
    ReturnToCaller();
}

void frmFileEntry::saveComponents(const QString &appKey)
{
    // Every component is written again, changed or not.
    FlexGrid *g = gridAppComponents;
    for (int row = 1; row < g->Rows(); ++row) {
        if (g->TextMatrix(row, 3) == QLatin1String("Insert")) {
            // Written: should a later row fail, the next save updates this one instead of adding it again.
            const QVariant id = gConnection->ExecuteInsert(componentInsert(appKey, row));
            g->setTextMatrix(row, 0, id.toString());
            g->setTextMatrix(row, 3, QStringLiteral("Update"));
        } else if (!g->TextMatrix(row, 0).isEmpty()) { // empty: written, and the driver gave no key
            gConnection->Execute(QStringLiteral("Update KEVRO_APP_COMPONENTS Set ") + QStringLiteral("EXE_NAME = '") +
                                 RemoveApostrophes(g->TextMatrix(row, 1)) + QStringLiteral("', ") +
                                 QStringLiteral("EXE_DESCRIPTION = '") + RemoveApostrophes(g->TextMatrix(row, 2)) +
                                 QStringLiteral("' ") + QStringLiteral("Where EXE_ID = ") + g->TextMatrix(row, 0));
        }
    }
}

void frmFileEntry::ReturnToCaller()
{
    // Nothing unsaved is kept, and nothing is asked.
    if (lblFromForm->text() == QLatin1String("ScanResultsEXEs")) {
        auto *viewer = Forms::get<frmScanResultsEXEs>();
        viewer->Move(Left(), Top());
        viewer->show();
        Unload();
        return;
    }
    auto *list = Forms::get<frmFileControl>();
    list->InitializeForm();
    list->Move(Left(), Top());
    list->ShowFilesInDB();
    list->show();
    Unload();
}
