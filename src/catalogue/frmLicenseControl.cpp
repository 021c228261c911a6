#include "catalogue/frmLicenseControl.h"

#include "catalogue/Database.h"
#include "catalogue/RecordButtons.h"
#include "catalogue/frmLicenseEntry.h"
#include "controls/FlexGrid.h"
#include "controls/Forms.h"
#include "controls/KeyCodes.h"
#include "controls/ScreenParts.h"
#include "platform/MsgBox.h"
#include "platform/ShellOpen.h"
#include "platform/VbError.h"
#include "shell/MainMod.h"
#include "shell/MainModScreens.h"
#include "shell/frmMainMenu.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QCursor>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>

namespace {
constexpr long FormWidth = 9360;
constexpr long FormHeight = 6600;
constexpr long NameColumnWidth = 7500;
} // namespace

frmLicenseControl::frmLicenseControl()
{
    QWidget *central = WorkingScreen(this, "frmLicenseControl", QStringLiteral("KEVRO - License Control"), FormWidth,
                                     FormHeight, menus, &picBanner);

    lblResultComment = Named(new QLabel(QStringLiteral("Client Licenses"), central), "lblResultComment");
    lblResultComment->setStyleSheet(QStringLiteral("font-weight: bold;"));
    PlaceTw(lblResultComment, 240, 1020, 7800, 285);
    gridLicenses = Named(new FlexGrid(central), "gridLicenses");
    gridLicenses->setSelectionModeValue(FlexGrid::flexSelectionByRow);
    PlaceTw(gridLicenses, 240, 1320, 7800, 3960);

    cmdAddRecord =
        RecordButton(central, "cmdAddRecord", "lblAddRecord", QStringLiteral("Add Record"), 8310, 1320, &lblAddRecord);
    cmdEditRecord = RecordButton(central, "cmdEditRecord", "lblEditRecord", QStringLiteral("Edit Record"), 8310, 2460,
                                 &lblEditRecord);
    cmdDeleteRecord = RecordButton(central, "cmdDeleteRecord", "lblDeleteRecord", QStringLiteral("Delete Record"), 8310,
                                   3600, &lblDeleteRecord);
    m_faces = new HoverPictures(central);
    RecordFaces(m_faces, central, cmdAddRecord, "picAddNormal", "picAddHover", QStringLiteral("add"), &picAddNormal,
                &picAddHover);
    RecordFaces(m_faces, central, cmdEditRecord, "picEditNormal", "picEditHover", QStringLiteral("edit"),
                &picEditNormal, &picEditHover);
    RecordFaces(m_faces, central, cmdDeleteRecord, "picDeleteNormal", "picDeleteHover", QStringLiteral("delete"),
                &picDeleteNormal, &picDeleteHover);

    Line1 = RuleLine(central, "Line1", "#c9d3de", 240, 5580, 8880);
    linDark = RuleLine(central, "linDark", "#7f8c99", 240, 5610, 8880);
    cmdPrevious = Named(new QPushButton(QStringLiteral("< &Back"), central), "cmdPrevious");
    cmdPrevious->setDefault(true);
    PlaceTw(cmdPrevious, 7860, 5880, 1260, 450);

    // The entry called Add edits, and says so.
    mnuLicenseGridContext = Named(new QMenu(QStringLiteral("License Context Menu"), this), "mnuLicenseGridContext");
    mnuLicenseGridContextAdd =
        Named(mnuLicenseGridContext->addAction(QStringLiteral("Edit &Record")), "mnuLicenseGridContextAdd");
    mnuLicenseGridContextDelete =
        Named(mnuLicenseGridContext->addAction(QStringLiteral("&Delete Record")), "mnuLicenseGridContextDelete");

    On(gridLicenses, &FlexGrid::Click, this, [this] {
        if (gridLicenses->Rows() > 0 && !cmdEditRecord->isEnabled())
            cmdEditRecord->setEnabled(true);
    });
    On(gridLicenses, &FlexGrid::MouseMove, this, [this](int button, int, long, long) {
        if (button == vbLeftButton && gridLicenses->Rows() > 0 && gridLicenses->RowSel() != gridLicenses->Row())
            gridLicenses->setRow(gridLicenses->RowSel());
    });
    On(gridLicenses, &FlexGrid::MouseUp, this, [this](int button, int, long, long) {
        if (gridLicenses->Rows() == 0)
            return;
        cmdDeleteRecord->setEnabled(true);
        if (button == vbRightButton)
            mnuLicenseGridContext->popup(QCursor::pos());
    });
    On(gridLicenses, &FlexGrid::DblClick, this, [this] { editRecord(); });
    On(cmdAddRecord, &QPushButton::clicked, this, [this] { cmdAddRecord_Click(); });
    On(cmdEditRecord, &QPushButton::clicked, this, [this] { editRecord(); });
    On(cmdDeleteRecord, &QPushButton::clicked, this, [this] { ConfirmDelete(); });
    // Edits without filling the list of applications first, as it always has.
    On(mnuLicenseGridContextAdd, &QAction::triggered, this, [this] {
        if (gridLicenses->Rows() > 0)
            LoadLicenseForEdit();
    });
    On(mnuLicenseGridContextDelete, &QAction::triggered, this, [this] { ConfirmDelete(); });
    On(cmdPrevious, &QPushButton::clicked, this, [this] { cmdPrevious_Click(); });
    On(menus.mnuFileExit, &QAction::triggered, this, [] { EndProcess(0); });
    ConnectOptionsAndHelp(this, menus);
}

void frmLicenseControl::Form_Load()
{
    InitializeForm();
}

void frmLicenseControl::Form_QueryUnload(int &, int unloadMode)
{
    if (unloadMode == vbFormControlMenu)
        EndProcess(0);
}

void frmLicenseControl::InitializeForm()
{
    lblResultComment->setText(QStringLiteral("Licenses for ") + gClientName);
    m_faces->ShowNormalPictures();
    cmdEditRecord->setEnabled(false);
    cmdDeleteRecord->setEnabled(false);
}

void frmLicenseControl::DisplayLicenseDetails()
{
    OpenDatabase();
    Recordset rs;
    rs.Open(QStringLiteral("Select KEVRO_APPS.APP_ID, KEVRO_APPS.APP_NAME, ") +
                QStringLiteral("KEVRO_LICENSES.LICENSE_ID, KEVRO_LICENSES.LICENSE_CLIENT ") +
                QStringLiteral("From KEVRO_LICENSES Inner Join KEVRO_APPS ON ") +
                QStringLiteral("KEVRO_LICENSES.LICENSE_APP = KEVRO_APPS.APP_ID ") +
                QStringLiteral("Where KEVRO_LICENSES.LICENSE_CLIENT='") + gClientCode + QStringLiteral("' ") +
                QStringLiteral("Order By APP_NAME;"),
            gConnection.get());
    if (!(rs.Bof() && rs.Eof())) {
        gridLicenses->setVisible(false);
        gridLicenses->setRows(0);
        gridLicenses->setFixedRows(0);
        gridLicenses->setCols(2);
        rs.MoveFirst();
        while (!rs.Eof()) {
            gridLicenses->AddItem(rs.Fields(QStringLiteral("LICENSE_ID")).toString() + QLatin1Char('\t') +
                                  NullToEmpty(rs.Fields(QStringLiteral("APP_NAME"))).toString() + QLatin1Char('\t'));
            rs.MoveNext();
        }
        gridLicenses->setColWidth(0, 0);
        gridLicenses->setColWidth(1, NameColumnWidth);
        gridLicenses->setRow(0);
        gridLicenses->setVisible(true);
    } else {
        gridLicenses->setRows(0);
    }
    CloseDatabase();
    if (gridLicenses->Cols() > 1)
        gridLicenses->setColAlignment(1, FlexGrid::flexAlignLeftCenter);
}

void frmLicenseControl::cmdAddRecord_Click()
{
    auto *entry = Forms::get<frmLicenseEntry>();
    if (!entry->PopulateFileList()) {
        MsgBox(QStringLiteral("There are no applications in the KEVRO database!"), vbExclamation);
        return;
    }
    entry->Move(Left(), Top());
    entry->lblEditMode->setText(QStringLiteral("Add"));
    entry->lblResultComment->setText(QStringLiteral("Add License for ") + gClientName);
    entry->show();
    entry->drpLicenseFile->setFocus();
    hide();
}

void frmLicenseControl::editRecord()
{
    if (gridLicenses->Rows() == 0)
        return;
    Forms::get<frmLicenseEntry>()->PopulateFileList();
    LoadLicenseForEdit();
}

void frmLicenseControl::LoadLicenseForEdit()
{
    // The connection is left open here; the next piece of database work replaces it.
    const long licence = gridLicenses->TextMatrix(gridLicenses->Row(), 0).toLong();
    auto *entry = Forms::get<frmLicenseEntry>();
    OpenDatabase();
    Recordset rs;
    rs.Open(QStringLiteral("Select KEVRO_LICENSES.LICENSE_ID, KEVRO_LICENSES.LICENSE_APP, ") +
                QStringLiteral("KEVRO_APPS.APP_NAME, KEVRO_LICENSES.LICENSE_VALID_FROM, ") +
                QStringLiteral("KEVRO_LICENSES.LICENSE_VALID_TO, KEVRO_LICENSES.LICENSE_PERMINANT ") +
                QStringLiteral("From KEVRO_LICENSES Inner Join KEVRO_APPS On ") +
                QStringLiteral("KEVRO_LICENSES.LICENSE_APP = KEVRO_APPS.APP_ID ") +
                QStringLiteral("Group By KEVRO_LICENSES.LICENSE_ID, KEVRO_LICENSES.LICENSE_APP, ") +
                QStringLiteral("KEVRO_APPS.APP_NAME, KEVRO_LICENSES.LICENSE_VALID_FROM, ") +
                QStringLiteral("KEVRO_LICENSES.LICENSE_VALID_TO, KEVRO_LICENSES.LICENSE_PERMINANT ") +
                QStringLiteral("Having KEVRO_LICENSES.LICENSE_ID=") + QString::number(licence) + QStringLiteral(";"),
            gConnection.get());
    if (!(rs.Bof() && rs.Eof())) {
        entry->ShowApplication(NullToEmpty(rs.Fields(QStringLiteral("APP_NAME"))).toString());
        // Dates as the operator types them, whether the engine kept the text or made a date of it.
        entry->txtStartDate->setText(DateText(rs.Fields(QStringLiteral("LICENSE_VALID_FROM"))));
        entry->txtEndDate->setText(DateText(rs.Fields(QStringLiteral("LICENSE_VALID_TO"))));
        entry->chkPerminantLicense->setChecked(rs.Fields(QStringLiteral("LICENSE_PERMINANT")).toBool());
        entry->chkPerminantLicense_Click();
    } else {
        MsgBox(QStringLiteral("Record no longer exists"), vbExclamation);
    }
    entry->Move(Left(), Top());
    entry->lblEditMode->setText(QStringLiteral("Entry"));
    entry->lblResultComment->setText(QStringLiteral("Edit License for ") + gClientName);
    entry->show();
    hide();
}

void frmLicenseControl::ConfirmDelete()
{
    if (gridLicenses->Rows() == 0 || gridLicenses->TextMatrix(gridLicenses->Row(), 0).isEmpty())
        return;
    cmdDeleteRecord->setEnabled(false);
    DeleteSelectedLicense();
    if (gridLicenses->Rows() > 0) {
        cmdDeleteRecord->setEnabled(true);
        cmdDeleteRecord->setFocus();
    } else {
        cmdEditRecord->setEnabled(false);
    }
}

void frmLicenseControl::DeleteSelectedLicense()
{
    if (MsgBox(QStringLiteral("Are you sure you want to delete this record?"), vbYesNo | vbExclamation) != vbYes)
        return;
    OpenDatabase();
    const long licence = gridLicenses->TextMatrix(gridLicenses->Row(), 0).toLong();
    gConnection->Execute(QStringLiteral("Delete KEVRO_LICENSES.LICENSE_APP ") + QStringLiteral("From KEVRO_LICENSES ") +
                         QStringLiteral("Where KEVRO_LICENSES.LICENSE_ID=") + QString::number(licence));
    CloseDatabase();
    DisplayLicenseDetails();
}

void frmLicenseControl::cmdPrevious_Click()
{
    auto *menu = Forms::get<frmMainMenu>();
    menu->Move(Left(), Top());
    menu->show();
    Unload();
}
