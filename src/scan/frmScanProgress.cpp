#include "scan/frmScanProgress.h"

#include "review/ReviewScreens.h"

#include "controls/Forms.h"
#include "controls/Pictures.h"
#include "platform/Events.h"
#include "platform/MsgBox.h"
#include "platform/VbError.h"
#include "scan/frmScanDisc.h"
#include "shell/MainMod.h"
#include "shell/MainModScreens.h"

#include <QAction>
#include <QCheckBox>
#include <QDir>
#include <QFileInfo>
#include <QGroupBox>
#include <QLabel>
#include <QMenuBar>
#include <QProgressBar>
#include <QPushButton>

frmScanProgress::frmScanProgress()
{
    setObjectName(QStringLiteral("frmScanProgress"));
    setWindowTitle(QStringLiteral("KEVRO - Scanning Media..."));
    auto *central = new QWidget(this);
    setCentralWidget(central);
    menus = BuildStandardMenus(this);
    setFixedSize(TwipsToPixels(7800), TwipsToPixels(5160) + menuBar()->sizeHint().height());
    // The hourglass over the screen; Cancel keeps the arrow so that it looks alive.
    central->setCursor(Qt::WaitCursor);

    picBanner = Named(new QLabel(central), "picBanner");
    picBanner->setPixmap(LoadPicture(QStringLiteral("banner")));
    picBanner->setScaledContents(true);
    PlaceTw(picBanner, 0, 0, 7800, 900);

    frmWhatIsProgressing = Named(new QGroupBox(QStringLiteral("Scanning Disc"), central), "frmWhatIsProgressing");
    PlaceTw(frmWhatIsProgressing, 360, 1140, 7080, 2220);
    auto label = [this](const char *name, const QString &caption, long left, long top, long width) {
        auto *l = Named(new QLabel(caption, frmWhatIsProgressing), name);
        PlaceTw(l, left, top, width, 300);
        return l;
    };
    lblCurrentActionCaption = label("lblCurrentActionCaption", QStringLiteral("Scanning File:"), 240, 420, 1740);
    lblCurrentAction = label("lblCurrentAction", QString(), 2040, 420, 4800);
    lblFilesScanned = label("lblFilesScanned", QStringLiteral("Files Scanned:"), 240, 840, 1740);
    lblFilesScannedNumber = label("lblFilesScannedNumber", QStringLiteral("0"), 2040, 840, 2400);
    lblCompressedFiles = label("lblCompressedFiles", QStringLiteral("Compressed Files:"), 240, 1260, 1740);
    lblCompressedFileProgress = label("lblCompressedFileProgress", QString(), 2040, 1260, 4800);
    ProgressBarZip = Named(new QProgressBar(frmWhatIsProgressing), "ProgressBarZip");
    ProgressBarZip->setRange(0, 100);
    ProgressBarZip->setValue(0);
    ProgressBarZip->setTextVisible(false);
    PlaceTw(ProgressBarZip, 2040, 1650, 4800, 240);

    ProgressBar = Named(new QProgressBar(central), "ProgressBar");
    ProgressBar->setRange(0, 100);
    ProgressBar->setTextVisible(false);
    PlaceTw(ProgressBar, 360, 3660, 7080, 300);
    lbl0Percent = Named(new QLabel(QStringLiteral("0%"), central), "lbl0Percent");
    PlaceTw(lbl0Percent, 360, 4000, 900, 270);
    lbl100Percent = Named(new QLabel(QStringLiteral("100%"), central), "lbl100Percent");
    lbl100Percent->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    PlaceTw(lbl100Percent, 6540, 4000, 900, 270);

    cmdCancel = Named(new QPushButton(QStringLiteral("&Cancel"), central), "cmdCancel");
    cmdCancel->setCursor(Qt::ArrowCursor);
    PlaceTw(cmdCancel, 6180, 4440, 1260, 450);

    On(cmdCancel, &QPushButton::clicked, this, [this] { cmdCancel_Click(); });
    On(menus.mnuFileExit, &QAction::triggered, this, [] { EndProcess(0); });
    On(menus.mnuToolsOptions, &QAction::triggered, this, [this] { ShowOptions(this); });
    // The other entries do nothing while a scan runs.

    // The file label and the count change with every file; a person sees them only when the screen
    // is painted, so they reach their labels at most every few hundredths of a second, which spares the
    // text layout of thousands of labels nobody would see.
    m_walker.setDisplay({
        [this](const QString &text) { m_pendingAction = text; },
        [this](int32_t n) { m_pendingCount = n; },
        [this](const QString &caption) {
            showPendingLabels();
            frmWhatIsProgressing->setTitle(caption);
        },
        [this](int percent) { ProgressBar->setValue(percent); },
        [this](const QString &text) { lblCompressedFileProgress->setText(text); },
        [this](int percent) { ProgressBarZip->setValue(percent); },
        [this](bool busy) {
            if (busy)
                setCursor(Qt::WaitCursor);
            else
                unsetCursor();
        },
        [this] {
            // An archive takes long enough to be watched: its path is on the label while it expands.
            if (!m_labelClock.isValid() || m_labelClock.elapsed() >= LabelIntervalMs ||
                !lblCompressedFileProgress->text().isEmpty())
                showPendingLabels();
            DoEvents();
        },
    });
}

void frmScanProgress::showPendingLabels()
{
    m_labelClock.start();
    if (lblCurrentAction->text() != m_pendingAction)
        lblCurrentAction->setText(m_pendingAction);
    if (m_pendingCount >= 0)
        lblFilesScannedNumber->setText(QString::number(m_pendingCount));
    m_pendingCount = -1;
}

void frmScanProgress::Form_Load()
{
    ProgressBar->setValue(0);
    gFilesScanned = 0;
    // Without the pre-scan, the root listing runs here: on the file-system root, not on the volume.
    QDir::setCurrent(QStringLiteral("/"));
}

void frmScanProgress::Form_Activate()
{
    gScanDrive = m_drive == QLatin1String("/") ? QString() : m_drive;
}

void frmScanProgress::Form_QueryUnload(int &, int unloadMode)
{
    if (unloadMode == vbFormControlMenu)
        EndProcess(0);
}

void frmScanProgress::setDrive(const QString &volumeRoot)
{
    // A folder, or a disc image file (the walker tells an image by its content).
    if (volumeRoot.isEmpty() || !QFileInfo::exists(volumeRoot))
        RaiseVbError(VbErr::DeviceUnavailable);
    m_drive = volumeRoot;
    m_walker.SetDrive(volumeRoot);
}

void frmScanProgress::cmdCancel_Click()
{
    if (MsgBox(QStringLiteral("Are you sure you want to cancel scan?"), vbYesNo | vbExclamation) == vbYes)
        m_walker.Cancel();
}

void frmScanProgress::ScanFiles()
{
    m_walker.setShowProgress(Forms::get<frmScanDisc>()->chkShowProgressBar->isChecked());
    try {
        m_walker.ScanFiles();
        showPendingLabels();
        lblFilesScannedNumber->setText(QString::number(gFilesScanned));
        ShowNextScreen();
    } catch (const VbError &e) {
        showPendingLabels();
        // Only a volume that fails at its start folder is the set-up screen's "not available": past that
        // (the extract folder's pass, the evaluation as the first review screen loads) no handler
        // expects the failure.
        if (!m_walker.StartFolderListed())
            throw;
        EndWithPlatformMessage(e);
    }
    Unload();
}

void frmScanProgress::ShowNextScreen()
{
    auto *scanDisc = Forms::get<frmScanDisc>();
    QString next = QStringLiteral("frmScanDisc");
    if (!m_walker.ScanCancelled()) {
        KindsToReview kinds;
        kinds.exe = scanDisc->chkEXEFiles->isChecked();
        kinds.video = scanDisc->chkVideoFiles->isChecked();
        kinds.audio = scanDisc->chkAudioFiles->isChecked();
        kinds.image = scanDisc->chkImageFiles->isChecked();
        kinds.text = scanDisc->chkTextFiles->isChecked();
        kinds.other = scanDisc->chkOtherFiles->isChecked();
        next = FirstReviewScreen(kinds);
    }
    // Until the review screen asked for is part of the program, the scan comes back to the set-up
    // screen with its lists filled.
    Form *target = ReviewScreenNamed(next);
    if (!target)
        target = scanDisc;
    target->Move(Left(), Top());
    target->show();
}
