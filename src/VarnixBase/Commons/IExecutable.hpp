#pragma once

namespace VarnixBase::Commons {

/// Something that runs once per task cycle: programs, connectors and device ports.
class IExecutable {
public:
    virtual ~IExecutable() = default;
    /// Runs one cycle.
    virtual void Execute() = 0;
};

} // namespace VarnixBase::Commons
