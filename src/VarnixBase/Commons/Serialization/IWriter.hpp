#pragma once

#include <string>

#include "Zon/BasicString.hpp"

namespace VarnixBase::Commons::Serialization {

/// Receives the shape of a document: arrays, objects, members and values, in the order a
/// serializer walks them.
class IWriter {
public:
    virtual ~IWriter() = default;

    virtual void StartArray() = 0;
    virtual void EndArray() = 0;
    virtual void StartObject() = 0;
    virtual void EndObject() = 0;
    virtual void StartMember(std::string name) = 0;
    virtual void EndMember() = 0;
    virtual void WriteValue(double value) = 0;
    virtual void WriteValue(Zon::String value) = 0;
    /// A value that is absent.
    virtual void WriteValue() = 0;
};

} // namespace VarnixBase::Commons::Serialization
