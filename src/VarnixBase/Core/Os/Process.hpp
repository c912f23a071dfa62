#pragma once

#include <cstddef>
#include <memory>
#include <string>

namespace VarnixBase::Core::Os {

/// One shell command line run as a child process, with its standard input, output and error
/// connected to this process through pipes.
///
/// A thin layer over `pipe`, `fork`, `dup`, `chdir`, `execl`, `kill` and `waitpid`: no polling, no
/// time limit, no signal handling. Every read and write is one blocking system call. Copies of a
/// `Process` share the same child.
///
/// Effects to mind:
/// - The command line always goes to "/bin/sh -c", so quoting and redirection work as in a shell,
///   and the child is that shell.
/// - A failing `chdir` or `execl` throws inside the child, which is a forked copy of the caller:
///   the exception unwinds that copy's stack and reaches the caller's own handlers there. The
///   parent learns of it only through the pipes and the wait status.
/// - `IsRunning` makes no system call: a child that has ended on its own counts as running until
///   `Terminate` or `Kill`.
/// - `Terminate` ends nothing by force: it closes this side's pipe ends and waits for the child,
///   however long it runs. It does not test whether a child was started: on a `Process` that never
///   started one, it closes this process's descriptor 0 and waits for any child of the caller's
///   process group.
/// - `Kill` neither waits for the child nor closes the pipes: the child stays unreaped and the
///   three descriptors stay open unless the caller does more.
/// - Writing to a child that no longer reads raises `SIGPIPE` in this process, which ends it unless
///   the signal is ignored or handled.
///
/// Failures are standard exceptions with fixed texts ("Failed to open StdIn", ...); `errno` is not
/// part of the message. The constructor sets up the class logger, which needs the application
/// domain with its log manager (it throws `Zon::Exception` "Singleton instance of type '{0}' was not
/// created yet!" or "AppDomain Singleton instance of type '{0}' was not created yet!"); nothing
/// writes to it.
///
/// A `Process` has no lock: one thread may write to standard input while another reads standard
/// output, but whatever touches the child's process id belongs to one thread at a time.
class Process {
public:
    Process();
    /// If `IsRunning`, calls `Terminate` (and so waits for the child).
    ~Process();
    Process(const Process&) = default;
    Process& operator=(const Process&) = default;

    /// Starts `command` with "/bin/sh -c" in `workingDirectory`. Throws `std::runtime_error`
    /// "Failed to open StdIn", "Failed to open StdOut", "Failed to open StdError" when a pipe cannot
    /// be made (the pipes made before are closed again) and "Failed to launch child process" when
    /// `fork` fails (then the six pipe ends stay open). A second `Start` forgets the earlier child
    /// and its descriptors without looking at them.
    void Start(const std::string& command, const std::string& workingDirectory);

    /// As above, in the caller's current directory. Throws `std::logic_error` when that directory
    /// cannot be named (it was removed, for instance).
    void Start(const std::string& command);

    /// True when a child was started and has been neither reaped by `Terminate` nor killed.
    bool IsRunning() const;

    /// Closes this side's pipe ends, waits for the child and returns the raw wait status as
    /// `waitpid` stored it (exit code in bits 8 to 15), not an exit code. No signal is sent. When
    /// there is nothing to wait for (the child was reaped elsewhere), the status is 0. The closed
    /// ends are marked closed, so that a second call cannot close descriptors that have been given
    /// out again in the meantime.
    int Terminate();

    /// Sends `SIGKILL` to a running child and forgets it. Throws `std::runtime_error` "Failed to
    /// kill process" when `kill` fails; the child is then still counted as running.
    void Kill();

    /// One `write` to the child's standard input; the number of bytes written. Throws
    /// `std::runtime_error` "Failed to write to StdIn" on failure.
    int WriteStdIn(void* data, std::size_t size);

    /// One `read` from the child's standard output; the number of bytes read, 0 at the end. Throws
    /// `std::runtime_error` "Failed to read from StdOut" on failure (an interrupted call included).
    int ReadStdOut(void* data, std::size_t size);

    /// One `read` from the child's standard error; the number of bytes read, 0 at the end. Throws
    /// `std::runtime_error` "Failed to read from ErrOut" on failure.
    int ReadErrOut(void* data, std::size_t size);

private:
    struct Impl;
    std::shared_ptr<Impl> impl;
};

} // namespace VarnixBase::Core::Os
