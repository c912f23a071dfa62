#include <list>

#include <gtest/gtest.h>

#include "VarnixBase/Commons/Serialization/Serializer.hpp"
#include "Zon/System/Commons/Xml/XmlReader.hpp"
#include "Zon/System/Commons/Xml/XmlWriter.hpp"

using VarnixBase::Commons::Serialization::Serializer;
using Zon::String;
using Zon::System::Commons::Xml::XmlNodeType;
using Zon::System::Commons::Xml::XmlReader;
using Zon::System::Commons::Xml::XmlWriter;

TEST(Serializer, SerializeOfAStringWritesTheElementContent)
{
    auto writer = XmlWriter::ToMemory();
    writer.WriteStartElement("name");
    String value = "pump & valve";
    Serializer::Serialize(writer, value);
    writer.WriteEndElement();
    EXPECT_EQ(writer.GetText(), "<name>pump &amp; valve</name>");
    EXPECT_EQ(value, "pump & valve");
}

TEST(Serializer, DeserializeOfAStringReadsTheContentAndMovesPastTheElement)
{
    auto reader = XmlReader::FromMemory("<doc><name>pump &amp; valve</name><next/></doc>");
    ASSERT_TRUE(reader.ReadToFollowing("name"));
    String value = "old";
    Serializer::Deserialize(reader, value);
    EXPECT_EQ(value, "pump & valve");
    EXPECT_EQ(reader.GetElementLocalName(), "next");
}

TEST(Serializer, StringRoundTripThroughTheXmlWriterAndReader)
{
    auto writer = XmlWriter::ToMemory();
    writer.WriteStartElement("value");
    String written = "<a> \"b\" 'c'";
    Serializer::Serialize(writer, written);
    writer.WriteEndDocument();

    auto reader = XmlReader::FromMemory(writer.GetText());
    ASSERT_TRUE(reader.IsStartElement("value"));
    String read;
    Serializer::Deserialize(reader, read);
    EXPECT_EQ(read, written);
}

TEST(Serializer, SerializeOfAListWritesNothingToTheXmlWriter)
{
    auto reference = XmlWriter::ToMemory();
    reference.WriteStartDocument();
    reference.WriteStartElement("list");
    reference.WriteEndDocument();

    auto writer = XmlWriter::ToMemory();
    writer.WriteStartDocument();
    writer.WriteStartElement("list");
    String before = writer.GetText();
    std::list<String> value = {"a", "b", "c"};
    Serializer::Serialize(writer, value);
    EXPECT_EQ(writer.GetText(), before);
    EXPECT_EQ(writer.GetOpenElementCount(), 1);
    writer.WriteEndDocument();

    EXPECT_EQ(writer.GetText(), reference.GetText());
    EXPECT_EQ(writer.GetText(), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<list/>\n");
    EXPECT_EQ(value, (std::list<String>{"a", "b", "c"}));
}

TEST(Serializer, DeserializeOfThreeSiblingsKeepsTheListAndEndsBehindTheThird)
{
    const char* document = "<doc><list><item>a</item><item>b</item><item>c</item></list><after>x</after></doc>";
    for (std::list<String> value : {std::list<String>{}, std::list<String>{"kept", "as is"}}) {
        const std::list<String> original = value;
        auto reader = XmlReader::FromMemory(document);
        ASSERT_TRUE(reader.ReadToFollowing("item"));
        Serializer::Deserialize(reader, value);
        EXPECT_EQ(value, original);
        // Behind the third item: on the end tag of the list, and no item is left to find.
        EXPECT_EQ(reader.GetNodeType(), XmlNodeType::EndElement);
        EXPECT_EQ(reader.GetElementLocalName(), "list");
        EXPECT_EQ(reader.GetDepth(), 1);
        ASSERT_TRUE(reader.Read());
        EXPECT_TRUE(reader.IsStartElement("after"));
        EXPECT_EQ(reader.ReadElementContent(), "x");
        EXPECT_FALSE(reader.ReadToFollowing("item"));
    }
}

TEST(Serializer, DeserializeOfASingleElementListStopsAfterOneFailedSiblingSearch)
{
    // An element of the same name follows the list one level up. A second sibling search, made
    // from the list's end tag, would move on to it; a single one, which returns false, leaves the
    // reader on the end tag of the list.
    const char* document = "<doc><list><item>only</item></list><item>outside</item></doc>";
    auto reader = XmlReader::FromMemory(document);
    ASSERT_TRUE(reader.ReadToFollowing("item"));
    std::list<String> value;
    Serializer::Deserialize(reader, value);
    EXPECT_TRUE(value.empty());
    EXPECT_EQ(reader.GetNodeType(), XmlNodeType::EndElement);
    EXPECT_EQ(reader.GetElementLocalName(), "list");

    // The one search that the operation makes, from the single element, fails.
    auto probe = XmlReader::FromMemory(document);
    ASSERT_TRUE(probe.ReadToFollowing("item"));
    EXPECT_FALSE(probe.ReadToNextSibling("item"));
    EXPECT_EQ(probe.GetElementLocalName(), "list");
    // A further search would have left the list.
    EXPECT_TRUE(probe.ReadToNextSibling("item"));
    EXPECT_EQ(probe.ReadElementContent(), "outside");
}

TEST(Serializer, DeserializeOfAListPassesOverSiblingsOfOtherNames)
{
    auto reader = XmlReader::FromMemory("<list><item/><note>n</note><item/><item>z</item></list>");
    ASSERT_TRUE(reader.ReadToFollowing("item"));
    std::list<String> value;
    Serializer::Deserialize(reader, value);
    EXPECT_TRUE(value.empty());
    EXPECT_EQ(reader.GetNodeType(), XmlNodeType::EndElement);
    EXPECT_EQ(reader.GetElementLocalName(), "list");
    EXPECT_FALSE(reader.Read());
}
