#include "shell/Progress.h"

#include "platform/Events.h"

#include <cmath>

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

void UpdateProgressBox(double percent, const QString &text, QObject *)
{
    DoEvents();
    if (sink().update)
        sink().update(int(std::nearbyint(percent)), text);
}

void UnloadProgressBox()
{
    if (sink().unload)
        sink().unload();
}
