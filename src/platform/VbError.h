#pragma once

#include <QObject>
#include <QString>

#include <exception>
#include <functional>
#include <initializer_list>

// A failure with the runtime's number and description. Handlers dispatch on the number, exactly
// as the screens' messages quote it.
struct VbError final : std::exception {
    long number = 0;
    QString description;

    VbError(long n, QString d) : number(n), description(std::move(d)) {}
    const char *what() const noexcept override { return "VbError"; }
};

// Numbers raised by the platform layer.
namespace VbErr {
constexpr long InvalidCall = 5;
constexpr long ObjectNotSet = 91;
constexpr long InvalidUseOfNull = 94;
constexpr long OutOfMemory = 7;
constexpr long SubscriptOutOfRange = 9;
constexpr long InternalError = 51;
constexpr long BadFileName = 52;
constexpr long FileNotFound = 53;
constexpr long FileAlreadyExists = 58;
constexpr long DeviceIOError = 57;
constexpr long InputPastEndOfFile = 62;
constexpr long DiskFull = 61;
constexpr long DeviceUnavailable = 68;
constexpr long PermissionDenied = 70;
constexpr long PathFileAccess = 75;
constexpr long PathNotFound = 76;
constexpr long InvalidFileFormat = 321;
constexpr long InvalidPropertyValue = 380;
constexpr long GridSubscriptOutOfRange = 381; // a grid's cell that is not there
constexpr long SetNotPermitted = 387;
constexpr long InvalidRowValue = 30009;
constexpr long InvalidColValue = 30010;
constexpr long UnspecifiedFailure = -2147467259; // a platform object's "unspecified error"
constexpr long ObjectDisconnected = -2147417848; // "the object invoked has disconnected from its clients"
} // namespace VbErr

// The numbers a failing statement or connection raises, the same on every engine.
namespace DbErr {
constexpr long CommandError = -2147217900; // syntax error, unknown table or column, a refused text
constexpr long ConstraintViolation = VbErr::UnspecifiedFailure; // an empty name, NOT NULL, a key out of range
constexpr long ConnectionFailed = VbErr::UnspecifiedFailure;    // no such data source, server unreachable, bad login
constexpr long NoCurrentRecord = 3021;
constexpr long ItemNotFound = 3265;
constexpr long ObjectClosed = 3704; // a recordset used after it was closed
// The engines' failures that are neither a refused command nor a broken rule: the screens' general
// message tells them by these numbers.
constexpr long Busy = -2147217871;          // the catalogue is locked by another connection (timeout expired)
constexpr long DataError = -2147217913;     // a value the column cannot take (too long, no such date)
constexpr long EngineFailure = -2147217887; // read-only, I/O, full or damaged catalogue, lost server
} // namespace DbErr

// Builds the failure for a number the runtime knows, with its usual description.
VbError MakeVbError(long number);
[[noreturn]] void RaiseVbError(long number);

// "Carry on at the next statement" for the named numbers: runs one statement; a failure with one of
// those numbers is swallowed, any other passes on. Returns the swallowed number, or 0.
long ResumeNextOn(std::initializer_list<long> numbers, const std::function<void()> &statement);
// The same for every number.
long ResumeNext(const std::function<void()> &statement);

// Runs a statement again for as long as it fails with the given number (a handler's "Resume"), at
// most a few times; another failure, or the same one past that, passes on.
void RetryOn(long number, const std::function<void()> &statement);

// The end of the process. Tests that exercise a fatal road replace it (EndProcessHook), so the road can
// be followed without losing the test program.
[[noreturn]] void EndProcess(int code = 0);
struct ProcessEnded {
    int code;
};
using EndProcessHook = std::function<void(int)>;
void SetEndProcessHook(EndProcessHook hook);

// The platform's message for a failure no handler takes, "Run-time error 'N':" and the description, and
// the end of the process.
[[noreturn]] void EndWithPlatformMessage(const VbError &e);

// Runs an event handler. An unhandled failure becomes the platform's message, "Run-time error 'N':"
// and the description, and the process ends, as in the original runtime.
void RunHandler(const std::function<void()> &handler);
// The same, but a test's ProcessEnded passes on to the caller.
void RunHandlerOrEnd(const std::function<void()> &handler);

// Connects an event handler through RunHandler. The handler may take fewer arguments than the signal.
template <typename Sender, typename Signal, typename Handler>
QMetaObject::Connection On(Sender *sender, Signal signal, const QObject *context, Handler handler)
{
    return QObject::connect(sender, signal, context,
                            [handler](auto &&...args) -> decltype(handler(args...), void()) {
                                RunHandler([&] { handler(args...); });
                            });
}
