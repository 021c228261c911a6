#pragma once

#include <Qt>

#include <functional>

class QKeyEvent;
class QObject;

// The original platform's virtual-key codes, as KeyDown and KeyUp handlers receive them. A key is
// named by the key that carries it on a US keyboard: '(' is Shift with 9, '"' is Shift with the
// apostrophe key.
enum VbKey : int {
    vbKeyBack = 8,
    vbKeyTab = 9,
    vbKeyReturn = 13,
    vbKeyShift = 16,
    vbKeyControl = 17,
    vbKeyMenu = 18,
    vbKeyPause = 19,
    vbKeyCapital = 20,
    vbKeyEscape = 27,
    vbKeySpace = 32,
    vbKeyPageUp = 33,
    vbKeyPageDown = 34,
    vbKeyEnd = 35,
    vbKeyHome = 36,
    vbKeyLeft = 37,
    vbKeyUp = 38,
    vbKeyRight = 39,
    vbKeyDown = 40,
    vbKeyInsert = 45,
    vbKeyDelete = 46,
    vbKey0 = 48,
    vbKey9 = 57,
    vbKeyA = 65,
    vbKeyZ = 90,
    vbKeyNumpad0 = 96,
    vbKeyMultiply = 106,
    vbKeyAdd = 107,
    vbKeySubtract = 109,
    vbKeyDecimal = 110,
    vbKeyDivide = 111,
    vbKeyF1 = 112,
    vbKeyNumlock = 144,
    vbKeyScrollLock = 145,
    vbKeyOemSemicolon = 186, // ; :
    vbKeyOemPlus = 187,      // = +
    vbKeyOemComma = 188,     // , <
    vbKeyOemMinus = 189,     // - _
    vbKeyOemPeriod = 190,    // . >
    vbKeyOemSlash = 191,     // / ?
    vbKeyOemTilde = 192,     // ` ~
    vbKeyOemOpenBracket = 219,  // [ {
    vbKeyOemBackslash = 220,    // \ |
    vbKeyOemCloseBracket = 221, // ] }
    vbKeyOemQuote = 222,        // ' "
    vbKeyPacket = 231,          // any other character, as input methods deliver them
};

// The key character of a key press.
enum VbKeyAsciiCode : int { vbKeyAsciiBack = 8, vbKeyAsciiReturn = 13, vbKeyAsciiEscape = 27 };

// The shift state of key and mouse events, and the mouse buttons.
enum VbShiftMask : int { vbShiftMask = 1, vbCtrlMask = 2, vbAltMask = 4 };
enum VbMouseButton : int { vbLeftButton = 1, vbRightButton = 2, vbMiddleButton = 4 };

// The key code and the key character of a key event, as the original's KeyDown and KeyPress had them.
int VbKeyCode(const QKeyEvent *event);
int VbKeyAscii(const QKeyEvent *event);
int VbShift(const QKeyEvent *event);
int VbShiftOf(Qt::KeyboardModifiers modifiers);
int VbButtonsOf(Qt::MouseButtons buttons);

// Calls handler(keyCode, shift) for every key pressed in a control, before the control sees the key. The
// handler runs as an event handler: a failure it lets through is the platform's message and the end.
void OnKeyDown(QObject *control, std::function<void(int keyCode, int shift)> handler);
