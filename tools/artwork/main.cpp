// Draws KEVRO's pictures into an application folder: the buttons and their hover faces, the marks of
// the grids, the banner, logo and splash, the logon animation and the report's two images.
// Usage: kevro-artwork APPLICATION_FOLDER

#include <QDir>
#include <QFileInfo>
#include <QFont>
#include <QGuiApplication>
#include <QImage>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>

#include <cmath>
#include <cstdio>
#include <functional>

namespace {
const QColor Navy(0x1f, 0x3a, 0x5f);
const QColor DeepNavy(0x12, 0x22, 0x3a);
const QColor Teal(0x2a, 0x9d, 0x8f);
const QColor Paper(0xf4, 0xf7, 0xfa);
const QColor Line(0xc9, 0xd3, 0xde);
const QColor Amber(0xe9, 0xa2, 0x3b);

QString g_root;

bool save(const QImage &img, const QString &relative, int quality = -1)
{
    const QString path = g_root + QLatin1Char('/') + relative;
    QDir().mkpath(QFileInfo(path).absolutePath());
    if (!img.save(path, nullptr, quality)) {
        std::fprintf(stderr, "kevro-artwork: cannot write %s\n", qPrintable(path));
        return false;
    }
    return true;
}

QImage canvas(int w, int h, const QColor &fill = Qt::transparent)
{
    QImage img(w, h, QImage::Format_ARGB32_Premultiplied);
    img.fill(fill);
    return img;
}

void antialias(QPainter &p)
{
    p.setRenderHint(QPainter::Antialiasing);
    p.setRenderHint(QPainter::TextAntialiasing);
    p.setRenderHint(QPainter::SmoothPixmapTransform);
}

QFont font(double px, bool bold = false, double spacing = 0)
{
    QFont f(QStringLiteral("DejaVu Sans"));
    f.setPixelSize(int(px));
    f.setBold(bold);
    if (spacing != 0)
        f.setLetterSpacing(QFont::AbsoluteSpacing, spacing);
    return f;
}

// The disc: a silver face with a teal data band, a clear hub and a highlight at the given angle.
void drawDisc(QPainter &p, QPointF c, double r, double highlightDeg = 35)
{
    p.save();
    QRadialGradient face(c, r);
    face.setColorAt(0.0, QColor(0xfd, 0xfe, 0xff));
    face.setColorAt(0.55, QColor(0xdd, 0xe6, 0xef));
    face.setColorAt(1.0, QColor(0xa9, 0xb8, 0xc8));
    p.setPen(QPen(Navy, std::max(1.0, r / 22)));
    p.setBrush(face);
    p.drawEllipse(c, r, r);
    // data band
    p.setPen(QPen(QColor(Teal.red(), Teal.green(), Teal.blue(), 120), std::max(1.0, r / 7)));
    p.setBrush(Qt::NoBrush);
    p.drawEllipse(c, r * 0.68, r * 0.68);
    // highlight
    QPen glint(QColor(255, 255, 255, 210), std::max(1.0, r / 9), Qt::SolidLine, Qt::RoundCap);
    p.setPen(glint);
    const QRectF arc(c.x() - r * 0.82, c.y() - r * 0.82, r * 1.64, r * 1.64);
    p.drawArc(arc, int(highlightDeg * 16), 50 * 16);
    // hub
    p.setPen(QPen(Navy, std::max(1.0, r / 30)));
    p.setBrush(QColor(0xee, 0xf2, 0xf6));
    p.drawEllipse(c, r * 0.26, r * 0.26);
    p.setBrush(Qt::white);
    p.drawEllipse(c, r * 0.1, r * 0.1);
    p.restore();
}

void drawWordmark(QPainter &p, QRectF box, const QColor &color, double px)
{
    p.save();
    p.setPen(color);
    p.setFont(font(px, true, px * 0.08));
    p.drawText(box, Qt::AlignLeft | Qt::AlignVCenter, QStringLiteral("KEVRO"));
    p.restore();
}

// ---- the five menu buttons -------------------------------------------------------------------------

using Glyph = std::function<void(QPainter &, const QRectF &, const QColor &)>;

void glyphDisc(QPainter &p, const QRectF &r, const QColor &)
{
    drawDisc(p, r.center(), r.width() * 0.42);
}

void glyphReport(QPainter &p, const QRectF &r, const QColor &ink)
{
    const QRectF page(r.left() + r.width() * 0.2, r.top() + r.height() * 0.08, r.width() * 0.6, r.height() * 0.84);
    QPainterPath path;
    const double fold = page.width() * 0.3;
    path.moveTo(page.topLeft());
    path.lineTo(page.right() - fold, page.top());
    path.lineTo(page.right(), page.top() + fold);
    path.lineTo(page.bottomRight());
    path.lineTo(page.bottomLeft());
    path.closeSubpath();
    p.setPen(QPen(ink, r.width() / 24));
    p.setBrush(Qt::white);
    p.drawPath(path);
    for (int i = 0; i < 4; ++i) {
        const double y = page.top() + page.height() * (0.38 + i * 0.14);
        p.drawLine(QPointF(page.left() + page.width() * 0.18, y),
                   QPointF(page.right() - page.width() * (i == 3 ? 0.4 : 0.18), y));
    }
}

void glyphClient(QPainter &p, const QRectF &r, const QColor &ink)
{
    p.setPen(Qt::NoPen);
    p.setBrush(ink);
    p.drawEllipse(QPointF(r.center().x(), r.top() + r.height() * 0.32), r.width() * 0.18, r.width() * 0.18);
    QPainterPath body;
    const QRectF shoulders(r.left() + r.width() * 0.18, r.top() + r.height() * 0.56, r.width() * 0.64,
                           r.height() * 0.6);
    body.moveTo(shoulders.left(), r.bottom() - r.height() * 0.1);
    body.arcTo(shoulders, 180, -180);
    body.closeSubpath();
    p.drawPath(body);
}

void glyphApplication(QPainter &p, const QRectF &r, const QColor &ink)
{
    const QRectF win(r.left() + r.width() * 0.12, r.top() + r.height() * 0.16, r.width() * 0.76, r.height() * 0.68);
    p.setPen(QPen(ink, r.width() / 24));
    p.setBrush(Qt::white);
    p.drawRoundedRect(win, 3, 3);
    p.setBrush(ink);
    p.drawRect(QRectF(win.left(), win.top(), win.width(), win.height() * 0.18));
    const double s = win.width() * 0.2;
    for (int i = 0; i < 3; ++i) {
        p.drawRect(QRectF(win.left() + win.width() * 0.12 + i * (s + win.width() * 0.08),
                          win.top() + win.height() * 0.42, s, s));
    }
}

void glyphLicence(QPainter &p, const QRectF &r, const QColor &ink)
{
    // a key
    p.setPen(QPen(ink, r.width() / 10, Qt::SolidLine, Qt::RoundCap));
    p.setBrush(Qt::NoBrush);
    const QPointF ring(r.left() + r.width() * 0.32, r.center().y());
    p.drawEllipse(ring, r.width() * 0.16, r.width() * 0.16);
    const double y = r.center().y();
    p.drawLine(QPointF(ring.x() + r.width() * 0.16, y), QPointF(r.right() - r.width() * 0.1, y));
    p.drawLine(QPointF(r.right() - r.width() * 0.16, y), QPointF(r.right() - r.width() * 0.16, y + r.height() * 0.14));
    p.drawLine(QPointF(r.right() - r.width() * 0.3, y), QPointF(r.right() - r.width() * 0.3, y + r.height() * 0.1));
}

void glyphAdd(QPainter &p, const QRectF &r, const QColor &ink)
{
    p.setPen(QPen(ink, r.width() / 6, Qt::SolidLine, Qt::RoundCap));
    p.drawLine(QPointF(r.center().x(), r.top() + r.height() * 0.1), QPointF(r.center().x(), r.bottom() - r.height() * 0.1));
    p.drawLine(QPointF(r.left() + r.width() * 0.1, r.center().y()), QPointF(r.right() - r.width() * 0.1, r.center().y()));
}

void glyphDelete(QPainter &p, const QRectF &r, const QColor &ink)
{
    p.setPen(QPen(ink, r.width() / 6, Qt::SolidLine, Qt::RoundCap));
    const QRectF x = r.adjusted(r.width() * 0.16, r.height() * 0.16, -r.width() * 0.16, -r.height() * 0.16);
    p.drawLine(x.topLeft(), x.bottomRight());
    p.drawLine(x.topRight(), x.bottomLeft());
}

void glyphSave(QPainter &p, const QRectF &r, const QColor &ink)
{
    // a diskette
    p.setPen(Qt::NoPen);
    p.setBrush(ink);
    p.drawRoundedRect(r, 2, 2);
    p.setBrush(Qt::white);
    p.drawRect(QRectF(r.left() + r.width() * 0.2, r.top(), r.width() * 0.5, r.height() * 0.32));
    p.drawRoundedRect(QRectF(r.left() + r.width() * 0.14, r.top() + r.height() * 0.5, r.width() * 0.72, r.height() * 0.42), 1, 1);
    p.setBrush(ink);
    p.drawRect(QRectF(r.left() + r.width() * 0.5, r.top() + r.height() * 0.04, r.width() * 0.12, r.height() * 0.22));
}

void glyphEdit(QPainter &p, const QRectF &r, const QColor &ink)
{
    // a pencil across the tile
    p.save();
    p.translate(r.center());
    p.rotate(-45);
    const double len = r.width() * 1.05, w = r.width() * 0.24;
    p.setPen(Qt::NoPen);
    p.setBrush(ink);
    p.drawRect(QRectF(-len / 2, -w / 2, len * 0.72, w));
    QPainterPath tip;
    tip.moveTo(len * 0.22 + 1, -w / 2);
    tip.lineTo(len / 2, 0);
    tip.lineTo(len * 0.22 + 1, w / 2);
    tip.closeSubpath();
    p.drawPath(tip);
    p.restore();
}

QImage button(const Glyph &glyph, bool hover, int s = 64)
{
    QImage img = canvas(s, s);
    QPainter p(&img);
    antialias(p);
    const QRectF tile(2, 2, s - 4, s - 4);
    QLinearGradient g(tile.topLeft(), tile.bottomLeft());
    if (hover) {
        g.setColorAt(0, Teal.lighter(115));
        g.setColorAt(1, Teal.darker(110));
    } else {
        g.setColorAt(0, Qt::white);
        g.setColorAt(1, Paper.darker(103));
    }
    p.setPen(QPen(hover ? Teal.darker(130) : Line, 1.5));
    p.setBrush(g);
    p.drawRoundedRect(tile, s / 5.0, s / 5.0);
    const double inset = s * 0.19;
    glyph(p, tile.adjusted(inset, inset, -inset, -inset), hover ? DeepNavy : Navy);
    return img;
}

// ---- marks of the grids -----------------------------------------------------------------------------

QImage markZip()
{
    QImage img = canvas(16, 16);
    QPainter p(&img);
    antialias(p);
    p.setPen(QPen(Amber.darker(150), 1));
    p.setBrush(Amber);
    p.drawRoundedRect(QRectF(2.5, 3.5, 11, 10), 1.5, 1.5);
    p.setPen(QPen(Navy, 1));
    for (int y = 4; y < 13; y += 2)
        p.drawLine(QPointF(7.5, y), QPointF(8.5, y));
    p.setBrush(Navy);
    p.drawRect(QRectF(6.5, 9.5, 3, 3));
    return img;
}

QImage markHidden()
{
    QImage img = canvas(16, 16);
    QPainter p(&img);
    antialias(p);
    QPainterPath eye;
    eye.moveTo(1.5, 8);
    eye.quadTo(8, 1.5, 14.5, 8);
    eye.quadTo(8, 14.5, 1.5, 8);
    p.setPen(QPen(QColor(0x5b, 0x67, 0x75), 1.2));
    p.setBrush(Qt::white);
    p.drawPath(eye);
    p.setBrush(QColor(0x5b, 0x67, 0x75));
    p.drawEllipse(QPointF(8, 8), 2.2, 2.2);
    p.setPen(QPen(QColor(0xc0, 0x39, 0x2b), 1.8, Qt::SolidLine, Qt::RoundCap));
    p.drawLine(QPointF(3, 13), QPointF(13, 3));
    return img;
}

QImage markTick()
{
    QImage img = canvas(16, 16);
    QPainter p(&img);
    antialias(p);
    p.setPen(QPen(QColor(0x23, 0x8b, 0x45), 2.4, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    QPainterPath tick;
    tick.moveTo(3, 8.5);
    tick.lineTo(6.5, 12);
    tick.lineTo(13, 4);
    p.drawPath(tick);
    return img;
}

// ---- the players' transport buttons: lit when that state is on -------------------------------------

enum class Transport { Play, Pause, Stop };

QImage transport(Transport kind, bool on)
{
    QImage img = canvas(32, 24);
    QPainter p(&img);
    antialias(p);
    p.setPen(Qt::NoPen);
    p.setBrush(on ? Teal : QColor(0x7f, 0x8c, 0x99));
    switch (kind) {
    case Transport::Play: {
        QPainterPath t;
        t.moveTo(11, 5);
        t.lineTo(23, 12);
        t.lineTo(11, 19);
        t.closeSubpath();
        p.drawPath(t);
        break;
    }
    case Transport::Pause:
        p.drawRoundedRect(QRectF(10, 5, 4.5, 14), 1, 1);
        p.drawRoundedRect(QRectF(17.5, 5, 4.5, 14), 1, 1);
        break;
    case Transport::Stop:
        p.drawRoundedRect(QRectF(10, 6, 12, 12), 1.5, 1.5);
        break;
    }
    return img;
}

// ---- the image viewer's buttons: a magnifier in or out and the full-screen corners, lit under the mouse

enum class ViewerGlyph { ZoomIn, ZoomOut, FullScreen };

QImage viewerButton(ViewerGlyph kind, bool hover)
{
    QImage img = canvas(20, 20);
    QPainter p(&img);
    antialias(p);
    const QColor ink = hover ? Teal : Navy;
    p.setBrush(Qt::NoBrush);
    if (kind == ViewerGlyph::FullScreen) {
        p.setPen(QPen(ink, 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        for (const QPointF &corner : {QPointF(3, 3), QPointF(17, 3), QPointF(3, 17), QPointF(17, 17)}) {
            const double dx = corner.x() < 10 ? 5 : -5, dy = corner.y() < 10 ? 5 : -5;
            p.drawPolyline(QPolygonF{corner + QPointF(dx, 0), corner, corner + QPointF(0, dy)});
        }
        p.setPen(Qt::NoPen);
        p.setBrush(hover ? Teal : Line);
        p.drawRoundedRect(QRectF(7, 7, 6, 6), 1, 1);
        return img;
    }
    p.setPen(QPen(ink, 2));
    p.drawEllipse(QPointF(8, 8), 5.5, 5.5);
    p.setPen(QPen(ink, 3, Qt::SolidLine, Qt::RoundCap));
    p.drawLine(QPointF(12.5, 12.5), QPointF(17, 17));
    p.setPen(QPen(hover ? Amber : ink, 1.6, Qt::SolidLine, Qt::RoundCap));
    p.drawLine(QPointF(5.5, 8), QPointF(10.5, 8));
    if (kind == ViewerGlyph::ZoomIn)
        p.drawLine(QPointF(8, 5.5), QPointF(8, 10.5));
    return img;
}

// ---- banners, logo and splash ------------------------------------------------------------------------

QImage logo()
{
    QImage img = canvas(320, 160);
    QPainter p(&img);
    antialias(p);
    drawDisc(p, QPointF(72, 80), 60);
    drawWordmark(p, QRectF(142, 38, 178, 60), Navy, 38);
    p.setPen(Teal.darker(120));
    p.setFont(font(13));
    p.drawText(QRectF(146, 96, 174, 24), Qt::AlignLeft | Qt::AlignVCenter, QStringLiteral("disc content check"));
    return img;
}

QImage splash()
{
    QImage img = canvas(480, 250, Navy);
    QPainter p(&img);
    antialias(p);
    QLinearGradient g(0, 0, 480, 250);
    g.setColorAt(0, Navy);
    g.setColorAt(1, DeepNavy);
    p.fillRect(img.rect(), g);
    p.setOpacity(0.18);
    for (int i = 0; i < 5; ++i) {
        p.setPen(QPen(Qt::white, 1));
        p.setBrush(Qt::NoBrush);
        p.drawEllipse(QPointF(400, 130), 60.0 + i * 26, 60.0 + i * 26);
    }
    p.setOpacity(1);
    drawDisc(p, QPointF(392, 124), 72, 20);
    drawWordmark(p, QRectF(36, 54, 300, 70), Qt::white, 58);
    p.setPen(QColor(0xcf, 0xe3, 0xf0));
    p.setFont(font(15));
    p.drawText(QRectF(40, 124, 300, 24), Qt::AlignLeft | Qt::AlignVCenter,
               QStringLiteral("Disc content and licence checker"));
    p.setPen(QPen(Teal, 3));
    p.drawLine(QPointF(40, 158), QPointF(150, 158));
    p.setPen(QColor(0x9f, 0xb6, 0xcc));
    p.setFont(font(11));
    p.drawText(QRectF(40, 206, 400, 20), Qt::AlignLeft | Qt::AlignVCenter,
               QStringLiteral("For the mastering floor: check every disc before it is replicated."));
    return img;
}

QImage banner()
{
    QImage img = canvas(600, 60);
    QPainter p(&img);
    antialias(p);
    QLinearGradient g(0, 0, 600, 0);
    g.setColorAt(0, Navy);
    g.setColorAt(1, DeepNavy);
    p.fillRect(img.rect(), g);
    drawDisc(p, QPointF(32, 30), 20);
    drawWordmark(p, QRectF(62, 8, 200, 44), Qt::white, 30);
    p.setPen(QColor(0xcf, 0xe3, 0xf0));
    p.setFont(font(13));
    p.drawText(QRectF(200, 8, 380, 44), Qt::AlignRight | Qt::AlignVCenter,
               QStringLiteral("Disc content and licence checker"));
    p.fillRect(QRectF(0, 57, 600, 3), Teal);
    return img;
}

QImage groupTitle(const QString &text)
{
    QImage img = canvas(200, 28);
    QPainter p(&img);
    antialias(p);
    p.fillRect(QRectF(0, 24, 200, 2), Teal);
    p.setPen(Navy);
    p.setFont(font(15, true));
    p.drawText(QRectF(2, 0, 198, 24), Qt::AlignLeft | Qt::AlignVCenter, text);
    return img;
}

QImage logonFrame(int i)
{
    QImage img = canvas(64, 64);
    QPainter p(&img);
    antialias(p);
    drawDisc(p, QPointF(32, 32), 28, 35 + i * 45);
    return img;
}

// ---- the report's images ------------------------------------------------------------------------------

QImage backdrop()
{
    QImage img = canvas(800, 600, Qt::white);
    QPainter p(&img);
    antialias(p);
    QLinearGradient g(0, 0, 0, 600);
    g.setColorAt(0, Qt::white);
    g.setColorAt(1, Paper);
    p.fillRect(img.rect(), g);
    p.setBrush(Qt::NoBrush);
    for (int i = 0; i < 9; ++i) {
        p.setPen(QPen(QColor(0x1f, 0x3a, 0x5f, 14), 2));
        p.drawEllipse(QPointF(760, 560), 80.0 + i * 42, 80.0 + i * 42);
    }
    return img.convertToFormat(QImage::Format_RGB32);
}

QImage htmlIcon()
{
    QImage img = canvas(64, 64, Qt::white);
    QPainter p(&img);
    antialias(p);
    drawDisc(p, QPointF(32, 32), 28);
    return img.convertToFormat(QImage::Format_RGB32);
}
} // namespace

int main(int argc, char **argv)
{
    QGuiApplication app(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: kevro-artwork APPLICATION_FOLDER\n");
        return 2;
    }
    g_root = QString::fromLocal8Bit(argv[1]);
    bool ok = true;
    const struct {
        const char *name;
        Glyph glyph;
    } buttons[] = {{"scan_disc", glyphDisc},
                   {"reports", glyphReport},
                   {"clients", glyphClient},
                   {"applications", glyphApplication},
                   {"licenses", glyphLicence}};
    for (const auto &b : buttons) {
        ok &= save(button(b.glyph, false), QStringLiteral("pictures/%1_normal.png").arg(QLatin1String(b.name)));
        ok &= save(button(b.glyph, true), QStringLiteral("pictures/%1_hover.png").arg(QLatin1String(b.name)));
    }
    // the catalogue screens' record buttons
    const struct {
        const char *name;
        Glyph glyph;
    } records[] = {{"record_add", glyphAdd}, {"record_delete", glyphDelete}, {"record_save", glyphSave},
                   {"record_edit", glyphEdit},  {"record_owners", glyphClient}};
    for (const auto &b : records) {
        ok &= save(button(b.glyph, false, 40), QStringLiteral("pictures/%1_normal.png").arg(QLatin1String(b.name)));
        ok &= save(button(b.glyph, true, 40), QStringLiteral("pictures/%1_hover.png").arg(QLatin1String(b.name)));
    }
    ok &= save(markZip(), QStringLiteral("pictures/zip.png"));
    ok &= save(markHidden(), QStringLiteral("pictures/hidden.png"));
    ok &= save(markTick(), QStringLiteral("pictures/tick.png"));
    ok &= save(transport(Transport::Play, true), QStringLiteral("pictures/play_on.png"));
    ok &= save(transport(Transport::Play, false), QStringLiteral("pictures/play_off.png"));
    ok &= save(transport(Transport::Pause, true), QStringLiteral("pictures/pause_on.png"));
    ok &= save(transport(Transport::Pause, false), QStringLiteral("pictures/pause_off.png"));
    ok &= save(transport(Transport::Stop, false), QStringLiteral("pictures/stop.png"));
    ok &= save(viewerButton(ViewerGlyph::ZoomIn, false), QStringLiteral("pictures/zoom_in_normal.png"));
    ok &= save(viewerButton(ViewerGlyph::ZoomIn, true), QStringLiteral("pictures/zoom_in_hover.png"));
    ok &= save(viewerButton(ViewerGlyph::ZoomOut, false), QStringLiteral("pictures/zoom_out_normal.png"));
    ok &= save(viewerButton(ViewerGlyph::ZoomOut, true), QStringLiteral("pictures/zoom_out_hover.png"));
    ok &= save(viewerButton(ViewerGlyph::FullScreen, false), QStringLiteral("pictures/full_screen_out.png"));
    ok &= save(viewerButton(ViewerGlyph::FullScreen, true), QStringLiteral("pictures/full_screen_in.png"));
    ok &= save(logo(), QStringLiteral("pictures/logo.png"));
    ok &= save(splash(), QStringLiteral("pictures/splash.png"));
    ok &= save(banner(), QStringLiteral("pictures/banner.png"));
    ok &= save(groupTitle(QStringLiteral("Scan Engine")), QStringLiteral("pictures/title_scan_engine.png"));
    ok &= save(groupTitle(QStringLiteral("Database")), QStringLiteral("pictures/title_database.png"));
    for (int i = 1; i <= 8; ++i)
        ok &= save(logonFrame(i), QStringLiteral("pictures/logon_%1.png").arg(i));
    ok &= save(backdrop(), QStringLiteral("reports/backdrop.jpg"), 88);
    ok &= save(htmlIcon(), QStringLiteral("reports/htmlicon.jpg"), 92);
    return ok ? 0 : 1;
}
