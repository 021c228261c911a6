#include "controls/ScreenParts.h"

#include "controls/Form.h"
#include "controls/Menus.h"
#include "controls/Pictures.h"

#include <QAbstractButton>
#include <QApplication>
#include <QEvent>
#include <QMouseEvent>
#include <QFrame>
#include <QLabel>
#include <QMenuBar>

QFrame *RuleLine(QWidget *parent, const char *name, const char *colour, long left, long top, long width)
{
    auto *l = Named(new QFrame(parent), name);
    l->setFrameShape(QFrame::HLine);
    l->setStyleSheet(QStringLiteral("color: %1;").arg(QLatin1String(colour)));
    PlaceTw(l, left, top, width, 30);
    return l;
}

QWidget *WorkingScreen(Form *form, const char *name, const QString &title, long widthTw, long heightTw,
                       StandardMenus &menus, QLabel **banner)
{
    form->setObjectName(QLatin1String(name));
    form->setWindowTitle(title);
    auto *central = new QWidget(form);
    form->setCentralWidget(central);
    menus = BuildStandardMenus(form);
    form->setFixedSize(TwipsToPixels(widthTw), TwipsToPixels(heightTw) + form->menuBar()->sizeHint().height());
    *banner = BannerPicture(central, widthTw);
    return central;
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

QLabel *PictureHolder(QWidget *parent, const char *name, const QString &picture)
{
    auto *l = Named(new QLabel(parent), name);
    l->setPixmap(LoadPicture(picture));
    l->hide();
    return l;
}

HoverPictures::HoverPictures(QWidget *background) : QObject(background), m_background(background)
{
    background->setMouseTracking(true);
    background->installEventFilter(this);
}

void HoverPictures::add(QAbstractButton *button, QLabel *normal, QLabel *hover, bool sizeToPicture)
{
    m_faces.append({button, normal, hover});
    if (sizeToPicture)
        button->setIconSize(normal->pixmap().size());
    button->setMouseTracking(true);
    button->installEventFilter(this);
}

void HoverPictures::ShowNormalPictures()
{
    for (const Face &f : m_faces)
        f.button->setIcon(f.normal->pixmap());
}

bool HoverPictures::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_background && event->type() == QEvent::MouseMove) {
        ShowNormalPictures();
    } else if (event->type() == QEvent::Enter || event->type() == QEvent::MouseMove) {
        for (const Face &f : m_faces) {
            if (f.button != watched)
                continue;
            f.button->setIcon(f.hover->pixmap());
            // A move over the button is taken here: passed on to the background it would put the
            // normal face back.
            if (event->type() == QEvent::MouseMove && static_cast<QMouseEvent *>(event)->buttons() == Qt::NoButton)
                return true;
        }
    }
    return QObject::eventFilter(watched, event);
}
