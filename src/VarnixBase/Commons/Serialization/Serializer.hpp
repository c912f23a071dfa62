#pragma once

#include <list>

#include "Zon/BasicString.hpp"
#include "Zon/System/Commons/Xml/XmlReader.hpp"
#include "Zon/System/Commons/Xml/XmlWriter.hpp"

namespace VarnixBase::Commons::Serialization {

/// Moves values between documents and objects. The operations exist only for the pairs
/// declared below this class, over the platform's XML reader and writer.
class Serializer {
public:
    template <class Writer, class T>
    static void Serialize(Writer& writer, T& value);

    template <class Reader, class T>
    static void Deserialize(Reader& reader, T& value);
};

/// Writes `value` as the text of the writer's open element.
template <>
void Serializer::Serialize<Zon::System::Commons::Xml::XmlWriter, Zon::String>(Zon::System::Commons::Xml::XmlWriter& writer,
                                                                              Zon::String& value);

/// Reads the text of the element the reader stands on into `value` and moves past the element.
template <>
void Serializer::Deserialize<Zon::System::Commons::Xml::XmlReader, Zon::String>(
    Zon::System::Commons::Xml::XmlReader& reader, Zon::String& value);

/// Writes nothing and does not look at the list.
template <>
void Serializer::Serialize<Zon::System::Commons::Xml::XmlWriter, std::list<Zon::String>>(
    Zon::System::Commons::Xml::XmlWriter& writer, std::list<Zon::String>& value);

/// Moves the reader past the run of sibling elements that share the current element's name: it
/// stops behind the last of them, on the parent's end tag. No element's content is read and
/// `value` leaves as it came, empty or not.
template <>
void Serializer::Deserialize<Zon::System::Commons::Xml::XmlReader, std::list<Zon::String>>(
    Zon::System::Commons::Xml::XmlReader& reader, std::list<Zon::String>& value);

} // namespace VarnixBase::Commons::Serialization
