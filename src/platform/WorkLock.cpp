#include "platform/WorkLock.h"

#include "platform/Paths.h"

#include <QLockFile>

WorkLock::WorkLock() = default;
WorkLock::~WorkLock() = default;

QString WorkLock::FileName()
{
    return AppPath() + QStringLiteral("/kevro.lock");
}

bool WorkLock::Take()
{
    m_lock = std::make_unique<QLockFile>(FileName());
    m_lock->setStaleLockTime(0); // a lock whose process is gone is stale at once
    return m_lock->tryLock(0);
}
