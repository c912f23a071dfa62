#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "VarnixBase/Commons/Meta/DataAccessValue.hpp"
#include "Zon/System/Commons/InvalidOperationException.hpp"
#include "Zon/System/Commons/ParseException.hpp"

#include "../../Core/PortSystem/ConnectorTestSupport.hpp"

using namespace ConnectorTest;
using VarnixBase::Commons::Meta::DataAccessValue;
using VarnixBase::Example::StringPort_s;
using Zon::System::Commons::InvalidOperationException;
using Zon::System::Commons::ParseException;

namespace {

class DataAccessValueTest : public ConnectorFixture {};

template <class T>
class TypedDataAccessValue : public ConnectorFixture {};

using NumericTypes = ::testing::Types<bool, signed char, unsigned char, short, unsigned short, int, unsigned int, long,
                                      unsigned long, float, double>;
TYPED_TEST_SUITE(TypedDataAccessValue, NumericTypes);

template <class T>
T Sample()
{
    if constexpr (std::is_same_v<T, bool>) {
        return true;
    } else {
        return static_cast<T>(99);
    }
}

} // namespace

TYPED_TEST(TypedDataAccessValue, ResolvesTheVariableOfAPathToItsAddress)
{
    DataAccessValue<TypeParam> handle(InPath<TypeParam>());
    EXPECT_EQ(handle.GetDataPointer(), &Slot<TypeParam>(this->in));
}

TYPED_TEST(TypedDataAccessValue, GetReadsAndSetWritesTheVariableItself)
{
    DataAccessValue<TypeParam> handle(OutPath<TypeParam>());
    handle.Set(Sample<TypeParam>());
    EXPECT_EQ(Slot<TypeParam>(this->out), Sample<TypeParam>());
    Slot<TypeParam>(this->out) = TypeParam{};
    EXPECT_EQ(handle.Get(), TypeParam{});
}

TEST_F(DataAccessValueTest, AHandleOnAHeapCellSharesTheCell)
{
    auto cell = std::make_shared<double>(2.5);
    DataAccessValue<double> handle(cell);
    EXPECT_EQ(handle.GetDataPointer(), cell.get());
    EXPECT_EQ(cell.use_count(), 2);
    handle.Set(4.0);
    EXPECT_EQ(*cell, 4.0);
}

TEST_F(DataAccessValueTest, ACopyOfAPathHandleReachesTheSameVariable)
{
    DataAccessValue<int> handle(String("Conn/In.Int32"));
    DataAccessValue<int> copy = handle;
    copy.Set(17);
    EXPECT_EQ(in.i, 17);
    EXPECT_EQ(handle.Get(), 17);
}

TEST_F(DataAccessValueTest, TheVariableTypeIsNotComparedWithTheHandleType)
{
    // The path names a `double`; the handle reads its first bytes as an `int` all the same.
    DataAccessValue<int> handle(String("Conn/Settings.factor"));
    EXPECT_EQ(static_cast<void*>(handle.GetDataPointer()), static_cast<void*>(&settings.factor));
}

TEST_F(DataAccessValueTest, APathOfAComponentThatIsNotAvailableGivesANullAddressWithoutException)
{
    DataAccessValue<int> handle(String("Nowhere/In.Int32"));
    EXPECT_EQ(handle.GetDataPointer(), nullptr);
    EXPECT_EQ(Capture().Count(Level::Error, "Component is not available: Nowhere"), 1u);
}

TEST_F(DataAccessValueTest, APathWithoutComponentGivesANullAddressWithoutException)
{
    DataAccessValue<int> handle(String("In.Int32"));
    EXPECT_EQ(handle.GetDataPointer(), nullptr);
    EXPECT_EQ(Capture().Count(Level::Error, "Variable name does not contain component information: In.Int32"), 1u);
}

TEST_F(DataAccessValueTest, AMalformedPathFailsInTheConstructorWithTheWalksException)
{
    EXPECT_THROW(DataAccessValue<int>(String("Conn/In.Int32]")), ParseException);
    EXPECT_THROW(DataAccessValue<int>(String("Conn/In.Int32[]")), std::invalid_argument);
}

TEST_F(DataAccessValueTest, GetAndSetThroughANullAddressThrowInsteadOfTouchingMemory)
{
    DataAccessValue<int> empty;
    EXPECT_EQ(empty.GetDataPointer(), nullptr);
    EXPECT_THROW(empty.Get(), InvalidOperationException);
    EXPECT_THROW(empty.Set(1), InvalidOperationException);
    DataAccessValue<NarrowText> text(String("Nowhere/In.Text"));
    EXPECT_THROW(text.Get(), InvalidOperationException);
}

TEST_F(DataAccessValueTest, SetOfANarrowTextCopiesTheTextAndItsLength)
{
    in.text = Narrow80("hello");
    out.text = Narrow80("a much longer old text");
    DataAccessValue<NarrowText> source(String("Conn/In.Text"));
    DataAccessValue<NarrowText> destination(String("Conn/Out.Text"));
    destination.Set(source.Get());
    EXPECT_EQ(out.text.length, 5u);
    EXPECT_STREQ(out.text.data, "hello");
    for (std::size_t i = 5; i <= 80; ++i) {
        EXPECT_EQ(out.text.data[i], '\0') << i;
    }
    EXPECT_EQ(out.text.capacity, 80u);
}

TEST_F(DataAccessValueTest, SetOfANarrowTextKeepsToTheDestinationsOwnCapacity)
{
    in.text = Narrow80("abcdefgh");
    DataAccessValue<NarrowText> source(String("Conn/In.Text"));
    DataAccessValue<NarrowText> destination(String("Conn/Tiny"));
    destination.Set(source.Get());
    EXPECT_EQ(tiny.length, 4u);
    EXPECT_EQ(std::string(tiny.data, 4), "abcd");
    EXPECT_EQ(tiny.data[4], '\0');
}

TEST_F(DataAccessValueTest, SetOfAWideTextReadsTheSourceThroughItsEightBitView)
{
    // The units of u"AB" are the bytes 'A', 0, 'B', 0: the 8-bit view ends after "A".
    in.wide = Wide80(u"AB");
    out.wide = Wide80(u"old text");
    DataAccessValue<WideText> source(String("Conn/In.WText"));
    DataAccessValue<WideText> destination(String("Conn/Out.WText"));
    destination.Set(source.Get());
    EXPECT_EQ(out.wide.length, 1u);
    EXPECT_EQ(out.wide.data[0], u'A');
    for (std::size_t i = 1; i <= 80; ++i) {
        EXPECT_EQ(out.wide.data[i], u'\0') << i;
    }
}

TEST_F(DataAccessValueTest, SetOfANarrowTextWithoutTerminatorReadsNoFurtherThanTheSourceBuffer)
{
    // A source whose 81 bytes hold no zero byte: the text is taken up to the buffer's end.
    std::memset(in.text.data, 'x', sizeof(in.text.data));
    in.text.length = 80;
    DataAccessValue<NarrowText> source(String("Conn/In.Text"));
    DataAccessValue<NarrowText> destination(String("Conn/Out.Text"));
    destination.Set(source.Get());
    EXPECT_EQ(out.text.length, 80u);
    EXPECT_EQ(std::string(out.text.data, 80), std::string(80, 'x'));
    EXPECT_EQ(out.text.data[80], '\0');
}

TEST_F(DataAccessValueTest, SetOnAStringPortWhoseSourceTextIsLongerThanTheCapacityStoresExactlyTheCapacity)
{
    StringPort_s source{};
    source.text = Narrow80("abcdefghijklmnopqrstuvwxyz");
    source.code = 513;
    source.state = 7;
    port.text.capacity = 10;
    std::memset(port.text.data, 'z', sizeof(port.text.data));
    DataAccessValue<StringPort_s> destination(String("Conn/Port"));
    destination.Set(source);
    EXPECT_EQ(port.text.length, 10u);
    EXPECT_EQ(std::string(port.text.data, 10), "abcdefghij");
    for (std::size_t i = 10; i < sizeof(port.text.data); ++i) {
        EXPECT_EQ(port.text.data[i], '\0') << i;
    }
    EXPECT_EQ(port.code, 513u);
    EXPECT_EQ(port.state, 7u);
    EXPECT_EQ(port.text.capacity, 10u);
}

TEST_F(DataAccessValueTest, SetOnAStringPortClearsTheWholeBufferBehindAShorterText)
{
    port.text = Narrow80("a long text that was there before");
    StringPort_s source{};
    source.text = Narrow80("short");
    DataAccessValue<StringPort_s> destination(String("Conn/Port"));
    destination.Set(source);
    EXPECT_EQ(port.text.length, 5u);
    EXPECT_STREQ(port.text.data, "short");
    for (std::size_t i = 5; i < sizeof(port.text.data); ++i) {
        EXPECT_EQ(port.text.data[i], '\0') << i;
    }
}

TEST_F(DataAccessValueTest, SetOnAStringPortWithAnEmptyTextStoresLengthZeroAndCopiesTheFields)
{
    port.text = Narrow80("old");
    StringPort_s source{};
    source.code = 1;
    source.state = 2;
    DataAccessValue<StringPort_s> destination(String("Conn/Port"));
    destination.Set(source);
    EXPECT_EQ(port.text.length, 0u);
    EXPECT_EQ(port.text.data[0], '\0');
    EXPECT_EQ(port.code, 1u);
    EXPECT_EQ(port.state, 2u);
}

TEST_F(DataAccessValueTest, SetOnAStringPortWithAnUnterminatedSourceReadsNoFurtherThanItsBuffer)
{
    StringPort_s source{};
    std::memset(source.text.data, 'q', sizeof(source.text.data));
    DataAccessValue<StringPort_s> destination(String("Conn/Port"));
    destination.Set(source);
    EXPECT_EQ(port.text.length, 80u);
    EXPECT_EQ(std::string(port.text.data, 80), std::string(80, 'q'));
    EXPECT_EQ(port.text.data[80], '\0');
}
