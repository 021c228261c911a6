#include "reporting/frmReportViewer.h"

#include "controls/FlexGrid.h"
#include "controls/Forms.h"
#include "controls/ScreenParts.h"
#include "platform/MsgBox.h"
#include "platform/ShellOpen.h"
#include "platform/VbError.h"
#include "reporting/ScanReport.h"
#include "shell/MainModScreens.h"
#include "shell/frmMainMenu.h"

#include <QAction>
#include <QCheckBox>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>

namespace {
constexpr int PathColumn = 0;
constexpr int NameColumn = 1;
constexpr long NameColumnWidth = 8550;
} // namespace

frmReportViewer::frmReportViewer()
{
    setObjectName(QStringLiteral("frmReportViewer"));
    setWindowTitle(QStringLiteral("KEVRO - Report Viewer"));
    auto *central = new QWidget(this);
    setCentralWidget(central);
    menus = BuildStandardMenus(this);
    menus.mnuDatabaseLicenseControl->setText(QStringLiteral("&License Control"));
    menus.mnuDatabaseFileControl->setText(QStringLiteral("Application C&ontrol"));
    setFixedSize(TwipsToPixels(9360), TwipsToPixels(6420) + menuBar()->sizeHint().height());

    picBanner = BannerPicture(central, 9360);

    // The search row was never finished: it stays hidden and disabled.
    Label1 = Named(new QLabel(QStringLiteral("Search:"), central), "Label1");
    PlaceTw(Label1, 240, 1080, 720, 285);
    txtSearch = Named(new QLineEdit(central), "txtSearch");
    PlaceTw(txtSearch, 960, 1050, 3600, 330);
    cmdPerformSearch = Named(new QPushButton(QStringLiteral("Go"), central), "cmdPerformSearch");
    PlaceTw(cmdPerformSearch, 4680, 1035, 600, 360);
    chkShowAllFiles = Named(new QCheckBox(QStringLiteral("Show All Files"), central), "chkShowAllFiles");
    PlaceTw(chkShowAllFiles, 5460, 1050, 1800, 330);
    for (QWidget *w : std::initializer_list<QWidget *>{Label1, txtSearch, cmdPerformSearch, chkShowAllFiles}) {
        w->setEnabled(false);
        w->hide();
    }

    gridReports = Named(new FlexGrid(central), "gridReports");
    gridReports->setSelectionModeValue(FlexGrid::flexSelectionByRow);
    PlaceTw(gridReports, 240, 1080, 8880, 4200);

    Line1 = RuleLine(central, "Line1", "#c9d3de", 240, 5460, 8880);
    linDark = RuleLine(central, "linDark", "#7f8c99", 240, 5490, 8880);
    cmdPrevious = Named(new QPushButton(QStringLiteral("< &Back"), central), "cmdPrevious");
    cmdPrevious->setDefault(true);
    PlaceTw(cmdPrevious, 7860, 5760, 1260, 450);

    // A pop-up that was never given a use here.
    mnuFileGridContext = Named(new QMenu(this), "mnuFileGridContext");
    mnuFileGridContextEdit = Named(mnuFileGridContext->addAction(QStringLiteral("&Edit")), "mnuFileGridContextEdit");
    mnuFileGridContextDelete =
        Named(mnuFileGridContext->addAction(QStringLiteral("&Delete")), "mnuFileGridContextDelete");

    On(gridReports, &FlexGrid::DblClick, this, [this] { gridReports_DblClick(); });
    On(cmdPrevious, &QPushButton::clicked, this, [this] { cmdPrevious_Click(); });
    On(menus.mnuFileExit, &QAction::triggered, this, [] { EndProcess(0); });
    ConnectOptionsAndHelp(this, menus);
    // The Scan Engine and Database entries do nothing on this screen.
}

void frmReportViewer::Form_Activate()
{
    FillReportList();
}

void frmReportViewer::Form_QueryUnload(int &, int unloadMode)
{
    // The close box ends the program at once, without emptying the extract folder.
    if (unloadMode == vbFormControlMenu)
        EndProcess(0);
}

void frmReportViewer::FillReportList()
{
    FlexGrid *grid = gridReports;
    grid->setVisible(false);
    grid->setRows(0);
    grid->setCols(2);
    grid->setFixedRows(0);

    const QString folder = ReportsFolder();
    const QDir dir(folder);
    int count = 0;
    if (!dir.exists()) {
        // The folder belongs to the installation; without it the listing fails as the runtime's folder
        // lookup did. The operator is told so, and the screen stays, with an empty list, to go back from.
        const VbError e = MakeVbError(VbErr::PathNotFound);
        MsgBox(QStringLiteral("Run-time error '%1':\n\n%2").arg(e.number).arg(e.description), vbCritical);
        grid->setVisible(true);
        return;
    }
    {
        for (const QString &name : dir.entryList(QDir::Files | QDir::Hidden | QDir::System, QDir::Unsorted)) {
            // Exact tails: a name in capitals is not a report, and the folder's pictures fall out.
            if (name.right(4) != QLatin1String(".txt") && name.right(5) != QLatin1String(".html"))
                continue;
            grid->AddItem(folder + QLatin1Char('/') + name + QLatin1Char('\t') + name);
            ++count;
        }
    }

    if (count > 0) {
        grid->setCol(NameColumn);
        grid->setSort(FlexGrid::flexSortGenericAscending);
        grid->setColAlignment(NameColumn, FlexGrid::flexAlignLeftCenter);
        grid->setColWidth(PathColumn, 0);
        grid->setColWidth(NameColumn, NameColumnWidth);
        grid->setRow(0);
        grid->setVisible(true);
    } else {
        grid->setVisible(true);
        MsgBox(QStringLiteral("No reports were found in the KEVRO reports directory."), vbInformation);
    }
}

void frmReportViewer::gridReports_DblClick()
{
    if (gridReports->Rows() >= 1)
        OpenWithDefaultProgram(gridReports->TextMatrix(gridReports->Row(), PathColumn));
}

void frmReportViewer::cmdPrevious_Click()
{
    auto *menu = Forms::get<frmMainMenu>();
    menu->Move(Left(), Top());
    menu->show();
    Unload();
}
