#include <string>

#include <gtest/gtest.h>

#include "Zon/System/Commons/InvalidOperationException.hpp"
#include "Zon/System/Commons/Io/NotExistException.hpp"
#include "Zon/System/Commons/Xml/XmlException.hpp"
#include "Zon/System/Commons/Xml/XmlReader.hpp"
#include "support/HostFixture.hpp"

using namespace Zon::System::Commons::Xml;
using Zon::String;

namespace {

const char* const Program = R"(<?xml version="1.0" encoding="UTF-8"?>
<!-- a program -->
<Program name="Main">
  <Ports>
    <Port name="level" type="int16"/>
    <Port name="flow" type="float32"/>
  </Ports>
  <Title>Tank &amp; pump</Title>
</Program>
)";

} // namespace

TEST(XmlReader, ReadVisitsTheNodesInDocumentOrderWithTheirDepth)
{
    auto reader = XmlReader::FromMemory(Program);
    EXPECT_EQ(reader.GetNodeType(), XmlNodeType::None);
    ASSERT_TRUE(reader.ReadToFollowing("Program"));
    EXPECT_EQ(reader.GetDepth(), 0);
    EXPECT_EQ(reader.GetAttribute("name"), "Main");
    ASSERT_TRUE(reader.ReadToFollowing("Port"));
    EXPECT_EQ(reader.GetDepth(), 2);
    EXPECT_TRUE(reader.IsEmptyElement());
    EXPECT_EQ(reader.GetAttribute("name"), "level");
    ASSERT_TRUE(reader.ReadToFollowing("Port"));
    EXPECT_EQ(reader.GetAttribute("name"), "flow");
    EXPECT_FALSE(reader.ReadToFollowing("Port"));
    EXPECT_TRUE(reader.IsEof());
    EXPECT_EQ(reader.GetNodeType(), XmlNodeType::None);
    EXPECT_FALSE(reader.Read());
}

TEST(XmlReader, MoveToContentSkipsDeclarationCommentsAndWhitespace)
{
    auto reader = XmlReader::FromMemory(Program);
    EXPECT_EQ(reader.MoveToContent(), XmlNodeType::Element);
    EXPECT_EQ(reader.GetElementLocalName(), "Program");
    EXPECT_TRUE(reader.IsStartElement("Program"));
    EXPECT_FALSE(reader.IsStartElement("Ports"));
    ASSERT_TRUE(reader.Read()); // whitespace before <Ports>
    EXPECT_TRUE(reader.IsStartElement());
    EXPECT_EQ(reader.GetElementLocalName(), "Ports");
    EXPECT_EQ(reader.GetDepth(), 1);
}

TEST(XmlReader, GetElementLocalNameDropsThePrefix)
{
    auto reader = XmlReader::FromMemory(R"(<p:doc xmlns:p="urn:test"><p:item/></p:doc>)");
    ASSERT_TRUE(reader.IsStartElement());
    EXPECT_EQ(reader.GetElementLocalName(), "doc");
    ASSERT_TRUE(reader.ReadToFollowing("item"));
    EXPECT_EQ(reader.GetElementLocalName(), "item");
}

TEST(XmlReader, ReadElementContentJoinsTextAndMovesPastTheEndTag)
{
    auto reader = XmlReader::FromMemory("<doc><a>one <![CDATA[<two>]]> &lt;3&gt;<!-- x --></a><b/><c>last</c></doc>");
    ASSERT_TRUE(reader.ReadToFollowing("a"));
    EXPECT_EQ(reader.ReadElementContent(), "one <two> <3>");
    EXPECT_EQ(reader.GetNodeType(), XmlNodeType::Element);
    EXPECT_EQ(reader.GetElementLocalName(), "b");
    EXPECT_EQ(reader.ReadElementContent(), "");
    EXPECT_EQ(reader.GetElementLocalName(), "c");
    EXPECT_EQ(reader.ReadElementContent(), "last");
    EXPECT_EQ(reader.GetNodeType(), XmlNodeType::EndElement);
    EXPECT_EQ(reader.GetElementLocalName(), "doc");
}

TEST(XmlReader, ReadElementContentRefusesAChildElement)
{
    auto reader = XmlReader::FromMemory("<doc><a>text<b/></a></doc>");
    ASSERT_TRUE(reader.ReadToFollowing("a"));
    try {
        reader.ReadElementContent();
        FAIL() << "no exception";
    } catch (const XmlException& e) {
        EXPECT_STREQ(e.what(), "XML document `memory`: element `a` has the child element `b` at line 1, "
                               "where only text was expected.");
    }
}

TEST(XmlReader, ReadElementContentNeedsAStartTag)
{
    auto reader = XmlReader::FromMemory("<doc><a>x</a></doc>");
    ASSERT_TRUE(reader.ReadToFollowing("a"));
    ASSERT_TRUE(reader.Read()); // the text
    ASSERT_TRUE(reader.Read()); // </a>
    EXPECT_THROW(reader.ReadElementContent(), XmlException);
}

TEST(XmlReader, ReadToNextSiblingPassesOverOtherNamesAndSubtrees)
{
    auto reader = XmlReader::FromMemory("<doc><item>1</item><other><item>nested</item></other>text<item>2</item></doc>");
    ASSERT_TRUE(reader.ReadToFollowing("item"));
    ASSERT_TRUE(reader.ReadToNextSibling("item"));
    EXPECT_EQ(reader.GetDepth(), 1);
    EXPECT_EQ(reader.ReadElementContent(), "2");
}

TEST(XmlReader, ReadToNextSiblingStopsOnTheParentsEndTagBehindTheLastSibling)
{
    auto reader = XmlReader::FromMemory("<doc><list><item>1</item><item>2</item><more/></list><after/></doc>");
    ASSERT_TRUE(reader.ReadToFollowing("item"));
    ASSERT_TRUE(reader.ReadToNextSibling("item"));
    EXPECT_FALSE(reader.ReadToNextSibling("item"));
    EXPECT_EQ(reader.GetNodeType(), XmlNodeType::EndElement);
    EXPECT_EQ(reader.GetElementLocalName(), "list");
    EXPECT_EQ(reader.GetDepth(), 1);
    ASSERT_TRUE(reader.Read());
    EXPECT_EQ(reader.GetElementLocalName(), "after");
}

TEST(XmlReader, ReadToNextSiblingOfAnEmptyElementFindsTheNextOne)
{
    auto reader = XmlReader::FromMemory("<doc><item/><item a='2'/></doc>");
    ASSERT_TRUE(reader.ReadToFollowing("item"));
    ASSERT_TRUE(reader.ReadToNextSibling("item"));
    EXPECT_EQ(reader.GetAttribute("a"), "2");
}

TEST(XmlReader, ReadToNextSiblingOfTheRootEndsTheDocument)
{
    auto reader = XmlReader::FromMemory("<doc><a/></doc><!-- tail -->");
    ASSERT_TRUE(reader.IsStartElement());
    EXPECT_FALSE(reader.ReadToNextSibling("doc"));
    EXPECT_FALSE(reader.ReadToNextSibling("doc")); // no current node any more
}

TEST(XmlReader, ReadToDescendantStaysBelowTheCurrentElement)
{
    auto reader = XmlReader::FromMemory("<doc><a><b/></a><c/></doc>");
    ASSERT_TRUE(reader.ReadToFollowing("a"));
    EXPECT_FALSE(reader.ReadToDescendant("c"));
    EXPECT_EQ(reader.GetNodeType(), XmlNodeType::EndElement);
    EXPECT_EQ(reader.GetElementLocalName(), "a");
    ASSERT_TRUE(reader.Read());
    EXPECT_EQ(reader.GetElementLocalName(), "c");

    auto again = XmlReader::FromMemory("<doc><a><b/></a></doc>");
    ASSERT_TRUE(again.ReadToDescendant("b"));
    EXPECT_EQ(again.GetDepth(), 2);
}

TEST(XmlReader, SkipMovesPastTheSubtree)
{
    auto reader = XmlReader::FromMemory("<doc><a><b/></a><c/></doc>");
    ASSERT_TRUE(reader.ReadToFollowing("a"));
    ASSERT_TRUE(reader.Skip());
    EXPECT_EQ(reader.GetElementLocalName(), "c");
}

TEST(XmlReader, MalformedDocumentGivesAnXmlExceptionWithNameAndLine)
{
    auto reader = XmlReader::FromMemory("<doc>\n<a>\n</doc>", "broken.xml");
    try {
        while (reader.Read()) {
        }
        FAIL() << "no exception";
    } catch (const XmlException& e) {
        std::string message = e.what();
        EXPECT_EQ(message.rfind("XML document `broken.xml` is not well-formed: ", 0), 0u) << message;
        EXPECT_NE(message.find("mismatch"), std::string::npos) << message;
        EXPECT_NE(message.find("(line 3)."), std::string::npos) << message;
    }
}

TEST(XmlReader, TextThatIsNoXmlGivesAnXmlException)
{
    auto reader = XmlReader::FromMemory("this is not xml");
    EXPECT_THROW(reader.Read(), XmlException);
}

TEST(XmlReader, EmptyDocumentGivesAnXmlException)
{
    auto reader = XmlReader::FromMemory("");
    EXPECT_THROW(reader.Read(), XmlException);
}

TEST(XmlReader, UndeclaredEntityIsMalformed)
{
    auto reader = XmlReader::FromMemory("<doc>&nothing;</doc>");
    EXPECT_THROW(reader.ReadToFollowing("x"), XmlException);
}

TEST(XmlReader, ExternalEntityIsNotExpanded)
{
    VarnixTest::TempDir dir;
    auto secret = dir.WriteFile("secret.txt", "TOP SECRET");
    std::string document = "<!DOCTYPE doc [<!ENTITY ext SYSTEM \"file://" + secret.string() +
                           "\">]><doc>before&ext;after</doc>";
    auto reader = XmlReader::FromMemory(document);
    ASSERT_TRUE(reader.IsStartElement("doc"));
    EXPECT_EQ(reader.ReadElementContent(), "beforeafter");
}

TEST(XmlReader, ExternalEntityStaysAReferenceNode)
{
    VarnixTest::TempDir dir;
    auto secret = dir.WriteFile("secret.txt", "TOP SECRET");
    std::string document =
        "<!DOCTYPE doc [<!ENTITY ext SYSTEM \"file://" + secret.string() + "\">]><doc>&ext;</doc>";
    auto reader = XmlReader::FromMemory(document);
    ASSERT_TRUE(reader.IsStartElement("doc"));
    ASSERT_TRUE(reader.Read());
    EXPECT_EQ(reader.GetNodeType(), XmlNodeType::EntityReference);
    EXPECT_EQ(reader.GetElementLocalName(), "ext");
    EXPECT_EQ(reader.GetValue(), "");
}

TEST(XmlReader, InternalEntityIsNotExpandedEither)
{
    auto reader = XmlReader::FromMemory("<!DOCTYPE doc [<!ENTITY e \"inner\">]><doc>a&e;b</doc>");
    ASSERT_TRUE(reader.IsStartElement("doc"));
    EXPECT_EQ(reader.ReadElementContent(), "ab");
}

TEST(XmlReader, ExternalDtdIsNotLoaded)
{
    VarnixTest::TempDir dir;
    auto dtd = dir.WriteFile("doc.dtd", "<!ATTLIST doc injected CDATA \"yes\">");
    std::string document = "<!DOCTYPE doc SYSTEM \"file://" + dtd.string() + "\"><doc/>";
    auto reader = XmlReader::FromMemory(document);
    ASSERT_TRUE(reader.IsStartElement("doc"));
    String value;
    EXPECT_FALSE(reader.TryGetAttribute("injected", value));
}

TEST(XmlReader, OperationsWithoutADocumentThrow)
{
    XmlReader reader;
    EXPECT_FALSE(reader.IsOpen());
    EXPECT_THROW(reader.Read(), Zon::System::Commons::InvalidOperationException);
    auto open = XmlReader::FromMemory("<doc/>");
    EXPECT_TRUE(open.IsOpen());
    open.Close();
    EXPECT_FALSE(open.IsOpen());
    EXPECT_THROW(open.GetElementLocalName(), Zon::System::Commons::InvalidOperationException);
}

TEST(XmlReader, MovedReaderKeepsItsPosition)
{
    auto reader = XmlReader::FromMemory("<doc><a>x</a></doc>");
    ASSERT_TRUE(reader.ReadToFollowing("a"));
    XmlReader moved = std::move(reader);
    EXPECT_EQ(moved.ReadElementContent(), "x");
}

class XmlReaderFile : public VarnixTest::HostTest {};

TEST_F(XmlReaderFile, OpensAFileUnderTheFileSystemRoot)
{
    WritePlatformFile("/opt/varnix/data/doc.xml", "<doc><name>value</name></doc>");
    auto reader = XmlReader::FromFile("/opt/varnix/data/doc.xml");
    EXPECT_EQ(reader.GetDocumentName(), "/opt/varnix/data/doc.xml");
    ASSERT_TRUE(reader.ReadToFollowing("name"));
    EXPECT_EQ(reader.ReadElementContent(), "value");
}

TEST_F(XmlReaderFile, MissingFileGivesNotExistException)
{
    try {
        XmlReader::FromFile("/opt/varnix/data/missing.xml");
        FAIL() << "no exception";
    } catch (const Zon::System::Commons::Io::NotExistException& e) {
        EXPECT_STREQ(e.what(), "File `/opt/varnix/data/missing.xml` not found.");
    }
}

TEST_F(XmlReaderFile, MalformedFileNamesThePathInTheMessage)
{
    WritePlatformFile("/opt/varnix/data/bad.xml", "<doc><unclosed></doc>");
    auto reader = XmlReader::FromFile("/opt/varnix/data/bad.xml");
    try {
        while (reader.Read()) {
        }
        FAIL() << "no exception";
    } catch (const XmlException& e) {
        EXPECT_EQ(std::string(e.what()).rfind("XML document `/opt/varnix/data/bad.xml` is not well-formed: ", 0), 0u)
            << e.what();
    }
}
