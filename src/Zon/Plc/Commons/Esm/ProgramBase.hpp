#pragma once

#include "Zon/BasicString.hpp"

namespace Zon::Plc::Commons::Esm {

/// The base of a controller program: a named object whose `Execute` the controller's task calls
/// once per cycle. An application derives its program classes from it and does its cyclic work in
/// `Execute`. The firmware's scheduling (tasks, priorities, watchdogs) has no counterpart here:
/// on the host, whoever plays the controller calls `Execute` itself, one program after the other.
class ProgramBase {
public:
    /// A program named `name` (its instance path, such as "App/Main").
    explicit ProgramBase(const String& name);
    virtual ~ProgramBase();
    ProgramBase(const ProgramBase&) = delete;
    ProgramBase& operator=(const ProgramBase&) = delete;

    /// The name given at construction.
    const String& GetName() const noexcept { return name; }

    /// One cycle of the program, on the task's thread.
    virtual void Execute() = 0;

private:
    String name;
};

} // namespace Zon::Plc::Commons::Esm
