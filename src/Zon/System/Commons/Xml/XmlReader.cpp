#include "Zon/System/Commons/Xml/XmlReader.hpp"

#include <cstring>
#include <string>
#include <utility>

#include <libxml/parser.h>
#include <libxml/xmlreader.h>

#include "Zon/Host/FileSystemRoot.hpp"
#include "Zon/System/Commons/InvalidOperationException.hpp"
#include "Zon/System/Commons/Io/File.hpp"
#include "Zon/System/Commons/Io/NotExistException.hpp"
#include "Zon/System/Commons/Xml/XmlException.hpp"

namespace Zon::System::Commons::Xml {

namespace {

#if LIBXML_VERSION >= 21200
using ErrorPointer = const xmlError*;
#else
using ErrorPointer = xmlErrorPtr;
#endif

// No network. Left out on purpose: entity substitution, loading of an external DTD, default
// attributes and validation from a DTD, XInclude. The document is read exactly as it stands.
// Errors reach the reader's own handler and never the console.
constexpr int ParserOptions = XML_PARSE_NONET;

const xmlChar* ToXml(const String& text)
{
    return reinterpret_cast<const xmlChar*>(text.CStr());
}

String FromXml(const xmlChar* text)
{
    return text != nullptr ? String(reinterpret_cast<const char*>(text)) : String();
}

} // namespace

struct XmlReader::Impl {
    xmlTextReaderPtr reader = nullptr;
    // The text of a memory document: the parser reads from it for the reader's whole life.
    std::string buffer;
    String documentName;
    // The first error the parser reported, and its line.
    std::string error;
    int errorLine = 0;
    // Whether a read has been made, and whether one has gone past the last node. The parser's own
    // mode says "end of input" as soon as it has consumed the text, while nodes are still to come.
    bool started = false;
    bool finished = false;

    Impl() = default;
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;
    ~Impl()
    {
        if (reader != nullptr) {
            xmlFreeTextReader(reader);
        }
    }

    static void OnError(void* context, ErrorPointer error)
    {
        auto* self = static_cast<Impl*>(context);
        if (error == nullptr || error->level < XML_ERR_ERROR || !self->error.empty()) {
            return;
        }
        self->error = error->message != nullptr ? error->message : "";
        while (!self->error.empty() && (self->error.back() == '\n' || self->error.back() == ' ')) {
            self->error.pop_back();
        }
        if (self->error.empty()) {
            self->error = "parser error";
        }
        self->errorLine = error->line;
    }

    void Attach(xmlTextReaderPtr created)
    {
        reader = created;
        xmlTextReaderSetStructuredErrorHandler(reader, &Impl::OnError, this);
    }

    [[noreturn]] void ThrowMalformed() const
    {
        int line = errorLine > 0 ? errorLine : xmlTextReaderGetParserLineNumber(reader);
        throw XmlException("XML document `{0}` is not well-formed: {1} (line {2}).", documentName,
                           error.empty() ? std::string("parser error") : error, line);
    }

    XmlNodeType NodeType() const
    {
        int type = xmlTextReaderNodeType(reader);
        return type > 0 ? static_cast<XmlNodeType>(type) : XmlNodeType::None;
    }

    int Depth() const
    {
        int depth = xmlTextReaderDepth(reader);
        return depth > 0 ? depth : 0;
    }

    bool HasNode() const
    {
        return started && !finished && NodeType() != XmlNodeType::None;
    }

    bool LocalNameIs(const String& name) const
    {
        const xmlChar* localName = xmlTextReaderConstLocalName(reader);
        return localName != nullptr && std::strcmp(reinterpret_cast<const char*>(localName), name.CStr()) == 0;
    }
};

XmlReader::XmlReader() noexcept = default;
XmlReader::XmlReader(std::unique_ptr<Impl> impl) noexcept : impl(std::move(impl)) {}
XmlReader::~XmlReader() = default;
XmlReader::XmlReader(XmlReader&& other) noexcept = default;
XmlReader& XmlReader::operator=(XmlReader&& other) noexcept = default;

XmlReader XmlReader::FromFile(const String& path)
{
    if (!Io::File::Exists(path)) {
        throw Io::NotExistException("File `{0}` not found.", path);
    }
    xmlInitParser();
    auto impl = std::make_unique<Impl>();
    impl->documentName = path;
    std::string machinePath = Host::FileSystemRoot::Map(path);
    xmlTextReaderPtr reader = xmlReaderForFile(machinePath.c_str(), nullptr, ParserOptions);
    if (reader == nullptr) {
        throw XmlException("Cannot open XML document `{0}`.", path);
    }
    impl->Attach(reader);
    return XmlReader(std::move(impl));
}

XmlReader XmlReader::FromMemory(const String& text, const String& documentName)
{
    xmlInitParser();
    auto impl = std::make_unique<Impl>();
    impl->documentName = documentName;
    impl->buffer = text.ToStdString();
    if (impl->buffer.size() > static_cast<std::size_t>(INT32_MAX)) {
        throw XmlException("Cannot open XML document `{0}`: it is too large.", documentName);
    }
    xmlTextReaderPtr reader = xmlReaderForMemory(impl->buffer.data(), static_cast<int>(impl->buffer.size()),
                                                 documentName.CStr(), nullptr, ParserOptions);
    if (reader == nullptr) {
        throw XmlException("Cannot open XML document `{0}`.", documentName);
    }
    impl->Attach(reader);
    return XmlReader(std::move(impl));
}

bool XmlReader::IsOpen() const noexcept
{
    return impl != nullptr;
}

void XmlReader::Close() noexcept
{
    impl.reset();
}

XmlReader::Impl& XmlReader::Open() const
{
    if (impl == nullptr) {
        throw InvalidOperationException("XmlReader: no document is open.");
    }
    return *impl;
}

const String& XmlReader::GetDocumentName() const
{
    return Open().documentName;
}

bool XmlReader::Advance(int result)
{
    impl->started = true;
    if (result == 0) {
        impl->finished = true;
    }
    if (result < 0) {
        impl->ThrowMalformed();
    }
    // The parser may report an error and still hand out the node before it; the document is
    // broken all the same.
    if (!impl->error.empty()) {
        impl->ThrowMalformed();
    }
    return result == 1;
}

bool XmlReader::Read()
{
    Impl& self = Open();
    return Advance(xmlTextReaderRead(self.reader));
}

bool XmlReader::IsEof() const
{
    return Open().finished;
}

XmlNodeType XmlReader::GetNodeType() const
{
    const Impl& self = Open();
    return self.HasNode() ? self.NodeType() : XmlNodeType::None;
}

int XmlReader::GetDepth() const
{
    const Impl& self = Open();
    return self.HasNode() ? self.Depth() : 0;
}

String XmlReader::GetElementLocalName() const
{
    const Impl& self = Open();
    return self.HasNode() ? FromXml(xmlTextReaderConstLocalName(self.reader)) : String();
}

String XmlReader::GetValue() const
{
    const Impl& self = Open();
    if (!self.HasNode()) {
        return String();
    }
    switch (self.NodeType()) {
    case XmlNodeType::Text:
    case XmlNodeType::CData:
    case XmlNodeType::Whitespace:
    case XmlNodeType::SignificantWhitespace:
    case XmlNodeType::Comment:
    case XmlNodeType::ProcessingInstruction:
    case XmlNodeType::Attribute:
        return FromXml(xmlTextReaderConstValue(self.reader));
    default:
        return String();
    }
}

bool XmlReader::IsEmptyElement() const
{
    const Impl& self = Open();
    return self.HasNode() && self.NodeType() == XmlNodeType::Element && xmlTextReaderIsEmptyElement(self.reader) == 1;
}

int XmlReader::GetLineNumber() const
{
    return xmlTextReaderGetParserLineNumber(Open().reader);
}

bool XmlReader::TryGetAttribute(const String& name, String& value) const
{
    const Impl& self = Open();
    if (!self.HasNode() || self.NodeType() != XmlNodeType::Element) {
        return false;
    }
    xmlChar* attribute = xmlTextReaderGetAttribute(self.reader, ToXml(name));
    if (attribute == nullptr) {
        return false;
    }
    value = FromXml(attribute);
    xmlFree(attribute);
    return true;
}

String XmlReader::GetAttribute(const String& name) const
{
    String value;
    TryGetAttribute(name, value);
    return value;
}

XmlNodeType XmlReader::MoveToContent()
{
    Impl& self = Open();
    if (!self.started && !Read()) {
        return XmlNodeType::None;
    }
    while (self.HasNode()) {
        switch (self.NodeType()) {
        case XmlNodeType::Attribute:
            xmlTextReaderMoveToElement(self.reader);
            return self.NodeType();
        case XmlNodeType::Element:
        case XmlNodeType::EndElement:
        case XmlNodeType::Text:
        case XmlNodeType::CData:
        case XmlNodeType::EntityReference:
        case XmlNodeType::EndEntity:
            return self.NodeType();
        default:
            if (!Read()) {
                return XmlNodeType::None;
            }
        }
    }
    return XmlNodeType::None;
}

bool XmlReader::IsStartElement()
{
    return MoveToContent() == XmlNodeType::Element;
}

bool XmlReader::IsStartElement(const String& name)
{
    return MoveToContent() == XmlNodeType::Element && impl->LocalNameIs(name);
}

bool XmlReader::ReadToFollowing(const String& name)
{
    Impl& self = Open();
    while (Read()) {
        if (self.NodeType() == XmlNodeType::Element && self.LocalNameIs(name)) {
            return true;
        }
    }
    return false;
}

bool XmlReader::ReadToDescendant(const String& name)
{
    Impl& self = Open();
    int parentDepth = 0;
    if (!self.started) {
        // Before the first node every element of the document is a descendant.
        parentDepth = -1;
    } else {
        if (self.NodeType() == XmlNodeType::Attribute) {
            xmlTextReaderMoveToElement(self.reader);
        }
        if (!self.HasNode() || self.NodeType() != XmlNodeType::Element || IsEmptyElement()) {
            return false;
        }
        parentDepth = self.Depth();
    }
    while (Read() && self.Depth() > parentDepth) {
        if (self.NodeType() == XmlNodeType::Element && self.LocalNameIs(name)) {
            return true;
        }
    }
    return false;
}

bool XmlReader::ReadToNextSibling(const String& name)
{
    Impl& self = Open();
    if (!self.HasNode()) {
        return false;
    }
    if (self.NodeType() == XmlNodeType::Attribute) {
        xmlTextReaderMoveToElement(self.reader);
    }
    const int depth = self.Depth();
    while (Advance(xmlTextReaderNext(self.reader))) {
        int current = self.Depth();
        if (current < depth) {
            return false; // the parent's end tag: no sibling is left
        }
        if (current == depth && self.NodeType() == XmlNodeType::Element && self.LocalNameIs(name)) {
            return true;
        }
    }
    return false;
}

bool XmlReader::Skip()
{
    Impl& self = Open();
    if (!self.started) {
        return Read();
    }
    if (self.NodeType() == XmlNodeType::Attribute) {
        xmlTextReaderMoveToElement(self.reader);
    }
    return Advance(xmlTextReaderNext(self.reader));
}

String XmlReader::ReadElementContent()
{
    Impl& self = Open();
    XmlNodeType type = MoveToContent();
    if (type != XmlNodeType::Element) {
        throw XmlException("XML document `{0}`: a start element was expected at line {1}, not {2}.", self.documentName,
                           GetLineNumber(), type);
    }
    if (IsEmptyElement()) {
        Read();
        return String();
    }
    const String element = GetElementLocalName();
    const int depth = self.Depth();
    std::string content;
    while (Read()) {
        switch (self.NodeType()) {
        case XmlNodeType::Text:
        case XmlNodeType::CData:
        case XmlNodeType::Whitespace:
        case XmlNodeType::SignificantWhitespace: {
            const xmlChar* value = xmlTextReaderConstValue(self.reader);
            if (value != nullptr) {
                content += reinterpret_cast<const char*>(value);
            }
            break;
        }
        case XmlNodeType::Element:
            throw XmlException("XML document `{0}`: element `{1}` has the child element `{2}` at line {3}, "
                               "where only text was expected.",
                               self.documentName, element, GetElementLocalName(), GetLineNumber());
        case XmlNodeType::EndElement:
            if (self.Depth() == depth) {
                Read();
                return String(std::move(content));
            }
            break;
        default:
            break; // comments, processing instructions, unexpanded entity references
        }
    }
    throw XmlException("XML document `{0}` ends inside element `{1}`.", self.documentName, element);
}

} // namespace Zon::System::Commons::Xml
