#include "reporting/frmScanSummary.h"

#include "controls/FlexGrid.h"
#include "controls/Forms.h"
#include "controls/ScreenParts.h"
#include "platform/MsgBox.h"
#include "platform/ShellOpen.h"
#include "platform/VbError.h"
#include "reporting/ScanReport.h"
#include "review/ReviewScreens.h"
#include "review/frmScanResultsEXEs.h"
#include "scan/frmScanDisc.h"
#include "shell/MainMod.h"
#include "shell/MainModScreens.h"
#include "shell/frmMainMenu.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QMenuBar>
#include <QPushButton>
#include <QRadioButton>
#include <QTreeWidget>

namespace {
constexpr long RowLeft = 300;
constexpr long FoundLeft = 2520;
constexpr long CheckedLeft = 3480;
constexpr long NumberWidth = 780;
constexpr long FirstRowTop = 600;
constexpr long RowHeight = 330;

QLabel *label(QWidget *parent, const char *name, const QString &caption, long left, long top, long width,
              Qt::Alignment alignment = Qt::AlignLeft | Qt::AlignVCenter)
{
    auto *l = Named(new QLabel(caption, parent), name);
    l->setAlignment(alignment);
    PlaceTw(l, left, top, width, 285);
    return l;
}
} // namespace

frmScanSummary::frmScanSummary()
{
    setObjectName(QStringLiteral("frmScanSummary"));
    setWindowTitle(QStringLiteral("KEVRO - Scan Results Summary"));
    auto *central = new QWidget(this);
    setCentralWidget(central);
    menus = BuildStandardMenus(this);
    setFixedSize(TwipsToPixels(7800), TwipsToPixels(5820) + menuBar()->sizeHint().height());

    picBanner = BannerPicture(central, 7800);

    frmSummary = Named(new QGroupBox(QStringLiteral("Scan Results Summary"), central), "frmSummary");
    PlaceTw(frmSummary, 360, 1080, 4560, 3420);
    // The column heads in a small font.
    QFont small = font();
    small.setPointSizeF(small.pointSizeF() * 0.8);
    const Qt::Alignment centred = Qt::AlignHCenter | Qt::AlignVCenter;
    lblFound = label(frmSummary, "lblFound", QStringLiteral("Found"), FoundLeft, 300, NumberWidth, centred);
    lblChecked = label(frmSummary, "lblChecked", QStringLiteral("Checked"), CheckedLeft, 300, NumberWidth, centred);
    lblFound->setFont(small);
    lblChecked->setFont(small);

    int row = 0;
    const auto tableRow = [&](const char *name, const QString &caption, const char *found, const char *checked,
                              const QString &checkedCaption, QLabel **foundLabel, QLabel **checkedLabel) {
        const long top = FirstRowTop + row++ * RowHeight;
        QLabel *l = label(frmSummary, name, caption, RowLeft, top, FoundLeft - RowLeft - 60);
        *foundLabel = label(frmSummary, found, QStringLiteral("0"), FoundLeft, top, NumberWidth, centred);
        *checkedLabel = label(frmSummary, checked, checkedCaption, CheckedLeft, top, NumberWidth, centred);
        return l;
    };
    const QString dash = QStringLiteral("-"), zero = QStringLiteral("0");
    lblUnLicensedEXEs = tableRow("lblUnLicensedEXEs", QStringLiteral("Un-licensed Apps:"), "lblUnlicensedTotal",
                                 "lblDash1", dash, &lblUnlicensedTotal, &lblDash1);
    lblLicensedEXEs = tableRow("lblLicensedEXEs", QStringLiteral("Licensed Apps:"), "lblLicensedTotal", "lblDash2",
                               dash, &lblLicensedTotal, &lblDash2);
    lblUnknownEXEs = tableRow("lblUnknownEXEs", QStringLiteral("Unknown EXEs:"), "lblUnknownTotal", "lblDash3", dash,
                              &lblUnknownTotal, &lblDash3);
    lblVideoResults = tableRow("lblVideoResults", QStringLiteral("Video Files:"), "lblVideoTotal", "lblVideoChecked",
                               zero, &lblVideoTotal, &lblVideoChecked);
    lblAudioFiles = tableRow("lblAudioFiles", QStringLiteral("Audio Files"), "lblAudioTotal", "lblAudioChecked", zero,
                             &lblAudioTotal, &lblAudioChecked);
    lblImageFiles = tableRow("lblImageFiles", QStringLiteral("Image Files:"), "lblImagesTotal", "lblImagesChecked",
                             zero, &lblImagesTotal, &lblImagesChecked);
    lblTextfiles = tableRow("lblTextfiles", QStringLiteral("Text Files:"), "lblTextTotal", "lblTextChecked", zero,
                            &lblTextTotal, &lblTextChecked);
    lblExternal = tableRow("lblExternal", QStringLiteral("External Files:"), "lblExternalTotal",
                           "lblExternalChecked", zero, &lblExternalTotal, &lblExternalChecked);

    frmDetailedReport = Named(new QGroupBox(QStringLiteral("Report"), central), "frmDetailedReport");
    PlaceTw(frmDetailedReport, 5100, 1080, 2340, 2040);
    optHTML = Named(new QRadioButton(QStringLiteral("HTML"), frmDetailedReport), "optHTML");
    PlaceTw(optHTML, 300, 390, 1800, 330);
    optHTML->setChecked(true);
    optText = Named(new QRadioButton(QStringLiteral("Plain Text"), frmDetailedReport), "optText");
    PlaceTw(optText, 300, 780, 1800, 330);
    cmdPrintReport = Named(new QPushButton(QStringLiteral("&Full Report"), frmDetailedReport), "cmdPrintReport");
    PlaceTw(cmdPrintReport, 300, 1320, 1740, 450);

    Line1 = RuleLine(central, "Line1", "#c9d3de", 240, 4800, 7320);
    linDark = RuleLine(central, "linDark", "#7f8c99", 240, 4830, 7320);
    cmdPrevious = Named(new QPushButton(QStringLiteral("< &Back"), central), "cmdPrevious");
    PlaceTw(cmdPrevious, 4740, 5100, 1260, 450);
    cmdFinish = Named(new QPushButton(QStringLiteral("&Finish"), central), "cmdFinish");
    cmdFinish->setDefault(true);
    PlaceTw(cmdFinish, 6180, 5100, 1260, 450);

    On(cmdPrintReport, &QPushButton::clicked, this, [this] { cmdPrintReport_Click(); });
    On(cmdFinish, &QPushButton::clicked, this, [this] { cmdFinish_Click(); });
    On(cmdPrevious, &QPushButton::clicked, this, [this] { cmdPrevious_Click(); });
    On(menus.mnuFileExit, &QAction::triggered, this, [] { ExitApplication(); });
    ConnectOptionsAndHelp(this, menus);
    // The Scan Engine and Database entries do nothing on this screen.
}

void frmScanSummary::Form_Load()
{
    m_reportCreated = false;
    try {
        const QString type = ReadIniKey(QStringLiteral("Reports"), QStringLiteral("DefaultReportType ")).left(4).toUpper();
        if (type == QLatin1String("HTML"))
            optHTML->setChecked(true);
        else if (type == QLatin1String("TEXT"))
            optText->setChecked(true);
    } catch (const VbError &) {
        MsgBox(QStringLiteral("Could not get default report type from ") + AppTitle() + QStringLiteral(" INI file."),
               vbCritical);
    }
}

void frmScanSummary::Form_QueryUnload(int &, int unloadMode)
{
    if (unloadMode == vbFormControlMenu)
        ExitApplication();
}

void frmScanSummary::ResetCheckedValues()
{
    lblVideoChecked->setText(QStringLiteral("0"));
    lblAudioChecked->setText(QStringLiteral("0"));
    lblTextChecked->setText(QStringLiteral("0"));
    lblImagesChecked->setText(QStringLiteral("0"));
}

JobResults frmScanSummary::ResultsShown()
{
    JobResults r;
    // The application viewer's lists as it shows them; touching it loads it, as any screen.
    auto *exes = Forms::get<frmScanResultsEXEs>();
    r.unlicensedCaption = exes->lblUnlicensedPrograms->text();
    r.licensedCaption = exes->lblLicensedPrograms->text();
    r.unknownCaption = exes->lblUnknownPrograms->text();
    const auto applications = [](const QTreeWidget *tree) {
        QStringList names;
        for (int i = 0; i < tree->topLevelItemCount(); ++i) {
            const QTreeWidgetItem *node = tree->topLevelItem(i);
            if (frmScanResultsEXEs::NodeTag(node).isEmpty())
                names << node->text(0);
        }
        return names;
    };
    r.unlicensedApplications = applications(exes->treUnlicensedEXEs);
    r.licensedApplications = applications(exes->treLicensedEXEs);
    const FlexGrid *grid = exes->gridUnknownEXEs;
    for (int row = 1; row < grid->Rows(); ++row)
        r.unknownFiles.append({grid->TextMatrix(row, 1), grid->TextMatrix(row, 3)});

    r.video = {lblVideoTotal->text(), lblVideoChecked->text()};
    r.audio = {lblAudioTotal->text(), lblAudioChecked->text()};
    r.images = {lblImagesTotal->text(), lblImagesChecked->text()};
    r.text = {lblTextTotal->text(), lblTextChecked->text()};
    r.external = {lblExternalTotal->text(), lblExternalChecked->text()};
    return r;
}

void frmScanSummary::cmdPrintReport_Click()
{
    SaveReport(optHTML->isChecked() ? ReportFormat::Html : ReportFormat::Text, [this] { return ResultsShown(); });
    m_reportCreated = true;
}

void frmScanSummary::cmdFinish_Click()
{
    if (!m_reportCreated) {
        if (MsgBox(QStringLiteral("A scan report has not been created.  Are you sure you want to continue?"),
                   vbYesNo | vbExclamation) != vbYes)
            return;
        DoEvents();
    }
    ReturnToMainMenu();
}

void frmScanSummary::ReturnToMainMenu()
{
    ResetCheckedValues();
    auto *menu = Forms::get<frmMainMenu>();
    menu->Move(Left(), Top());
    menu->cmbClientCode->setEditText(gClientCode);
    menu->show();
    Unload();
}

void frmScanSummary::cmdPrevious_Click()
{
    const auto *scan = Forms::get<frmScanDisc>();
    const QList<QPair<QCheckBox *, const char *>> chain{
        {scan->chkOtherFiles, "frmScanResultsOther"},   {scan->chkTextFiles, "frmScanResultsText"},
        {scan->chkImageFiles, "frmScanResultsImages"},  {scan->chkAudioFiles, "frmScanResultsAudio"},
        {scan->chkVideoFiles, "frmScanResultsVideo"},   {scan->chkEXEFiles, "frmScanResultsEXEs"},
    };
    for (const auto &[box, name] : chain) {
        if (!box->isChecked())
            continue;
        Form *target = ReviewScreenNamed(QLatin1String(name));
        if (!target)
            return; // that screen is not part of the program yet
        target->Move(Left(), Top());
        target->show();
        hide();
        return;
    }
    auto *scanDisc = Forms::get<frmScanDisc>();
    scanDisc->Move(Left(), Top());
    scanDisc->show();
    Unload();
}
