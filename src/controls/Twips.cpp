#include "controls/Twips.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWidget>

void PlaceTw(QWidget *w, long left, long top, long width, long height)
{
    w->setGeometry(TwipsToPixels(left), TwipsToPixels(top), TwipsToPixels(width), TwipsToPixels(height));
}
long LeftTw(const QWidget *w)
{
    return PixelsToTwips(w->x());
}
long TopTw(const QWidget *w)
{
    return PixelsToTwips(w->y());
}
long WidthTw(const QWidget *w)
{
    return PixelsToTwips(w->width());
}
long HeightTw(const QWidget *w)
{
    return PixelsToTwips(w->height());
}
void SetLeftTw(QWidget *w, long twips)
{
    w->move(TwipsToPixels(twips), w->y());
}
void SetTopTw(QWidget *w, long twips)
{
    w->move(w->x(), TwipsToPixels(twips));
}

long ScreenWidthTw()
{
    const QScreen *s = QGuiApplication::primaryScreen();
    return s ? PixelsToTwips(s->geometry().width()) : 0;
}
long ScreenHeightTw()
{
    const QScreen *s = QGuiApplication::primaryScreen();
    return s ? PixelsToTwips(s->geometry().height()) : 0;
}
