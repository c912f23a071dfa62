#include "VarnixBase/Commons/Serialization/Json/JsonWriter.hpp"

#include <cstdio>

namespace VarnixBase::Commons::Serialization::Json {

JsonWriter::~JsonWriter() = default;

void JsonWriter::StartArray()
{
    std::puts("[");
}

void JsonWriter::EndArray()
{
    std::puts("]");
}

void JsonWriter::StartObject()
{
    std::puts("{");
}

void JsonWriter::EndObject()
{
    std::puts("}");
}

void JsonWriter::StartMember(std::string name)
{
    std::printf("\"%s\" :", name.c_str());
}

void JsonWriter::EndMember()
{
}

void JsonWriter::WriteValue(double)
{
}

void JsonWriter::WriteValue(Zon::String)
{
}

void JsonWriter::WriteValue()
{
}

} // namespace VarnixBase::Commons::Serialization::Json
