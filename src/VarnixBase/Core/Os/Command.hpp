#pragma once

#include <chrono>
#include <memory>
#include <string>

namespace VarnixBase::Core::Os {

/// Runs one shell command line to its end and collects what it writes to standard output.
///
/// `Execute(command)` runs on the caller's thread. `Execute(command, timeout)` runs the same on a
/// command thread of its own, named "Command", and gives up when the limit passes. Applications use
/// it for short jobs such as calling a system tool.
///
/// What to expect:
/// - The result is the exit code (bits 8 to 15 of the wait status). A non-zero code is a result,
///   not a failure; a command ended by a signal gives 0.
/// - The output is appended to what earlier calls collected; nothing clears it. Read it with
///   `GetStdOut` only after `Execute` has returned.
/// - Output is read in pieces of 40 bytes. Standard error is never read and standard input never
///   written, and both stay open until the command has ended: a command that writes more to
///   standard error than a pipe holds, or that reads its standard input to the end, blocks, and
///   the one-argument `Execute` with it. Only the time limit gets out of that.
/// - The time-limited `Execute` waits once, on the monotonic clock, for the command thread's
///   signal; it makes the calling thread asynchronously cancelable (and leaves it so). When the
///   limit passes it calls `Cancel` and throws `std::runtime_error` "Timeout". A command that ends
///   before the caller has begun to wait loses its signal, and so reports "Timeout" as well.
/// - `Cancel` ends the command thread and joins it; it sends nothing to the child. The ending
///   thread unwinds, and the child's `Process` on its stack closes the pipes and waits for the
///   child, so `Cancel` returns once the child has ended: at once for a command that stops when
///   its input closes, only at its end for one that ignores its pipes.
/// - A thread that finished within the limit is kept (not joined) until `Cancel`, the next
///   time-limited `Execute` or the destruction of the object.
///
/// Locks: the time-limited `Execute` holds the execute mutex from entry to exit (released only
/// inside the wait), and takes the thread mutex inside it to store, start or end the command
/// thread; `Cancel` takes only the thread mutex, so another thread can call it during a long wait.
/// Calling `Execute` on one object from several threads at once is not supported.
///
/// The constructor sets up the class logger, which needs the application domain with its log
/// manager (it throws `Zon::Exception` "Singleton instance of type '{0}' was not created yet!" or
/// "AppDomain Singleton instance of type '{0}' was not created yet!"); nothing writes to it.
/// A command thread holds a pointer to its `Command`, so objects of this class are neither copied
/// nor moved.
class Command {
public:
    Command();
    ~Command();
    Command(const Command&) = delete;
    Command& operator=(const Command&) = delete;

    /// Runs `command` with "/bin/sh -c" in the current directory on this thread, appends its
    /// standard output and returns its exit code. The failures of `Process::Start` and
    /// `Process::ReadStdOut` pass through unchanged.
    int Execute(const std::string& command);

    /// As above on a command thread, limited to `timeout`; throws `std::runtime_error` "Timeout"
    /// when the limit passes, after the command thread has been ended and joined.
    int Execute(const std::string& command, std::chrono::milliseconds timeout);

    /// The body of the command thread; `arg` is the record that the time-limited `Execute` made.
    /// Public so that a delegate can name it.
    void CommandThread(void* arg);

    /// Ends and joins the command thread, if there is one, and forgets it. Does nothing otherwise.
    void Cancel();

    /// Everything the executed commands wrote to standard output, in order.
    const std::string& GetStdOut() const noexcept;

    /// True while a command thread is held (from a time-limited `Execute` until `Cancel`).
    bool HasCommandThread() const;

private:
    struct Impl;

    std::string stdOut;
    std::shared_ptr<Impl> impl;
};

} // namespace VarnixBase::Core::Os
