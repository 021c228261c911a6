#include "shell/frmSplash.h"

#include "platform/Events.h"
#include "platform/MsgBox.h"
#include "platform/VbError.h"
#include "controls/Pictures.h"
#include "controls/QuickTimeViewer.h"

#include <QLabel>
#include <QPointer>
#include <QProgressBar>
#include <QTimer>

frmSplash::frmSplash()
{
    setObjectName(QStringLiteral("frmSplash"));
    setWindowTitle(AppTitle());
    setWindowFlags(Qt::SplashScreen | Qt::FramelessWindowHint);
    auto *central = new QWidget(this);
    setCentralWidget(central);
    setFixedSize(TwipsToPixels(7200), TwipsToPixels(4500));

    picSplashImage = new QLabel(central);
    picSplashImage->setObjectName(QStringLiteral("picSplashImage"));
    picSplashImage->setPixmap(LoadPicture(QStringLiteral("splash")));
    picSplashImage->setScaledContents(true);
    PlaceTw(picSplashImage, 0, 0, 7200, 3750);

    lblStatus = new QLabel(central);
    lblStatus->setObjectName(QStringLiteral("lblStatus"));
    PlaceTw(lblStatus, 240, 3810, 6720, 300);

    ProgressBar1 = new QProgressBar(central);
    ProgressBar1->setObjectName(QStringLiteral("ProgressBar1"));
    ProgressBar1->setRange(0, 100);
    ProgressBar1->setTextVisible(false);
    PlaceTw(ProgressBar1, 240, 4140, 6720, 180);

    SkyLight1 = new QuickTimeViewer(central);
    SkyLight1->setObjectName(QStringLiteral("SkyLight1"));
    SkyLight1->hide();
}

void frmSplash::paintEvent(QPaintEvent *event)
{
    Form::paintEvent(event);
    if (m_started)
        return;
    // Not inside the paint itself: the steps pump events, and a paint must not nest in a paint.
    QPointer<frmSplash> self(this);
    QTimer::singleShot(0, this, [self] {
        if (self)
            RunHandler([&] { self->RunStartup(); });
    });
}

void frmSplash::RunStartup()
{
    if (m_started)
        return;
    m_started = true;
    for (int i = 1; i <= 50; ++i) {
        ProgressBar1->setValue(i);
        Pause(1);
    }
    lblStatus->setText(QStringLiteral("Initializing Quicktime..."));
    DoEvents();
    const long code = SkyLight1->InitializeQTML();
    if (code != 0) {
        MsgBox(QStringLiteral("Unable to Initialize QuickTime! Quicktime movies will not be played.  Ensure that "
                              "latest version of Quicktime is installed.\r") +
                   QString::number(code),
               vbExclamation);
    }
    ProgressBar1->setValue(100);
    Pause(100);
    DoEvents();
}
