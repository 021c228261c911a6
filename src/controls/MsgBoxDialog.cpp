#include "controls/MsgBoxDialog.h"

#include "platform/MsgBox.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>

namespace {
int showDialog(const MsgBoxRequest &box)
{
    QMessageBox m(QApplication::activeWindow());
    m.setWindowTitle(box.title);
    QString text = box.prompt;
    text.replace(QLatin1String("\r\n"), QLatin1String("\n")).replace(QLatin1Char('\r'), QLatin1Char('\n'));
    m.setText(text);
    switch (box.icon()) {
    case vbCritical:
        m.setIcon(QMessageBox::Critical);
        break;
    case vbQuestion:
        m.setIcon(QMessageBox::Question);
        break;
    case vbExclamation:
        m.setIcon(QMessageBox::Warning);
        break;
    case vbInformation:
        m.setIcon(QMessageBox::Information);
        break;
    default:
        m.setIcon(QMessageBox::NoIcon);
    }
    struct B {
        QMessageBox::StandardButton button;
        int value;
    };
    QList<B> buttons;
    switch (box.buttons()) {
    case vbOKCancel:
        buttons = {{QMessageBox::Ok, vbOK}, {QMessageBox::Cancel, vbCancel}};
        break;
    case vbAbortRetryIgnore:
        buttons = {{QMessageBox::Abort, vbAbort}, {QMessageBox::Retry, vbRetry}, {QMessageBox::Ignore, vbIgnore}};
        break;
    case vbYesNoCancel:
        buttons = {{QMessageBox::Yes, vbYes}, {QMessageBox::No, vbNo}, {QMessageBox::Cancel, vbCancel}};
        break;
    case vbYesNo:
        buttons = {{QMessageBox::Yes, vbYes}, {QMessageBox::No, vbNo}};
        break;
    case vbRetryCancel:
        buttons = {{QMessageBox::Retry, vbRetry}, {QMessageBox::Cancel, vbCancel}};
        break;
    default:
        buttons = {{QMessageBox::Ok, vbOK}};
    }
    for (const auto &b : buttons)
        m.addButton(b.button);
    m.setDefaultButton(buttons.first().button);
    const auto clicked = m.exec();
    for (const auto &b : buttons) {
        if (b.button == clicked)
            return b.value;
    }
    // Closed with Escape or the title bar: Cancel where there is one, else the first button.
    for (const auto &b : buttons) {
        if (b.value == vbCancel)
            return vbCancel;
    }
    return buttons.first().value;
}
} // namespace

void InstallMsgBoxDialogs()
{
    SetMsgBoxPresenter(showDialog);
}
