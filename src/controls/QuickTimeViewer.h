#pragma once

#include <QWidget>

// The movie viewer that plays QuickTime files. It is initialised once per run, on the splash screen.
class QuickTimeViewer final : public QWidget
{
    Q_OBJECT
public:
    explicit QuickTimeViewer(QWidget *parent = nullptr);

    // 0 when movies can be played here; otherwise a code saying why not:
    // 1 no media back end, 2 no decoder for QuickTime movies.
    long InitializeQTML();
    bool IsInitialized() const { return m_initialized; }

private:
    bool m_initialized = false;
};
