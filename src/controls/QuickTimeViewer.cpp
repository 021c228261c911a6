#include "controls/QuickTimeViewer.h"

#include "platform/Events.h"
#include "platform/Paths.h"
#include "platform/VbError.h"

#include <QAudioOutput>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QMediaPlayer>
#include <QUrl>
#include <QVideoSink>
#include <QVideoWidget>

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

QuickTimeViewer::~QuickTimeViewer()
{
    if (m_player)
        m_player->stop();
}

void QuickTimeViewer::ensurePlayer()
{
    if (m_player)
        return;
    m_player = new QMediaPlayer(this);
    m_audio = new QAudioOutput(m_player);
    m_player->setAudioOutput(m_audio);
    if (!m_video) {
        m_video = new QVideoWidget(this);
        m_video->setStyleSheet(QStringLiteral("background: black;"));
        m_video->resize(size());
        // The natural size comes with the first picture; asked for in the sink's own call it would block.
        connect(
            m_video->videoSink(), &QVideoSink::videoSizeChanged, this,
            [this] {
                if (m_video && m_natural.isEmpty())
                    m_natural = m_video->videoSink()->videoSize();
            },
            Qt::QueuedConnection);
    }
    m_player->setVideoOutput(m_video);
}

void QuickTimeViewer::dropPlayer()
{
    // A pipeline that could not take a file apart is not used again (see MediaPlayer).
    m_player->stop();
    m_player->setSource(QUrl());
    m_player->setVideoOutput(nullptr);
    DoEvents();
    delete m_player;
    m_player = nullptr;
    m_audio = nullptr;
}

void QuickTimeViewer::setMovieFile(const QString &path)
{
    ensurePlayer();
    m_movieFile = path;
    m_natural = QSize();
    m_player->stop();
    if (path.isEmpty()) {
        m_player->setSource(QUrl());
        return;
    }
    if (!QFileInfo(path).isFile()) {
        m_player->setSource(QUrl());
        RaiseVbError(VbErr::FileNotFound);
    }
    m_player->setSource(QUrl::fromLocalFile(path));
    m_player->setLoops(m_loop ? int(QMediaPlayer::Infinite) : 1);
    // Paused, the first picture is decoded and gives the natural size.
    m_player->pause();
    QElapsedTimer waited;
    waited.start();
    while (m_natural.isEmpty() && waited.elapsed() < 5000 && m_player->error() == QMediaPlayer::NoError &&
           m_player->mediaStatus() != QMediaPlayer::InvalidMedia)
        Pause(10);
    // A movie that cannot be opened is refused as the file is set, as QuickTime refuses it.
    if (m_player->error() != QMediaPlayer::NoError || m_player->mediaStatus() == QMediaPlayer::InvalidMedia) {
        dropPlayer();
        RaiseVbError(VbErr::InvalidFileFormat);
    }
}

void QuickTimeViewer::Play()
{
    ensurePlayer();
    m_player->play();
}

void QuickTimeViewer::Stop()
{
    if (m_player)
        m_player->pause();
}

bool QuickTimeViewer::IsPlaying() const
{
    return m_player && m_player->playbackState() == QMediaPlayer::PlayingState;
}

void QuickTimeViewer::setScale(double scale)
{
    m_scale = scale;
    if (!m_natural.isEmpty())
        resize(qMax(1, int(m_natural.width() * scale)), qMax(1, int(m_natural.height() * scale)));
    if (m_video)
        m_video->resize(size());
}

void QuickTimeViewer::setLoop(bool on)
{
    m_loop = on;
    if (m_player)
        m_player->setLoops(on ? int(QMediaPlayer::Infinite) : 1);
}

double QuickTimeViewer::TimePosition() const
{
    return m_player ? m_player->position() / 1000.0 : 0.0;
}

void QuickTimeViewer::setTimePosition(double seconds)
{
    ensurePlayer();
    m_player->setPosition(qint64(seconds * 1000));
}

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
