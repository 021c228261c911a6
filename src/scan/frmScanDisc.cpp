#include "scan/frmScanDisc.h"

#include "controls/DriveList.h"
#include "controls/Forms.h"
#include "controls/Pictures.h"
#include "controls/ScreenParts.h"
#include "platform/MsgBox.h"
#include "platform/Paths.h"
#include "platform/ShellOpen.h"
#include "platform/VbError.h"
#include "reporting/frmScanSummary.h"
#include "review/frmScanResultsEXEs.h"
#include "review/frmScanResultsAudio.h"
#include "review/frmScanResultsImages.h"
#include "review/frmScanResultsOther.h"
#include "review/frmScanResultsText.h"
#include "review/frmScanResultsVideo.h"
#include "scan/frmScanProgress.h"
#include "shell/MainMod.h"
#include "shell/MainModScreens.h"
#include "shell/frmMainMenu.h"

#include <QAction>
#include <QCheckBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QFrame>
#include <QGroupBox>
#include <QLabel>
#include <QMenuBar>
#include <QPushButton>

frmScanDisc::frmScanDisc()
{
    setObjectName(QStringLiteral("frmScanDisc"));
    setWindowTitle(QStringLiteral("KEVRO - Scan Disc"));
    auto *central = new QWidget(this);
    setCentralWidget(central);
    menus = BuildStandardMenus(this);
    setFixedSize(TwipsToPixels(7800), TwipsToPixels(5160) + menuBar()->sizeHint().height());

    picBanner = BannerPicture(central, 7800);

    lblDriveToScan = Named(new QLabel(QStringLiteral("Drive To Scan:"), central), "lblDriveToScan");
    PlaceTw(lblDriveToScan, 360, 1200, 1500, 300);
    Drive1 = Named(new DriveList(central), "Drive1");
    lblDriveToScan->setBuddy(Drive1);
    PlaceTw(Drive1, 1860, 1140, 3060, 390);
    cmdChooseFolder = Named(new QPushButton(QStringLiteral("Fol&der..."), central), "cmdChooseFolder");
    cmdChooseFolder->setToolTip(QStringLiteral("Scan a folder, such as a master delivered as a copy"));
    PlaceTw(cmdChooseFolder, 5040, 1125, 1140, 420);
    cmdChooseImage = Named(new QPushButton(QStringLiteral("I&mage..."), central), "cmdChooseImage");
    cmdChooseImage->setToolTip(QStringLiteral("Scan a disc image file (ISO, UDF, BIN/CUE) without burning or mounting it"));
    PlaceTw(cmdChooseImage, 6300, 1125, 1140, 420);

    frmFilesToScan = Named(new QGroupBox(QStringLiteral("What files do you want to scan?"), central), "frmFilesToScan");
    PlaceTw(frmFilesToScan, 360, 1740, 7080, 1680);
    auto box = [this](const char *name, const QString &caption, long left, long top) {
        auto *b = Named(new QCheckBox(caption, frmFilesToScan), name);
        b->setChecked(true);
        PlaceTw(b, left, top, 3000, 330);
        return b;
    };
    chkEXEFiles = box("chkEXEFiles", QStringLiteral("&EXE Files"), 360, 420);
    chkVideoFiles = box("chkVideoFiles", QStringLiteral("&Video Files"), 360, 810);
    chkAudioFiles = box("chkAudioFiles", QStringLiteral("Audio Files"), 360, 1200);
    chkImageFiles = box("chkImageFiles", QStringLiteral("&Image Files"), 3720, 420);
    chkTextFiles = box("chkTextFiles", QStringLiteral("&Text Files"), 3720, 810);
    chkOtherFiles = box("chkOtherFiles", QStringLiteral("E&xternal Files"), 3720, 1200);

    chkShowProgressBar = Named(new QCheckBox(QStringLiteral("Show Progress Bar"), central), "chkShowProgressBar");
    chkShowProgressBar->setChecked(true);
    PlaceTw(chkShowProgressBar, 360, 3600, 3000, 330);

    Line1 = RuleLine(central, "Line1", "#c9d3de", 240, 4140, 7320);
    linDark = RuleLine(central, "linDark", "#7f8c99", 240, 4170, 7320);

    cmdPrevious = Named(new QPushButton(QStringLiteral("< &Back"), central), "cmdPrevious");
    PlaceTw(cmdPrevious, 4740, 4440, 1260, 450);
    cmdNext = Named(new QPushButton(QStringLiteral("&Next >"), central), "cmdNext");
    cmdNext->setDefault(true);
    PlaceTw(cmdNext, 6180, 4440, 1260, 450);

    On(Drive1, &QComboBox::currentIndexChanged, this, [this] { Drive1_Change(); });
    On(cmdChooseFolder, &QPushButton::clicked, this, [this] { cmdChooseFolder_Click(); });
    On(cmdChooseImage, &QPushButton::clicked, this, [this] { cmdChooseImage_Click(); });
    On(cmdNext, &QPushButton::clicked, this, [this] { cmdNext_Click(); });
    On(cmdPrevious, &QPushButton::clicked, this, [this] { cmdPrevious_Click(); });
    On(menus.mnuFileExit, &QAction::triggered, this, [] { EndProcess(0); });
    ConnectOptionsAndHelp(this, menus);
    // The Scan Engine and Database entries do nothing on this screen.
}

void frmScanDisc::Form_Load()
{
    const QString value = ReadDefaultDevice();
    try {
        Drive1->setDrive(DeviceFromIniValue(value));
    } catch (const VbError &) {
        // A letter names a drive of the station the setting came from; a folder is named as it is.
        const QString device = value.startsWith(QLatin1Char('/')) ? value : value.left(1).toUpper() + QStringLiteral(":\\");
        MsgBox(QStringLiteral("Default device ") + device + QStringLiteral(" is not ready or available."), vbCritical);
    }
}

void frmScanDisc::Form_QueryUnload(int &, int unloadMode)
{
    if (unloadMode == vbFormControlMenu)
        EndProcess(0);
}

void frmScanDisc::Drive1_Change()
{
    // Touches the new volume, as asking for its current folder did; nothing catches a failure here. An
    // empty optical drive is a drive all the same: Next tells the operator it holds no disc.
    const QString drive = Drive1->Drive();
    if (!QFileInfo::exists(drive) && !IsEmptyDrive(drive))
        RaiseVbError(VbErr::DeviceUnavailable);
}

void frmScanDisc::cmdChooseFolder_Click()
{
    const QString folder =
        QFileDialog::getExistingDirectory(this, QStringLiteral("Folder To Scan"), Drive1->Drive());
    if (!folder.isEmpty())
        Drive1->setDrive(folder);
}

void frmScanDisc::cmdChooseImage_Click()
{
    const QString file = QFileDialog::getOpenFileName(
        this, QStringLiteral("Disc Image To Scan"), QString(),
        QStringLiteral("Disc images (*.iso *.ISO *.img *.IMG *.udf *.UDF *.cue *.CUE *.bin *.BIN);;All files (*)"));
    if (file.isEmpty())
        return;
    try {
        Drive1->setDrive(file);
    } catch (const VbError &) {
        // A file that is no disc image is no volume to scan.
        MsgBox(QStringLiteral("Device is not available or media is not loaded."), vbCritical);
    }
}

void frmScanDisc::PrepareToScan()
{
    try {
        // No result of an earlier scan survives into this one.
        Forms::unload<frmScanResultsEXEs>();
        Forms::unload<frmScanResultsImages>();
        Forms::unload<frmScanResultsText>();
        Forms::unload<frmScanResultsAudio>();
        Forms::unload<frmScanResultsVideo>();
        Forms::unload<frmScanResultsOther>();
        Forms::get<frmScanSummary>()->ResetCheckedValues();
    } catch (const VbError &) {
        // The drive text of this message is never set: the letter is missing.
        MsgBox(QStringLiteral("Default device :\\ is not ready or available."), vbCritical);
    }
}

void frmScanDisc::cmdNext_Click()
{
    const QList<QCheckBox *> kinds{chkEXEFiles, chkTextFiles, chkVideoFiles, chkImageFiles, chkAudioFiles, chkOtherFiles};
    if (std::none_of(kinds.begin(), kinds.end(), [](QCheckBox *b) { return b->isChecked(); })) {
        MsgBox(QStringLiteral("You must select something to scan."), vbExclamation);
        return;
    }
    try {
        PrepareToScan();
        ResetExtractFolder();
        auto *progress = Forms::get<frmScanProgress>();
        progress->setDrive(Drive1->Drive());
        progress->Move(Left(), Top());
        progress->show();
        hide();
        progress->ScanFiles();
    } catch (const VbError &) {
        MsgBox(QStringLiteral("Device is not available or media is not loaded."), vbCritical);
        // No scan to watch: the progress screen goes, and a volume that failed once the scan had begun
        // brings this screen back.
        Forms::unload<frmScanProgress>();
        if (isHidden())
            show();
    }
}

void frmScanDisc::cmdPrevious_Click()
{
    auto *menu = Forms::get<frmMainMenu>();
    menu->Move(Left(), Top());
    menu->show();
    Unload();
}
