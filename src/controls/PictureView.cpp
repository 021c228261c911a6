#include "controls/PictureView.h"

#include "platform/VbError.h"

#include <QImageReader>
#include <QLabel>
#include <QMouseEvent>
#include <QPixmap>

namespace {
// A picture object measures in hundredths of a millimetre; pictures come at 96 dots to the inch.
constexpr double HimetricPerPixel = 2540.0 / 96.0;
constexpr long InvalidPicture = 481;
} // namespace

PictureView::PictureView(QWidget *parent) : QScrollArea(parent), m_label(new QLabel)
{
    m_label->setAlignment(Qt::AlignCenter);
    m_label->setAttribute(Qt::WA_TransparentForMouseEvents);
    setWidget(m_label);
    setWidgetResizable(true);
    setAlignment(Qt::AlignCenter);
}

void PictureView::LoadPicture(const QString &path)
{
    QImageReader reader(path);
    reader.setAutoTransform(true);
    const QImage image = reader.read();
    if (image.isNull())
        throw VbError(InvalidPicture, QStringLiteral("Invalid picture"));
    setPicture(image);
}

void PictureView::setPicture(const QImage &picture)
{
    m_picture = picture;
    m_level = DefaultLevel;
    show_();
}

void PictureView::ZoomIn()
{
    if (m_level + 1 < int(std::size(m_levels)))
        ++m_level;
    show_();
}

void PictureView::ZoomOut()
{
    if (m_level > 0)
        --m_level;
    show_();
}

void PictureView::Refresh()
{
    show_();
}

void PictureView::setFitToView(bool on)
{
    m_fit = on;
    show_();
}

long PictureView::PictureWidth() const
{
    return long(m_picture.width() * HimetricPerPixel + 0.5);
}

long PictureView::PictureHeight() const
{
    return long(m_picture.height() * HimetricPerPixel + 0.5);
}

void PictureView::show_()
{
    if (m_picture.isNull()) {
        m_label->setPixmap(QPixmap());
        return;
    }
    const QSize size = m_fit ? viewport()->size() : m_picture.size() * (m_levels[m_level] / 100.0);
    m_label->setPixmap(QPixmap::fromImage(
        m_picture.scaled(size.expandedTo(QSize(1, 1)), Qt::KeepAspectRatio, Qt::SmoothTransformation)));
}

void PictureView::mousePressEvent(QMouseEvent *event)
{
    QScrollArea::mousePressEvent(event);
    Q_EMIT MouseDown();
}

void PictureView::mouseReleaseEvent(QMouseEvent *event)
{
    QScrollArea::mouseReleaseEvent(event);
    if (event->button() == Qt::LeftButton)
        Q_EMIT Click();
}

void PictureView::mouseDoubleClickEvent(QMouseEvent *event)
{
    QScrollArea::mouseDoubleClickEvent(event);
    Q_EMIT DblClick();
}
