#pragma once

#include <memory>

#include "Zon/BasicString.hpp"

namespace Zon::System::Commons::Xml {

/// Writes an XML document, forward only, to a file or to a memory buffer. Text and attribute
/// values are escaped as XML requires.
///
/// Failures: a file that cannot be created, and any write the underlying writer refuses (such as
/// an attribute after the content of an element has begun), give `XmlException`. A name that is
/// no XML name gives `ArgumentException`. Content or an end tag without an open element, and
/// every operation on a writer without a target, give `InvalidOperationException`.
class XmlWriter {
public:
    /// A writer without a target.
    XmlWriter() noexcept;
    /// Flushes and releases the target, as `Close`, but never throws.
    ~XmlWriter();
    XmlWriter(XmlWriter&& other) noexcept;
    XmlWriter& operator=(XmlWriter&& other) noexcept;
    XmlWriter(const XmlWriter&) = delete;
    XmlWriter& operator=(const XmlWriter&) = delete;

    /// Creates (or truncates) a file. An absolute path resolves under the host file-system root.
    static XmlWriter ToFile(const String& path);
    /// Writes to a memory buffer whose text `GetText` gives.
    static XmlWriter ToMemory();

    bool IsOpen() const noexcept;
    /// Indents nested elements by two blanks, one element per line. Off by default.
    void SetIndentation(bool indent);

    /// Writes the declaration `<?xml version="1.0" encoding="UTF-8"?>`.
    void WriteStartDocument();
    /// Closes every open element and ends the document with a line end.
    void WriteEndDocument();
    /// Opens an element.
    void WriteStartElement(const String& name);
    /// Closes the innermost open element, as `<name/>` when it has nothing in it.
    void WriteEndElement();
    /// Writes an attribute of the element whose start tag is still open.
    void WriteAttribute(const String& name, const String& value);
    /// Writes `content` as the text of the innermost open element.
    void WriteElementContent(const String& content);
    /// The number of elements opened and not yet closed.
    int GetOpenElementCount() const;

    /// Hands everything written so far to the target.
    void Flush();
    /// The text written so far to a memory buffer (flushes first). Throws
    /// `InvalidOperationException` for a file writer.
    String GetText();
    /// Flushes and releases the target; a file is complete afterwards. A memory writer's text is
    /// gone with it.
    void Close();

private:
    struct Impl;
    explicit XmlWriter(std::unique_ptr<Impl> impl) noexcept;
    Impl& Open() const;

    std::unique_ptr<Impl> impl;
};

} // namespace Zon::System::Commons::Xml
