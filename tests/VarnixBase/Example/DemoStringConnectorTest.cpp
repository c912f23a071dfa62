#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "VarnixBase/Example/DemoStringConnector.hpp"

#include "../Core/PortSystem/ConnectorTestSupport.hpp"

using namespace ConnectorTest;
using VarnixBase::Core::PortSystem::IConnector;
using VarnixBase::Example::DemoStringConnector;

namespace {

struct EventCounter {
    void OnChanged(IConnector&) { ++count; }
    int count = 0;
};

class DemoStringConnectorTest : public ConnectorFixture {};

} // namespace

TEST_F(DemoStringConnectorTest, CopiesTheTextOfAStringPortWithItsLength)
{
    port.text = Narrow80("level high");
    DemoStringConnector connector("demo", String("Conn/Port"), String("Conn/Out.Text"));
    EventCounter counter;
    connector.changed += Zon::make_delegate(&counter, &EventCounter::OnChanged);
    connector.Execute();
    EXPECT_EQ(out.text.length, 10u);
    EXPECT_EQ(std::string(out.text.data, out.text.length), "level high");
    EXPECT_EQ(counter.count, 1);
}

TEST_F(DemoStringConnectorTest, AShorterTextOfAtLeastEightCharactersLeavesTheTailOfTheOldTextBehindTheLength)
{
    out.text = Narrow80("the old and longer text");
    port.text = Narrow80("new text!");
    DemoStringConnector connector("demo", String("Conn/Port"), String("Conn/Out.Text"));
    connector.Execute();
    EXPECT_EQ(out.text.length, 9u);
    EXPECT_EQ(std::string(out.text.data, 9), "new text!");
    // No zero byte follows the new text: the rest of the old one is still there.
    EXPECT_STREQ(out.text.data, "new text!nd longer text");
}

TEST_F(DemoStringConnectorTest, OnlyTheFirstEightBytesAreCleared)
{
    out.text = Narrow80("0123456789ABCDEF");
    port.text = Narrow80("abc");
    DemoStringConnector connector("demo", String("Conn/Port"), String("Conn/Out.Text"));
    connector.Execute();
    EXPECT_EQ(out.text.length, 3u);
    EXPECT_EQ(std::string(out.text.data, 16), std::string("abc\0\0\0\0\0" "89ABCDEF", 16));
}

TEST_F(DemoStringConnectorTest, AnEmptyTextSetsLengthZeroAndClearsEightBytes)
{
    out.text = Narrow80("0123456789");
    port.text = Narrow80("");
    DemoStringConnector connector("demo", String("Conn/Port"), String("Conn/Out.Text"));
    connector.Execute();
    EXPECT_EQ(out.text.length, 0u);
    EXPECT_EQ(std::string(out.text.data, 10), std::string("\0\0\0\0\0\0\0\0" "89", 10));
}

TEST_F(DemoStringConnectorTest, TheLengthIsTheSmallerOfTheDestinationsCapacityAndTheText)
{
    port.text = Narrow80("abcdefgh");
    DemoStringConnector connector("demo", String("Conn/Port"), String("Conn/Tiny"));
    connector.Execute();
    EXPECT_EQ(tiny.length, 4u);
    EXPECT_EQ(std::string(tiny.data, 4), "abcd");
}

TEST_F(DemoStringConnectorTest, ADestinationBufferShorterThanEightBytesIsClearedUpToItsEndOnly)
{
    // "Conn/Tiny" holds 5 bytes; the guard bytes behind it stay untouched.
    ASSERT_EQ(reinterpret_cast<unsigned char*>(&tiny) + sizeof(tiny), guard);
    tiny = Narrow4("wxyz");
    port.text = Narrow80("");
    DemoStringConnector connector("demo", String("Conn/Port"), String("Conn/Tiny"));
    connector.Execute();
    EXPECT_EQ(tiny.length, 0u);
    EXPECT_EQ(std::string(tiny.data, 5), std::string(5, '\0'));
    for (unsigned char byte : guard) {
        EXPECT_EQ(byte, 0xA5);
    }
}

TEST_F(DemoStringConnectorTest, AnUnterminatedSourceIsReadNoFurtherThanItsBuffer)
{
    std::memset(port.text.data, 'k', sizeof(port.text.data));
    DemoStringConnector connector("demo", String("Conn/Port"), String("Conn/Out.Text"));
    connector.Execute();
    EXPECT_EQ(out.text.length, 80u);
    EXPECT_EQ(std::string(out.text.data, 80), std::string(80, 'k'));
}
