#include <memory>

#include <gtest/gtest.h>

#include "VarnixBase/Commons/Serialization/IReader.hpp"
#include "VarnixBase/Commons/Serialization/Json/JsonWriter.hpp"
#include "VarnixBase/Commons/Serialization/SerializerContext.hpp"

using namespace VarnixBase::Commons::Serialization;

namespace {
class NullReader : public IReader {};
} // namespace

TEST(SerializerContext, CopiesBothPointersRaisingEachCountByOne)
{
    std::shared_ptr<IReader> reader = std::make_shared<NullReader>();
    std::shared_ptr<IWriter> writer = std::make_shared<Json::JsonWriter>();
    {
        SerializerContext context(reader, writer);
        EXPECT_EQ(reader.use_count(), 2);
        EXPECT_EQ(writer.use_count(), 2);
        EXPECT_EQ(context.GetReader(), reader);
        EXPECT_EQ(context.GetWriter(), writer);
    }
    EXPECT_EQ(reader.use_count(), 1);
    EXPECT_EQ(writer.use_count(), 1);
}

TEST(SerializerContext, KeepsItsPointersAliveAfterTheCallerLetsGo)
{
    std::weak_ptr<IWriter> watch;
    std::unique_ptr<SerializerContext> context;
    {
        auto writer = std::make_shared<Json::JsonWriter>();
        watch = writer;
        context = std::make_unique<SerializerContext>(nullptr, writer);
    }
    EXPECT_FALSE(watch.expired());
    EXPECT_EQ(context->GetReader(), nullptr);
    context.reset();
    EXPECT_TRUE(watch.expired());
}
