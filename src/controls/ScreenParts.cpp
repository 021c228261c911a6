#include "controls/ScreenParts.h"

#include "controls/Form.h"
#include "controls/Pictures.h"

#include <QApplication>
#include <QFrame>
#include <QLabel>

QFrame *RuleLine(QWidget *parent, const char *name, const char *colour, long left, long top, long width)
{
    auto *l = Named(new QFrame(parent), name);
    l->setFrameShape(QFrame::HLine);
    l->setStyleSheet(QStringLiteral("color: %1;").arg(QLatin1String(colour)));
    PlaceTw(l, left, top, width, 30);
    return l;
}

QLabel *BannerPicture(QWidget *parent, long width)
{
    auto *banner = Named(new QLabel(parent), "picBanner");
    banner->setPixmap(LoadPicture(QStringLiteral("banner")));
    banner->setScaledContents(true);
    PlaceTw(banner, 0, 0, width, 900);
    return banner;
}

Hourglass::Hourglass()
{
    QApplication::setOverrideCursor(Qt::WaitCursor);
}

Hourglass::~Hourglass()
{
    QApplication::restoreOverrideCursor();
}
