#pragma once

#include "controls/Twips.h"
#include "platform/Events.h"

#include <QMainWindow>

// The unload modes of a close request.
enum UnloadMode { vbFormControlMenu = 0, vbFormCode = 1, vbAppWindows = 2 };

// A screen. Positions and sizes are read and written in twips; the load, activate, paint and unload
// handlers run as the original's events did. Screens are created and unloaded through Forms.
class Form : public QMainWindow
{
    Q_OBJECT
public:
    explicit Form(QWidget *parent = nullptr);

    long Left() const;
    long Top() const;
    long Width() const;
    long Height() const;
    void setLeft(long twips);
    void setTop(long twips);
    void setWidth(long twips);
    void setHeight(long twips);
    void Move(long left, long top);

    // Shows the screen and waits until it is hidden or unloaded, as a modal show does.
    void ShowModal();
    // Unloads by code (unload mode 1). Returns false when the screen refused.
    bool Unload();
    bool IsUnloaded() const { return m_unloaded; }

    // Runs the load handler once; Forms calls it when the screen is first touched.
    void LoadForm();

protected:
    virtual void Form_Load() {}
    virtual void Form_Activate() {}
    virtual void Form_QueryUnload(int &cancel, int unloadMode)
    {
        Q_UNUSED(cancel);
        Q_UNUSED(unloadMode);
    }
    virtual void Form_Unload(int &cancel) { Q_UNUSED(cancel); }

    void closeEvent(QCloseEvent *event) override;
    void showEvent(QShowEvent *event) override;
    bool event(QEvent *event) override;

private:
    bool runUnload(int mode);
    void fireActivate();

    bool m_loaded = false;
    bool m_unloaded = false;
    bool m_unloadingByCode = false;
};

// A control with its name, so that it can be found by it.
template <class T> T *Named(T *w, const char *name)
{
    w->setObjectName(QLatin1String(name));
    return w;
}
