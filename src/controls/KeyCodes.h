#pragma once

class QKeyEvent;

// The key code and the key character of a key event, as the original's KeyDown and KeyPress had them.
int VbKeyCode(const QKeyEvent *event);
int VbKeyAscii(const QKeyEvent *event);
int VbShift(const QKeyEvent *event);
