#pragma once

#include <QString>
#include <QWidget>

class QAudioOutput;
class QLabel;
class QMediaPlayer;
class QVideoWidget;

// The media player control of the review screens, on Qt Multimedia: setting FileName starts playing;
// Play, Pause and Stop; the position in seconds; PlayCount (0 repeats without end, 1 plays once); the
// error of the last file; and PlayStateChange with 0 stopped, 1 paused, 2 playing. Stop keeps the file
// open; only a FileName of "" lets go of it.
class MediaPlayer final : public QWidget
{
    Q_OBJECT
public:
    enum State { Stopped = 0, Paused = 1, Playing = 2 };

    // With video, the pictures show in the control; without, it shows the file's name and position.
    explicit MediaPlayer(bool video, QWidget *parent = nullptr);
    ~MediaPlayer() override;

    QString FileName() const { return m_fileName; }
    // Opens the file and plays it; returns once the file is open or has failed (ErrorCode), or after a
    // few seconds of a source that says neither. A file that is not there raises error 53.
    void setFileName(const QString &path);
    void Play();
    void Pause();
    void Stop();
    double CurrentPosition() const;
    void setCurrentPosition(double seconds);
    int PlayCount() const { return m_playCount; }
    void setPlayCount(int count);
    long ErrorCode() const { return m_errorCode; }
    QString ErrorDescription() const { return m_errorDescription; }
    int PlayState() const { return m_state; }

    QMediaPlayer *Player() const { return m_player; }

Q_SIGNALS:
    void PlayStateChange(int oldState, int newState);

private:
    void showStatus();
    void makePlayer();
    void replacePlayer();

    QMediaPlayer *m_player = nullptr;
    QAudioOutput *m_audio = nullptr;
    bool m_failed = false; // the back end could not take the last file
    QVideoWidget *m_video = nullptr;
    QLabel *m_status = nullptr;
    QString m_fileName;
    int m_playCount = 1;
    long m_errorCode = 0;
    QString m_errorDescription;
    int m_state = Stopped;
};
