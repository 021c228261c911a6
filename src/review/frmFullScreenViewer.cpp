#include "review/frmFullScreenViewer.h"

#include "controls/PictureView.h"
#include "platform/VbError.h"

#include <QMouseEvent>
#include <QPushButton>

frmFullScreenViewer::frmFullScreenViewer()
{
    setObjectName(QStringLiteral("frmFullScreenViewer"));
    setWindowTitle(QStringLiteral("Full Screen Viewer"));
    setWindowFlag(Qt::FramelessWindowHint);
    auto *central = new QWidget(this);
    central->setAttribute(Qt::WA_TransparentForMouseEvents, false);
    setCentralWidget(central);
    setStyleSheet(QStringLiteral("frmFullScreenViewer { background: black; }"));
    picImage = Named(new PictureView(central), "picImage");
    picImage->setFrameShape(QFrame::NoFrame);
    picImage->setStyleSheet(QStringLiteral("background: black;"));
    cmdClose = Named(new QPushButton(QStringLiteral("&Close"), central), "cmdClose");
    PlaceTw(cmdClose, 0, 0, 1260, 450);

    const auto close = [this] { Unload(); };
    On(cmdClose, &QPushButton::clicked, this, close);
    On(picImage, &PictureView::Click, this, close);
    On(picImage, &PictureView::DblClick, this, close);
    On(picImage, &PictureView::MouseDown, this, close);
}

void frmFullScreenViewer::mousePressEvent(QMouseEvent *event)
{
    Form::mousePressEvent(event);
    RunHandler([this] { Unload(); });
}

void frmFullScreenViewer::Form_Activate()
{
    FitPictureToScreen();
}

void frmFullScreenViewer::FitPictureToScreen()
{
    // The screen in twips against the picture in its own units, unconverted.
    const long screenW = ScreenWidthTw(), screenH = ScreenHeightTw();
    const long picW = picImage->PictureWidth(), picH = picImage->PictureHeight();
    if (!(screenW < picW) && !(screenH < picH))
        return;
    if (picH > picW) {
        const double ratio = double(screenH) / picH;
        const long w = long(ratio * picW);
        PlaceTw(picImage, screenW / 2 - w / 2, 0, w, screenH);
    } else {
        const double ratio = double(screenW) / picW;
        const long h = long(ratio * picH);
        PlaceTw(picImage, 0, screenH / 2 - h / 2, screenW, h);
    }
    DoEvents();
    picImage->setFitToView(true);
    DoEvents();
    picImage->setVisible(true);
}
