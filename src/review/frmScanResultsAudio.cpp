#include "review/frmScanResultsAudio.h"

#include "controls/FlexGrid.h"
#include "controls/Forms.h"
#include "controls/MediaPlayer.h"
#include "controls/Pictures.h"
#include "platform/MsgBox.h"
#include "platform/ShellOpen.h"
#include "platform/VbError.h"
#include "reporting/frmScanSummary.h"
#include "review/ViewerFiles.h"
#include "review/frmScanResultsVideo.h"
#include "scan/frmScanDisc.h"

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

frmScanResultsAudio::frmScanResultsAudio()
    : ViewerScreen("frmScanResultsAudio", QStringLiteral("KEVRO - Audio Player"),
                   {"gridAudioResults", 3110, 1060, QStringLiteral(" audio files found"), QStringLiteral("Audio"), true,
                    AudioScreenListsFile, 4, true, true},
                   FormWidth, FormHeight)
{
    gridAudioResults = Grid();
    lblResultComment->setText(QStringLiteral("Audio files found"));
    PlaceTw(lblResultComment, 240, 1020, 5040, 270);
    PlaceTw(gridAudioResults, 240, 1290, 5040, 4860);
    MediaPlayer1 = Named(new MediaPlayer(false, m_central), "MediaPlayer1");
    PlaceTw(MediaPlayer1, 5500, 1290, 5660, 600);
    picButtonBar = Named(new QWidget(m_central), "picButtonBar");
    PlaceTw(picButtonBar, 5500, 2010, 3700, 540);
    cmdPlay = TransportButton(picButtonBar, "cmdPlay", QStringLiteral("play_off"), QStringLiteral("Play"), 0);
    cmdPause = TransportButton(picButtonBar, "cmdPause", QStringLiteral("pause_off"), QStringLiteral("Pause"), 780);
    cmdStop = TransportButton(picButtonBar, "cmdStop", QStringLiteral("stop"), QStringLiteral("Stop"), 1560);
    chkLoopAudio = Named(new QCheckBox(QStringLiteral("Loop Audio"), m_central), "chkLoopAudio");
    PlaceTw(chkLoopAudio, 5500, 2700, 2400, 300);
    PlaceTw(lblCurrentPath, 240, 6240, 10920, 270);

    mnuContext = Named(new QMenu(this), "mnuContext");
    mnuContextOpenInDefaultPlayer =
        Named(mnuContext->addAction(QStringLiteral("&Open In Default Player")), "mnuContextOpenInDefaultPlayer");
    mnuContextCopyPathToClipboard =
        Named(mnuContext->addAction(QStringLiteral("Copy &Path To Clipboard")), "mnuContextCopyPathToClipboard");

    On(gridAudioResults, &FlexGrid::DblClick, this, [this] {
        if (gridAudioResults->Rows() != 0 && gridAudioResults->MouseRow() != 0)
            openWithDefaultProgram();
    });
    On(mnuContextOpenInDefaultPlayer, &QAction::triggered, this, [this] { openWithDefaultProgram(); });
    On(mnuContextCopyPathToClipboard, &QAction::triggered, this, [this] {
        if (!HasDataRow())
            return;
        QApplication::clipboard()->clear();
        QApplication::clipboard()->setText(RowPath());
    });
    // The transport ignores any failure of the player.
    On(cmdPlay, &QPushButton::clicked, this, [this] { ResumeNext([this] { MediaPlayer1->Play(); }); });
    On(cmdPause, &QPushButton::clicked, this, [this] { ResumeNext([this] { MediaPlayer1->Pause(); }); });
    On(cmdStop, &QPushButton::clicked, this, [this] {
        ResumeNext([this] {
            MediaPlayer1->setCurrentPosition(0);
            MediaPlayer1->Stop();
        });
    });
    On(chkLoopAudio, &QCheckBox::clicked, this, [this] {
        if (gridAudioResults->Rows() > 0 && !RowPath().isEmpty())
            MediaPlayer1->setPlayCount(chkLoopAudio->isChecked() ? 0 : 1);
    });
    // The pictures are the video screen's: asking for them loads that screen, and its fill runs.
    On(MediaPlayer1, &MediaPlayer::PlayStateChange, this, [this](int, int state) {
        auto *video = Forms::get<frmScanResultsVideo>();
        cmdPlay->setIcon(QIcon(state == MediaPlayer::Playing ? video->picPlayOn->pixmap() : video->picPlayOff->pixmap()));
        cmdPause->setIcon(
            QIcon(state == MediaPlayer::Paused ? video->picPauseOn->pixmap() : video->picPauseOff->pixmap()));
    });
    On(cmdNext, &QPushButton::clicked, this, [this] { cmdNext_Click(); });
    On(cmdPrevious, &QPushButton::clicked, this, [this] { cmdPrevious_Click(); });
}

void frmScanResultsAudio::Form_Load()
{
    Fill();
}

QLabel *frmScanResultsAudio::SummaryTotal(frmScanSummary *summary) const
{
    return summary->lblAudioTotal;
}

QLabel *frmScanResultsAudio::SummaryChecked(frmScanSummary *summary) const
{
    return summary->lblAudioChecked;
}

void frmScanResultsAudio::openWithDefaultProgram()
{
    if (!HasDataRow())
        return;
    ResumeNext([this] { MediaPlayer1->Stop(); });
    OpenWithDefaultProgram(RowFile());
}

void frmScanResultsAudio::PlaySelectedAudio()
{
    try {
        const QString path = RowPath();
        lblCurrentPath->setText(path);
        MediaPlayer1->setFileName(RowFile());
        if (MediaPlayer1->ErrorCode() != 0)
            throw VbError(MediaPlayer1->ErrorCode(), MediaPlayer1->ErrorDescription());
        ShowPath();
        TickRow();
    } catch (const VbError &) {
        MsgBox(QStringLiteral("Could not play audio file."), vbCritical);
    }
}

void frmScanResultsAudio::cmdNext_Click()
{
    const auto *scan = Forms::get<frmScanDisc>();
    GoNext({{scan->chkImageFiles, QStringLiteral("frmScanResultsImages")},
            {scan->chkTextFiles, QStringLiteral("frmScanResultsText")},
            {nullptr, QStringLiteral("frmScanSummary")}},
           true, [this] { ResumeNext([this] { MediaPlayer1->Stop(); }); });
}

void frmScanResultsAudio::cmdPrevious_Click()
{
    const auto *scan = Forms::get<frmScanDisc>();
    GoBack({{scan->chkVideoFiles, QStringLiteral("frmScanResultsVideo")},
            {scan->chkEXEFiles, QStringLiteral("frmScanResultsEXEs")},
            {nullptr, QStringLiteral("frmScanDisc")}});
    ResumeNext([this] { MediaPlayer1->Stop(); });
}
