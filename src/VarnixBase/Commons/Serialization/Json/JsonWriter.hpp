#pragma once

#include "VarnixBase/Commons/Serialization/IWriter.hpp"

namespace VarnixBase::Commons::Serialization::Json {

/// Traces the shape of a document on the process's standard output: "[" and "]" for arrays,
/// "{" and "}" for objects, each on a line of its own, and a member's name as `"name" :` with no
/// line end. Values, the end of a member and separators write nothing, so the output is a trace
/// and not a JSON text. The writer keeps no state between calls.
class JsonWriter : public IWriter {
public:
    JsonWriter() = default;
    ~JsonWriter() override;

    void StartArray() override;
    void EndArray() override;
    void StartObject() override;
    void EndObject() override;
    void StartMember(std::string name) override;
    void EndMember() override;
    void WriteValue(double value) override;
    void WriteValue(Zon::String value) override;
    void WriteValue() override;
};

} // namespace VarnixBase::Commons::Serialization::Json
