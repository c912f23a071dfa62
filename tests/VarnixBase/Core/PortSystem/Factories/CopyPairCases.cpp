#include "PairCases.hpp"

namespace ConnectorTest {

namespace {

void RunNarrowText(PublishedPortsFixture& ports)
{
    ports.Ports<NarrowText>().in->SetValue(Narrow80("tank full"));
    CreateAndExecute<NarrowText, NarrowText, CopyConnector<NarrowText, NarrowText>>(ports, "copy");
    auto value = ports.Ports<NarrowText>().out->GetValue();
    EXPECT_EQ(value.length, 9u);
    EXPECT_STREQ(value.data, "tank full");
}

void RunWideText(PublishedPortsFixture& ports)
{
    // Read through the 8-bit view, u"ok" is "o".
    ports.Ports<WideText>().in->SetValue(Wide80(u"ok"));
    CreateAndExecute<WideText, WideText, CopyConnector<WideText, WideText>>(ports, "copy");
    auto value = ports.Ports<WideText>().out->GetValue();
    EXPECT_EQ(value.length, 1u);
    EXPECT_EQ(value.data[0], u'o');
    EXPECT_EQ(value.data[1], u'\0');
}

} // namespace

std::vector<PairCase> CopyPairCases()
{
    std::vector<PairCase> cases;
    [&cases]<class... I>(TypeList<I...>) { (AddCopyRow<I>(cases, NumericTypes{}), ...); }(NumericTypes{});
    cases.push_back(MakeCase<NarrowText, NarrowText>("copy", &RunNarrowText));
    cases.push_back(MakeCase<WideText, WideText>("copy", &RunWideText));
    return cases;
}

} // namespace ConnectorTest
