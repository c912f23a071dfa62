// The outline is read from the parser's events without a document tree. The tree reader stays as
// the reference: both must give the same records, lines and errors on every document.

#include <algorithm>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "VarnixBase/Sim/Outline.hpp"
#include "VarnixBase/Sim/Stimulus.hpp"
#include "support/HostFixture.hpp"

using namespace VarnixBase::Sim;

namespace {

void WriteReferences(std::ostringstream& out, const std::vector<OutlineReference>& references,
                     const std::vector<OutlineParameter>& parameters)
{
    for (const auto& reference : references) {
        out << "    provider [" << reference.text << "] " << reference.line << "\n";
    }
    for (const auto& parameter : parameters) {
        out << "    parameter [" << parameter.name << "] [" << parameter.value << "] " << parameter.hasValue << " ["
            << parameter.ref << "] " << parameter.hasRef << " " << parameter.line << "\n";
    }
}

/// Every field of the outline as text, so that a difference shows where it is.
std::string Describe(const DocumentOutline& outline)
{
    std::ostringstream out;
    out << "file " << outline.file << "\n";
    for (const auto& element : outline.elements) {
        out << "element " << element.kind << " " << element.line;
        for (const auto& attribute : element.attributes) {
            out << " [" << attribute << "]";
        }
        out << "\n";
    }
    for (const auto& program : outline.programs) {
        out << "program [" << program.type << "] " << program.line << "\n";
        for (const auto& port : program.ports) {
            out << "  port [" << port.name << "] [" << port.type << "] [" << port.dimensions << "] "
                << port.hasDimensions << " " << port.line << "\n";
            WriteReferences(out, port.qualityProviders, port.parameters);
        }
        for (const auto& connector : program.connectors) {
            out << "  connector [" << connector.startPort << "] [" << connector.endPort << "] [" << connector.type
                << "] " << connector.line << "\n";
            WriteReferences(out, connector.qualityProviders, connector.parameters);
        }
    }
    return out.str();
}

/// The outline, or the error's text, by either reader.
std::string Read(DocumentOutline (*reader)(const std::string&), const std::string& path)
{
    try {
        return Describe(reader(path));
    } catch (const UsageError& error) {
        return std::string("UsageError: ") + error.what();
    }
}

void ExpectSameOutline(const std::string& document, const std::string& what)
{
    VarnixTest::TempDir dir;
    std::string path = dir.WriteFile("d.prog.config", document).string();
    EXPECT_EQ(Read(&ReadOutlineFromTree, path), Read(&ReadOutline, path)) << what << "\n" << document.substr(0, 2000);
}

/// A random document: the outline's elements at their levels and out of them, attributes in any
/// order and repeated through a bound prefix, comments, processing instructions, text, CDATA,
/// line breaks inside tags and attribute values, and now and then something only the tree may
/// decide (a reference in a value, an undeclared prefix, a document type) or a well-formedness
/// error.
std::string RandomDocument(std::mt19937& random)
{
    auto chance = [&](int percent) { return std::uniform_int_distribution<int>(0, 99)(random) < percent; };
    auto count = [&](int most) { return std::uniform_int_distribution<int>(0, most)(random); };
    static const std::vector<std::string> values = {"", "a", "p1", "float64", "AnalogIn", "a:b", " 2", "0.5",
                                                    "x.y[0]", "\xC3\xA4\xE2\x82\xAC", "two words"};
    auto value = [&]() {
        if (chance(4)) {
            static const std::vector<std::string> references = {"a&amp;b", "&lt;", "&#65;x", "&#38;"};
            return references[static_cast<std::size_t>(count(3))];
        }
        std::string text = values[static_cast<std::size_t>(count(static_cast<int>(values.size()) - 1))];
        if (chance(5)) {
            text += "\nnext";
        }
        return text;
    };
    auto attributes = [&](const std::vector<std::string>& names) {
        std::string text;
        std::vector<std::string> used;
        for (int i = count(3); i > 0; --i) {
            std::string name = names[static_cast<std::size_t>(count(static_cast<int>(names.size()) - 1))];
            if (std::find(used.begin(), used.end(), name) != used.end()) {
                name = "n:" + name; // the same local name again, through the bound prefix
                if (std::find(used.begin(), used.end(), name) != used.end()) {
                    continue;
                }
            }
            used.push_back(name);
            text += (chance(10) ? "\n  " : " ") + name + "=\"" + value() + "\"";
        }
        if (chance(2)) {
            text += " u:odd=\"1\""; // an undeclared prefix
        }
        return text;
    };
    auto filler = [&]() -> std::string {
        switch (count(9)) {
        case 0:
            return "<!-- note -->";
        case 1:
            return "<?pi data?>";
        case 2:
            return "text";
        case 3:
            return "<![CDATA[<Port name=\"no\"/>]]>";
        case 4:
            return "\n\n";
        default:
            return "\n  ";
        }
    };
    std::string document = chance(50) ? "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n" : "";
    if (chance(3)) {
        document += "<!DOCTYPE r [<!ENTITY e \"entity\">]>\n";
    }
    document += "<ConfigurableProgram xmlns:n=\"urn:n\">";
    for (int p = count(3); p > 0; --p) {
        document += filler();
        std::string program = chance(85) ? "Program" : (chance(50) ? "Other" : "n:Program");
        document += "<" + program + attributes({"type", "name", "x"}) + ">";
        for (int s = count(3); s > 0; --s) {
            document += filler();
            bool ports = chance(50);
            std::string section = chance(85) ? (ports ? "Ports" : "Connectors") : "Section";
            document += "<" + section + attributes({"a", "b"}) + ">";
            for (int e = count(4); e > 0; --e) {
                document += filler();
                std::string element = chance(85) ? (ports ? "Port" : "Connector") : (ports ? "Connector" : "Port");
                if (chance(3)) {
                    element = "u:" + element; // an undeclared prefix
                }
                document += "<" + element +
                            attributes(ports ? std::vector<std::string>{"name", "type", "dimensions", "other"}
                                             : std::vector<std::string>{"startPort", "endPort", "type", "other"});
                int children = count(3);
                if (children == 0) {
                    document += "/>";
                    continue;
                }
                document += ">";
                for (int c = children; c > 0; --c) {
                    document += filler();
                    std::string child = chance(45) ? "QualityProvider" : (chance(80) ? "Parameter" : "Else");
                    document += "<" + child + attributes({"ref", "name", "value"}) + ">";
                    if (chance(20)) {
                        document += "<Parameter name=\"deep\" value=\"1\"/>"; // one level too deep
                    }
                    document += "</" + child + ">";
                }
                document += "</" + element + ">";
            }
            document += "</" + section + ">";
        }
        document += "</" + program + ">";
    }
    document += filler() + "</ConfigurableProgram>\n";
    if (chance(3)) {
        document.insert(static_cast<std::size_t>(count(static_cast<int>(document.size()) - 1)), "<");
    }
    if (chance(2)) {
        document += "<Second/>";
    }
    return document;
}

} // namespace

TEST(OutlineStream, AgreesWithTheTreeOnRandomDocuments)
{
    std::mt19937 random(15);
    VarnixTest::TempDir dir;
    int errors = 0;
    for (int round = 0; round < 600; ++round) {
        std::string document = RandomDocument(random);
        std::string path = dir.WriteFile("d" + std::to_string(round % 10) + ".prog.config", document).string();
        std::string expected = Read(&ReadOutlineFromTree, path);
        ASSERT_EQ(expected, Read(&ReadOutline, path)) << "document " << round << ":\n" << document;
        errors += expected.rfind("UsageError", 0) == 0 ? 1 : 0;
    }
    // Both outcomes must be reached, or the comparison proves little.
    EXPECT_GT(errors, 10);
    EXPECT_LT(errors, 400);
}

TEST(OutlineStream, AttributeValuesWithReferencesAndLineBreaks)
{
    ExpectSameOutline("<r><Program type=\"a&amp;b\"><Ports><Port name=\"x&#10;y\" type=\"&#65;\"/>"
                      "<Port name=\"p\nq\" type=\"t\tu\"/></Ports></Program></r>",
                      "references");
}

TEST(OutlineStream, DocumentTypeWithEntitiesAndDefaults)
{
    ExpectSameOutline("<!DOCTYPE r [<!ENTITY e \"E\"><!ATTLIST Port dimensions CDATA \"3\">]>\n"
                      "<r><Program type=\"&e;\"><Ports><Port name=\"a\" type=\"int32\"/>&e;</Ports></Program></r>",
                      "document type");
}

TEST(OutlineStream, ElementsPastLine65534)
{
    std::string document = "<r><Program type=\"P\"><Ports>\n";
    for (int i = 0; i < 66000; ++i) {
        document += "<Port name=\"p" + std::to_string(i) + "\" type=\"int32\"/>\n";
    }
    document += "</Ports><Connectors><Connector startPort=\"p0\" endPort=\"p1\" type=\"copy\"/></Connectors>"
                "</Program></r>\n";
    ExpectSameOutline(document, "long document");
}

TEST(OutlineStream, LongTextBetweenElements)
{
    // Beyond the parser's limit for one text node the tree stops where the text is.
    for (std::size_t length : {std::size_t(1500000), std::size_t(10500000)}) {
        std::string document = "<r><Program type=\"P\"><Ports><Port name=\"a\" type=\"int32\"/>";
        document += std::string(length / 2, 'x') + "<!-- c -->" + std::string(length / 2, 'y');
        document += "<Port name=\"b\" type=\"int32\"/></Ports></Program></r>\n";
        ExpectSameOutline(document, "text of " + std::to_string(length));
    }
}

TEST(OutlineStream, DeeplyNestedDocument)
{
    std::string document = "<r><Program type=\"P\">";
    for (int i = 0; i < 300; ++i) {
        document += "<d>";
    }
    for (int i = 0; i < 300; ++i) {
        document += "</d>";
    }
    document += "</Program></r>";
    ExpectSameOutline(document, "deep");
}

TEST(OutlineStream, MissingEmptyAndMalformedFiles)
{
    VarnixTest::TempDir dir;
    for (const char* text : {"", "<", "<r>", "<a><b></a>", "<r/><s/>", "<r a=\"1\" a=\"2\"/>", "<r>&undefined;</r>"}) {
        std::string path = dir.WriteFile("bad.prog.config", text).string();
        EXPECT_EQ(Read(&ReadOutline, path), "UsageError: " + path + ": not well-formed XML") << text;
        EXPECT_EQ(Read(&ReadOutlineFromTree, path), Read(&ReadOutline, path)) << text;
    }
    std::string missing = (dir.Path() / "none.prog.config").string();
    EXPECT_EQ(Read(&ReadOutline, missing), "UsageError: " + missing + ": no such file");
}
