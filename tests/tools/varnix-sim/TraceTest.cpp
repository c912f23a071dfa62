#include <sstream>

#include <gtest/gtest.h>

#include "VarnixBase/Sim/Trace.hpp"

using namespace VarnixBase::Sim;

namespace {

std::vector<TraceColumn> Columns()
{
    return {
        {"raw", ValueKind::Unsigned, 16, true, false},
        {"level", ValueKind::Real, 64, true, true},
        {"on", ValueKind::Bool, 1, false, false},
        {"text", ValueKind::Text, 8, false, false},
    };
}

std::string WriteSample(TraceFormat format)
{
    std::ostringstream out;
    auto writer = MakeTraceWriter(format, out);
    writer->Begin(Columns());
    writer->Cycle(1, 1'000'000, {{"100", "Good", 0}, {"12.5", "Good", 1'000'000}, {"true", "", 0}, {"a,b", "", 0}});
    writer->Cycle(2, 1'010'000, {{"32769", "Bad Overrange", 0}, {"12.5", "Bad Overrange", 1'010'000}, {"true", "", 0},
                                 {"say \"hi\"", "", 0}});
    writer->End();
    return out.str();
}

} // namespace

TEST(Trace, ParsesFormatNames)
{
    TraceFormat format = TraceFormat::Table;
    EXPECT_TRUE(TryParseTraceFormat("vcd", format));
    EXPECT_EQ(format, TraceFormat::Vcd);
    EXPECT_TRUE(TryParseTraceFormat("csv", format));
    EXPECT_EQ(format, TraceFormat::Csv);
    EXPECT_FALSE(TryParseTraceFormat("CSV", format));
    EXPECT_EQ(format, TraceFormat::Csv);
}

TEST(Trace, TableHasOneRowPerCycleWithValueAndQualityColumns)
{
    std::string text = WriteSample(TraceFormat::Table);
    std::istringstream lines(text);
    std::string header, rule, first, second;
    std::getline(lines, header);
    std::getline(lines, rule);
    std::getline(lines, first);
    std::getline(lines, second);
    EXPECT_NE(header.find("cycle"), std::string::npos);
    EXPECT_NE(header.find("raw quality"), std::string::npos);
    EXPECT_NE(header.find("level quality"), std::string::npos);
    EXPECT_EQ(header.find("on quality"), std::string::npos);
    EXPECT_EQ(rule.find_first_not_of("- "), std::string::npos);
    EXPECT_NE(first.find("0.000"), std::string::npos);
    EXPECT_NE(second.find("10.000"), std::string::npos);
    EXPECT_NE(second.find("Bad Overrange"), std::string::npos);
}

TEST(Trace, CsvQuotesFieldsThatNeedIt)
{
    EXPECT_EQ(WriteSample(TraceFormat::Csv),
              "cycle,time_us,raw,raw.quality,level,level.quality,level.timestamp_us,on,text\n"
              "1,1000000,100,Good,12.5,Good,1000000,true,\"a,b\"\n"
              "2,1010000,32769,Bad Overrange,12.5,Bad Overrange,1010000,true,\"say \"\"hi\"\"\"\n");
}

TEST(Trace, JsonlWritesOneObjectPerCycle)
{
    std::string text = WriteSample(TraceFormat::Jsonl);
    std::istringstream lines(text);
    std::string first;
    std::getline(lines, first);
    EXPECT_EQ(first,
              "{\"cycle\":1,\"time_us\":1000000,\"ports\":{\"raw\":{\"value\":100,\"quality\":\"Good\"},"
              "\"level\":{\"value\":12.5,\"quality\":\"Good\",\"timestamp_us\":1000000},\"on\":{\"value\":true},"
              "\"text\":{\"value\":\"a,b\"}}}");
}

TEST(Trace, JsonlWritesNonFiniteRealsAsStrings)
{
    std::ostringstream out;
    auto writer = MakeTraceWriter(TraceFormat::Jsonl, out);
    writer->Begin({{"x", ValueKind::Real, 64, false, false}});
    writer->Cycle(1, 0, {{"inf", "", 0}});
    EXPECT_EQ(out.str(), "{\"cycle\":1,\"time_us\":0,\"ports\":{\"x\":{\"value\":\"inf\"}}}\n");
}

TEST(Trace, VcdDeclaresVariablesAndWritesOnlyChanges)
{
    std::string text = WriteSample(TraceFormat::Vcd);
    EXPECT_NE(text.find("$timescale 1us $end"), std::string::npos);
    EXPECT_NE(text.find("$var integer 16 ! raw $end"), std::string::npos);
    EXPECT_NE(text.find("$var string 1 \" raw.quality $end"), std::string::npos);
    EXPECT_NE(text.find("$var real 64 # level $end"), std::string::npos);
    EXPECT_NE(text.find("$enddefinitions $end"), std::string::npos);
    std::size_t second = text.find("#10000\n");
    ASSERT_NE(second, std::string::npos);
    std::string changes = text.substr(second);
    EXPECT_NE(changes.find("b1000000000000001 !"), std::string::npos); // 32769
    EXPECT_NE(changes.find("sBad_Overrange \""), std::string::npos);
    EXPECT_EQ(changes.find("r12.5"), std::string::npos); // unchanged level is not repeated
    EXPECT_EQ(text.substr(text.find("#0\n"), 3), "#0\n");
}
