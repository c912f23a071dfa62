#include <fstream>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "Zon/System/Commons/ArgumentException.hpp"
#include "Zon/System/Commons/InvalidOperationException.hpp"
#include "Zon/System/Commons/Xml/XmlException.hpp"
#include "Zon/System/Commons/Xml/XmlReader.hpp"
#include "Zon/System/Commons/Xml/XmlWriter.hpp"
#include "support/HostFixture.hpp"

using namespace Zon::System::Commons::Xml;
using Zon::String;

TEST(XmlWriter, WritesADocumentToMemory)
{
    auto writer = XmlWriter::ToMemory();
    writer.WriteStartDocument();
    writer.WriteStartElement("doc");
    writer.WriteAttribute("version", "1");
    writer.WriteStartElement("name");
    writer.WriteElementContent("value");
    writer.WriteEndElement();
    writer.WriteStartElement("empty");
    writer.WriteEndElement();
    writer.WriteEndDocument();
    EXPECT_EQ(writer.GetText(), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                "<doc version=\"1\"><name>value</name><empty/></doc>\n");
}

TEST(XmlWriter, EscapesContentAndAttributes)
{
    auto writer = XmlWriter::ToMemory();
    writer.WriteStartElement("doc");
    writer.WriteAttribute("a", "x\"<&>");
    writer.WriteElementContent("1 < 2 & 3 > 2");
    writer.WriteEndElement();
    EXPECT_EQ(writer.GetText(), "<doc a=\"x&quot;&lt;&amp;&gt;\">1 &lt; 2 &amp; 3 &gt; 2</doc>");
}

TEST(XmlWriter, RoundTripThroughTheReader)
{
    auto writer = XmlWriter::ToMemory();
    writer.WriteStartDocument();
    writer.WriteStartElement("Program");
    writer.WriteAttribute("name", "A & B");
    for (const char* entry : {"first <1>", "second & 2", ""}) {
        writer.WriteStartElement("Entry");
        writer.WriteElementContent(entry);
        writer.WriteEndElement();
    }
    writer.WriteEndDocument();

    auto reader = XmlReader::FromMemory(writer.GetText());
    ASSERT_TRUE(reader.IsStartElement("Program"));
    EXPECT_EQ(reader.GetAttribute("name"), "A & B");
    ASSERT_TRUE(reader.ReadToDescendant("Entry"));
    EXPECT_EQ(reader.ReadElementContent(), "first <1>");
    EXPECT_EQ(reader.ReadElementContent(), "second & 2");
    EXPECT_EQ(reader.ReadElementContent(), "");
    EXPECT_EQ(reader.GetNodeType(), XmlNodeType::EndElement);
}

TEST(XmlWriter, IndentationPutsOneElementOnEachLine)
{
    auto writer = XmlWriter::ToMemory();
    writer.SetIndentation(true);
    writer.WriteStartElement("doc");
    writer.WriteStartElement("a");
    writer.WriteEndElement();
    writer.WriteEndDocument();
    EXPECT_EQ(writer.GetText(), "<doc>\n  <a/>\n</doc>\n");
}

TEST(XmlWriter, ContentNeedsAnOpenElement)
{
    auto writer = XmlWriter::ToMemory();
    EXPECT_THROW(writer.WriteElementContent("x"), Zon::System::Commons::InvalidOperationException);
    EXPECT_THROW(writer.WriteEndElement(), Zon::System::Commons::InvalidOperationException);
    EXPECT_EQ(writer.GetText(), "");
}

TEST(XmlWriter, AttributeAfterContentIsRefused)
{
    auto writer = XmlWriter::ToMemory();
    writer.WriteStartElement("doc");
    writer.WriteElementContent("x");
    EXPECT_THROW(writer.WriteAttribute("late", "1"), XmlException);
}

TEST(XmlWriter, InvalidNamesAreRefused)
{
    auto writer = XmlWriter::ToMemory();
    try {
        writer.WriteStartElement("1st element");
        FAIL() << "no exception";
    } catch (const Zon::System::Commons::ArgumentException& e) {
        EXPECT_STREQ(e.what(), "`1st element` is no valid XML name.");
    }
    EXPECT_THROW(writer.WriteStartElement(""), Zon::System::Commons::ArgumentException);
    writer.WriteStartElement("doc");
    EXPECT_THROW(writer.WriteAttribute("a b", "1"), Zon::System::Commons::ArgumentException);
    EXPECT_EQ(writer.GetOpenElementCount(), 1);
}

TEST(XmlWriter, OperationsWithoutATargetThrow)
{
    XmlWriter writer;
    EXPECT_FALSE(writer.IsOpen());
    EXPECT_THROW(writer.WriteStartElement("doc"), Zon::System::Commons::InvalidOperationException);
    auto memory = XmlWriter::ToMemory();
    memory.Close();
    EXPECT_FALSE(memory.IsOpen());
    EXPECT_THROW(memory.GetText(), Zon::System::Commons::InvalidOperationException);
}

class XmlWriterFile : public VarnixTest::HostTest {};

TEST_F(XmlWriterFile, WritesAFileUnderTheFileSystemRootThatReadsBack)
{
    WritePlatformFile("/opt/varnix/data/.keep", "");
    auto writer = XmlWriter::ToFile("/opt/varnix/data/out.xml");
    writer.WriteStartDocument();
    writer.WriteStartElement("doc");
    writer.WriteStartElement("name");
    writer.WriteElementContent("value");
    writer.WriteEndDocument();
    EXPECT_THROW(writer.GetText(), Zon::System::Commons::InvalidOperationException);
    writer.Close();

    std::ifstream file(MachinePath("/opt/varnix/data/out.xml"));
    std::stringstream content;
    content << file.rdbuf();
    EXPECT_EQ(content.str(), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<doc><name>value</name></doc>\n");

    auto reader = XmlReader::FromFile("/opt/varnix/data/out.xml");
    ASSERT_TRUE(reader.ReadToFollowing("name"));
    EXPECT_EQ(reader.ReadElementContent(), "value");
}

TEST_F(XmlWriterFile, FileInAMissingDirectoryCannotBeOpened)
{
    try {
        XmlWriter::ToFile("/no/such/directory/out.xml");
        FAIL() << "no exception";
    } catch (const XmlException& e) {
        EXPECT_STREQ(e.what(), "Cannot open XML document `/no/such/directory/out.xml` for writing.");
    }
}
