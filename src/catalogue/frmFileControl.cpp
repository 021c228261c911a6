#include "catalogue/frmFileControl.h"

#include "catalogue/Database.h"
#include "catalogue/RecordButtons.h"
#include "catalogue/frmFileEntry.h"
#include "catalogue/frmOwnerEntry.h"
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
constexpr long FormHeight = 7200;
constexpr long NameColumnWidth = 7505;
} // namespace

frmFileControl::frmFileControl()
{
    QWidget *central = WorkingScreen(this, "frmFileControl", QStringLiteral("KEVRO - Application Control"), FormWidth,
                                     FormHeight, menus, &picBanner);

    // The search row stands on the screen and does nothing: the list always shows every application.
    Label1 = Named(new QLabel(QStringLiteral("Search:"), central), "Label1");
    PlaceTw(Label1, 240, 1110, 720, 285);
    txtSearch = Named(new QLineEdit(central), "txtSearch");
    PlaceTw(txtSearch, 960, 1065, 3600, 330);
    cmdPerformSearch = Named(new QPushButton(QStringLiteral("Go"), central), "cmdPerformSearch");
    PlaceTw(cmdPerformSearch, 4680, 1050, 600, 360);
    chkShowAllFiles = Named(new QCheckBox(QStringLiteral("Show All Files"), central), "chkShowAllFiles");
    PlaceTw(chkShowAllFiles, 5460, 1065, 1800, 330);

    gridFiles = Named(new FlexGrid(central), "gridFiles");
    gridFiles->setSelectionModeValue(FlexGrid::flexSelectionByRow);
    PlaceTw(gridFiles, 240, 1560, 7800, 4380);

    cmdAddRecord =
        RecordButton(central, "cmdAddRecord", "lblAddRecord", QStringLiteral("Add Record"), 8310, 1560, &lblAddRecord);
    cmdEditRecord = RecordButton(central, "cmdEditRecord", "lblEditRecord", QStringLiteral("Edit Record"), 8310, 2640,
                                 &lblEditRecord);
    cmdDeleteRecord = RecordButton(central, "cmdDeleteRecord", "lblDeleteRecord", QStringLiteral("Delete Record"), 8310,
                                   3720, &lblDeleteRecord);
    cmdOwners = RecordButton(central, "cmdOwners", "lblOwners", QStringLiteral("Edit Owners"), 8310, 4800, &lblOwners);
    m_faces = new HoverPictures(central);
    RecordFaces(m_faces, central, cmdAddRecord, "picAddNormal", "picAddHover", QStringLiteral("add"), &picAddNormal,
                &picAddHover);
    RecordFaces(m_faces, central, cmdEditRecord, "picEditNormal", "picEditHover", QStringLiteral("edit"),
                &picEditNormal, &picEditHover);
    RecordFaces(m_faces, central, cmdDeleteRecord, "picDeleteNormal", "picDeleteHover", QStringLiteral("delete"),
                &picDeleteNormal, &picDeleteHover);
    RecordFaces(m_faces, central, cmdOwners, "picOwnersNormal", "picOwnersHover", QStringLiteral("owners"),
                &picOwnersNormal, &picOwnersHover);

    Line1 = RuleLine(central, "Line1", "#c9d3de", 240, 6180, 8880);
    linDark = RuleLine(central, "linDark", "#7f8c99", 240, 6210, 8880);
    cmdPrevious = Named(new QPushButton(QStringLiteral("< &Back"), central), "cmdPrevious");
    cmdPrevious->setDefault(true);
    PlaceTw(cmdPrevious, 7860, 6480, 1260, 450);

    mnuFileGridContext = Named(new QMenu(this), "mnuFileGridContext");
    mnuFileGridContextEdit =
        Named(mnuFileGridContext->addAction(QStringLiteral("&Edit Record")), "mnuFileGridContextEdit");
    mnuFileGridContextDelete =
        Named(mnuFileGridContext->addAction(QStringLiteral("&Delete Record")), "mnuFileGridContextDelete");

    On(gridFiles, &FlexGrid::Click, this, [this] {
        if (gridFiles->Rows() > 0) {
            cmdDeleteRecord->setEnabled(true);
            cmdEditRecord->setEnabled(true);
        }
    });
    On(gridFiles, &FlexGrid::DblClick, this, [this] {
        if (gridFiles->Rows() > 0)
            EditSelectedRecord();
    });
    On(gridFiles, &FlexGrid::MouseMove, this, [this](int button, int, long, long) {
        if (button == vbLeftButton && gridFiles->Rows() > 0 && gridFiles->RowSel() != gridFiles->Row())
            gridFiles->setRow(gridFiles->RowSel());
    });
    On(gridFiles, &FlexGrid::MouseUp, this, [this](int button, int, long, long) {
        if (button == vbRightButton && gridFiles->Rows() > 0)
            mnuFileGridContext->popup(QCursor::pos());
    });
    On(cmdAddRecord, &QPushButton::clicked, this, [this] { cmdAddRecord_Click(); });
    On(cmdEditRecord, &QPushButton::clicked, this, [this] {
        if (gridFiles->Rows() > 0)
            EditSelectedRecord();
    });
    On(cmdDeleteRecord, &QPushButton::clicked, this, [this] {
        if (gridFiles->Rows() > 0)
            DeleteSelectedRecord();
    });
    On(mnuFileGridContextEdit, &QAction::triggered, this, [this] {
        if (gridFiles->Rows() > 0)
            EditSelectedRecord();
    });
    On(mnuFileGridContextDelete, &QAction::triggered, this, [this] { DeleteSelectedRecord(); });
    On(cmdOwners, &QPushButton::clicked, this, [this] { cmdOwners_Click(); });
    On(cmdPrevious, &QPushButton::clicked, this, [this] { cmdPrevious_Click(); });
    On(menus.mnuFileExit, &QAction::triggered, this, [] { EndProcess(0); });
    ConnectOptionsAndHelp(this, menus);
}

void frmFileControl::Form_Load()
{
    InitializeForm();
}

void frmFileControl::Form_QueryUnload(int &, int unloadMode)
{
    if (unloadMode == vbFormControlMenu)
        EndProcess(0);
}

void frmFileControl::InitializeForm()
{
    ShowFilesInDB();
    m_faces->ShowNormalPictures();
    cmdDeleteRecord->setEnabled(false);
    cmdEditRecord->setEnabled(false);
}

void frmFileControl::ShowFilesInDB()
{
    OpenDatabase();
    Recordset rs;
    rs.Open(QStringLiteral("Select KEVRO_APPS.APP_ID, KEVRO_APPS.APP_NAME ") + QStringLiteral("From KEVRO_APPS ") +
                QStringLiteral("Order By APP_NAME"),
            gConnection.get());
    if (!(rs.Bof() && rs.Eof())) {
        gridFiles->setRows(0);
        gridFiles->setFixedRows(0);
        gridFiles->setCols(2);
        rs.MoveFirst();
        while (!rs.Eof()) {
            gridFiles->AddItem(rs.Fields(QStringLiteral("APP_ID")).toString() + QLatin1Char('\t') +
                               NullToEmpty(rs.Fields(QStringLiteral("APP_NAME"))).toString());
            rs.MoveNext();
        }
        gridFiles->setColWidth(0, 0);
        gridFiles->setColWidth(1, NameColumnWidth);
        gridFiles->setRow(0);
    } else {
        gridFiles->setRows(0);
    }
    CloseDatabase();
    if (gridFiles->Cols() > 1)
        gridFiles->setColAlignment(1, FlexGrid::flexAlignLeftCenter);
}

void frmFileControl::cmdAddRecord_Click()
{
    auto *entry = Forms::get<frmFileEntry>();
    entry->Move(Left(), Top());
    entry->lblEditMode->setText(QStringLiteral("Add"));
    entry->lblResultComment->setText(QStringLiteral("Add Application"));
    entry->show();
    entry->txtAppName->setFocus();
    hide();
}

void frmFileControl::DeleteSelectedRecord()
{
    // Only the application's own row goes: its components and licences stay behind.
    if (MsgBox(QStringLiteral("Are you sure you want to delete this record?"), vbYesNo | vbExclamation) != vbYes)
        return;
    OpenDatabase();
    const long key = gridFiles->TextMatrix(gridFiles->Row(), 0).toLong();
    gConnection->Execute(QStringLiteral("Delete KEVRO_APPS.APP_ID ") + QStringLiteral("From KEVRO_APPS ") +
                         QStringLiteral("Where KEVRO_APPS.APP_ID=") + QString::number(key));
    CloseDatabase();
    ShowFilesInDB();
}

void frmFileControl::EditSelectedRecord()
{
    const QString key = gridFiles->TextMatrix(gridFiles->Row(), 0);
    auto *entry = Forms::get<frmFileEntry>();
    OpenDatabase();
    Recordset rs;
    rs.Open(QStringLiteral("Select APP_OWNER From KEVRO_APPS ") + QStringLiteral("Where APP_ID = ") + key,
            gConnection.get());
    int16_t owner = 0;
    if (!rs.Eof())
        owner = int16_t(rs.Fields(QStringLiteral("APP_OWNER")).toInt());
    rs.Close();
    // An application whose owner has gone opens with an empty owner.
    rs.Open(QStringLiteral("Select KEVRO_OWNERS.OWNER_ID From KEVRO_OWNERS ") +
                QStringLiteral("Where KEVRO_OWNERS.OWNER_ID = ") + QString::number(owner),
            gConnection.get());
    const bool ownerExists = !rs.Eof();
    const QString sql =
        ownerExists ? QStringLiteral("Select KEVRO_APPS.APP_ID, KEVRO_APPS.APP_NAME,") +
                          QStringLiteral("KEVRO_APPS.APP_OWNER , KEVRO_OWNERS.OWNER_NAME, ") +
                          QStringLiteral("KEVRO_APPS.APP_REQUIRES_LICENSE, KEVRO_APPS.APP_LICENSE_PER_MEDIA, ") +
                          QStringLiteral("KEVRO_APPS.APP_WEB_LICENSE, KEVRO_APPS.APP_DATE_EDITED ") +
                          QStringLiteral("From KEVRO_APPS Inner Join KEVRO_OWNERS On ") +
                          QStringLiteral("KEVRO_APPS.APP_OWNER = KEVRO_OWNERS.OWNER_ID ") +
                          QStringLiteral("Where KEVRO_APPS.APP_ID=") + key
                    : QStringLiteral("Select KEVRO_APPS.APP_ID, KEVRO_APPS.APP_NAME,") +
                          QStringLiteral("KEVRO_APPS.APP_OWNER , ") +
                          QStringLiteral("KEVRO_APPS.APP_REQUIRES_LICENSE, KEVRO_APPS.APP_LICENSE_PER_MEDIA, ") +
                          QStringLiteral("KEVRO_APPS.APP_WEB_LICENSE, KEVRO_APPS.APP_DATE_EDITED ") +
                          QStringLiteral("From KEVRO_APPS ") + QStringLiteral("Where KEVRO_APPS.APP_ID=") + key;
    rs.Close();
    rs.Open(sql, gConnection.get());
    if (!(rs.Bof() && rs.Eof())) {
        rs.MoveFirst();
        entry->txtAppName->setText(NullToEmpty(rs.Fields(QStringLiteral("APP_NAME"))).toString());
        entry->txtWebLicense->setText(NullToEmpty(rs.Fields(QStringLiteral("APP_WEB_LICENSE"))).toString());
        entry->drpOwnerID->setEditText(NullToEmpty(rs.Fields(QStringLiteral("APP_OWNER"))).toString());
        // The owner by its key: two owners may share a name. The two lists run in parallel.
        if (ownerExists)
            entry->drpOwnerName->setCurrentIndex(entry->drpOwnerID->findText(QString::number(owner), Qt::MatchExactly));
        if (rs.Fields(QStringLiteral("APP_REQUIRES_LICENSE")).toBool())
            entry->chkRequiresLicense->setChecked(true);
        if (rs.Fields(QStringLiteral("APP_LICENSE_PER_MEDIA")).toBool())
            entry->chkPerProductLicense->setChecked(true);
    } else {
        MsgBox(QStringLiteral("Record no longer exists"), vbExclamation);
    }
    rs.Close();
    CloseDatabase();
    OpenDatabase();
    rs.Open(QStringLiteral("Select KEVRO_APP_COMPONENTS.EXE_ID, KEVRO_APP_COMPONENTS.EXE_NAME, ") +
                QStringLiteral("KEVRO_APP_COMPONENTS.EXE_DESCRIPTION ") + QStringLiteral("From KEVRO_APP_COMPONENTS ") +
                QStringLiteral("Where KEVRO_APP_COMPONENTS.EXE_APP=") + key,
            gConnection.get());
    FlexGrid *grid = entry->gridAppComponents;
    entry->SetUpComponentGrid();
    if (!(rs.Bof() && rs.Eof())) {
        rs.MoveFirst();
        while (!rs.Eof()) {
            grid->AddItem(rs.Fields(QStringLiteral("EXE_ID")).toString() + QLatin1Char('\t') +
                          NullToEmpty(rs.Fields(QStringLiteral("EXE_NAME"))).toString() + QLatin1Char('\t') +
                          NullToEmpty(rs.Fields(QStringLiteral("EXE_DESCRIPTION"))).toString() +
                          QStringLiteral("\tUpdate"));
            rs.MoveNext();
        }
        grid->RemoveItem(1);
    } else {
        grid->setTextMatrix(1, 3, QStringLiteral("Insert"));
    }
    rs.Close();
    CloseDatabase();
    entry->Move(Left(), Top());
    entry->lblEditMode->setText(QStringLiteral("Edit"));
    entry->lblResultComment->setText(QStringLiteral("Edit Application"));
    entry->cmdDelete->setEnabled(grid->Rows() > 0);
    entry->show();
    hide();
}

void frmFileControl::cmdOwners_Click()
{
    auto *owners = Forms::get<frmOwnerEntry>();
    owners->Move(Left(), Top());
    owners->show();
    hide();
}

void frmFileControl::cmdPrevious_Click()
{
    auto *menu = Forms::get<frmMainMenu>();
    menu->Move(Left(), Top());
    menu->show();
    Unload();
}
