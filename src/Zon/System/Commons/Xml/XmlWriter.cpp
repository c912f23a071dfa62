#include "Zon/System/Commons/Xml/XmlWriter.hpp"

#include <string>
#include <utility>

#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xmlwriter.h>

#include "Zon/Host/FileSystemRoot.hpp"
#include "Zon/System/Commons/ArgumentException.hpp"
#include "Zon/System/Commons/InvalidOperationException.hpp"
#include "Zon/System/Commons/Xml/XmlException.hpp"

namespace Zon::System::Commons::Xml {

namespace {

const xmlChar* ToXml(const String& text)
{
    return reinterpret_cast<const xmlChar*>(text.CStr());
}

void CheckName(const String& name)
{
    if (name.IsEmpty() || xmlValidateName(ToXml(name), 0) != 0) {
        throw ArgumentException("`{0}` is no valid XML name.", name);
    }
}

} // namespace

struct XmlWriter::Impl {
    xmlTextWriterPtr writer = nullptr;
    xmlBufferPtr buffer = nullptr; // only for a memory writer
    String target;
    int openElements = 0;

    Impl() = default;
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;
    ~Impl()
    {
        if (writer != nullptr) {
            xmlFreeTextWriter(writer); // flushes
        }
        if (buffer != nullptr) {
            xmlBufferFree(buffer);
        }
    }

    void Check(int result, const char* operation, const String& detail = String()) const
    {
        if (result < 0) {
            if (detail.IsEmpty()) {
                throw XmlException("XML document `{0}`: {1} failed.", target, operation);
            }
            throw XmlException("XML document `{0}`: {1} `{2}` failed.", target, operation, detail);
        }
    }
};

XmlWriter::XmlWriter() noexcept = default;
XmlWriter::XmlWriter(std::unique_ptr<Impl> impl) noexcept : impl(std::move(impl)) {}
XmlWriter::~XmlWriter() = default;
XmlWriter::XmlWriter(XmlWriter&& other) noexcept = default;
XmlWriter& XmlWriter::operator=(XmlWriter&& other) noexcept = default;

XmlWriter XmlWriter::ToFile(const String& path)
{
    xmlInitParser();
    auto impl = std::make_unique<Impl>();
    impl->target = path;
    std::string machinePath = Host::FileSystemRoot::Map(path);
    impl->writer = xmlNewTextWriterFilename(machinePath.c_str(), 0);
    if (impl->writer == nullptr) {
        throw XmlException("Cannot open XML document `{0}` for writing.", path);
    }
    return XmlWriter(std::move(impl));
}

XmlWriter XmlWriter::ToMemory()
{
    xmlInitParser();
    auto impl = std::make_unique<Impl>();
    impl->target = "memory";
    impl->buffer = xmlBufferCreate();
    if (impl->buffer == nullptr) {
        throw XmlException("Cannot open XML document `{0}` for writing.", impl->target);
    }
    impl->writer = xmlNewTextWriterMemory(impl->buffer, 0);
    if (impl->writer == nullptr) {
        throw XmlException("Cannot open XML document `{0}` for writing.", impl->target);
    }
    return XmlWriter(std::move(impl));
}

bool XmlWriter::IsOpen() const noexcept
{
    return impl != nullptr;
}

XmlWriter::Impl& XmlWriter::Open() const
{
    if (impl == nullptr) {
        throw InvalidOperationException("XmlWriter: no document is open.");
    }
    return *impl;
}

void XmlWriter::SetIndentation(bool indent)
{
    Impl& self = Open();
    self.Check(xmlTextWriterSetIndent(self.writer, indent ? 1 : 0), "SetIndentation");
    if (indent) {
        self.Check(xmlTextWriterSetIndentString(self.writer, BAD_CAST "  "), "SetIndentation");
    }
}

void XmlWriter::WriteStartDocument()
{
    Impl& self = Open();
    self.Check(xmlTextWriterStartDocument(self.writer, "1.0", "UTF-8", nullptr), "WriteStartDocument");
}

void XmlWriter::WriteEndDocument()
{
    Impl& self = Open();
    self.Check(xmlTextWriterEndDocument(self.writer), "WriteEndDocument");
    self.openElements = 0;
}

void XmlWriter::WriteStartElement(const String& name)
{
    Impl& self = Open();
    CheckName(name);
    self.Check(xmlTextWriterStartElement(self.writer, ToXml(name)), "WriteStartElement", name);
    ++self.openElements;
}

void XmlWriter::WriteEndElement()
{
    Impl& self = Open();
    if (self.openElements == 0) {
        throw InvalidOperationException("XmlWriter: no element is open.");
    }
    self.Check(xmlTextWriterEndElement(self.writer), "WriteEndElement");
    --self.openElements;
}

void XmlWriter::WriteAttribute(const String& name, const String& value)
{
    Impl& self = Open();
    CheckName(name);
    self.Check(xmlTextWriterWriteAttribute(self.writer, ToXml(name), ToXml(value)), "WriteAttribute", name);
}

void XmlWriter::WriteElementContent(const String& content)
{
    Impl& self = Open();
    if (self.openElements == 0) {
        throw InvalidOperationException("XmlWriter: content needs an open element.");
    }
    self.Check(xmlTextWriterWriteString(self.writer, ToXml(content)), "WriteElementContent");
}

int XmlWriter::GetOpenElementCount() const
{
    return Open().openElements;
}

void XmlWriter::Flush()
{
    Impl& self = Open();
    self.Check(xmlTextWriterFlush(self.writer), "Flush");
}

String XmlWriter::GetText()
{
    Impl& self = Open();
    if (self.buffer == nullptr) {
        throw InvalidOperationException("XmlWriter: `{0}` is a file; only a memory document has a text.", self.target);
    }
    Flush();
    return String(reinterpret_cast<const char*>(xmlBufferContent(self.buffer)),
                  static_cast<std::size_t>(xmlBufferLength(self.buffer)));
}

void XmlWriter::Close()
{
    if (impl == nullptr) {
        return;
    }
    std::unique_ptr<Impl> closing = std::move(impl);
    closing->Check(xmlTextWriterFlush(closing->writer), "Close");
}

} // namespace Zon::System::Commons::Xml
