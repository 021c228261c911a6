#include "platform/VbError.h"

#include "platform/MsgBox.h"

#include <QHash>

#include <cstdio>
#include <unistd.h>

namespace {
EndProcessHook &endHook()
{
    static EndProcessHook hook;
    return hook;
}
} // namespace

VbError MakeVbError(long number)
{
    static const QHash<long, QString> texts{
        {VbErr::InvalidCall, QStringLiteral("Invalid procedure call or argument")},
        {VbErr::OutOfMemory, QStringLiteral("Out of memory")},
        {VbErr::SubscriptOutOfRange, QStringLiteral("Subscript out of range")},
        {VbErr::ObjectNotSet, QStringLiteral("Object variable or With block variable not set")},
        {VbErr::InvalidUseOfNull, QStringLiteral("Invalid use of Null")},
        {VbErr::BadFileName, QStringLiteral("Bad file name or number")},
        {VbErr::FileNotFound, QStringLiteral("File not found")},
        {VbErr::FileAlreadyExists, QStringLiteral("File already exists")},
        {VbErr::DeviceIOError, QStringLiteral("Device I/O error")},
        {VbErr::DiskFull, QStringLiteral("Disk full")},
        {VbErr::InputPastEndOfFile, QStringLiteral("Input past end of file")},
        {VbErr::DeviceUnavailable, QStringLiteral("Device unavailable")},
        {VbErr::PermissionDenied, QStringLiteral("Permission denied")},
        {VbErr::PathFileAccess, QStringLiteral("Path/File access error")},
        {VbErr::PathNotFound, QStringLiteral("Path not found")},
        {VbErr::InvalidFileFormat, QStringLiteral("Invalid file format")},
        {VbErr::GridSubscriptOutOfRange, QStringLiteral("Subscript out of range")},
        {VbErr::InvalidPropertyValue, QStringLiteral("Invalid property value")},
        {VbErr::SetNotPermitted, QStringLiteral("Set not permitted")},
        {VbErr::InvalidRowValue, QStringLiteral("Invalid Row value")},
        {VbErr::InvalidColValue, QStringLiteral("Invalid Col value")},
    };
    return VbError(number, texts.value(number, QStringLiteral("Application-defined or object-defined error")));
}

void RaiseVbError(long number)
{
    throw MakeVbError(number);
}

long ResumeNextOn(std::initializer_list<long> numbers, const std::function<void()> &statement)
{
    try {
        statement();
    } catch (const VbError &e) {
        for (long n : numbers) {
            if (n == e.number)
                return e.number;
        }
        throw;
    }
    return 0;
}

long ResumeNext(const std::function<void()> &statement)
{
    try {
        statement();
    } catch (const VbError &e) {
        return e.number;
    }
    return 0;
}

void RetryOn(long number, const std::function<void()> &statement)
{
    for (int attempt = 1;; ++attempt) {
        try {
            statement();
            return;
        } catch (const VbError &e) {
            if (e.number != number || attempt >= 5)
                throw;
        }
    }
}

void SetEndProcessHook(EndProcessHook hook)
{
    endHook() = std::move(hook);
}

void EndProcess(int code)
{
    if (endHook()) {
        endHook()(code);
        throw ProcessEnded{code};
    }
    // At once, as the original's End: no destructors run against windows still on the screen.
    std::fflush(nullptr);
    _exit(code);
}

void RunHandler(const std::function<void()> &handler)
{
    try {
        RunHandlerOrEnd(handler);
    } catch (const ProcessEnded &) {
        // A test's hook recorded the end; nothing may cross the event loop.
    }
}

void EndWithPlatformMessage(const VbError &e)
{
    MsgBox(QStringLiteral("Run-time error '%1':\n\n%2").arg(e.number).arg(e.description), vbCritical);
    EndProcess(1);
}

void RunHandlerOrEnd(const std::function<void()> &handler)
{
    try {
        handler();
    } catch (const VbError &e) {
        EndWithPlatformMessage(e);
    } catch (const std::bad_alloc &) {
        MsgBox(QStringLiteral("Run-time error '%1':\n\nOut of memory").arg(VbErr::OutOfMemory), vbCritical);
        EndProcess(1);
    } catch (const std::exception &e) {
        MsgBox(QStringLiteral("Run-time error '%1':\n\nInternal error (%2)")
                   .arg(VbErr::InternalError)
                   .arg(QString::fromLocal8Bit(e.what())),
               vbCritical);
        EndProcess(1);
    }
}
