#include "controls/AccessKeys.h"

#include <QAbstractButton>
#include <QApplication>
#include <QShortcutEvent>

namespace {
// The one button of the window that answers to the key, or none.
QAbstractButton *buttonFor(QWidget *window, const QKeySequence &key)
{
    QAbstractButton *found = nullptr;
    for (QAbstractButton *b : window->findChildren<QAbstractButton *>()) {
        if (b->shortcut() != key || !b->isVisible() || !b->isEnabled())
            continue;
        if (found)
            return nullptr;
        found = b;
    }
    return found;
}

class AccessKeyFocus final : public QObject
{
public:
    using QObject::QObject;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() != QEvent::Shortcut)
            return false;
        auto *widget = qobject_cast<QWidget *>(watched);
        if (!widget)
            return false;
        const auto *shortcut = static_cast<QShortcutEvent *>(event);
        auto *button = qobject_cast<QAbstractButton *>(widget);
        // A control's access key goes before the menu bar's title of the same letter.
        if (!button || shortcut->isAmbiguous())
            button = buttonFor(widget->window(), shortcut->key());
        if (!button || button->focusPolicy() == Qt::NoFocus || !button->isEnabled())
            return false;
        button->setFocus(Qt::ShortcutFocusReason);
        if (button->window()->focusWidget() == button)
            button->click();
        return true;
    }
};
} // namespace

void InstallAccessKeyFocus()
{
    static AccessKeyFocus *filter = nullptr;
    if (!filter) {
        filter = new AccessKeyFocus(qApp);
        qApp->installEventFilter(filter);
    }
}
