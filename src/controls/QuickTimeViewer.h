#pragma once

#include <QSize>
#include <QString>
#include <QWidget>

class QAudioOutput;
class QMediaPlayer;
class QVideoWidget;

// The movie viewer that plays QuickTime files. It is initialised once per run, on the splash screen;
// the video review screen plays ".MOV" files in one of its own. It shows the movie at its natural size
// times a scale factor.
class QuickTimeViewer final : public QWidget
{
    Q_OBJECT
public:
    explicit QuickTimeViewer(QWidget *parent = nullptr);
    ~QuickTimeViewer() override;

    // 0 when movies can be played here; otherwise a code saying why not:
    // 1 no media back end, 2 no decoder for QuickTime movies.
    long InitializeQTML();
    bool IsInitialized() const { return m_initialized; }

    // Loads a movie, not yet playing; returns once its first picture gave its natural size, or it
    // failed, or after a few seconds. An empty name lets go of the movie. A file that is not there
    // raises error 53, one that cannot be opened as a movie error 321.
    void setMovieFile(const QString &path);
    QString MovieFile() const { return m_movieFile; }
    void Play();
    void Stop();
    bool IsPlaying() const;
    // The movie's natural size in pixels; 0 while it is not known.
    int MovieWidth() const { return m_natural.width(); }
    int MovieHeight() const { return m_natural.height(); }
    double Scale() const { return m_scale; }
    void setScale(double scale);
    bool Loop() const { return m_loop; }
    void setLoop(bool on);
    double TimePosition() const;
    void setTimePosition(double seconds);
    // Whether the viewer's own controller strip shows; the screen turns it off when a movie starts.
    bool ShowController() const { return m_showController; }
    void setShowController(bool on) { m_showController = on; }

private:
    void ensurePlayer();
    void dropPlayer();

    bool m_initialized = false;
    QMediaPlayer *m_player = nullptr;
    QAudioOutput *m_audio = nullptr;
    QVideoWidget *m_video = nullptr;
    QString m_movieFile;
    QSize m_natural;
    double m_scale = 1.0;
    bool m_loop = false;
    bool m_showController = true;
};
