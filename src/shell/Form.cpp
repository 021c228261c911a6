#include "shell/Form.h"

#include "platform/Events.h"
#include "platform/VbError.h"

#include <QCloseEvent>
#include <QEventLoop>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QPointer>
#include <QScreen>
#include <QTimer>

namespace {
QPointer<Form> s_activeForm;
}

Form::Form(QWidget *parent) : QMainWindow(parent)
{
    setAttribute(Qt::WA_DeleteOnClose, false);
}

long Form::Left() const
{
    return PixelsToTwips(x());
}
long Form::Top() const
{
    return PixelsToTwips(y());
}
long Form::Width() const
{
    return PixelsToTwips(frameGeometry().width());
}
long Form::Height() const
{
    return PixelsToTwips(frameGeometry().height());
}
void Form::setLeft(long twips)
{
    move(TwipsToPixels(twips), y());
}
void Form::setTop(long twips)
{
    move(x(), TwipsToPixels(twips));
}
void Form::setWidth(long twips)
{
    const int frame = frameGeometry().width() - width();
    resize(std::max(1, TwipsToPixels(twips) - frame), height());
}
void Form::setHeight(long twips)
{
    const int frame = frameGeometry().height() - height();
    resize(width(), std::max(1, TwipsToPixels(twips) - frame));
}
void Form::Move(long left, long top)
{
    move(TwipsToPixels(left), TwipsToPixels(top));
}

void Form::LoadForm()
{
    if (m_loaded)
        return;
    m_loaded = true;
    Form_Load();
}

void Form::ShowModal()
{
    QPointer<Form> self(this);
    setWindowModality(Qt::ApplicationModal);
    show();
    QEventLoop loop;
    while (self && !self->m_unloaded && self->isVisible()) {
        loop.processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 50);
    }
    if (self)
        self->setWindowModality(Qt::NonModal);
}

bool Form::Unload()
{
    if (m_unloaded)
        return true;
    return runUnload(vbFormCode);
}

bool Form::runUnload(int mode)
{
    int cancel = 0;
    Form_QueryUnload(cancel, mode);
    if (cancel)
        return false;
    Form_Unload(cancel);
    if (cancel)
        return false;
    m_unloaded = true;
    m_unloadingByCode = true;
    hide();
    if (s_activeForm == this)
        s_activeForm = nullptr;
    // Deleted once control is back in the event loop: an unload from the screen's own handler is safe.
    deleteLater();
    return true;
}

void Form::closeEvent(QCloseEvent *event)
{
    if (m_unloadingByCode || m_unloaded) {
        event->accept();
        return;
    }
    // A close that did not come from Unload is the window's own control box.
    event->ignore();
    RunHandler([this] { runUnload(vbFormControlMenu); });
}

void Form::fireActivate()
{
    if (s_activeForm == this || m_unloaded || !isVisible())
        return;
    s_activeForm = this;
    RunHandler([this] { Form_Activate(); });
}

void Form::showEvent(QShowEvent *event)
{
    QMainWindow::showEvent(event);
    // Some platforms (offscreen among them) never activate a window: the first show activates too.
    QPointer<Form> self(this);
    QTimer::singleShot(0, this, [self] {
        if (self)
            self->fireActivate();
    });
}

bool Form::event(QEvent *event)
{
    if (event->type() == QEvent::WindowActivate) {
        QPointer<Form> self(this);
        QTimer::singleShot(0, this, [self] {
            if (self)
                self->fireActivate();
        });
    }
    return QMainWindow::event(event);
}

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

int VbKeyCode(const QKeyEvent *e)
{
    const int k = e->key();
    if (k >= Qt::Key_A && k <= Qt::Key_Z)
        return 'A' + (k - Qt::Key_A);
    if (k >= Qt::Key_0 && k <= Qt::Key_9)
        return '0' + (k - Qt::Key_0);
    if (k >= Qt::Key_F1 && k <= Qt::Key_F24)
        return 112 + (k - Qt::Key_F1);
    switch (k) {
    case Qt::Key_Backspace:
        return 8;
    case Qt::Key_Tab:
        return 9;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return 13;
    case Qt::Key_Shift:
        return 16;
    case Qt::Key_Control:
        return 17;
    case Qt::Key_Alt:
        return 18;
    case Qt::Key_Escape:
        return 27;
    case Qt::Key_Space:
        return 32;
    case Qt::Key_PageUp:
        return 33;
    case Qt::Key_PageDown:
        return 34;
    case Qt::Key_End:
        return 35;
    case Qt::Key_Home:
        return 36;
    case Qt::Key_Left:
        return 37;
    case Qt::Key_Up:
        return 38;
    case Qt::Key_Right:
        return 39;
    case Qt::Key_Down:
        return 40;
    case Qt::Key_Insert:
        return 45;
    case Qt::Key_Delete:
        return 46;
    default:
        return k < 256 ? k : 0;
    }
}

int VbKeyAscii(const QKeyEvent *e)
{
    switch (e->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return 13;
    case Qt::Key_Escape:
        return 27;
    case Qt::Key_Backspace:
        return 8;
    default:
        break;
    }
    const QString t = e->text();
    return t.isEmpty() ? 0 : t.at(0).unicode();
}

int VbShift(const QKeyEvent *e)
{
    int s = 0;
    if (e->modifiers() & Qt::ShiftModifier)
        s |= 1;
    if (e->modifiers() & Qt::ControlModifier)
        s |= 2;
    if (e->modifiers() & Qt::AltModifier)
        s |= 4;
    return s;
}
