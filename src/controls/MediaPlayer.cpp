#include "controls/MediaPlayer.h"

#include "platform/Events.h"
#include "platform/Paths.h"

#include <QAudioOutput>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QLabel>
#include <QMediaPlayer>
#include <QUrl>
#include <QVBoxLayout>
#include <QVideoWidget>

namespace {
// How long opening a file may take before the caller goes on without an answer.
constexpr int OpenWaitMs = 5000;

int stateOf(QMediaPlayer::PlaybackState s)
{
    switch (s) {
    case QMediaPlayer::PlayingState:
        return MediaPlayer::Playing;
    case QMediaPlayer::PausedState:
        return MediaPlayer::Paused;
    default:
        return MediaPlayer::Stopped;
    }
}
} // namespace

MediaPlayer::MediaPlayer(bool video, QWidget *parent)
    : QWidget(parent), m_player(new QMediaPlayer(this)), m_audio(new QAudioOutput(this))
{
    m_player->setAudioOutput(m_audio);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    if (video) {
        m_video = new QVideoWidget(this);
        m_video->setStyleSheet(QStringLiteral("background: black;"));
        m_player->setVideoOutput(m_video);
        layout->addWidget(m_video, 1);
    }
    m_status = new QLabel(this);
    m_status->setAlignment(Qt::AlignCenter);
    m_status->setStyleSheet(QStringLiteral("background: #12223a; color: #f4f7fa; padding: 4px;"));
    layout->addWidget(m_status);
    showStatus();

    connect(m_player, &QMediaPlayer::playbackStateChanged, this, [this](QMediaPlayer::PlaybackState s) {
        const int old = m_state;
        m_state = stateOf(s);
        showStatus();
        if (old != m_state)
            Q_EMIT PlayStateChange(old, m_state);
    });
    connect(m_player, &QMediaPlayer::positionChanged, this, [this] { showStatus(); });
    // A failure is reported several times by the back end: the first report stands for the file.
    connect(m_player, &QMediaPlayer::errorOccurred, this, [this](QMediaPlayer::Error error, const QString &text) {
        if (m_errorCode != 0 || error == QMediaPlayer::NoError)
            return;
        m_errorCode = long(error);
        m_errorDescription = text.isEmpty() ? QStringLiteral("The file cannot be played.") : text;
        showStatus();
    });
}

MediaPlayer::~MediaPlayer()
{
    m_player->stop();
}

void MediaPlayer::setFileName(const QString &path)
{
    m_fileName = path;
    m_errorCode = 0;
    m_errorDescription.clear();
    if (path.isEmpty()) {
        m_player->stop();
        m_player->setSource(QUrl());
        showStatus();
        return;
    }
    const QString real = RealPath(path);
    if (!QFileInfo(real).isFile()) {
        m_player->setSource(QUrl());
        m_errorCode = long(QMediaPlayer::ResourceError);
        m_errorDescription = QStringLiteral("The file %1 cannot be found.").arg(QFileInfo(real).fileName());
        showStatus();
        return;
    }
    m_player->setSource(QUrl::fromLocalFile(real));
    m_player->play();
    QElapsedTimer waited;
    waited.start();
    while (m_errorCode == 0 && waited.elapsed() < OpenWaitMs) {
        const auto status = m_player->mediaStatus();
        if (status == QMediaPlayer::LoadedMedia || status == QMediaPlayer::BufferedMedia ||
            status == QMediaPlayer::EndOfMedia || status == QMediaPlayer::InvalidMedia)
            break;
        ::Pause(10);
    }
    if (m_errorCode == 0 && m_player->mediaStatus() == QMediaPlayer::InvalidMedia) {
        m_errorCode = long(QMediaPlayer::FormatError);
        m_errorDescription = QStringLiteral("The file cannot be played.");
    }
    showStatus();
}

void MediaPlayer::Play()
{
    m_player->play();
}

void MediaPlayer::Pause()
{
    m_player->pause();
}

void MediaPlayer::Stop()
{
    m_player->stop();
}

double MediaPlayer::CurrentPosition() const
{
    return m_player->position() / 1000.0;
}

void MediaPlayer::setCurrentPosition(double seconds)
{
    m_player->setPosition(qint64(seconds * 1000));
}

void MediaPlayer::setPlayCount(int count)
{
    m_playCount = count;
    m_player->setLoops(count == 0 ? int(QMediaPlayer::Infinite) : count);
}

void MediaPlayer::showStatus()
{
    if (!m_status)
        return;
    if (m_fileName.isEmpty()) {
        m_status->setText(QString());
        return;
    }
    if (m_errorCode != 0) {
        m_status->setText(m_errorDescription);
        return;
    }
    const qint64 ms = m_player->position();
    const QString state = m_state == Playing ? QStringLiteral("Playing") : m_state == Paused ? QStringLiteral("Paused")
                                                                                           : QStringLiteral("Stopped");
    m_status->setText(QStringLiteral("%1  %2  %3:%4")
                          .arg(state, QFileInfo(m_fileName).fileName())
                          .arg(ms / 60000)
                          .arg((ms / 1000) % 60, 2, 10, QLatin1Char('0')));
}
