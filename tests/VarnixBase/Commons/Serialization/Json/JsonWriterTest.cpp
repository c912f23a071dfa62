#include <cstdio>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>
#include <unistd.h>

#include "VarnixBase/Commons/Serialization/Json/JsonWriter.hpp"

using VarnixBase::Commons::Serialization::IWriter;
using VarnixBase::Commons::Serialization::Json::JsonWriter;

namespace {

/// Runs `action` with the process's standard output (file descriptor 1) sent to a temporary
/// file, and gives back every byte written meanwhile.
std::string CaptureStdout(const std::function<void()>& action)
{
    std::fflush(stdout);
    std::FILE* file = std::tmpfile();
    if (file == nullptr) {
        throw std::runtime_error("no temporary file");
    }
    int saved = ::dup(1);
    ::dup2(::fileno(file), 1);
    try {
        action();
    } catch (...) {
        std::fflush(stdout);
        ::dup2(saved, 1);
        ::close(saved);
        std::fclose(file);
        throw;
    }
    std::fflush(stdout);
    ::dup2(saved, 1);
    ::close(saved);

    std::string text;
    std::rewind(file);
    char chunk[256];
    std::size_t count = 0;
    while ((count = std::fread(chunk, 1, sizeof(chunk), file)) > 0) {
        text.append(chunk, count);
    }
    std::fclose(file);
    return text;
}

} // namespace

TEST(JsonWriter, ArraysAndObjectsPutTheirCharacterOnALineOfItsOwn)
{
    JsonWriter writer;
    EXPECT_EQ(CaptureStdout([&] { writer.StartArray(); }), "[\n");
    EXPECT_EQ(CaptureStdout([&] { writer.EndArray(); }), "]\n");
    EXPECT_EQ(CaptureStdout([&] { writer.StartObject(); }), "{\n");
    EXPECT_EQ(CaptureStdout([&] { writer.EndObject(); }), "}\n");
}

TEST(JsonWriter, StartMemberWritesTheQuotedNameBlankAndColon)
{
    JsonWriter writer;
    EXPECT_EQ(CaptureStdout([&] { writer.StartMember("level"); }), "\"level\" :");
}

TEST(JsonWriter, MemberWithAValueGivesTheQuotedNameAndNoValue)
{
    JsonWriter writer;
    std::string output = CaptureStdout([&] {
        writer.StartMember("speed");
        writer.WriteValue(12.5);
        writer.EndMember();
        writer.StartMember("name");
        writer.WriteValue(Zon::String("pump"));
        writer.EndMember();
        writer.StartMember("none");
        writer.WriteValue();
        writer.EndMember();
    });
    EXPECT_EQ(output, "\"speed\" :\"name\" :\"none\" :");
}

TEST(JsonWriter, StartMemberEndsNoLineSoTheNextOutputContinuesIt)
{
    JsonWriter writer;
    std::string output = CaptureStdout([&] {
        writer.StartMember("ports");
        writer.StartArray();
    });
    EXPECT_EQ(output, "\"ports\" :[\n");
}

TEST(JsonWriter, ValuesEndOfMemberAndDestructorWriteNothing)
{
    std::string output = CaptureStdout([] {
        auto writer = std::make_unique<JsonWriter>();
        writer->WriteValue(1.0);
        writer->WriteValue(Zon::String("text"));
        writer->WriteValue();
        writer->EndMember();
        writer.reset();
    });
    EXPECT_EQ(output, "");
}

TEST(JsonWriter, DocumentGivesATraceOfItsShapeWithoutSeparators)
{
    std::unique_ptr<IWriter> writer = std::make_unique<JsonWriter>();
    std::string output = CaptureStdout([&] {
        writer->StartObject();
        writer->StartMember("ports");
        writer->StartArray();
        writer->StartObject();
        writer->StartMember("name");
        writer->WriteValue(Zon::String("level"));
        writer->EndMember();
        writer->StartMember("value");
        writer->WriteValue(3.0);
        writer->EndMember();
        writer->EndObject();
        writer->StartObject();
        writer->EndObject();
        writer->EndArray();
        writer->EndMember();
        writer->EndObject();
    });
    EXPECT_EQ(output, "{\n\"ports\" :[\n{\n\"name\" :\"value\" :}\n{\n}\n]\n}\n");
}

TEST(JsonWriter, NameIsWrittenAsItStands)
{
    JsonWriter writer;
    EXPECT_EQ(CaptureStdout([&] { writer.StartMember("%s %d \"q\""); }), "\"%s %d \"q\"\" :");
    EXPECT_EQ(CaptureStdout([&] { writer.StartMember(""); }), "\"\" :");
}

TEST(JsonWriter, KeepsNoStateBetweenCalls)
{
    JsonWriter first;
    JsonWriter second;
    std::string interleaved = CaptureStdout([&] {
        first.StartObject();
        second.StartMember("a");
        first.EndObject();
    });
    std::string single = CaptureStdout([&] {
        first.StartObject();
        first.StartMember("a");
        first.EndObject();
    });
    EXPECT_EQ(interleaved, single);
    EXPECT_EQ(single, "{\n\"a\" :}\n");
}
