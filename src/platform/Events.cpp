#include "platform/Events.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QThread>

void DoEvents()
{
    if (QCoreApplication::instance())
        QCoreApplication::processEvents(QEventLoop::AllEvents);
}

uint32_t GetTickCount()
{
    static QElapsedTimer clock = [] {
        QElapsedTimer t;
        t.start();
        return t;
    }();
    return static_cast<uint32_t>(clock.elapsed());
}

void Pause(long milliseconds)
{
    const uint32_t start = GetTickCount();
    // Loops until the counter is past start + milliseconds; the short sleep spares the other core.
    while (GetTickCount() - start <= static_cast<uint32_t>(milliseconds < 0 ? 0 : milliseconds)) {
        DoEvents();
        QThread::usleep(200);
    }
}
