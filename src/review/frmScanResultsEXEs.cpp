#include "review/frmScanResultsEXEs.h"

#include "catalogue/frmFileEntry.h"
#include "controls/FlexGrid.h"
#include "controls/Forms.h"
#include "controls/Pictures.h"
#include "controls/ScreenParts.h"
#include "platform/MsgBox.h"
#include "platform/Paths.h"
#include "platform/ShellOpen.h"
#include "platform/VbError.h"
#include "reporting/ScanReport.h"
#include "reporting/frmScanSummary.h"
#include "review/ReviewScreens.h"
#include "scan/frmScanDisc.h"
#include "shell/MainMod.h"
#include "shell/MainModScreens.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QCursor>
#include <QFrame>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMenuBar>
#include <QMouseEvent>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTreeWidget>

namespace {

constexpr int TagRole = Qt::UserRole;
constexpr int KeyRole = Qt::UserRole + 1;
constexpr int OccurrenceRole = Qt::UserRole + 2; // which of the files sharing the tag's path
constexpr int LeftButton = 1;
constexpr int RightButton = 2;
constexpr int GridNameColumn = 2;
constexpr int GridSizeColumn = 3;

// The web search's page when kevro.ini names none.
const QString DefaultSearchHost = QStringLiteral("https://www.google.com");


QTreeWidget *tree(QWidget *parent, const char *name)
{
    auto *t = Named(new QTreeWidget(parent), name);
    t->setHeaderHidden(true);
    t->setColumnCount(1);
    t->setRootIsDecorated(true);
    t->setUniformRowHeights(true);
    return t;
}


QAction *item(QMenu *menu, const char *name, const QString &caption)
{
    auto *a = Named(menu->addAction(caption), name);
    return a;
}

QAction *separator(QMenu *menu, const char *name)
{
    return Named(menu->addSeparator(), name);
}


} // namespace

frmScanResultsEXEs::frmScanResultsEXEs()
{
    setObjectName(QStringLiteral("frmScanResultsEXEs"));
    setWindowTitle(QStringLiteral("KEVRO - Application Viewer"));
    auto *central = new QWidget(this);
    setCentralWidget(central);
    menus = BuildStandardMenus(this);
    setFixedSize(TwipsToPixels(11400), TwipsToPixels(7680) + menuBar()->sizeHint().height());

    picBanner = BannerPicture(central, 11400);

    lblLicensedPrograms =
        Named(new QLabel(StoredLicensedCaption, central), "lblLicensedPrograms");
    PlaceTw(lblLicensedPrograms, 240, 1020, 4620, 270);
    treLicensedEXEs = tree(central, "treLicensedEXEs");
    PlaceTw(treLicensedEXEs, 240, 1290, 4620, 2400);
    lblUnlicensedPrograms = Named(new QLabel(StoredUnlicensedCaption, central), "lblUnlicensedPrograms");
    PlaceTw(lblUnlicensedPrograms, 240, 3810, 4620, 270);
    treUnlicensedEXEs = tree(central, "treUnlicensedEXEs");
    PlaceTw(treUnlicensedEXEs, 240, 4080, 4620, 2280);

    lblUnknownPrograms = Named(new QLabel(StoredUnknownCaption, central), "lblUnknownPrograms");
    PlaceTw(lblUnknownPrograms, 5040, 1020, 6120, 270);
    gridUnknownEXEs = Named(new FlexGrid(central), "gridUnknownEXEs");
    gridUnknownEXEs->setSelectionModeValue(FlexGrid::flexSelectionByRow);
    PlaceTw(gridUnknownEXEs, 5040, 1290, 6120, 2400);

    lblFileInfoCaption = Named(new QLabel(QStringLiteral("File Information"), central), "lblFileInfoCaption");
    PlaceTw(lblFileInfoCaption, 5040, 3810, 6120, 270);
    txtFileInfo = Named(new QPlainTextEdit(central), "txtFileInfo");
    txtFileInfo->setReadOnly(true);
    // A small face, as the version details are many short lines.
    QFont small = txtFileInfo->font();
    small.setPointSizeF(std::max(7.0, small.pointSizeF() * 0.8));
    txtFileInfo->setFont(small);
    PlaceTw(txtFileInfo, 5040, 4080, 6120, 2280);

    // Image stores and the list boxes of the simpler evaluation: never on show.
    picHiddenIcon = PictureHolder(central, "picHiddenIcon", QStringLiteral("hidden"));
    picZipIcon = PictureHolder(central, "picZipIcon", QStringLiteral("zip"));
    picTick = PictureHolder(central, "picTick", QStringLiteral("tick"));
    lstLicensedEXEs = Named(new QListWidget(central), "lstLicensedEXEs");
    lstUnlicensedEXEs = Named(new QListWidget(central), "lstUnlicensedEXEs");
    lstUnknownEXEs = Named(new QListWidget(central), "lstUnknownEXEs");
    for (QListWidget *l : {lstLicensedEXEs, lstUnlicensedEXEs, lstUnknownEXEs})
        l->hide();

    Line1 = RuleLine(central, "Line1", "#c9d3de", 240, 6600, 10920);
    linDark = RuleLine(central, "linDark", "#7f8c99", 240, 6630, 10920);
    cmdRunEXE = Named(new QPushButton(QStringLiteral("La&unch EXE"), central), "cmdRunEXE");
    PlaceTw(cmdRunEXE, 240, 6900, 1380, 450);
    cmdPrevious = Named(new QPushButton(QStringLiteral("< &Back"), central), "cmdPrevious");
    PlaceTw(cmdPrevious, 8460, 6900, 1260, 450);
    cmdNext = Named(new QPushButton(QStringLiteral("&Next >"), central), "cmdNext");
    cmdNext->setDefault(true);
    PlaceTw(cmdNext, 9900, 6900, 1260, 450);

    mnuContextLicensed = Named(new QMenu(QStringLiteral("ContextMenuLicensed"), this), "mnuContextLicensed");
    mnuContextLicensedLaunchEXE = item(mnuContextLicensed, "mnuContextLicensedLaunchEXE", QStringLiteral("La&unch Exe"));
    mnuContextLicensedBreak = separator(mnuContextLicensed, "mnuContextLicensedBreak");
    mnuContextLicensedShowWebsite =
        item(mnuContextLicensed, "mnuContextLicensedShowWebsite", QStringLiteral("Show &Web License"));
    mnuContextUnlicensed = Named(new QMenu(QStringLiteral("ContextMenuUnlicensed"), this), "mnuContextUnlicensed");
    mnuContextUnlicensedLaunchExe =
        item(mnuContextUnlicensed, "mnuContextUnlicensedLaunchExe", QStringLiteral("La&unch Exe"));
    mnuContextUnlicensedBreak = separator(mnuContextUnlicensed, "mnuContextUnlicensedBreak");
    mnuContextUnlicensedAddToLicenced =
        item(mnuContextUnlicensed, "mnuContextUnlicensedAddToLicenced", QStringLiteral("Add &To Licensed"));
    mnuContextUnlicensedShowWebsite =
        item(mnuContextUnlicensed, "mnuContextUnlicensedShowWebsite", QStringLiteral("Show &Web License"));
    mnuContextUnknown = Named(new QMenu(QStringLiteral("ContextMenuUnknown"), this), "mnuContextUnknown");
    mnuContextUnknownLaunchEXE = item(mnuContextUnknown, "mnuContextUnknownLaunchEXE", QStringLiteral("La&unch Exe"));
    mnuContextUnknownBreak = separator(mnuContextUnknown, "mnuContextUnknownBreak");
    mnuContextUnknownAddToFileDb =
        item(mnuContextUnknown, "mnuContextUnknownAddToFileDb", QStringLiteral("Add To F&ile Database"));
    mnuContextUnknownSearchOnWeb =
        item(mnuContextUnknown, "mnuContextUnknownSearchOnWeb", QStringLiteral("Search On &Web"));

    // A right click shows a menu for the node already selected and never selects one itself.
    for (QTreeWidget *t : {treLicensedEXEs, treUnlicensedEXEs}) {
        t->viewport()->installEventFilter(this);
        t->installEventFilter(this);
    }

    On(gridUnknownEXEs, &FlexGrid::RowColChange, this,
       [this] { ShowFileInformation(UnknownRowPath(), UnknownRowOccurrence()); });
    On(gridUnknownEXEs, &FlexGrid::MouseUp, this,
       [this](int button, int, long, long) { gridUnknownEXEs_MouseUp(button); });
    On(mnuContextLicensedLaunchEXE, &QAction::triggered, this,
       [this] { LaunchProgram(NodeTag(treLicensedEXEs->currentItem()), NodeOccurrence(treLicensedEXEs->currentItem())); });
    On(mnuContextUnlicensedLaunchExe, &QAction::triggered, this,
       [this] {
           LaunchProgram(NodeTag(treUnlicensedEXEs->currentItem()), NodeOccurrence(treUnlicensedEXEs->currentItem()));
       });
    On(mnuContextUnknownLaunchEXE, &QAction::triggered, this, [this] {
        if (gridUnknownEXEs->Rows() > 0)
            LaunchProgram(UnknownRowPath(), UnknownRowOccurrence());
    });
    On(mnuContextLicensedShowWebsite, &QAction::triggered, this, [this] {
        if (treLicensedEXEs->currentItem())
            DisplaySelectedLicenseWebsite(treLicensedEXEs->currentItem()->text(0));
    });
    On(mnuContextUnlicensedShowWebsite, &QAction::triggered, this, [this] {
        if (treUnlicensedEXEs->currentItem())
            DisplaySelectedLicenseWebsite(treUnlicensedEXEs->currentItem()->text(0));
    });
    On(mnuContextUnknownSearchOnWeb, &QAction::triggered, this, [this] {
        if (gridUnknownEXEs->Rows() > 0)
            SearchWeb(FileNameOnly(gridUnknownEXEs->TextMatrix(gridUnknownEXEs->Row(), GridNameColumn)));
    });
    // An unknown program into the catalogue; it is judged by its new entry only at the next scan.
    On(mnuContextUnknownAddToFileDb, &QAction::triggered, this, [this] {
        auto *entry = Forms::get<frmFileEntry>();
        entry->txtAppName->setText(FileNameOnly(gridUnknownEXEs->TextMatrix(gridUnknownEXEs->Row(), 1)));
        entry->lblFromForm->setText(QStringLiteral("ScanResultsEXEs"));
        entry->lblEditMode->setText(QStringLiteral("Add"));
        entry->Move(Left(), Top());
        entry->show();
        hide();
    });
    // "Add To Licensed" never acts: licences are added on the licence screen only.
    On(cmdNext, &QPushButton::clicked, this, [this] { cmdNext_Click(); });
    On(cmdPrevious, &QPushButton::clicked, this, [this] { cmdPrevious_Click(); });
    // cmdRunEXE has no action.
    On(menus.mnuFileExit, &QAction::triggered, this, [] { EndProcess(0); });
    ConnectOptionsAndHelp(this, menus);
}

QString frmScanResultsEXEs::NodeTag(const QTreeWidgetItem *node)
{
    return node ? node->data(0, TagRole).toString() : QString();
}

int frmScanResultsEXEs::NodeOccurrence(const QTreeWidgetItem *node)
{
    return node ? node->data(0, OccurrenceRole).toInt() : 0;
}

QString frmScanResultsEXEs::UnknownRowPath() const
{
    return gridUnknownEXEs->TextMatrix(gridUnknownEXEs->Row(), 1);
}

int frmScanResultsEXEs::UnknownRowOccurrence() const
{
    return int(gridUnknownEXEs->RowData(gridUnknownEXEs->Row()));
}

QString frmScanResultsEXEs::NodeKey(const QTreeWidgetItem *node)
{
    return node ? node->data(0, KeyRole).toString() : QString();
}

void frmScanResultsEXEs::Form_Load()
{
    m_nameSortAscending = false;
    m_sizeSortAscending = false;
    EvaluateExecutables();
}

void frmScanResultsEXEs::Form_QueryUnload(int &, int unloadMode)
{
    if (unloadMode == vbFormControlMenu)
        EndProcess(0);
}

void frmScanResultsEXEs::EvaluateExecutables()
{
    FlexGrid *grid = gridUnknownEXEs;
    grid->setCols(4);
    grid->setRows(0);
    grid->setColWidth(0, long(picZipIcon->pixmap().width()) * TwipsPerPixel + 80);
    grid->setColWidth(1, 0);
    grid->setColWidth(GridNameColumn, 4110);
    grid->setColWidth(GridSizeColumn, 1240);
    grid->AddItem(QStringLiteral("\tPath\tFile Name\tFile Size"));
    const Hourglass hourglass;
    treLicensedEXEs->clear();
    treUnlicensedEXEs->clear();

    m_evaluation = ::EvaluateExecutables(gMediaFiles, gClientCode);
    for (const UnknownExe &u : m_evaluation.unknown) {
        grid->AddItem(QStringLiteral("\t") + u.path + QLatin1Char('\t') + u.fileName + QLatin1Char('\t') + u.sizeText);
        grid->setRowData(grid->Rows() - 1, u.occurrence);
    }
    if (!m_evaluation.catalogueEmpty) {
        FillApplicationTrees();
        auto *summary = Forms::get<frmScanSummary>();
        summary->lblUnlicensedTotal->setText(QString::number(m_evaluation.unlicensed.size()));
        summary->lblLicensedTotal->setText(QString::number(m_evaluation.licensed.size()));
    }

    // A grid that holds only its title row loses that row too.
    if (grid->Rows() >= 2)
        grid->setFixedRows(1);
    else
        grid->setRows(0);
    lblUnknownPrograms->setText(m_evaluation.unknownCaption);
    Forms::get<frmScanSummary>()->lblUnknownTotal->setText(grid->Rows() >= 1 ? QString::number(grid->Rows() - 1)
                                                                             : QStringLiteral("0"));
    if (grid->Rows() >= 1) {
        // Rows follow the evaluation's unknown list; an archive member that is hidden too shows the
        // archive's mark.
        for (int r = 1; r < grid->Rows(); ++r) {
            const UnknownExe &u = m_evaluation.unknown[r - 1];
            if (!u.inArchive && !u.hidden)
                continue;
            grid->setRow(r);
            grid->setCol(0);
            grid->setCellPictureAlignment(FlexGrid::flexAlignCenterCenter);
            grid->setCellPicture(u.inArchive ? picZipIcon->pixmap() : picHiddenIcon->pixmap());
        }
        grid->setCol(GridNameColumn);
        grid->setSort(FlexGrid::flexSortGenericAscending);
        grid->setColAlignment(GridNameColumn, FlexGrid::flexAlignLeftCenter);
    }
}

void frmScanResultsEXEs::ShowEXEs()
{
    const ExeLists lists = ListExecutablesByLicence(gMediaFiles, gClientCode);
    lstLicensedEXEs->clear();
    lstUnlicensedEXEs->clear();
    lstUnknownEXEs->clear();
    lstLicensedEXEs->addItems(lists.licensed);
    lstUnlicensedEXEs->addItems(lists.unlicensed);
    lstUnknownEXEs->addItems(lists.unknown);
    lblUnlicensedPrograms->setText(QStringLiteral("Unlicensed Programs - ") + QString::number(lists.unlicensed.size()));
    lblLicensedPrograms->setText(QStringLiteral("Licensed Programs - ") + QString::number(lists.licensed.size()));
    lblUnknownPrograms->setText(QStringLiteral("Unknown Programs - ") + QString::number(lists.unknown.size()));
    auto *summary = Forms::get<frmScanSummary>();
    summary->lblLicensedTotal->setText(QString::number(lists.licensed.size()));
    summary->lblUnlicensedTotal->setText(QString::number(lists.unlicensed.size()));
    summary->lblUnknownTotal->setText(QString::number(lists.unknown.size()));
}

void frmScanResultsEXEs::FillApplicationTrees()
{
    const auto fill = [](QTreeWidget *tree, const QList<ApplicationRoot> &roots) {
        for (const ApplicationRoot &root : roots) {
            auto *node = new QTreeWidgetItem(tree, {root.name});
            node->setData(0, KeyRole, root.key);
            for (const ApplicationFile &f : root.files) {
                auto *child = new QTreeWidgetItem(node, {f.text});
                child->setData(0, KeyRole, f.key);
                child->setData(0, TagRole, f.tag);
                child->setData(0, OccurrenceRole, f.occurrence);
            }
        }
        tree->expandAll();
    };
    fill(treLicensedEXEs, m_evaluation.licensed);
    fill(treUnlicensedEXEs, m_evaluation.unlicensed);
    lblUnlicensedPrograms->setText(m_evaluation.unlicensedCaption);
    lblLicensedPrograms->setText(m_evaluation.licensedCaption);
}

void frmScanResultsEXEs::ShowFileInformation(const QString &path, int occurrence)
{
    // Nothing that goes wrong here is ever shown: at worst the panel says there is no information.
    txtFileInfo->setPlainText(m_info.FileInformationText(path, occurrence));
}

bool frmScanResultsEXEs::eventFilter(QObject *watched, QEvent *event)
{
    for (QTreeWidget *t : {treLicensedEXEs, treUnlicensedEXEs}) {
        if (watched == t && event->type() == QEvent::KeyRelease) {
            tree_Select(t);
        } else if (watched == t->viewport()) {
            const auto *mouse = static_cast<QMouseEvent *>(event);
            if (event->type() == QEvent::MouseButtonPress || event->type() == QEvent::MouseButtonDblClick) {
                if (mouse->button() == Qt::RightButton)
                    return true; // no selection by the right button
            } else if (event->type() == QEvent::MouseButtonRelease) {
                if (mouse->button() == Qt::RightButton) {
                    tree_MouseUp(t, RightButton);
                    return true;
                }
                if (mouse->button() == Qt::LeftButton)
                    tree_Select(t);
            }
        }
    }
    return Form::eventFilter(watched, event);
}

void frmScanResultsEXEs::tree_Select(QTreeWidget *t)
{
    if (t->topLevelItemCount() == 0 || !t->currentItem())
        return;
    const QString tag = NodeTag(t->currentItem());
    if (tag.isEmpty()) {
        txtFileInfo->setPlainText(QString());
        t->setToolTip(QString());
        return;
    }
    ShowFileInformation(tag, NodeOccurrence(t->currentItem()));
    t->setToolTip(ChangePathIfCompressed(tag));
}

void frmScanResultsEXEs::tree_MouseUp(QTreeWidget *t, int button)
{
    if (button != RightButton || t->topLevelItemCount() == 0 || !t->currentItem())
        return;
    const bool root = NodeTag(t->currentItem()).isEmpty();
    if (t == treLicensedEXEs) {
        mnuContextLicensedLaunchEXE->setVisible(!root);
        mnuContextLicensedShowWebsite->setVisible(root);
        mnuContextLicensed->popup(QCursor::pos());
    } else {
        mnuContextUnlicensedAddToLicenced->setVisible(false);
        mnuContextUnlicensedLaunchExe->setVisible(!root);
        mnuContextUnlicensedShowWebsite->setVisible(root);
        mnuContextUnlicensed->popup(QCursor::pos());
    }
}

void frmScanResultsEXEs::gridUnknownEXEs_MouseUp(int button)
{
    FlexGrid *grid = gridUnknownEXEs;
    const bool filled = grid->Rows() > 0;
    if (button == LeftButton && grid->MouseRow() < 1 && filled) {
        grid->setCol(grid->MouseCol() == GridSizeColumn ? GridSizeColumn : GridNameColumn);
        if (grid->Col() == GridNameColumn) {
            grid->setSort(m_nameSortAscending ? FlexGrid::flexSortGenericDescending : FlexGrid::flexSortGenericAscending);
            m_nameSortAscending = !m_nameSortAscending;
        } else {
            grid->setSort(m_sizeSortAscending ? FlexGrid::flexSortNumericDescending : FlexGrid::flexSortNumericAscending);
            m_sizeSortAscending = !m_sizeSortAscending;
            grid->setCol(0);
        }
    }
    if (button == RightButton) {
        mnuContextUnknownLaunchEXE->setVisible(filled);
        mnuContextUnknownSearchOnWeb->setVisible(filled);
        if (filled) {
            // The search reads the company name of this very row.
            ShowFileInformation(UnknownRowPath(), UnknownRowOccurrence());
            mnuContextUnknown->popup(QCursor::pos());
        }
    }
    if (filled)
        ShowFileInformation(UnknownRowPath(), UnknownRowOccurrence());
}

void frmScanResultsEXEs::LaunchProgram(const QString &path, int occurrence)
{
    try {
        // The file goes to the desktop's opener; nothing from the disc runs by itself here.
        if (ShellOpen(QLatin1Char('"') + RealPath(path, occurrence) + QLatin1Char('"'), vbNormalFocus) <=
            ShellExecuteFailureLimit)
            RaiseVbError(VbErr::FileNotFound);
    } catch (const VbError &) {
        MsgBox(QStringLiteral("Program can not run - it may be corrupt."), vbCritical);
    }
}

void frmScanResultsEXEs::DisplaySelectedLicenseWebsite(const QString &appName)
{
    const std::optional<QString> address = WebLicenceOf(appName);
    if (!address)
        return;
    if (!address->isEmpty())
        OpenWithDefaultProgram(*address);
    else
        MsgBox(QStringLiteral("No web-site listed for this program."), vbInformation);
}

void frmScanResultsEXEs::SearchWeb(const QString &fileName)
{
    QString host = ReadIniKey(QStringLiteral("Web"), QStringLiteral("SearchHost")).trimmed();
    if (host.isEmpty() || host == QLatin1String("Nowt"))
        host = DefaultSearchHost;
    const QString company = m_info.CompanyName;
    OpenWithDefaultProgram(host + QStringLiteral("/search?q=") +
                           (company.isEmpty() ? fileName : company + QLatin1Char(' ') + fileName));
}

void frmScanResultsEXEs::cmdNext_Click()
{
    const Hourglass hourglass;
    const auto *scan = Forms::get<frmScanDisc>();
    QString next = QStringLiteral("frmScanSummary");
    if (scan->chkVideoFiles->isChecked())
        next = QStringLiteral("frmScanResultsVideo");
    else if (scan->chkAudioFiles->isChecked())
        next = QStringLiteral("frmScanResultsAudio");
    else if (scan->chkImageFiles->isChecked())
        next = QStringLiteral("frmScanResultsImages");
    else if (scan->chkTextFiles->isChecked())
        next = QStringLiteral("frmScanResultsText");
    else if (scan->chkOtherFiles->isChecked())
        next = QStringLiteral("frmScanResultsOther");
    Form *target = ReviewScreenNamed(next);
    if (!target)
        return; // that screen is not part of the program yet
    target->Move(Left(), Top());
    target->show();
    hide();
}

void frmScanResultsEXEs::cmdPrevious_Click()
{
    auto *scan = Forms::get<frmScanDisc>();
    scan->Move(Left(), Top());
    scan->show();
    Unload();
}
