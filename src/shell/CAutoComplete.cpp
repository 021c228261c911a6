#include "shell/CAutoComplete.h"

#include "platform/VbError.h"
#include "controls/KeyCodes.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>

CAutoComplete::CAutoComplete(QObject *parent) : QObject(parent) {}

void CAutoComplete::setLinkedComboBox(QComboBox *combo)
{
    if (mComboBox)
        mComboBox->removeEventFilter(this);
    mComboBox = combo;
    if (mComboBox) {
        mComboBox->installEventFilter(this);
        mComboBox->setCompleter(nullptr); // the type-ahead is this one's, not the combo's own
    }
}

int CAutoComplete::FindInList(const QString &text, int start, bool exact) const
{
    if (!mComboBox)
        return -1;
    const int n = mComboBox->count();
    // The search starts behind the start entry and wraps round to it, as the combo's own search does.
    const int first = (start < 0 || start >= n) ? 0 : start + 1;
    for (int k = 0; k < n; ++k) {
        const int i = (first + k) % n;
        const QString entry = mComboBox->itemText(i);
        const bool match = exact ? entry.compare(text, Qt::CaseInsensitive) == 0
                                 : entry.startsWith(text, Qt::CaseInsensitive);
        if (match)
            return i;
    }
    return -1;
}

void CAutoComplete::ShowDropDown(bool show)
{
    if (!mComboBox)
        return;
    QAbstractItemView *list = mComboBox->view();
    if (show && !list->isVisible()) {
        // The list opens for the eye only: the typing goes on in the text box.
        list->removeEventFilter(this);
        list->installEventFilter(this);
        mComboBox->showPopup();
    } else if (!show && list->isVisible()) {
        mComboBox->hidePopup();
    }
}

bool CAutoComplete::eventFilter(QObject *watched, QEvent *event)
{
    // The open list takes the keyboard; letters, digits and Backspace go on to the combo's text.
    if (mComboBox && watched == mComboBox->view() &&
        (event->type() == QEvent::KeyPress || event->type() == QEvent::KeyRelease)) {
        auto *key = static_cast<QKeyEvent *>(event);
        if ((!key->text().isEmpty() && key->text().at(0).isPrint()) || key->key() == Qt::Key_Backspace) {
            QKeyEvent copy(key->type(), key->key(), key->modifiers(), key->text(), key->isAutoRepeat(),
                           key->count());
            QApplication::sendEvent(mComboBox, &copy);
            return true;
        }
    }
    // The keys reach the combo, which hands them to its text box without the text box's filters.
    if (mComboBox && watched == mComboBox) {
        if (event->type() == QEvent::KeyPress) {
            const int ascii = VbKeyAscii(static_cast<QKeyEvent *>(event));
            RunHandler([&] { keyPress(ascii); });
        } else if (event->type() == QEvent::KeyRelease) {
            auto *key = static_cast<QKeyEvent *>(event);
            if (!key->isAutoRepeat()) {
                const int code = VbKeyCode(key);
                RunHandler([&] { keyUp(code); });
            }
        }
    }
    return QObject::eventFilter(watched, event);
}

void CAutoComplete::keyPress(int keyAscii)
{
    if (!m_autoAdd || keyAscii != vbKeyAsciiReturn)
        return;
    const QString text = mComboBox->currentText();
    if (FindInList(text, -1, true) == -1)
        mComboBox->addItem(text);
}

void CAutoComplete::keyUp(int keyCode)
{
    // Backspace, the arrows, Delete and the digit 0 (with ')' on its key) among them: they never complete.
    if (keyCode <= vbKey0)
        return;
    QLineEdit *edit = mComboBox->lineEdit();
    const QString typed = edit->text();
    const int i = FindInList(typed, -1, false);
    if (i == -1) {
        const int start = edit->selectionStart() < 0 ? edit->cursorPosition() : edit->selectionStart();
        const int length = edit->selectedText().size();
        ShowDropDown(false);
        edit->setText(typed);
        if (length > 0)
            edit->setSelection(start, length);
        else
            edit->setCursorPosition(start);
        return;
    }
    ShowDropDown(true);
    const QString completed = mComboBox->itemText(i);
    edit->setText(completed);
    // One less than the typed length: the last typed character is selected with the completed tail.
    const int start = std::max(0, static_cast<int>(typed.size()) - 1);
    edit->setSelection(start, completed.size() - start);
}
