#include "measure.h"

#include <QElapsedTimer>
#include <QFile>

#include <vector>

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

// Runs a program to its end with its output thrown away; its wall time and peak memory.
Child runMeasured(const QString &program, const QStringList &args)
{
    std::vector<QByteArray> storage{QFile::encodeName(program)};
    for (const QString &a : args)
        storage.push_back(a.toLocal8Bit());
    std::vector<char *> argv;
    for (QByteArray &b : storage)
        argv.push_back(b.data());
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    QElapsedTimer t;
    t.start();
    pid_t pid = 0;
    Child c;
    if (posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ) == 0) {
        int status = 0;
        struct rusage usage {};
        if (wait4(pid, &status, 0, &usage) == pid) {
            c.ms = t.nsecsElapsed() / 1e6;
            c.peakKb = usage.ru_maxrss;
            c.ok = WIFEXITED(status) && WEXITSTATUS(status) == 0;
        }
    }
    posix_spawn_file_actions_destroy(&actions);
    return c;
}

double timed(const std::function<void()> &run)
{
    QElapsedTimer t;
    t.start();
    run();
    return t.nsecsElapsed() / 1e6;
}
