#include "platform/MsgBox.h"

#include <cstdio>

namespace {
int presentOnConsole(const MsgBoxRequest &box)
{
    std::fprintf(stderr, "%s: %s\n", qPrintable(box.title), qPrintable(box.detail.isEmpty() ? box.prompt : box.detail));
    return FirstButtonOf(box.style);
}

MsgBoxPresenter &presenter()
{
    static MsgBoxPresenter p = presentOnConsole;
    return p;
}
} // namespace

QString AppTitle()
{
    return QStringLiteral("KEVRO");
}

int FirstButtonOf(int style)
{
    switch (style & 0x0F) {
    case vbAbortRetryIgnore:
        return vbAbort;
    case vbYesNoCancel:
    case vbYesNo:
        return vbYes;
    case vbRetryCancel:
        return vbRetry;
    default:
        return vbOK;
    }
}

int MsgBox(const QString &prompt, int style, const QString &title)
{
    return MsgBox(prompt, style, title, QString());
}

int MsgBox(const QString &prompt, int style, const QString &title, const QString &detail)
{
    MsgBoxRequest box{prompt, style, title.isEmpty() ? AppTitle() : title, detail};
    return presenter()(box);
}

MsgBoxPresenter SetMsgBoxPresenter(MsgBoxPresenter p)
{
    MsgBoxPresenter old = presenter();
    presenter() = p ? std::move(p) : MsgBoxPresenter(presentOnConsole);
    return old;
}

namespace {
std::function<void(const MsgBoxRequest &)> &unexpectedBoxHandler()
{
    static std::function<void(const MsgBoxRequest &)> handler;
    return handler;
}
} // namespace

std::function<void(const MsgBoxRequest &)>
MsgBoxResponder::SetUnexpectedBoxHandler(std::function<void(const MsgBoxRequest &)> handler)
{
    auto previous = std::move(unexpectedBoxHandler());
    unexpectedBoxHandler() = std::move(handler);
    return previous;
}

MsgBoxResponder::MsgBoxResponder()
{
    m_previous = SetMsgBoxPresenter([this](const MsgBoxRequest &box) {
        m_boxes.append(box);
        if (!m_answers.isEmpty())
            return m_answers.takeFirst();
        if (unexpectedBoxHandler())
            unexpectedBoxHandler()(box);
        return FirstButtonOf(box.style);
    });
}

MsgBoxResponder::~MsgBoxResponder()
{
    SetMsgBoxPresenter(m_previous);
}

QStringList MsgBoxResponder::prompts() const
{
    QStringList out;
    for (const auto &b : m_boxes)
        out << b.prompt;
    return out;
}
