#pragma once

#include "controls/Form.h"

#include <QPointer>

// The screens' registry: one instance of each, created and loaded when first touched; unloading
// deletes it, and touching it again builds a new one whose load handler runs again.
class Forms final
{
public:
    template <class T> static T *get()
    {
        QPointer<T> &p = slot<T>();
        if (!p || p->IsUnloaded()) {
            p = new T();
            p->LoadForm();
        }
        return p.data();
    }
    template <class T> static bool isLoaded()
    {
        const QPointer<T> &p = slot<T>();
        return p && !p->IsUnloaded();
    }
    template <class T> static void unload()
    {
        if (isLoaded<T>())
            slot<T>()->Unload();
    }

private:
    template <class T> static QPointer<T> &slot()
    {
        static QPointer<T> p;
        return p;
    }
};
