// Ports that publish an array: an element path ("App/Main.values[1]") names exactly that element
// of the port's memory, for every base type, and an element past the array's end is refused.
#include <array>
#include <memory>
#include <string>
#include <tuple>

#include <gtest/gtest.h>

#include "VarnixBase/Core/PortSystem/Factories/ConnectorFactory.hpp"
#include "VarnixBase/Core/QualitySystem/QualityTypeDescription.hpp"
#include "Zon/Host/PortPublisher.hpp"
#include "Zon/Plc/Commons/Meta/DynamicPortsBuilder.hpp"
#include "Zon/System/Commons/IndexOutOfRangeException.hpp"

#include "ConnectorTestSupport.hpp"

using namespace ConnectorTest;
using VarnixBase::Core::PortSystem::ConnectorFactory;
using Zon::Plc::Commons::Meta::DynamicPortsBuilder;
using Zon::Plc::Commons::Meta::StandardAttribute;

namespace {

constexpr std::size_t Length = 3;

/// Three values of `T` that differ from each other and from a value-initialised `T`.
template <class T>
std::array<T, Length> DistinctValues()
{
    if constexpr (std::is_same_v<T, bool>) {
        return {true, false, true};
    } else {
        return {T(11), T(22), T(33)};
    }
}

/// The array memory of one port of each base type, with a guard behind each array that an
/// element read past the end would see.
template <class T>
struct ArrayPort {
    T values[Length] = {};
    T guard = T(77);
};

class ArrayPortTest : public ConnectorFixture {
protected:
    void SetUp() override
    {
        ConnectorFixture::SetUp();
        VarnixBase::Core::QualitySystem::DescribeQualityTypes(appLibrary);
        DynamicPortsBuilder builder;
        std::apply([&builder](auto&... port) { (Add(port, builder), ...); }, ports);
        appComponent = &publisher.Publish(String("App/Main"), builder);
        Provider().Add(*appComponent);
        Capture().Clear();
    }

    void TearDown() override
    {
        if (appComponent != nullptr) {
            Provider().Remove(*appComponent);
        }
        ConnectorFixture::TearDown();
    }

    template <class T>
    ArrayPort<T>& Port()
    {
        return std::get<ArrayPort<T>>(ports);
    }

    /// "App/Main.values_<member of T>[index]".
    template <class T>
    static String ElementPath(std::size_t index)
    {
        return String("App/Main.values_") + MemberName<T>() + "[" + std::to_string(index).c_str() + "]";
    }

    /// Copies element `index` of the array port of `T` into `Conn/Out` and checks that exactly
    /// that element arrived.
    template <class T>
    void ExpectEveryElementCopied()
    {
        SCOPED_TRACE(MemberName<T>());
        ArrayPort<T>& port = Port<T>();
        const auto values = DistinctValues<T>();
        for (std::size_t i = 0; i < Length; ++i) {
            port.values[i] = values[i];
        }
        for (std::size_t i = 0; i < Length; ++i) {
            SCOPED_TRACE(i);
            auto connector = ConnectorFactory::GetInstance().Create(String("copy"), String("c"), ElementPath<T>(i),
                                                                    OutPath<T>());
            ASSERT_NE(connector, nullptr);
            Slot<T>(out) = values[(i + 1) % Length];
            connector->Execute();
            EXPECT_EQ(Slot<T>(out), values[i]);
        }
    }

    /// The message of the refusal of the element just past the end of the array port of `T`.
    template <class T>
    static std::string PastTheEndFailure()
    {
        try {
            ConnectorFactory::GetInstance().Create(String("copy"), String("c"), ElementPath<T>(Length), OutPath<T>());
        } catch (const Zon::System::Commons::IndexOutOfRangeException& error) {
            return error.GetMessage().ToStdString();
        }
        return "no refusal";
    }

    template <class T>
    static void Add(ArrayPort<T>& port, DynamicPortsBuilder& builder)
    {
        builder.AddPort(String("values_") + MemberName<T>(), port.values, StandardAttribute::None);
    }

    Zon::Host::TypeLibrary appLibrary{"App", "App"};
    Zon::Host::PortPublisher publisher{appLibrary};
    Zon::Host::Component* appComponent = nullptr;
    std::tuple<ArrayPort<bool>, ArrayPort<signed char>, ArrayPort<unsigned char>, ArrayPort<short>,
               ArrayPort<unsigned short>, ArrayPort<int>, ArrayPort<unsigned int>, ArrayPort<long>,
               ArrayPort<unsigned long>, ArrayPort<float>, ArrayPort<double>>
        ports;
};

TEST_F(ArrayPortTest, ConnectorsFromEachElementReadExactlyThatElementForEveryBaseType)
{
    ExpectEveryElementCopied<bool>();
    ExpectEveryElementCopied<signed char>();
    ExpectEveryElementCopied<unsigned char>();
    ExpectEveryElementCopied<short>();
    ExpectEveryElementCopied<unsigned short>();
    ExpectEveryElementCopied<int>();
    ExpectEveryElementCopied<unsigned int>();
    ExpectEveryElementCopied<long>();
    ExpectEveryElementCopied<unsigned long>();
    ExpectEveryElementCopied<float>();
    ExpectEveryElementCopied<double>();
}

TEST_F(ArrayPortTest, ElementResolvesToItsAddressWithTheElementsTypeAndSize)
{
    auto& browser = Provider().GetDataBrowser();
    for (std::size_t i = 0; i < Length; ++i) {
        auto info = browser.GetDataInfo(ElementPath<int>(i));
        EXPECT_EQ(info.address, &Port<int>().values[i]);
        EXPECT_EQ(info.typeIdentifier.GetName(), "int");
    }
    auto member = appLibrary.GetChildInfo(Zon::Plc::Commons::Meta::TypeIdentifier("App", "App.Main"), "values_Float64");
    EXPECT_EQ(member.GetEffectiveSize(), sizeof(double));
    ASSERT_EQ(member.arrayDimensions.size(), 1u);
    EXPECT_EQ(member.arrayDimensions[0].elementCount, Length);
    EXPECT_EQ(member.typeIdentifier.GetName(), "double");
}

TEST_F(ArrayPortTest, ElementPastTheEndIsRefusedForEveryBaseType)
{
    // The refusal names the root and the start of the remainder, as every out-of-range element.
    EXPECT_EQ(PastTheEndFailure<bool>(), "Port Main/va out of range");
    EXPECT_EQ(PastTheEndFailure<signed char>(), "Port Main/va out of range");
    EXPECT_EQ(PastTheEndFailure<unsigned char>(), "Port Main/va out of range");
    EXPECT_EQ(PastTheEndFailure<short>(), "Port Main/va out of range");
    EXPECT_EQ(PastTheEndFailure<unsigned short>(), "Port Main/va out of range");
    EXPECT_EQ(PastTheEndFailure<int>(), "Port Main/va out of range");
    EXPECT_EQ(PastTheEndFailure<unsigned int>(), "Port Main/va out of range");
    EXPECT_EQ(PastTheEndFailure<long>(), "Port Main/va out of range");
    EXPECT_EQ(PastTheEndFailure<unsigned long>(), "Port Main/va out of range");
    EXPECT_EQ(PastTheEndFailure<float>(), "Port Main/va out of range");
    EXPECT_EQ(PastTheEndFailure<double>(), "Port Main/va out of range");
}

TEST_F(ArrayPortTest, TwoDimensionalPortIsAddressedRowByRow)
{
    // Published beside the others under its own instance.
    int grid[2][3] = {{1, 2, 3}, {4, 5, 6}};
    Zon::Host::TypeLibrary gridLibrary{"Grid", "Grid"};
    Zon::Host::PortPublisher gridPublisher{gridLibrary};
    DynamicPortsBuilder builder;
    builder.AddPort(String("grid"), grid, StandardAttribute::None);
    auto& component = gridPublisher.Publish(String("Grid/Main"), builder);
    Provider().Add(component);
    auto& browser = Provider().GetDataBrowser();
    EXPECT_EQ(browser.GetDataInfo(String("Grid/Main.grid[1][2]")).address, &grid[1][2]);
    EXPECT_EQ(browser.GetDataInfo(String("Grid/Main.grid[0][2]")).address, &grid[0][2]);
    EXPECT_EQ(browser.GetDataInfo(String("Grid/Main.grid[1]")).address, &grid[1][0]);
    EXPECT_THROW(browser.GetDataInfo(String("Grid/Main.grid[1][3]")), Zon::System::Commons::IndexOutOfRangeException);
    Provider().Remove(component);
}

} // namespace
