#include "controls/MediaPlayer.h"

#include "platform/Events.h"
#include "platform/Paths.h"
#include "platform/VbError.h"

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

MediaPlayer::MediaPlayer(bool video, QWidget *parent) : QWidget(parent)
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    if (video) {
        m_video = new QVideoWidget(this);
        m_video->setStyleSheet(QStringLiteral("background: black;"));
        layout->addWidget(m_video, 1);
    }
    m_status = new QLabel(this);
    m_status->setAlignment(Qt::AlignCenter);
    m_status->setTextFormat(Qt::PlainText); // a file's name is never markup
    m_status->setStyleSheet(QStringLiteral("background: #12223a; color: #f4f7fa; padding: 4px;"));
    layout->addWidget(m_status);
    makePlayer();
    showStatus();
}

void MediaPlayer::makePlayer()
{
    m_player = new QMediaPlayer(this);
    m_audio = new QAudioOutput(m_player);
    m_player->setAudioOutput(m_audio);
    if (m_video)
        m_player->setVideoOutput(m_video);
    m_player->setLoops(m_playCount == 0 ? int(QMediaPlayer::Infinite) : m_playCount);
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
        m_failed = true;
        showStatus();
    });
}

void MediaPlayer::replacePlayer()
{
    // GStreamer's pipeline for a file it could not take apart is not used again: its leftovers,
    // torn down while the next file is set up in the same pipeline, can bring the program down.
    // The old player is stopped, emptied and let go once the events it has queued have been run.
    QMediaPlayer *old = m_player;
    disconnect(old, nullptr, this, nullptr);
    old->stop();
    old->setSource(QUrl());
    old->setVideoOutput(nullptr);
    DoEvents();
    delete old;
    m_failed = false;
    makePlayer();
    if (m_state != Stopped) {
        const int was = m_state;
        m_state = Stopped;
        Q_EMIT PlayStateChange(was, m_state);
    }
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
    if (m_failed)
        replacePlayer();
    // A file that is not there is refused at once; one that cannot be decoded is told by ErrorCode.
    if (!QFileInfo(path).isFile()) {
        m_player->stop();
        m_player->setSource(QUrl());
        m_fileName.clear();
        showStatus();
        RaiseVbError(VbErr::FileNotFound);
    }
    m_player->setSource(QUrl::fromLocalFile(path));
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
    if (m_player->mediaStatus() == QMediaPlayer::InvalidMedia)
        m_failed = true;
    if (m_errorCode == 0 && m_failed) {
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
                          .arg(state, ShownText(QFileInfo(m_fileName).fileName()))
                          .arg(ms / 60000)
                          .arg((ms / 1000) % 60, 2, 10, QLatin1Char('0')));
}
