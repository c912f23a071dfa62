#include "VarnixBase/Commons/Serialization/Serializer.hpp"


namespace VarnixBase::Commons::Serialization {

using Zon::System::Commons::Xml::XmlReader;
using Zon::System::Commons::Xml::XmlWriter;

template <>
void Serializer::Serialize<XmlWriter, Zon::String>(XmlWriter& writer, Zon::String& value)
{
    writer.WriteElementContent(value);
}

template <>
void Serializer::Deserialize<XmlReader, Zon::String>(XmlReader& reader, Zon::String& value)
{
    // The content is a temporary: it is moved into `value`, not copied.
    value = reader.ReadElementContent();
}

template <>
void Serializer::Serialize<XmlWriter, std::list<Zon::String>>(XmlWriter&, std::list<Zon::String>&)
{
}

template <>
void Serializer::Deserialize<XmlReader, std::list<Zon::String>>(XmlReader& reader, std::list<Zon::String>&)
{
    Zon::String name = reader.GetElementLocalName();
    while (reader.ReadToNextSibling(name)) {
    }
}

} // namespace VarnixBase::Commons::Serialization
