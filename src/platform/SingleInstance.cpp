#include "platform/SingleInstance.h"

#include "platform/Paths.h"

#include <QCryptographicHash>
#include <QDir>
#include <QLocalServer>
#include <QLocalSocket>
#include <QLockFile>
#include <QThread>

#include <unistd.h>

QString InstanceKey()
{
    const QByteArray who = QByteArray::number(getuid()) + ':' + AppPath().toUtf8();
    return QStringLiteral("kevro-") +
           QString::fromLatin1(QCryptographicHash::hash(who, QCryptographicHash::Sha1).toHex().left(16));
}

SingleInstance::SingleInstance(const QString &key, QObject *parent) : QObject(parent), m_name(key) {}

SingleInstance::~SingleInstance()
{
    delete m_server;
    delete m_lock;
}

bool SingleInstance::askRunningCopy()
{
    QLocalSocket socket;
    socket.connectToServer(m_name);
    if (!socket.waitForConnected(1000))
        return false;
    socket.write("activate\n");
    socket.waitForBytesWritten(1000);
    socket.disconnectFromServer();
    return true;
}

bool SingleInstance::AnotherIsRunning()
{
    // A running copy answers first; only then is the lock taken, so a live copy is never disturbed.
    if (askRunningCopy())
        return true;
    m_lock = new QLockFile(QDir::temp().filePath(m_name + QStringLiteral(".lock")));
    m_lock->setStaleLockTime(0); // a lock whose process is gone is stale at once
    if (!m_lock->tryLock(2000)) {
        // Another copy is starting this very moment: it will answer shortly.
        for (int i = 0; i < 20; ++i) {
            if (askRunningCopy())
                return true;
            QThread::msleep(100);
        }
        return true;
    }
    // The lock is ours: a socket left behind by a copy that crashed can go.
    QLocalServer::removeServer(m_name);
    m_server = new QLocalServer(this);
    m_server->setSocketOptions(QLocalServer::UserAccessOption);
    connect(m_server, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket *s = m_server->nextPendingConnection()) {
            connect(s, &QLocalSocket::disconnected, s, &QObject::deleteLater);
            connect(s, &QLocalSocket::readyRead, this, [this, s] {
                if (s->readAll().startsWith("activate") && m_activate)
                    m_activate();
            });
        }
    });
    m_server->listen(m_name);
    return false;
}
