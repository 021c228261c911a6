#pragma once

#include <QString>

#include <memory>

class QLockFile;

// Every KEVRO program that works on discs (the desktop program, kevro-check) holds this lock in the
// application folder while it runs: they share its extract folder, which each empties at its start.
// The lock lives in the folder itself, so it holds across users, temporary folders and linked paths.
// A lock left by a program that crashed is taken over.
class WorkLock final
{
public:
    WorkLock();
    ~WorkLock();
    WorkLock(const WorkLock &) = delete;
    WorkLock &operator=(const WorkLock &) = delete;

    // False when another program holds it (or the folder cannot hold a lock).
    bool Take();
    static QString FileName();

private:
    std::unique_ptr<QLockFile> m_lock;
};
