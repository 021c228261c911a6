#pragma once

#include <QImage>
#include <QScrollArea>

class QLabel;

// A picture in a scrolling view with zoom steps. The picture is kept as it was loaded; the view shows
// it at the current zoom level, in per cent.
class PictureView final : public QScrollArea
{
    Q_OBJECT
public:
    explicit PictureView(QWidget *parent = nullptr);

    // Reads a JPEG, BMP or GIF; raises the runtime's invalid-picture failure (481) when the file holds
    // no picture that can be read. The view keeps nothing of a failed load.
    void LoadPicture(const QString &path);
    const QImage &Picture() const { return m_picture; }
    void setPicture(const QImage &picture);
    void Clear() { setPicture(QImage()); }
    bool HasPicture() const { return !m_picture.isNull(); }

    void ZoomIn();
    void ZoomOut();
    int16_t ZoomLevel() const { return m_levels[m_level]; }
    void Refresh();
    // From now on the picture is drawn to fill the view, its sides in proportion (the full screen).
    void setFitToView(bool on);

    // The picture's own size in hundredths of a millimetre, as a picture object reports it.
    long PictureWidth() const;
    long PictureHeight() const;

Q_SIGNALS:
    void Click();
    void DblClick();
    void MouseDown();

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;

private:
    void show_();

    static constexpr int16_t m_levels[] = {10, 25, 50, 75, 100, 150, 200, 300, 400, 800};
    static constexpr int DefaultLevel = 4;
    QImage m_picture;
    QLabel *m_label;
    int m_level = DefaultLevel;
    bool m_fit = false;
};
