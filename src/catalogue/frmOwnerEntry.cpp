#include "catalogue/frmOwnerEntry.h"

#include "catalogue/InPlaceEditing.h"
#include "catalogue/RecordButtons.h"
#include "catalogue/frmFileControl.h"
#include "controls/FlexGrid.h"
#include "controls/Forms.h"
#include "controls/ScreenParts.h"
#include "platform/MsgBox.h"
#include "platform/ShellOpen.h"
#include "platform/VbError.h"
#include "shell/MainMod.h"
#include "shell/MainModScreens.h"

#include <QAction>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QPushButton>

namespace {
constexpr long FormWidth = 9360;
constexpr long FormHeight = 6600;
} // namespace

frmOwnerEntry::frmOwnerEntry()
{
    QWidget *central = WorkingScreen(this, "frmOwnerEntry", QStringLiteral("KEVRO - Owner Entry"), FormWidth,
                                     FormHeight, menus, &picBanner);

    lblResultComment = Named(new QLabel(QStringLiteral("Owner Details"), central), "lblResultComment");
    PlaceTw(lblResultComment, 240, 1020, 4200, 285);
    lblEditMode = Named(new QLabel(central), "lblEditMode");
    lblEditMode->hide();
    gridOwners = Named(new FlexGrid(central), "gridOwners");
    gridOwners->setSelectionModeValue(FlexGrid::flexSelectionByRow);
    PlaceTw(gridOwners, 240, 1320, 7560, 3960);
    txtEdit = Named(new QLineEdit(central), "txtEdit");

    cmdAddRecord =
        RecordButton(central, "cmdAddRecord", "lblAddRecord", QStringLiteral("Add Record"), 8100, 1320, &lblAddRecord);
    cmdDeleteRecord = RecordButton(central, "cmdDeleteRecord", "lblDeleteRecord", QStringLiteral("Delete Record"), 8100,
                                   2460, &lblDeleteRecord);
    cmdSaveRecords = RecordButton(central, "cmdSaveRecords", "lblSaveRecord", QStringLiteral("Save Records"), 8100,
                                  3600, &lblSaveRecord);
    m_faces = new HoverPictures(central);
    RecordFaces(m_faces, central, cmdSaveRecords, "picSaveNormal", "picSaveHover", QStringLiteral("save"),
                &picSaveNormal, &picSaveHover);
    RecordFaces(m_faces, central, cmdAddRecord, "picAddNormal", "picAddHover", QStringLiteral("add"), &picAddNormal,
                &picAddHover);
    RecordFaces(m_faces, central, cmdDeleteRecord, "picDeleteNormal", "picDeleteHover", QStringLiteral("delete"),
                &picDeleteNormal, &picDeleteHover);

    Line1 = RuleLine(central, "Line1", "#c9d3de", 240, 5580, 8880);
    linDark = RuleLine(central, "linDark", "#7f8c99", 240, 5610, 8880);
    cmdBack = Named(new QPushButton(QStringLiteral("< &Back"), central), "cmdBack");
    cmdBack->setDefault(true);
    PlaceTw(cmdBack, 7860, 5880, 1260, 450);

    m_editing = new InPlaceEditing(gridOwners, txtEdit, cmdDeleteRecord, cmdSaveRecords);
    On(cmdAddRecord, &QPushButton::clicked, this, [this] { m_editing->AddRow(); });
    On(cmdDeleteRecord, &QPushButton::clicked, this, [this] {
        // The first piece names the table without its final S; the statement goes as it stands.
        m_editing->DeleteRow(QStringLiteral("Delete KEVRO_OWNER.OWNER_ID ") + QStringLiteral("From KEVRO_OWNERS ") +
                                 QStringLiteral("Where KEVRO_OWNERS.OWNER_ID="),
                             true);
    });
    On(cmdSaveRecords, &QPushButton::clicked, this, [this] { cmdSaveRecords_Click(); });
    On(cmdBack, &QPushButton::clicked, this, [this] { ReturnToApplications(); });
    On(menus.mnuFileExit, &QAction::triggered, this, [] { EndProcess(0); });
    ConnectOptionsAndHelp(this, menus);
}

void frmOwnerEntry::Form_Load()
{
    m_faces->ShowNormalPictures();
    ShowDBOwners();
    cmdDeleteRecord->setEnabled(false); // until a click on the grid
}

void frmOwnerEntry::Form_QueryUnload(int &, int unloadMode)
{
    if (unloadMode == vbFormControlMenu)
        EndProcess(0);
}

void frmOwnerEntry::ShowDBOwners()
{
    m_editing->Fill(QStringLiteral("Select KEVRO_OWNERS.OWNER_ID, ") + QStringLiteral("KEVRO_OWNERS.OWNER_NAME ") +
                        QStringLiteral("From KEVRO_OWNERS ") + QStringLiteral("Order By OWNER_NAME"),
                    QStringLiteral("OWNER_ID"), QStringLiteral("OWNER_NAME"), QStringLiteral("ShowDBOwners"));
}

void frmOwnerEntry::CommitCellEdit()
{
    m_editing->CommitCellEdit();
}

void frmOwnerEntry::StartCellEdit()
{
    m_editing->StartCellEdit();
}

void frmOwnerEntry::cmdSaveRecords_Click()
{
    // Both statements clean the name of apostrophes.
    const auto name = [this](int row) {
        return RemoveApostrophes(gridOwners->TextMatrix(row, InPlaceEditing::NameColumn));
    };
    m_editing->SaveRows(
        [&](int row) {
            return QStringLiteral("Insert Into KEVRO_OWNERS( ") + QStringLiteral("OWNER_NAME) ") +
                   QStringLiteral("Values(") + QStringLiteral("'") + name(row) + QStringLiteral("')");
        },
        [&](int row) {
            return QStringLiteral("Update KEVRO_OWNERS Set ") + QStringLiteral("OWNER_NAME = '") + name(row) +
                   QStringLiteral("' ") + QStringLiteral("Where OWNER_ID = ") +
                   gridOwners->TextMatrix(row, InPlaceEditing::KeyColumn) + QStringLiteral(" ");
        },
        QStringLiteral("Saving Owner Information..."), [this] { ShowDBOwners(); },
        QStringLiteral("Owners updated in KEVRO database"));
}

void frmOwnerEntry::ReturnToApplications()
{
    // Rows not saved are lost without a question.
    auto *applications = Forms::get<frmFileControl>();
    applications->Move(Left(), Top());
    applications->show();
    Unload();
}
