#pragma once

namespace VarnixBase::Commons::Serialization {

/// The reading counterpart of `IWriter`. A `SerializerContext` holds one; it has no operations
/// of its own yet.
class IReader {
public:
    virtual ~IReader() = default;
};

} // namespace VarnixBase::Commons::Serialization
