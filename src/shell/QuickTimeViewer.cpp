#include "shell/QuickTimeViewer.h"

#include <QMediaFormat>
#include <QMediaPlayer>

QuickTimeViewer::QuickTimeViewer(QWidget *parent) : QWidget(parent) {}

long QuickTimeViewer::InitializeQTML()
{
    if (qEnvironmentVariableIsSet("KEVRO_NO_MOVIES"))
        return 1;
    QMediaPlayer probe;
    if (!probe.isAvailable())
        return 1;
    const QMediaFormat quickTime(QMediaFormat::QuickTime);
    if (!quickTime.isSupported(QMediaFormat::Decode))
        return 2;
    m_initialized = true;
    return 0;
}
