#pragma once

#include "controls/Form.h"
#include "controls/Menus.h"
#include "scan/MediaWalker.h"

#include <QElapsedTimer>

class QGroupBox;
class QLabel;
class QProgressBar;
class QPushButton;

// The scan under way: the walk of the chosen volume and of the extract folder, shown as it goes, with
// Cancel. It leads to the first review screen the operator asked for and is unloaded after each scan.
class frmScanProgress final : public Form
{
    Q_OBJECT
public:
    frmScanProgress();

    QLabel *picBanner;
    QGroupBox *frmWhatIsProgressing;
    QLabel *lblCurrentActionCaption;
    QLabel *lblCurrentAction;
    QLabel *lblFilesScanned;
    QLabel *lblFilesScannedNumber;
    QLabel *lblCompressedFiles;
    QLabel *lblCompressedFileProgress;
    QProgressBar *ProgressBarZip;
    QProgressBar *ProgressBar;
    QLabel *lbl0Percent;
    QLabel *lbl100Percent;
    QPushButton *cmdCancel;
    StandardMenus menus;

    // The volume to scan; a volume that is gone raises 68 (device unavailable).
    void setDrive(const QString &volumeRoot);
    QString Drive() const { return m_drive; }
    void ScanFiles();

    MediaWalker &Walker() { return m_walker; }

protected:
    void Form_Load() override;
    void Form_Activate() override;
    void Form_QueryUnload(int &cancel, int unloadMode) override;

private:
    void cmdCancel_Click();
    void ShowNextScreen();

    void showPendingLabels();

    static constexpr int LabelIntervalMs = 40;
    MediaWalker m_walker;
    QString m_drive;
    QString m_pendingAction;
    int32_t m_pendingCount = -1;
    QElapsedTimer m_labelClock;
};
