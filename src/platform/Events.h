#pragma once

#include <cstdint>

// Lets pending window events run, as the original's DoEvents: a click arrives nested in the caller.
void DoEvents();

// Milliseconds since the program started; wraps as a 32-bit counter would.
uint32_t GetTickCount();

// Waits the given milliseconds while pumping events. Times every animation.
void Pause(long milliseconds);
