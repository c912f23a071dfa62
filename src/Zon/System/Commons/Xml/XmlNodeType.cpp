#include "Zon/System/Commons/Xml/XmlNodeType.hpp"

using Zon::System::Commons::Xml::XmlNodeType;

template <>
const std::map<XmlNodeType, const char*> Zon::EnumStrings<XmlNodeType>::Values = {
    {XmlNodeType::None, "None"},
    {XmlNodeType::Element, "Element"},
    {XmlNodeType::Attribute, "Attribute"},
    {XmlNodeType::Text, "Text"},
    {XmlNodeType::CData, "CData"},
    {XmlNodeType::EntityReference, "EntityReference"},
    {XmlNodeType::Entity, "Entity"},
    {XmlNodeType::ProcessingInstruction, "ProcessingInstruction"},
    {XmlNodeType::Comment, "Comment"},
    {XmlNodeType::Document, "Document"},
    {XmlNodeType::DocumentType, "DocumentType"},
    {XmlNodeType::DocumentFragment, "DocumentFragment"},
    {XmlNodeType::Notation, "Notation"},
    {XmlNodeType::Whitespace, "Whitespace"},
    {XmlNodeType::SignificantWhitespace, "SignificantWhitespace"},
    {XmlNodeType::EndElement, "EndElement"},
    {XmlNodeType::EndEntity, "EndEntity"},
    {XmlNodeType::XmlDeclaration, "XmlDeclaration"},
};
