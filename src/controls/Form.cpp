#include "controls/Form.h"

#include "platform/Events.h"
#include "platform/VbError.h"

#include <QCloseEvent>
#include <QEventLoop>
#include <QPointer>
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
