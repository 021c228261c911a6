#include "catalogue/frmClientControl.h"

#include "catalogue/Database.h"
#include "catalogue/InPlaceEditing.h"
#include "catalogue/RecordButtons.h"
#include "controls/FlexGrid.h"
#include "controls/Forms.h"
#include "controls/ScreenParts.h"
#include "platform/Events.h"
#include "platform/MsgBox.h"
#include "platform/Paths.h"
#include "platform/ShellOpen.h"
#include "platform/VbError.h"
#include "review/ViewerFiles.h"
#include "shell/MainMod.h"
#include "shell/MainModScreens.h"
#include "shell/frmMainMenu.h"

#include <QAction>
#include <QCheckBox>
#include <QFile>
#include <QFileInfo>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QRadioButton>

namespace {
constexpr long FormWidth = 9360;
constexpr long FormHeight = 7200;

} // namespace

frmClientControl::frmClientControl()
{
    QWidget *central = WorkingScreen(this, "frmClientControl", QStringLiteral("KEVRO - Client Control"), FormWidth,
                                     FormHeight, menus, &picBanner);

    gridClients = Named(new FlexGrid(central), "gridClients");
    gridClients->setSelectionModeValue(FlexGrid::flexSelectionByRow);
    PlaceTw(gridClients, 240, 1080, 7560, 3660);
    txtEdit = Named(new QLineEdit(central), "txtEdit");

    cmdSaveRecords = RecordButton(central, "cmdSaveRecords", "lblSaveRecord", QStringLiteral("Save Records"), 8100,
                                  1080, &lblSaveRecord);
    cmdAddRecord =
        RecordButton(central, "cmdAddRecord", "lblAddRecord", QStringLiteral("Add Record"), 8100, 2220, &lblAddRecord);
    cmdDeleteRecord = RecordButton(central, "cmdDeleteRecord", "lblDeleteRecord", QStringLiteral("Delete Record"), 8100,
                                   3360, &lblDeleteRecord);
    m_faces = new HoverPictures(central);
    RecordFaces(m_faces, central, cmdSaveRecords, "picSaveNormal", "picSaveHover", QStringLiteral("save"),
                &picSaveNormal, &picSaveHover);
    RecordFaces(m_faces, central, cmdAddRecord, "picAddNormal", "picAddHover", QStringLiteral("add"), &picAddNormal,
                &picAddHover);
    RecordFaces(m_faces, central, cmdDeleteRecord, "picDeleteNormal", "picDeleteHover", QStringLiteral("delete"),
                &picDeleteNormal, &picDeleteHover);

    fraImportOptions = Named(new QGroupBox(QStringLiteral("Import From File"), central), "fraImportOptions");
    PlaceTw(fraImportOptions, 240, 4920, 8880, 1200);
    lblFilePath = Named(new QLabel(QStringLiteral("File Path:"), fraImportOptions), "lblFilePath");
    PlaceTw(lblFilePath, 180, 390, 900, 285);
    txtFilePath = Named(new QLineEdit(fraImportOptions), "txtFilePath");
    PlaceTw(txtFilePath, 1080, 345, 5640, 345);
    cmdBrowse = Named(new QPushButton(QStringLiteral("&Browse"), fraImportOptions), "cmdBrowse");
    PlaceTw(cmdBrowse, 6840, 330, 900, 375);
    optReplace = Named(new QRadioButton(QStringLiteral("&Replace"), fraImportOptions), "optReplace");
    PlaceTw(optReplace, 1080, 780, 1200, 300);
    // Neither road stands chosen: a replace wipes every client first, and only the operator may ask that.
    optAppend = Named(new QRadioButton(QStringLiteral("A&ppend"), fraImportOptions), "optAppend");
    PlaceTw(optAppend, 2400, 780, 1200, 300);
    cmdImport = Named(new QPushButton(QStringLiteral("&Import"), fraImportOptions), "cmdImport");
    PlaceTw(cmdImport, 7860, 330, 900, 375);

    // The search row was never finished: stored hidden and disabled.
    Label1 = Named(new QLabel(QStringLiteral("Search:"), central), "Label1");
    txtSearch = Named(new QLineEdit(central), "txtSearch");
    cmdPerformSearch = Named(new QPushButton(QStringLiteral("Go"), central), "cmdPerformSearch");
    chkShowAllFiles = Named(new QCheckBox(QStringLiteral("Show All Files"), central), "chkShowAllFiles");
    for (QWidget *w : std::initializer_list<QWidget *>{Label1, txtSearch, cmdPerformSearch, chkShowAllFiles}) {
        w->setEnabled(false);
        w->hide();
    }

    Line1 = RuleLine(central, "Line1", "#c9d3de", 240, 6270, 8880);
    linDark = RuleLine(central, "linDark", "#7f8c99", 240, 6300, 8880);
    cmdPrevious = Named(new QPushButton(QStringLiteral("< &Back"), central), "cmdPrevious");
    cmdPrevious->setDefault(true);
    PlaceTw(cmdPrevious, 7860, 6480, 1260, 450);

    dlgTextFile.DialogTitle = QStringLiteral("Import Client List");
    dlgTextFile.Filter = QStringLiteral("Text (*.txt)|*.txt");

    // A pop-up that was never given a use here.
    mnuFileGridContext = Named(new QMenu(this), "mnuFileGridContext");
    Named(mnuFileGridContext->addAction(QStringLiteral("&Edit")), "mnuFileGridContextEdit");
    Named(mnuFileGridContext->addAction(QStringLiteral("&Delete")), "mnuFileGridContextDelete");

    m_editing = new InPlaceEditing(gridClients, txtEdit, cmdDeleteRecord, cmdSaveRecords);
    On(gridClients, &FlexGrid::DblClick, this, [this] { BeginCellEdit(); });
    On(cmdAddRecord, &QPushButton::clicked, this, [this] { AddClientRow(); });
    On(cmdDeleteRecord, &QPushButton::clicked, this, [this] { DeleteClientRow(); });
    On(cmdSaveRecords, &QPushButton::clicked, this, [this] { SaveRecords(); });
    On(cmdBrowse, &QPushButton::clicked, this, [this] { cmdBrowse_Click(); });
    On(cmdImport, &QPushButton::clicked, this, [this] { ImportClientList(); });
    On(cmdPrevious, &QPushButton::clicked, this, [this] { cmdPrevious_Click(); });
    On(menus.mnuFileExit, &QAction::triggered, this, [] { EndProcess(0); });
    ConnectOptionsAndHelp(this, menus);
    // The Scan Engine and Database entries do nothing on this screen.
}

void frmClientControl::Form_Load()
{
    m_faces->ShowNormalPictures();
    ShowDBClients();
    cmdDeleteRecord->setEnabled(false); // until the grid is touched
}

void frmClientControl::Form_QueryUnload(int &, int unloadMode)
{
    // The close box ends the program at once.
    if (unloadMode == vbFormControlMenu)
        EndProcess(0);
}

void frmClientControl::ShowDBClients()
{
    m_editing->Fill(QStringLiteral("Select KEVRO_CLIENTS.CLIENT_ID, ") + QStringLiteral("KEVRO_CLIENTS.CLIENT_NAME ") +
                        QStringLiteral("From KEVRO_CLIENTS ") + QStringLiteral("Order By CLIENT_NAME"),
                    QStringLiteral("CLIENT_ID"), QStringLiteral("CLIENT_NAME"), QStringLiteral("ShowDBClients"));
}

void frmClientControl::CommitCellEdit()
{
    m_editing->CommitCellEdit();
}

void frmClientControl::BeginCellEdit()
{
    m_editing->StartCellEdit();
}

void frmClientControl::AddClientRow()
{
    m_editing->AddRow();
}

void frmClientControl::DeleteClientRow()
{
    // A row that was never saved runs no statement, and then the connection stays open, as it stands.
    m_editing->DeleteRow(QStringLiteral("Delete KEVRO_CLIENTS.CLIENT_ID ") + QStringLiteral("From KEVRO_CLIENTS ") +
                             QStringLiteral("Where KEVRO_CLIENTS.CLIENT_ID="),
                         false);
}

void frmClientControl::SaveRecords()
{
    // An insert keeps the name as typed, apostrophes and all (and fails on one); an update strips them.
    const auto name = [this](int row) { return gridClients->TextMatrix(row, InPlaceEditing::NameColumn); };
    m_editing->SaveRows(
        [&](int row) {
            return QStringLiteral("Insert Into KEVRO_CLIENTS( ") + QStringLiteral("CLIENT_NAME) ") +
                   QStringLiteral("Values(") + QStringLiteral("'") + name(row) + QStringLiteral("')");
        },
        [&](int row) {
            return QStringLiteral("Update KEVRO_CLIENTS Set ") + QStringLiteral("CLIENT_NAME = '") +
                   RemoveApostrophes(name(row)) + QStringLiteral("' ") + QStringLiteral("Where CLIENT_ID = ") +
                   gridClients->TextMatrix(row, InPlaceEditing::KeyColumn) + QStringLiteral(" ");
        },
        QStringLiteral("Saving Client Information..."), [this] { ShowDBClients(); },
        QStringLiteral("Clients updated in KEVRO database"));
}

void frmClientControl::cmdBrowse_Click()
{
    try {
        dlgTextFile.ShowOpen(this);
        txtFilePath->setText(dlgTextFile.FileName);
    } catch (const VbError &) {
        // Cancel
    }
}

void frmClientControl::ImportClientList()
{
    // No handler: a line the database refuses (an apostrophe) is the platform's message and the end,
    // and what was imported before it stays.
    const QString path = txtFilePath->text();
    // A folder, a broken link or nothing at all: not a file to read.
    if (path.isEmpty() || !QFileInfo(RealPath(path)).isFile()) {
        MsgBox(QStringLiteral("File does not exist!"), vbExclamation);
        return;
    }
    if (!optReplace->isChecked() && !optAppend->isChecked()) {
        MsgBox(QStringLiteral("Choose Replace or Append before importing.  Nothing was imported."), vbExclamation);
        return;
    }
    QFile stream(RealPath(path));
    if (!stream.open(QIODevice::ReadOnly))
        RaiseVbError(VbErr::PermissionDenied);
    OpenDatabase();
    if (optReplace->isChecked())
        gConnection->Execute(QStringLiteral("DELETE * FROM KEVRO_CLIENTS"));
    while (!stream.atEnd()) {
        // One name a line, with CR LF or LF; a line that is not UTF-8 is read in the Windows code page.
        QByteArray line = stream.readLine();
        if (line.endsWith('\n'))
            line.chop(1);
        if (line.endsWith('\r'))
            line.chop(1);
        gConnection->Execute(QStringLiteral("Insert Into KEVRO_CLIENTS(") + QStringLiteral("CLIENT_NAME) ") +
                             QStringLiteral("Values(") + QStringLiteral("'") + DecodeTextFile(line) +
                             QStringLiteral("')"));
    }
    CloseDatabase();
    ShowDBClients();
    MsgBox(QStringLiteral("Import completed sucessfully."), vbInformation);
    stream.close();
}

void frmClientControl::cmdPrevious_Click()
{
    auto *menu = Forms::get<frmMainMenu>();
    menu->Move(Left(), Top());
    menu->show();
    DoEvents();
    Unload();
}
