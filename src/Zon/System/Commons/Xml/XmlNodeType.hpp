#pragma once

#include <fmt/ostream.h>

#include "Zon/EnumStrings.hpp"

namespace Zon::System::Commons::Xml {

/// The kind of node an `XmlReader` stands on, numbered as the underlying parser reports them.
enum class XmlNodeType : int {
    None = 0,
    Element = 1,
    Attribute = 2,
    Text = 3,
    CData = 4,
    EntityReference = 5,
    Entity = 6,
    ProcessingInstruction = 7,
    Comment = 8,
    Document = 9,
    DocumentType = 10,
    DocumentFragment = 11,
    Notation = 12,
    Whitespace = 13,
    SignificantWhitespace = 14,
    EndElement = 15,
    EndEntity = 16,
    XmlDeclaration = 17,
};

ZON_ENUM_STREAM_OPERATORS(XmlNodeType)

} // namespace Zon::System::Commons::Xml

ZON_DECLARE_ENUM_STRINGS(Zon::System::Commons::Xml::XmlNodeType);
ZON_FORMAT_AS_OSTREAM(Zon::System::Commons::Xml::XmlNodeType);
