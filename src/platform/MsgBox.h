#pragma once

#include <QString>
#include <QStringList>

#include <functional>

// The classic message box: buttons and icon in one number, the answer as the classic value.
enum MsgBoxStyle : int {
    vbOKOnly = 0,
    vbOKCancel = 1,
    vbAbortRetryIgnore = 2,
    vbYesNoCancel = 3,
    vbYesNo = 4,
    vbRetryCancel = 5,
    vbCritical = 16,
    vbQuestion = 32,
    vbExclamation = 48,
    vbInformation = 64,
};
enum MsgBoxResult : int { vbOK = 1, vbCancel = 2, vbAbort = 3, vbRetry = 4, vbIgnore = 5, vbYes = 6, vbNo = 7 };

// The application's title: a box without a title of its own carries it.
QString AppTitle();

int MsgBox(const QString &prompt, int style = vbOKOnly, const QString &title = QString());
// A box about something a log line would have to name: the screens show the prompt as it stands, a tool
// without screens writes the detail instead, one line of it a line (the subject, then the reason).
int MsgBox(const QString &prompt, int style, const QString &title, const QString &detail);

// Who shows the boxes. The screens install a dialog presenter; without one (a tool with no screen) the
// box is written to standard error and answered with its first button.
struct MsgBoxRequest {
    QString prompt;
    int style = 0;
    QString title;
    QString detail; // what a log line says of it; empty when the prompt says it all
    int buttons() const { return style & 0x0F; }
    int icon() const { return style & 0x70; }
};
using MsgBoxPresenter = std::function<int(const MsgBoxRequest &)>;
MsgBoxPresenter SetMsgBoxPresenter(MsgBoxPresenter presenter);

// For tests: records every box and answers from a queue. A box with no queued answer is reported to
// the unexpected-box handler (the test programs make it a failure) and answered with its first button.
// Installs itself for its lifetime and puts the previous presenter back afterwards.
class MsgBoxResponder final
{
public:
    MsgBoxResponder();
    ~MsgBoxResponder();
    MsgBoxResponder(const MsgBoxResponder &) = delete;
    MsgBoxResponder &operator=(const MsgBoxResponder &) = delete;

    void queue(int answer, int times = 1)
    {
        for (int i = 0; i < times; ++i)
            m_answers.append(answer);
    }
    const QList<MsgBoxRequest> &boxes() const { return m_boxes; }
    QStringList prompts() const;
    void clear() { m_boxes.clear(); }
    // Returns the handler it replaces.
    static std::function<void(const MsgBoxRequest &)>
    SetUnexpectedBoxHandler(std::function<void(const MsgBoxRequest &)> handler);

private:
    QList<MsgBoxRequest> m_boxes;
    QList<int> m_answers;
    MsgBoxPresenter m_previous;
};

// The answer a box gives for its first button.
int FirstButtonOf(int style);
