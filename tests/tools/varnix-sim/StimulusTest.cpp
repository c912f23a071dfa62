#include <gtest/gtest.h>

#include "VarnixBase/Sim/Stimulus.hpp"
#include "support/HostFixture.hpp"

using namespace VarnixBase::Sim;

TEST(Stimulus, SetOptionWithoutCycleWritesBeforeTheFirst)
{
    auto entry = ParseSetOption("raw=100");
    EXPECT_EQ(entry.port, "raw");
    EXPECT_EQ(entry.literal, "100");
    EXPECT_EQ(entry.cycle, 1u);
    EXPECT_EQ(entry.origin, "--set raw=100");
}

TEST(Stimulus, SetOptionTakesTheCycleAfterTheLastAt)
{
    auto entry = ParseSetOption("raw=16#8001@5");
    EXPECT_EQ(entry.literal, "16#8001");
    EXPECT_EQ(entry.cycle, 5u);
    auto text = ParseSetOption("name=a@b");
    EXPECT_EQ(text.literal, "a@b");
    EXPECT_EQ(text.cycle, 1u);
}

TEST(Stimulus, SetOptionErrorsAreOneClearLine)
{
    EXPECT_THROW(ParseSetOption("raw"), UsageError);
    EXPECT_THROW(ParseSetOption("=5"), UsageError);
    try {
        ParseSetOption("raw=5@0");
        FAIL();
    } catch (const UsageError& error) {
        EXPECT_STREQ(error.what(), "--set raw=5@0: cycles count from 1");
    }
}

TEST(Stimulus, FileGivesOneEntryPerNonEmptyCellInCycleOrder)
{
    auto entries = ParseStimulus("# tank\ncycle,raw,name\n5,16#8001,\n1,100,\"a, b\"\n\n", "s.csv");
    ASSERT_EQ(entries.size(), 3u);
    EXPECT_EQ(entries[0].cycle, 1u);
    EXPECT_EQ(entries[0].port, "raw");
    EXPECT_EQ(entries[0].literal, "100");
    EXPECT_EQ(entries[1].port, "name");
    EXPECT_EQ(entries[1].literal, "a, b");
    EXPECT_EQ(entries[2].cycle, 5u);
    EXPECT_EQ(entries[2].literal, "16#8001");
    EXPECT_EQ(entries[2].origin, "s.csv:3");
}

TEST(Stimulus, FileErrorsNameTheLine)
{
    try {
        ParseStimulus("cycle,raw\nx,1\n", "s.csv");
        FAIL();
    } catch (const UsageError& error) {
        EXPECT_STREQ(error.what(), "s.csv:2: cycle 'x' is not a whole number from 1 on");
    }
    EXPECT_THROW(ParseStimulus("raw,cycle\n1,2\n", "s.csv"), UsageError);
    EXPECT_THROW(ParseStimulus("cycle,raw\n1,2,3\n", "s.csv"), UsageError);
    EXPECT_THROW(ParseStimulus("", "s.csv"), UsageError);
    EXPECT_THROW(ParseStimulus("cycle,raw\n1,\"open\n", "s.csv"), UsageError);
}

TEST(Stimulus, MissingFileIsAUsageError)
{
    VarnixTest::TempDir dir;
    EXPECT_THROW(LoadStimulusFile((dir.Path() / "none.csv").string()), UsageError);
    auto path = dir.WriteFile("s.csv", "cycle,raw\n2,7\n");
    auto entries = LoadStimulusFile(path.string());
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].cycle, 2u);
}
