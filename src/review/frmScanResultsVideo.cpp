#include "review/frmScanResultsVideo.h"

#include "controls/FlexGrid.h"
#include "controls/Forms.h"
#include "controls/ScreenParts.h"
#include "controls/MediaPlayer.h"
#include "controls/Pictures.h"
#include "controls/QuickTimeViewer.h"
#include "platform/MsgBox.h"
#include "platform/ShellOpen.h"
#include "platform/VbError.h"
#include "reporting/frmScanSummary.h"
#include "review/ViewerFiles.h"
#include "scan/frmScanDisc.h"
#include "shell/frmProgressBox.h"
#include "shell/Progress.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QLabel>
#include <QMenu>
#include <QPushButton>

namespace {
constexpr long FormWidth = 11400;
constexpr long FormHeight = 7680;
} // namespace

frmScanResultsVideo::frmScanResultsVideo()
    : ViewerScreen("frmScanResultsVideo", QStringLiteral("KEVRO - Video Viewer"),
                   {"gridVideoResults", 3080, 1100, QStringLiteral(" video files found"), QStringLiteral("Video"), true,
                    VideoScreenListsFile},
                   FormWidth, FormHeight)
{
    gridVideoResults = Grid();
    lblResultComment->setText(QStringLiteral("Video files found"));
    PlaceTw(lblResultComment, 240, 1020, 5040, 270);
    PlaceTw(gridVideoResults, 240, 1290, 5040, 4860);
    MediaPlayer1 = Named(new MediaPlayer(true, m_central), "MediaPlayer1");
    PlaceTw(MediaPlayer1, 5500, 1200, 3700, 3000);
    SkyLight1 = Named(new QuickTimeViewer(m_central), "SkyLight1");
    PlaceTw(SkyLight1, 5520, 1200, 3750, 2550);
    SkyLight1->hide();

    picButtonBar = Named(new QWidget(m_central), "picButtonBar");
    PlaceTw(picButtonBar, 5500, 4320, 3700, 540);
    picPlayOn = PictureHolder(m_central, "picPlayOn", QStringLiteral("play_on"));
    picPlayOff = PictureHolder(m_central, "picPlayOff", QStringLiteral("play_off"));
    picPauseOn = PictureHolder(m_central, "picPauseOn", QStringLiteral("pause_on"));
    picPauseOff = PictureHolder(m_central, "picPauseOff", QStringLiteral("pause_off"));
    cmdPlay = TransportButton(picButtonBar, "cmdPlay", QStringLiteral("play_off"), QStringLiteral("Play"), 0);
    cmdPause = TransportButton(picButtonBar, "cmdPause", QStringLiteral("pause_off"), QStringLiteral("Pause"), 780);
    cmdStop = TransportButton(picButtonBar, "cmdStop", QStringLiteral("stop"), QStringLiteral("Stop"), 1560);

    chkLoopVideo = Named(new QCheckBox(QStringLiteral("Loop Video"), m_central), "chkLoopVideo");
    PlaceTw(chkLoopVideo, 5500, 4980, 2400, 300);
    chkDVDVideo = Named(new QCheckBox(QStringLiteral("DVD-Video Mode"), m_central), "chkDVDVideo");
    PlaceTw(chkDVDVideo, 5500, 5340, 2400, 300);
    cmdDVDInfo = Named(new QPushButton(QStringLiteral("DVD Info"), m_central), "cmdDVDInfo");
    PlaceTw(cmdDVDInfo, 9900, 5280, 1260, 390);
    // Nothing ever tells the operator a disc holds DVD-Video: the label stays out of sight.
    lblDVDVideo = Named(new QLabel(QStringLiteral("Media Contains DVD-Video"), m_central), "lblDVDVideo");
    PlaceTw(lblDVDVideo, 9360, 4980, 1800, 270);
    lblDVDVideo->hide();
    PlaceTw(lblCurrentPath, 240, 6240, 10920, 270);

    mnuContext = Named(new QMenu(this), "mnuContext");
    mnuContextOpenWithDefaultViewer =
        Named(mnuContext->addAction(QStringLiteral("&Open With Default Viewer")), "mnuContextOpenWithDefaultViewer");
    mnuContextCopyPathToClipboard =
        Named(mnuContext->addAction(QStringLiteral("Copy &Path To Clipboard")), "mnuContextCopyPathToClipboard");

    On(gridVideoResults, &FlexGrid::DblClick, this, [this] {
        if (gridVideoResults->Rows() != 0 && gridVideoResults->MouseRow() != 0)
            openWithDefaultProgram();
    });
    On(mnuContextOpenWithDefaultViewer, &QAction::triggered, this, [this] { openWithDefaultProgram(); });
    On(mnuContextCopyPathToClipboard, &QAction::triggered, this, [this] {
        if (!HasDataRow())
            return;
        QApplication::clipboard()->clear();
        QApplication::clipboard()->setText(RowPath());
    });
    On(chkLoopVideo, &QCheckBox::clicked, this, [this] { DeterminePlayMode(); });
    // The DVD controls have no action.
    On(cmdPlay, &QPushButton::clicked, this, [this] { cmdPlay_Click(); });
    On(cmdPause, &QPushButton::clicked, this, [this] { cmdPause_Click(); });
    On(cmdStop, &QPushButton::clicked, this, [this] { cmdStop_Click(); });
    On(MediaPlayer1, &MediaPlayer::PlayStateChange, this, [this](int, int state) {
        cmdPlay->setIcon(QIcon(state == MediaPlayer::Playing ? picPlayOn->pixmap() : picPlayOff->pixmap()));
        cmdPause->setIcon(QIcon(state == MediaPlayer::Paused ? picPauseOn->pixmap() : picPauseOff->pixmap()));
    });
    On(cmdNext, &QPushButton::clicked, this, [this] { cmdNext_Click(); });
    On(cmdPrevious, &QPushButton::clicked, this, [this] { cmdPrevious_Click(); });
}

void frmScanResultsVideo::Form_Load()
{
    ShowVideos();
}

void frmScanResultsVideo::ShowVideos()
{
    // The first screen behind the programs: its progress box shows from the start.
    auto *box = Forms::get<frmProgressBox>();
    box->show();
    box->repaint();
    Fill();
}

QLabel *frmScanResultsVideo::SummaryTotal(frmScanSummary *summary) const
{
    return summary->lblVideoTotal;
}

QLabel *frmScanResultsVideo::SummaryChecked(frmScanSummary *summary) const
{
    return summary->lblVideoChecked;
}

void frmScanResultsVideo::stopBoth()
{
    ResumeNext([this] { MediaPlayer1->Stop(); });
    ResumeNext([this] { SkyLight1->Stop(); });
}

void frmScanResultsVideo::openWithDefaultProgram()
{
    if (!HasDataRow())
        return;
    stopBoth();
    OpenWithDefaultProgram(RowFile());
}

void frmScanResultsVideo::DeterminePlayMode()
{
    const bool loop = chkLoopVideo->isChecked();
    MediaPlayer1->setPlayCount(loop ? 0 : 1);
    SkyLight1->setLoop(loop);
}

void frmScanResultsVideo::PlaySelectedVideo()
{
    try {
        const QString path = ShowPath();
        if (path.right(4) == QLatin1String(".MOV")) {
            MediaPlayer1->Stop();
            MediaPlayer1->setFileName(QString());
            MediaPlayer1->hide();
            cmdPlay->setIcon(QIcon(picPlayOn->pixmap()));
            double scale = 1.0;
            if (SkyLight1->isVisible()) {
                SkyLight1->Stop();
                SkyLight1->hide();
                DoEvents();
                SetLeftTw(SkyLight1, 5520);
                SetTopTw(SkyLight1, 1200);
                SkyLight1->setMovieFile(RowFile());
                const double width = SkyLight1->MovieWidth(), height = SkyLight1->MovieHeight();
                if (width != 0) {
                    if (width > height) {
                        scale = 250 / width;
                    } else {
                        scale = 170 / height;
                        // The left stands where a width would be expected; kept as it is.
                        const double left = LeftTw(SkyLight1);
                        SetLeftTw(SkyLight1, long(left + (left - (250 / width) * left) / 2));
                    }
                }
            } else {
                SkyLight1->setMovieFile(RowFile());
                if (SkyLight1->MovieWidth() != 0)
                    scale = 250.0 / SkyLight1->MovieWidth();
            }
            SkyLight1->setScale(1);
            SkyLight1->setScale(scale);
            SkyLight1->show();
            SkyLight1->setShowController(false);
            DeterminePlayMode();
            SkyLight1->Play();
        } else {
            SkyLight1->Stop();
            SkyLight1->hide();
            DoEvents();
            MediaPlayer1->show();
            cmdStop->show();
            cmdPlay->show();
            cmdPause->show();
            picButtonBar->show();
            DeterminePlayMode();
            gridVideoResults->setEnabled(false);
            QApplication::setOverrideCursor(Qt::WaitCursor);
            MediaPlayer1->setFileName(RowFile());
            DoEvents();
            if (MediaPlayer1->ErrorCode() != 0)
                MsgBox(MediaPlayer1->ErrorDescription(), vbExclamation);
            gridVideoResults->setEnabled(true);
            QApplication::restoreOverrideCursor();
            PlaceTw(MediaPlayer1, 5500, 1200, 3700, HeightTw(MediaPlayer1));
        }
        TickRow();
        gridVideoResults->setCol(0);
        gridVideoResults->setFocus();
    } catch (const VbError &e) {
        gridVideoResults->setEnabled(true);
        if (QApplication::overrideCursor())
            QApplication::restoreOverrideCursor();
        MsgBox(QString::number(e.number) + QStringLiteral(" Could not play video file."), vbCritical);
    }
}

void frmScanResultsVideo::cmdPlay_Click()
{
    ResumeNext([this] {
        if (MediaPlayer1->isVisible()) {
            MediaPlayer1->Play();
            DoEvents();
            if (MediaPlayer1->ErrorCode() != 0)
                MsgBox(MediaPlayer1->ErrorDescription(), vbExclamation);
        } else if (SkyLight1->isVisible()) {
            SkyLight1->Play();
            cmdPlay->setIcon(QIcon(picPlayOn->pixmap()));
            cmdPause->setIcon(QIcon(picPauseOff->pixmap()));
        }
    });
}

void frmScanResultsVideo::cmdPause_Click()
{
    ResumeNext([this] {
        if (MediaPlayer1->isVisible()) {
            MediaPlayer1->Pause();
        } else if (SkyLight1->isVisible()) {
            SkyLight1->Stop();
            cmdPlay->setIcon(QIcon(picPlayOff->pixmap()));
            cmdPause->setIcon(QIcon(picPauseOn->pixmap()));
        }
    });
}

void frmScanResultsVideo::cmdStop_Click()
{
    ResumeNext([this] {
        if (MediaPlayer1->isVisible()) {
            MediaPlayer1->setCurrentPosition(0);
            MediaPlayer1->Stop();
        } else if (SkyLight1->isVisible()) {
            SkyLight1->Stop();
            SkyLight1->setTimePosition(0);
            cmdPlay->setIcon(QIcon(picPlayOff->pixmap()));
            cmdPause->setIcon(QIcon(picPauseOff->pixmap()));
        }
    });
}

void frmScanResultsVideo::cmdNext_Click()
{
    const auto *scan = Forms::get<frmScanDisc>();
    // Next never asks for the external files: with neither images nor text they are skipped.
    const Chain chain{{scan->chkAudioFiles, QStringLiteral("frmScanResultsAudio")},
                      {scan->chkImageFiles, QStringLiteral("frmScanResultsImages")},
                      {scan->chkTextFiles, QStringLiteral("frmScanResultsText")},
                      {nullptr, QStringLiteral("frmScanSummary")}};
    GoNext(chain, true, [this] { stopBoth(); });
}

void frmScanResultsVideo::cmdPrevious_Click()
{
    const auto *scan = Forms::get<frmScanDisc>();
    stopBoth();
    GoBack({{scan->chkEXEFiles, QStringLiteral("frmScanResultsEXEs")}, {nullptr, QStringLiteral("frmScanDisc")}});
}
