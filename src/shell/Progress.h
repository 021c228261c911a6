#pragma once

#include <QString>

#include <functional>

class QObject;

// The shared progress box. The screens install the box that shows it; without one (a tool with no
// screen) progress goes nowhere.
struct ProgressSink {
    std::function<void(int percent, const QString &text)> update;
    std::function<void()> unload;
};
void SetProgressSink(ProgressSink sink);

// Pumps events, then shows the text and the percent in the progress box, making it visible if it is
// not. The percent is a whole number, rounded half to even as the runtime's Integer is. The form
// argument is not used. The caller unloads the box when done.
void UpdateProgressBox(double percent, const QString &text, QObject *form = nullptr);
void UnloadProgressBox();
