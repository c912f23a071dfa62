#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xmlerror.h>

#include "VarnixBase/Core/PortSystem/Configuration/ConfigurableProgramDocumentHelper.hpp"

using VarnixBase::Core::PortSystem::Configuration::ConfigurableProgramDocumentHelper;

namespace {

// The document loader reads its tree leaving out blank text and keeping short texts inside their
// nodes. The helper that turns the tree into settings reads elements, their order, their names,
// their attributes in order and the first child of each attribute; this view must be the same as
// in the tree read with every blank kept (only no network, as before). Every document the
// repository holds is read both ways, and documents written for the places where blank text and
// the options meet.

/// What the helper can see of a tree: each element with its attributes (name, and the type and
/// text of the first child), then its element children, in document order.
void Describe(const xmlNode* node, std::string& out)
{
    for (; node != nullptr; node = node->next) {
        if (node->type != XML_ELEMENT_NODE) {
            continue;
        }
        out += "<";
        out += node->name != nullptr ? reinterpret_cast<const char*>(node->name) : "(null)";
        for (const xmlAttr* attribute = node->properties; attribute != nullptr; attribute = attribute->next) {
            out += " ";
            out += attribute->name != nullptr ? reinterpret_cast<const char*>(attribute->name) : "(null)";
            const xmlNode* first = attribute->children;
            if (first == nullptr) {
                out += "(no child)";
            } else {
                out += "=" + std::to_string(static_cast<int>(first->type)) + ":";
                out += first->content != nullptr ? reinterpret_cast<const char*>(first->content) : "(null)";
            }
        }
        out += ">";
        Describe(node->children, out);
        out += "</>";
    }
}

struct Reading {
    bool parsed = false;
    std::string view;
};

void Quiet(void*, const xmlError*) {}

Reading Read(const std::string& text, int options)
{
    xmlSetStructuredErrorFunc(nullptr, reinterpret_cast<xmlStructuredErrorFunc>(&Quiet));
    std::unique_ptr<xmlDoc, void (*)(xmlDoc*)> document(
        xmlReadMemory(text.data(), static_cast<int>(text.size()), "document.prog.config", nullptr, options),
        &xmlFreeDoc);
    xmlSetStructuredErrorFunc(nullptr, nullptr);
    Reading reading;
    if (document != nullptr) {
        reading.parsed = true;
        Describe(xmlDocGetRootElement(document.get()), reading.view);
    }
    return reading;
}

void ExpectTheSameView(const std::string& text, const std::string& what)
{
    Reading everyBlank = Read(text, XML_PARSE_NONET);
    Reading loaders = Read(text, ConfigurableProgramDocumentHelper::ReadOptions);
    EXPECT_EQ(loaders.parsed, everyBlank.parsed) << what;
    EXPECT_EQ(loaders.view, everyBlank.view) << what;
}

std::string Contents(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

TEST(DocumentReadOptionsTest, TheLoadersOptionsKeepEveryElementAndAttributeOfEveryDocumentOfTheRepository)
{
    const std::filesystem::path source = VARNIX_SOURCE_DIR;
    std::size_t documents = 0;
    std::size_t parsed = 0;
    for (const char* folder : {"fuzz/corpus/fuzz_Document", "examples", "tests"}) {
        for (const auto& entry : std::filesystem::recursive_directory_iterator(source / folder)) {
            const auto& path = entry.path();
            bool corpus = path.string().find("fuzz_Document") != std::string::npos;
            if (!entry.is_regular_file() || (!corpus && path.extension() != ".config" && path.extension() != ".xml")) {
                continue;
            }
            std::string text = Contents(path);
            ExpectTheSameView(text, path.string());
            ++documents;
            parsed += Read(text, XML_PARSE_NONET).parsed ? 1 : 0;
        }
    }
    // The corpus alone holds over a hundred documents, most of them well-formed.
    EXPECT_GT(documents, 100u);
    EXPECT_GT(parsed, 50u);
}

TEST(DocumentReadOptionsTest, TheLoadersOptionsKeepEveryElementAndAttributeWhereBlankTextMeetsThem)
{
    const std::vector<std::string> documents = {
        // Indentation between elements, and an element holding only blanks.
        "<ConfigurableProgram>\n  <Program type=\"T\">\n    <Ports>\n      <Port name=\"a\" type=\"int32\"> </Port>\n"
        "    </Ports>\n  </Program>\n</ConfigurableProgram>\n",
        // Blanks beside text: mixed content keeps them.
        "<a>text <b x=\"1\"/> more <c/> </a>",
        "<a> <b/>text<c/> </a>",
        // Blanks that xml:space asks to keep.
        "<a xml:space=\"preserve\">  <b/>  <c xml:space=\"default\"> <d/> </c></a>",
        // CDATA, comments and processing instructions between elements.
        "<a><![CDATA[  ]]> <b/> <!-- note --> <?pi data?> <c/></a>",
        // Attribute values: blanks, references, empty, long.
        "<a b=\"  \" c=\"x &amp; y\" d=\"&#x20;&#9;\" e=\"\" f=\"" + std::string(5000, 'v') + "\"/>",
        "<a b='single' c=\"a&#10;b\"/>",
        // Internal entities, in text and in attributes; an external one stays unexpanded.
        "<!DOCTYPE a [<!ENTITY e \"value\">]><a b=\"&e;\"> &e; <c d=\"x&e;y\"/> </a>",
        "<!DOCTYPE a [<!ENTITY x SYSTEM \"file:///etc/hostname\">]><a> &x; <b/> </a>",
        // A DTD that declares the content: element-only content against mixed content.
        "<!DOCTYPE a [<!ELEMENT a (b)*><!ELEMENT b EMPTY>]><a> <b/> <b/> </a>",
        "<!DOCTYPE a [<!ELEMENT a (#PCDATA|b)*><!ELEMENT b EMPTY>]><a> <b/> <b/> </a>",
        // Default attributes of the DTD are not added either way.
        "<!DOCTYPE a [<!ATTLIST b c CDATA \"default\">]><a> <b/> </a>",
        // Namespaces, prefixes and blank text around them.
        "<r xmlns=\"urn:x\" xmlns:p=\"urn:p\"> <p:Port p:name=\"a\" name=\"b\"/> <Port/> </r>",
        // Not well-formed: truncated, two roots, a bad reference.
        "<a> <b/> ",
        "<a/> <b/>",
        "<a b=\"&nope;\"/>",
        "",
        "   ",
    };
    for (const auto& text : documents) {
        ExpectTheSameView(text, text);
    }
}

TEST(DocumentReadOptionsTest, TheLoadersOptionsLeaveOutBlankTextBetweenElements)
{
    // The point of the options: the tree of an indented document has no text nodes between its
    // elements, so there is less of it to build, walk and free.
    const std::string text = "<a>\n  <b/>\n  <c/>\n</a>\n";
    auto count = [&](int options) {
        std::unique_ptr<xmlDoc, void (*)(xmlDoc*)> document(
            xmlReadMemory(text.data(), static_cast<int>(text.size()), "d.xml", nullptr, options), &xmlFreeDoc);
        std::size_t nodes = 0;
        for (const xmlNode* node = xmlDocGetRootElement(document.get())->children; node != nullptr; node = node->next) {
            ++nodes;
        }
        return nodes;
    };
    EXPECT_EQ(count(XML_PARSE_NONET), 5u);
    EXPECT_EQ(count(ConfigurableProgramDocumentHelper::ReadOptions), 2u);
}

} // namespace
