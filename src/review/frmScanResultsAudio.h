#pragma once

#include "review/ViewerScreen.h"

class MediaPlayer;
class QAction;
class QCheckBox;
class QMenu;

// The audio files of a scan, played in the media player as they are selected.
class frmScanResultsAudio final : public ViewerScreen
{
    Q_OBJECT
public:
    frmScanResultsAudio();

    FlexGrid *gridAudioResults;
    MediaPlayer *MediaPlayer1;
    QWidget *picButtonBar;
    QPushButton *cmdPlay;
    QPushButton *cmdPause;
    QPushButton *cmdStop;
    QCheckBox *chkLoopAudio;
    QMenu *mnuContext;
    QAction *mnuContextOpenInDefaultPlayer;
    QAction *mnuContextCopyPathToClipboard;

    void PlaySelectedAudio();

protected:
    void Form_Load() override;
    void SelectRow() override { PlaySelectedAudio(); }
    QLabel *SummaryTotal(frmScanSummary *summary) const override;
    QLabel *SummaryChecked(frmScanSummary *summary) const override;
    QMenu *ContextMenu() const override { return mnuContext; }

private:
    void openWithDefaultProgram();
    void cmdNext_Click();
    void cmdPrevious_Click();
};
