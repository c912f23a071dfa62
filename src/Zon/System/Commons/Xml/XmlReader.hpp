#pragma once

#include <memory>

#include "Zon/BasicString.hpp"
#include "Zon/System/Commons/Xml/XmlNodeType.hpp"

namespace Zon::System::Commons::Xml {

/// A forward-only reader over an XML document, one node at a time.
///
/// The parser never touches the network, loads no external DTD and expands no entity: a reference
/// to a user-defined entity stays a node of kind `EntityReference` and its text never appears in
/// the content that the reader gives out. The five predefined entities (`&amp;` and friends) and
/// character references are resolved as XML requires.
///
/// Failures: a file that does not exist gives `Io::NotExistException` "File `{0}` not found.";
/// any other file that cannot be opened, and a document that is not well-formed, give
/// `XmlException` with the document's name, the parser's message and the line.
/// Every operation but `IsOpen` and `Close` throws `InvalidOperationException` on a reader
/// without a document.
class XmlReader {
public:
    /// A reader without a document.
    XmlReader() noexcept;
    ~XmlReader();
    XmlReader(XmlReader&& other) noexcept;
    XmlReader& operator=(XmlReader&& other) noexcept;
    XmlReader(const XmlReader&) = delete;
    XmlReader& operator=(const XmlReader&) = delete;

    /// Opens the document in a file. An absolute path resolves under the host file-system root.
    static XmlReader FromFile(const String& path);
    /// Opens a document held in memory. The reader keeps its own copy of `text`.
    /// `documentName` stands for the document in failure messages.
    static XmlReader FromMemory(const String& text, const String& documentName = "memory");

    bool IsOpen() const noexcept;
    /// Releases the document; the reader is then without one.
    void Close() noexcept;
    /// The name of the document as failure messages give it (a path or the memory name).
    const String& GetDocumentName() const;

    /// Moves to the next node in document order. False at the end of the document.
    bool Read();
    /// True when the reader has gone past the last node.
    bool IsEof() const;
    /// The kind of the current node; `None` before the first `Read` and at the end.
    XmlNodeType GetNodeType() const;
    /// The nesting depth of the current node: 0 for the root element, and also for an element's
    /// end tag the depth of its start tag. 0 when there is no current node.
    int GetDepth() const;
    /// The local name (without prefix) of the current element or end tag; for other nodes the
    /// parser's name of the node ("#text", ...); empty without a current node.
    String GetElementLocalName() const;
    /// The text of a text, CDATA, whitespace, comment or processing instruction node; empty for
    /// other nodes.
    String GetValue() const;
    /// True for an element written as `<name/>`.
    bool IsEmptyElement() const;
    /// Line of the current position in the document (1 for the first line).
    int GetLineNumber() const;

    /// True and `value` set when the current element has the attribute `name`; false and
    /// `value` untouched otherwise.
    bool TryGetAttribute(const String& name, String& value) const;
    /// The value of the attribute `name` of the current element, empty when it has none.
    String GetAttribute(const String& name) const;

    /// Skips what is no content (declarations, comments, processing instructions, whitespace
    /// between elements) and gives the kind of the node it stops on: an element, an end tag,
    /// text, CDATA or an entity reference. `None` at the end of the document. Before the first
    /// `Read` it reads first.
    XmlNodeType MoveToContent();
    /// `MoveToContent`, then true when the reader stands on a start tag.
    bool IsStartElement();
    /// `MoveToContent`, then true when the reader stands on a start tag of the local name `name`.
    bool IsStartElement(const String& name);

    /// Reads on to the next start tag of the local name `name`, at any depth. False, at the
    /// end of the document, when there is none.
    bool ReadToFollowing(const String& name);
    /// Reads on to the next start tag of the local name `name` below the current element. False
    /// when there is none; the reader then stands on the element's end tag (or on the element
    /// itself when it is empty).
    bool ReadToDescendant(const String& name);
    /// Moves past the current node and its subtree to the next sibling element of the local
    /// name `name`, passing over siblings of other names and text. False when there is none: the
    /// reader then stands on the end tag of the parent, behind the last sibling, or at the end
    /// of the document for the root. False without a current node.
    bool ReadToNextSibling(const String& name);
    /// Moves past the current node and its subtree. False at the end of the document.
    bool Skip();

    /// Reads the text content of the current element and moves past its end tag. The reader
    /// must stand on a start tag (after `MoveToContent`); text, CDATA and whitespace are joined,
    /// comments, processing instructions and unexpanded entity references add nothing. An empty
    /// element gives "". Throws `XmlException` when the reader is not on a start tag, or when the
    /// element has a child element.
    String ReadElementContent();

private:
    struct Impl;
    explicit XmlReader(std::unique_ptr<Impl> impl) noexcept;
    Impl& Open() const;
    bool Advance(int result);

    std::unique_ptr<Impl> impl;
};

} // namespace Zon::System::Commons::Xml
