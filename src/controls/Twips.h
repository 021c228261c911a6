#pragma once

class QWidget;

// Positions and sizes are kept in twips: 15 to a device-independent pixel, 1440 to the inch.
constexpr int TwipsPerPixel = 15;
constexpr int TwipsToPixels(double twips)
{
    return static_cast<int>(twips >= 0 ? twips / TwipsPerPixel + 0.5 : twips / TwipsPerPixel - 0.5);
}
constexpr long PixelsToTwips(int pixels)
{
    return static_cast<long>(pixels) * TwipsPerPixel;
}

// Controls placed in twips, relative to their parent.
void PlaceTw(QWidget *w, long left, long top, long width, long height);
long LeftTw(const QWidget *w);
long TopTw(const QWidget *w);
long WidthTw(const QWidget *w);
long HeightTw(const QWidget *w);
void SetLeftTw(QWidget *w, long twips);
void SetTopTw(QWidget *w, long twips);

// The size of the screen in twips.
long ScreenWidthTw();
long ScreenHeightTw();
