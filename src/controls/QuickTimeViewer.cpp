#include "controls/QuickTimeViewer.h"

#include <QDir>
#include <QFileInfo>
#include <QMediaPlayer>

namespace {
// GStreamer reads QuickTime movies with the demuxer of its "isomp4" plug-in. Qt's own list of
// decodable formats leaves most containers out on this back end, so the plug-in itself is looked for.
bool quickTimeDemuxerInstalled()
{
    QStringList dirs;
    for (const char *var : {"GST_PLUGIN_PATH", "GST_PLUGIN_SYSTEM_PATH"})
        dirs += qEnvironmentVariable(var).split(QLatin1Char(':'), Qt::SkipEmptyParts);
    if (!qEnvironmentVariableIsSet("GST_PLUGIN_SYSTEM_PATH")) {
        dirs << QStringLiteral("/usr/lib/gstreamer-1.0") << QStringLiteral("/usr/local/lib/gstreamer-1.0");
        const QStringList arches = QDir(QStringLiteral("/usr/lib")).entryList({QStringLiteral("*-linux-*")}, QDir::Dirs);
        for (const QString &arch : arches)
            dirs << QStringLiteral("/usr/lib/") + arch + QStringLiteral("/gstreamer-1.0");
    }
    for (const QString &dir : dirs) {
        if (QFileInfo::exists(dir + QStringLiteral("/libgstisomp4.so")))
            return true;
    }
    return false;
}
} // namespace

QuickTimeViewer::QuickTimeViewer(QWidget *parent) : QWidget(parent) {}

long QuickTimeViewer::InitializeQTML()
{
    QMediaPlayer probe;
    if (!probe.isAvailable())
        return 1;
    if (!quickTimeDemuxerInstalled())
        return 2;
    m_initialized = true;
    return 0;
}
