#pragma once

#include "controls/Form.h"

class QLabel;
class QProgressBar;
class QuickTimeViewer;

// The start-up screen. Its first paint runs the start-up steps, the movie viewer's among them.
class frmSplash final : public Form
{
    Q_OBJECT
public:
    frmSplash();

    QLabel *picSplashImage;
    QLabel *lblStatus;
    QProgressBar *ProgressBar1;
    QuickTimeViewer *SkyLight1;

    // Runs the start-up steps now if the first paint has not run them yet.
    void RunStartup();
    bool StartupDone() const { return m_started; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    bool m_started = false;
};
