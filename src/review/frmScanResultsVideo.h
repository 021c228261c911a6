#pragma once

#include "review/ViewerScreen.h"

class MediaPlayer;
class QAction;
class QCheckBox;
class QMenu;
class QuickTimeViewer;

// The video files of a scan: QuickTime movies in the movie viewer, everything else in the media player.
// Its transport pictures are also the audio screen's.
class frmScanResultsVideo final : public ViewerScreen
{
    Q_OBJECT
public:
    frmScanResultsVideo();

    FlexGrid *gridVideoResults;
    MediaPlayer *MediaPlayer1;
    QuickTimeViewer *SkyLight1;
    QWidget *picButtonBar;
    QPushButton *cmdPlay;
    QPushButton *cmdPause;
    QPushButton *cmdStop;
    QLabel *picPlayOn;
    QLabel *picPlayOff;
    QLabel *picPauseOn;
    QLabel *picPauseOff;
    QCheckBox *chkLoopVideo;
    QCheckBox *chkDVDVideo;
    QPushButton *cmdDVDInfo;
    QLabel *lblDVDVideo;
    QMenu *mnuContext;
    QAction *mnuContextOpenWithDefaultViewer;
    QAction *mnuContextCopyPathToClipboard;

    void ShowVideos();
    void PlaySelectedVideo();
    // Applies the loop box to both players.
    void DeterminePlayMode();

protected:
    void Form_Load() override;
    void SelectRow() override { PlaySelectedVideo(); }
    QLabel *SummaryTotal(frmScanSummary *summary) const override;
    QLabel *SummaryChecked(frmScanSummary *summary) const override;
    QMenu *ContextMenu() const override { return mnuContext; }

private:
    void openWithDefaultProgram();
    void stopBoth();
    void cmdPlay_Click();
    void cmdPause_Click();
    void cmdStop_Click();
    void cmdNext_Click();
    void cmdPrevious_Click();
};
