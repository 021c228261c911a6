#pragma once

#include <cstdint>

// Lets pending window events run, as the original's DoEvents: a click arrives nested in the caller.
void DoEvents();

// Milliseconds since the program started; wraps as a 32-bit counter would.
uint32_t GetTickCount();

// Waits the given milliseconds while pumping events. Times every animation.
void Pause(long milliseconds);

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
