#include "controls/KeyCodes.h"

#include "platform/VbError.h"

#include <QKeyEvent>

namespace {
// Keys of the numeric pad keep codes of their own.
int keypadCode(int k)
{
    if (k >= Qt::Key_0 && k <= Qt::Key_9)
        return vbKeyNumpad0 + (k - Qt::Key_0);
    switch (k) {
    case Qt::Key_Asterisk:
        return vbKeyMultiply;
    case Qt::Key_Plus:
        return vbKeyAdd;
    case Qt::Key_Minus:
        return vbKeySubtract;
    case Qt::Key_Period:
    case Qt::Key_Comma:
        return vbKeyDecimal;
    case Qt::Key_Slash:
        return vbKeyDivide;
    case Qt::Key_Enter:
    case Qt::Key_Return:
        return vbKeyReturn;
    default:
        return 0;
    }
}

// Punctuation, by the key of a US keyboard that carries it, shifted or not.
int punctuationCode(int k)
{
    switch (k) {
    case Qt::Key_ParenRight:
        return vbKey0;
    case Qt::Key_Exclam:
        return vbKey0 + 1;
    case Qt::Key_At:
        return vbKey0 + 2;
    case Qt::Key_NumberSign:
        return vbKey0 + 3;
    case Qt::Key_Dollar:
        return vbKey0 + 4;
    case Qt::Key_Percent:
        return vbKey0 + 5;
    case Qt::Key_AsciiCircum:
        return vbKey0 + 6;
    case Qt::Key_Ampersand:
        return vbKey0 + 7;
    case Qt::Key_Asterisk:
        return vbKey0 + 8;
    case Qt::Key_ParenLeft:
        return vbKey9;
    case Qt::Key_Semicolon:
    case Qt::Key_Colon:
        return vbKeyOemSemicolon;
    case Qt::Key_Equal:
    case Qt::Key_Plus:
        return vbKeyOemPlus;
    case Qt::Key_Comma:
    case Qt::Key_Less:
        return vbKeyOemComma;
    case Qt::Key_Minus:
    case Qt::Key_Underscore:
        return vbKeyOemMinus;
    case Qt::Key_Period:
    case Qt::Key_Greater:
        return vbKeyOemPeriod;
    case Qt::Key_Slash:
    case Qt::Key_Question:
        return vbKeyOemSlash;
    case Qt::Key_QuoteLeft:
    case Qt::Key_AsciiTilde:
        return vbKeyOemTilde;
    case Qt::Key_BracketLeft:
    case Qt::Key_BraceLeft:
        return vbKeyOemOpenBracket;
    case Qt::Key_Backslash:
    case Qt::Key_Bar:
        return vbKeyOemBackslash;
    case Qt::Key_BracketRight:
    case Qt::Key_BraceRight:
        return vbKeyOemCloseBracket;
    case Qt::Key_Apostrophe:
    case Qt::Key_QuoteDbl:
        return vbKeyOemQuote;
    default:
        return 0;
    }
}

class KeyDownFilter final : public QObject
{
public:
    KeyDownFilter(QObject *control, std::function<void(int, int)> handler)
        : QObject(control), m_handler(std::move(handler))
    {
    }
    bool eventFilter(QObject *, QEvent *event) override
    {
        // An event handler: a failure in it never crosses the event loop.
        if (event->type() == QEvent::KeyPress) {
            const auto *key = static_cast<QKeyEvent *>(event);
            const int code = VbKeyCode(key), shift = VbShift(key);
            RunHandler([&] { m_handler(code, shift); });
        }
        return false;
    }

private:
    std::function<void(int, int)> m_handler;
};
} // namespace

int VbKeyCode(const QKeyEvent *e)
{
    const int k = e->key();
    if (e->modifiers() & Qt::KeypadModifier) {
        if (const int code = keypadCode(k))
            return code;
    }
    if (k >= Qt::Key_A && k <= Qt::Key_Z)
        return vbKeyA + (k - Qt::Key_A);
    if (k >= Qt::Key_0 && k <= Qt::Key_9)
        return vbKey0 + (k - Qt::Key_0);
    if (k >= Qt::Key_F1 && k <= Qt::Key_F24)
        return vbKeyF1 + (k - Qt::Key_F1);
    if (const int code = punctuationCode(k))
        return code;
    switch (k) {
    case Qt::Key_Backspace:
        return vbKeyBack;
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
        return vbKeyTab;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return vbKeyReturn;
    case Qt::Key_Shift:
        return vbKeyShift;
    case Qt::Key_Control:
        return vbKeyControl;
    case Qt::Key_Alt:
        return vbKeyMenu;
    case Qt::Key_Pause:
        return vbKeyPause;
    case Qt::Key_CapsLock:
        return vbKeyCapital;
    case Qt::Key_Escape:
        return vbKeyEscape;
    case Qt::Key_Space:
        return vbKeySpace;
    case Qt::Key_PageUp:
        return vbKeyPageUp;
    case Qt::Key_PageDown:
        return vbKeyPageDown;
    case Qt::Key_End:
        return vbKeyEnd;
    case Qt::Key_Home:
        return vbKeyHome;
    case Qt::Key_Left:
        return vbKeyLeft;
    case Qt::Key_Up:
        return vbKeyUp;
    case Qt::Key_Right:
        return vbKeyRight;
    case Qt::Key_Down:
        return vbKeyDown;
    case Qt::Key_Insert:
        return vbKeyInsert;
    case Qt::Key_Delete:
        return vbKeyDelete;
    case Qt::Key_NumLock:
        return vbKeyNumlock;
    case Qt::Key_ScrollLock:
        return vbKeyScrollLock;
    default:
        // A letter of another alphabet, or any other character: never one of the navigation codes.
        return e->text().isEmpty() ? 0 : vbKeyPacket;
    }
}

int VbKeyAscii(const QKeyEvent *e)
{
    switch (e->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return vbKeyAsciiReturn;
    case Qt::Key_Escape:
        return vbKeyAsciiEscape;
    case Qt::Key_Backspace:
        return vbKeyAsciiBack;
    case Qt::Key_Delete:
        return 0; // Delete types no character, whatever text the window system sends with it
    default:
        break;
    }
    const QString t = e->text();
    return t.isEmpty() ? 0 : t.at(0).unicode();
}

int VbShift(const QKeyEvent *e)
{
    return VbShiftOf(e->modifiers());
}

int VbShiftOf(Qt::KeyboardModifiers m)
{
    return ((m & Qt::ShiftModifier) ? vbShiftMask : 0) | ((m & Qt::ControlModifier) ? vbCtrlMask : 0) |
           ((m & Qt::AltModifier) ? vbAltMask : 0);
}

int VbButtonsOf(Qt::MouseButtons b)
{
    return ((b & Qt::LeftButton) ? vbLeftButton : 0) | ((b & Qt::RightButton) ? vbRightButton : 0) |
           ((b & Qt::MiddleButton) ? vbMiddleButton : 0);
}

void OnKeyDown(QObject *control, std::function<void(int, int)> handler)
{
    control->installEventFilter(new KeyDownFilter(control, std::move(handler)));
}
