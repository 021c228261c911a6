#pragma once

#include <QObject>
#include <QString>

#include <functional>

class QLocalServer;
class QLockFile;

// The previous-instance test. The first copy of the program holds a lock and listens on a local
// socket; a later copy finds it there, asks it to come to the front, and ends. A copy that crashed
// leaves a lock and a socket that the next start recognises as stale and takes over.
class SingleInstance final : public QObject
{
    Q_OBJECT
public:
    // key names the program's copy: one per user and application folder.
    explicit SingleInstance(const QString &key, QObject *parent = nullptr);
    ~SingleInstance() override;

    // True when another copy is running; that copy has been asked to activate its window.
    bool AnotherIsRunning();
    // Called in the first copy when a later one asks it to come to the front.
    void SetActivator(std::function<void()> activate) { m_activate = std::move(activate); }

private:
    bool askRunningCopy();
    QString m_name;
    QLockFile *m_lock = nullptr;
    QLocalServer *m_server = nullptr;
    std::function<void()> m_activate;
};

// The key of this program's copy: the user and the application folder.
QString InstanceKey();
