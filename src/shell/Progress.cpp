#include "shell/Progress.h"

#include "platform/Events.h"

namespace {
ProgressSink &sink()
{
    static ProgressSink s;
    return s;
}
} // namespace

void SetProgressSink(ProgressSink s)
{
    sink() = std::move(s);
}

void UpdateProgressBox(int percent, const QString &text, QObject *)
{
    DoEvents();
    if (sink().update)
        sink().update(percent, text);
}

void UnloadProgressBox()
{
    if (sink().unload)
        sink().unload();
}
