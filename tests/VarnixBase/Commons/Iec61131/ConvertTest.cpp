#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include <pthread.h>

#include <gtest/gtest.h>

#include "VarnixBase/Commons/Iec61131/Convert.hpp"
#include "Zon/System/Commons/ArgumentException.hpp"
#include "support/ResourceCounter.hpp"

using VarnixBase::Commons::Iec61131::Convert;
using Zon::System::Commons::ArgumentException;

namespace {

/// The value of `text` as a literal of `T`, or nothing when `TryParse` refuses it. A refused text
/// must also leave the target as it was, which is checked on every call.
template <class T>
std::optional<T> Parse(const std::string& text)
{
    T sentinel{};
    if constexpr (std::is_same_v<T, bool>) {
        sentinel = true;
    } else {
        sentinel = static_cast<T>(77);
    }
    T result = sentinel;
    if (Convert::TryParse(Zon::String(text), result)) {
        return result;
    }
    EXPECT_EQ(result, sentinel) << "a refused text changed the target: \"" << text << "\"";
    return std::nullopt;
}

std::optional<unsigned long> U(const std::string& text) { return Parse<unsigned long>(text); }
std::optional<long> S(const std::string& text) { return Parse<long>(text); }
std::optional<bool> B(const std::string& text) { return Parse<bool>(text); }
std::optional<double> D(const std::string& text) { return Parse<double>(text); }

constexpr unsigned long maxUnsigned = std::numeric_limits<unsigned long>::max();
constexpr long maxSigned = std::numeric_limits<long>::max();
constexpr long minSigned = std::numeric_limits<long>::min();
constexpr double maxDouble = std::numeric_limits<double>::max();

template <class F>
std::string MessageOf(F call)
{
    try {
        call();
    } catch (const ArgumentException& e) {
        return e.GetMessage().ToStdString();
    }
    ADD_FAILURE() << "no ArgumentException";
    return {};
}

} // namespace

// --- behaviour the conversion is defined by ----------------------------------------------------

TEST(Iec61131Convert, WhiteSpaceAroundANumberIsIgnored)
{
    EXPECT_EQ(U("  42  "), 42ul);
    EXPECT_EQ(S("  42  "), 42l);
}

TEST(Iec61131Convert, EmptyTextAndTextOfBlanksAreRefused)
{
    EXPECT_EQ(U(""), std::nullopt);
    EXPECT_EQ(U("   "), std::nullopt);
    EXPECT_EQ(S(""), std::nullopt);
    EXPECT_EQ(S("   "), std::nullopt);
    EXPECT_EQ(B(""), std::nullopt);
    EXPECT_EQ(B("   "), std::nullopt);
    EXPECT_EQ(D(""), std::nullopt);
    EXPECT_EQ(D("   "), std::nullopt);
}

TEST(Iec61131Convert, UnsignedPrefixesInAnyCaseGiveTheNumber)
{
    EXPECT_EQ(U("uint#42"), 42ul);
    EXPECT_EQ(U("UDINT#42"), 42ul);
    EXPECT_EQ(U("ULint#42"), 42ul);
}

TEST(Iec61131Convert, APrefixOfTheOtherFamilyIsRefused)
{
    EXPECT_EQ(U("int#42"), std::nullopt);
    EXPECT_EQ(S("uint#42"), std::nullopt);
}

TEST(Iec61131Convert, ThePrefixDoesNotNarrowTheRange)
{
    EXPECT_EQ(U("usint#300"), 300ul);
    EXPECT_EQ(S("sint#-1000"), -1000l);
}

TEST(Iec61131Convert, BasedNumbersInAnyCase)
{
    EXPECT_EQ(U("16#ff"), 255ul);
    EXPECT_EQ(U("16#FF"), 255ul);
    EXPECT_EQ(U("UINT#16#Ff"), 255ul);
    EXPECT_EQ(U("2#1010"), 10ul);
    EXPECT_EQ(U("8#17"), 15ul);
    EXPECT_EQ(U("2#1111_0000"), 240ul);
    EXPECT_EQ(S("16#ff"), 255l);
    EXPECT_EQ(S("INT#16#Ff"), 255l);
    EXPECT_EQ(S("2#1010"), 10l);
    EXPECT_EQ(S("8#17"), 15l);
    EXPECT_EQ(S("2#1111_0000"), 240l);
}

TEST(Iec61131Convert, ALeadingZeroIsStillDecimal)
{
    EXPECT_EQ(U("010"), 10ul);
    EXPECT_EQ(S("010"), 10l);
}

TEST(Iec61131Convert, CStyleHexadecimalIsRefused)
{
    EXPECT_EQ(U("0x10"), std::nullopt);
    EXPECT_EQ(S("0x10"), std::nullopt);
}

TEST(Iec61131Convert, SignsAreRefusedForUnsignedAndToUintThrows)
{
    EXPECT_EQ(U("-5"), std::nullopt);
    EXPECT_EQ(U("+5"), std::nullopt);
    EXPECT_THROW(Convert::ToUint("-5"), ArgumentException);
    EXPECT_THROW(Convert::ToUint("+5"), ArgumentException);
}

TEST(Iec61131Convert, SignsAreTakenForSigned)
{
    EXPECT_EQ(S("-5"), -5l);
    EXPECT_EQ(S("+5"), 5l);
    EXPECT_EQ(Convert::ToInt("-5"), -5l);
}

TEST(Iec61131Convert, ASignWithABaseIsRefusedInBothIntegerTypes)
{
    EXPECT_EQ(U("16#-1"), std::nullopt);
    EXPECT_EQ(U("-16#1"), std::nullopt);
    EXPECT_EQ(S("16#-1"), std::nullopt);
    EXPECT_EQ(S("-16#1"), std::nullopt);
}

TEST(Iec61131Convert, UnsignedDecimalOverflowGivesTheLargestValue)
{
    EXPECT_EQ(U("18446744073709551616"), maxUnsigned);
    EXPECT_EQ(U("18446744073709551615"), maxUnsigned);
    EXPECT_EQ(U("99999999999999999999999999"), maxUnsigned);
}

TEST(Iec61131Convert, SignedDecimalOverflowGivesTheLargestOrSmallestValue)
{
    EXPECT_EQ(S("9223372036854775808"), maxSigned);
    EXPECT_EQ(S("-9223372036854775809"), minSigned);
    EXPECT_EQ(S("9223372036854775807"), maxSigned);
    EXPECT_EQ(S("-9223372036854775808"), minSigned);
}

TEST(Iec61131Convert, HexadecimalOverflowSaturatesWhileBinaryWraps)
{
    EXPECT_EQ(S("16#FFFFFFFFFFFFFFFF"), maxSigned);
    EXPECT_EQ(S("2#" + std::string(64, '1')), -1l);
    EXPECT_EQ(U("2#" + std::string(65, '1')), maxUnsigned);
}

TEST(Iec61131Convert, GoodFloatingPointLiterals)
{
    EXPECT_EQ(D("1.5"), 1.5);
    EXPECT_EQ(D("-1.5"), -1.5);
    EXPECT_EQ(D("real#1.5"), 1.5);
    EXPECT_EQ(D("LREAL#1.5e3"), 1500.0);
    EXPECT_EQ(D("1_0.2_5E-1_0"), 10.25e-10);
}

TEST(Iec61131Convert, RefusedFloatingPointLiterals)
{
    for (const char* text : {"1", "1.", ".5", "1e5", "1.5e", "float#1.5"}) {
        EXPECT_EQ(D(text), std::nullopt) << text;
    }
}

TEST(Iec61131Convert, FloatingPointOverflowGivesTheLargestFiniteValue)
{
    EXPECT_EQ(D("1.0e999"), maxDouble);
    EXPECT_EQ(D("-1.0e999"), -maxDouble);
}

TEST(Iec61131Convert, TrueLiterals)
{
    for (const char* text : {"true", "TRUE", "bool#True", "1", "BOOL#1"}) {
        EXPECT_EQ(B(text), true) << text;
    }
}

TEST(Iec61131Convert, FalseLiterals)
{
    for (const char* text : {"false", "0", "bool#FALSE"}) {
        EXPECT_EQ(B(text), false) << text;
    }
}

TEST(Iec61131Convert, RefusedBooleanLiterals)
{
    for (const char* text : {"2", "t", "yes", "bool#"}) {
        EXPECT_EQ(B(text), std::nullopt) << text;
    }
}

TEST(Iec61131Convert, ARefusedTextLeavesTheTargetAsItWas)
{
    unsigned long u = 1234;
    EXPECT_FALSE(Convert::TryParse("abc", u));
    EXPECT_EQ(u, 1234ul);
    long s = -1234;
    EXPECT_FALSE(Convert::TryParse("16#-1", s));
    EXPECT_EQ(s, -1234l);
    bool b = true;
    EXPECT_FALSE(Convert::TryParse("no", b));
    EXPECT_TRUE(b);
    b = false;
    EXPECT_FALSE(Convert::TryParse("yes", b));
    EXPECT_FALSE(b);
    double d = 3.25;
    EXPECT_FALSE(Convert::TryParse("1e5", d));
    EXPECT_EQ(d, 3.25);
}

// --- each alternative of each expression ------------------------------------------------------

TEST(Iec61131ConvertUnsigned, EveryPrefixOfTheFamily)
{
    EXPECT_EQ(U("usint#7"), 7ul);
    EXPECT_EQ(U("uint#7"), 7ul);
    EXPECT_EQ(U("udint#7"), 7ul);
    EXPECT_EQ(U("ulint#7"), 7ul);
    EXPECT_EQ(U("7"), 7ul);
    for (const char* text : {"sint#7", "dint#7", "lint#7", "uxint#7", "u#7", "uint#", "#7", "uint #7", "uint# 7", "uint#uint#7"}) {
        EXPECT_EQ(U(text), std::nullopt) << text;
    }
}

TEST(Iec61131ConvertUnsigned, EveryBaseWithEveryPrefix)
{
    for (const char* prefix : {"", "usint#", "UInt#", "uDiNt#", "ULINT#"}) {
        std::string p = prefix;
        EXPECT_EQ(U(p + "1_000"), 1000ul) << p;
        EXPECT_EQ(U(p + "2#1_01"), 5ul) << p;
        EXPECT_EQ(U(p + "8#7_7"), 63ul) << p;
        EXPECT_EQ(U(p + "16#A_b"), 171ul) << p;
    }
}

TEST(Iec61131ConvertSigned, EveryPrefixOfTheFamily)
{
    EXPECT_EQ(S("sint#-7"), -7l);
    EXPECT_EQ(S("int#-7"), -7l);
    EXPECT_EQ(S("dint#-7"), -7l);
    EXPECT_EQ(S("lint#-7"), -7l);
    EXPECT_EQ(S("-7"), -7l);
    for (const char* text : {"usint#7", "udint#7", "ulint#7", "xint#7", "#7", "int#", "int#+", "int#-", "-", "+"}) {
        EXPECT_EQ(S(text), std::nullopt) << text;
    }
}

TEST(Iec61131ConvertSigned, EveryBaseWithEveryPrefix)
{
    for (const char* prefix : {"", "SInt#", "int#", "DINT#", "lInT#"}) {
        std::string p = prefix;
        EXPECT_EQ(S(p + "-1_000"), -1000l) << p;
        EXPECT_EQ(S(p + "+1_000"), 1000l) << p;
        EXPECT_EQ(S(p + "2#1_01"), 5l) << p;
        EXPECT_EQ(S(p + "8#7_7"), 63l) << p;
        EXPECT_EQ(S(p + "16#A_b"), 171l) << p;
    }
}

TEST(Iec61131ConvertSigned, SixtyFourthBinaryDigitLandsInTheSignBit)
{
    EXPECT_EQ(S("2#1" + std::string(63, '0')), minSigned);
    EXPECT_EQ(S("2#01" + std::string(63, '0')), minSigned);
    // A 65th digit shifts the oldest bit out.
    EXPECT_EQ(S("2#1" + std::string(63, '0') + "1"), 1l);
}

TEST(Iec61131ConvertUnsigned, BinaryWrapsBeyondSixtyFourDigits)
{
    EXPECT_EQ(U("2#1" + std::string(64, '0')), 0ul);
    EXPECT_EQ(U("2#1" + std::string(64, '0') + "1"), 1ul);
    EXPECT_EQ(U("2#" + std::string(64, '1')), maxUnsigned);
}

TEST(Iec61131ConvertUnsigned, OctalAndHexadecimalOverflowSaturate)
{
    EXPECT_EQ(U("8#" + std::string(23, '7')), maxUnsigned);
    EXPECT_EQ(U("16#1" + std::string(16, '0')), maxUnsigned);
    EXPECT_EQ(S("8#" + std::string(22, '7')), maxSigned);
    EXPECT_EQ(S("16#8" + std::string(15, '0')), maxSigned);
}

TEST(Iec61131ConvertBoolean, EveryAlternativeWithAndWithoutPrefix)
{
    EXPECT_EQ(B("0"), false);
    EXPECT_EQ(B("1"), true);
    EXPECT_EQ(B("false"), false);
    EXPECT_EQ(B("true"), true);
    EXPECT_EQ(B("bool#0"), false);
    EXPECT_EQ(B("bool#1"), true);
    EXPECT_EQ(B("bool#false"), false);
    EXPECT_EQ(B("bool#true"), true);
    EXPECT_EQ(B("BoOl#TrUe"), true);
    EXPECT_EQ(B("bOOL#fAlSe"), false);
    for (const char* text : {"01", "truefalse", "true#", "bool#bool#1", "bool #1", "f", "on", "-1", "1.0"}) {
        EXPECT_EQ(B(text), std::nullopt) << text;
    }
}

TEST(Iec61131ConvertFloat, EveryPrefixAndExponentForm)
{
    for (const char* prefix : {"", "real#", "REAL#", "lreal#", "LReAl#"}) {
        std::string p = prefix;
        EXPECT_EQ(D(p + "2.5"), 2.5) << p;
        EXPECT_EQ(D(p + "+2.5"), 2.5) << p;
        EXPECT_EQ(D(p + "-2.5"), -2.5) << p;
        EXPECT_EQ(D(p + "2.5e2"), 250.0) << p;
        EXPECT_EQ(D(p + "2.5E+2"), 250.0) << p;
        EXPECT_EQ(D(p + "2.5e-2"), 0.025) << p;
    }
    for (const char* text : {"real#", "lreal#.5", "llreal#1.5", "real#16#1.0", "1.5e+", "1.5e-", "1.5f", "--1.5", "1.5.5",
                             "inf", "nan", "1,5"}) {
        EXPECT_EQ(D(text), std::nullopt) << text;
    }
}

TEST(Iec61131ConvertFloat, NumbersAroundTheExactProductAreCorrectlyRounded)
{
    // A number of up to 19 significant digits whose integer fits 53 bits and whose power of ten
    // lies within 22 either way is computed by one multiplication or division; every other number
    // goes through the general conversion. Both must give what the C library reads, bit for bit,
    // on either side of each bound: 53 bits, 19 digits, powers 22 and 23, zeros beyond the 19th
    // digit, leading zeros, and separators.
    std::vector<std::string> numbers = {
        "9007199254740992.0",     "9007199254740993.0",    "9007199254740991.0",     "900719925474099.3",
        "9007199254740993.0e-22", "9007199254740992.0e22", "9007199254740992.0e-22", "1.0e22",
        "1.0e23",                 "1.0e-22",               "1.0e-23",                "3.0e22",
        "1234567890123456789.0",  "12345678901234567890.0", "1.2345678901234567890000000", "1.0000000000000000000001",
        "1.0000000000000000000000", "10000000000000000000000.0", "0.000000000000000000000001", "0.1",
        "0.2",                    "0.3",                   "123.456e-7",             "8.98846567431158e307",
        "4.35e-3", "3.0e23", "7.0e23", "9.0e-23", "1_2.3_4e1_0",           "0.000_000_1",            "7.0e-0",
    };
    for (const auto& number : numbers) {
        std::string plain;
        for (char unit : number) {
            if (unit != '_') {
                plain += unit;
            }
        }
        const double expected = std::strtod(plain.c_str(), nullptr);
        for (const char* sign : {"", "-", "+"}) {
            const double signedExpected = *sign == '-' ? -expected : expected;
            std::optional<double> value = D(sign + number);
            ASSERT_TRUE(value.has_value()) << sign << number;
            EXPECT_EQ(std::memcmp(&*value, &signedExpected, sizeof(double)), 0)
                << sign << number << ": " << *value << " against " << signedExpected;
        }
    }
}

// --- the digit separator -----------------------------------------------------------------------

TEST(Iec61131ConvertSeparator, DecimalTakesSingleSeparatorsBetweenDigitsOnly)
{
    EXPECT_EQ(U("1_000"), 1000ul);
    EXPECT_EQ(U("1_0_0_0"), 1000ul);
    EXPECT_EQ(S("-1_000"), -1000l);
    for (const char* text : {"1__0", "_1", "1_", "-_1", "_"}) {
        EXPECT_EQ(U(text), std::nullopt) << text;
        EXPECT_EQ(S(text), std::nullopt) << text;
    }
}

TEST(Iec61131ConvertSeparator, BasedFormsTakeOneSeparatorBeforeEachDigit)
{
    EXPECT_EQ(U("2#_1010"), 10ul);
    EXPECT_EQ(U("2#1_0_1_0"), 10ul);
    EXPECT_EQ(U("2#1010"), 10ul);
    EXPECT_EQ(U("8#_1_7"), 15ul);
    EXPECT_EQ(U("8#17"), 15ul);
    EXPECT_EQ(U("16#_f"), 15ul);
    EXPECT_EQ(U("16#F_f"), 255ul);
    EXPECT_EQ(S("2#_1010"), 10l);
    EXPECT_EQ(S("8#_1_7"), 15l);
    EXPECT_EQ(S("16#_f"), 15l);
    for (const char* text : {"2#1010_", "2#__1", "2#1__0", "8#7_", "8#__7", "16#f_", "16#_", "2#", "16#f__f"}) {
        EXPECT_EQ(U(text), std::nullopt) << text;
        EXPECT_EQ(S(text), std::nullopt) << text;
    }
}

TEST(Iec61131ConvertSeparator, DigitsOutsideTheBaseAreRefused)
{
    for (const char* text : {"2#2", "2#1012", "8#8", "8#19", "16#g", "16#fg", "1a", "a1"}) {
        EXPECT_EQ(U(text), std::nullopt) << text;
        EXPECT_EQ(S(text), std::nullopt) << text;
    }
}

TEST(Iec61131ConvertSeparator, FloatSeparatorRules)
{
    EXPECT_EQ(D("1_0.5"), 10.5);
    EXPECT_EQ(D("1.2_5"), 1.25);
    EXPECT_EQ(D("1.25e1_0"), 1.25e10);
    EXPECT_EQ(D("1.2_5_0"), 1.25);
    // The first digit of the fraction comes straight after the point.
    for (const char* text : {"1._5", "1.5_", "_1.5", "1_.5", "1__0.5", "1.5e_1", "1.5e1_", "1.5_e1", "1.2__5"}) {
        EXPECT_EQ(D(text), std::nullopt) << text;
    }
}

// --- case and white space ----------------------------------------------------------------------

TEST(Iec61131ConvertCase, PrefixesAndDigitsInMixedCase)
{
    EXPECT_EQ(U("uSiNt#16#aBcD"), 0xABCDul);
    EXPECT_EQ(U("UlInT#2#1"), 1ul);
    EXPECT_EQ(S("lInT#-12"), -12l);
    EXPECT_EQ(S("DiNt#16#DeAd"), 0xDEADl);
    EXPECT_EQ(D("ReAl#1.5E1"), 15.0);
    EXPECT_EQ(D("lReAL#1.5e1"), 15.0);
    EXPECT_EQ(B("bOoL#tRuE"), true);
}

TEST(Iec61131ConvertWhiteSpace, AnyWhiteSpaceOnBothSidesForEveryType)
{
    const std::string space = " \t\r\n\v\f";
    EXPECT_EQ(U(space + "uint#16#1f" + space), 31ul);
    EXPECT_EQ(S(space + "-42" + space), -42l);
    EXPECT_EQ(B(space + "TRUE" + space), true);
    EXPECT_EQ(D(space + "lreal#-0.5" + space), -0.5);
    EXPECT_EQ(U("\t7"), 7ul);
    EXPECT_EQ(U("7\n"), 7ul);
}

TEST(Iec61131ConvertWhiteSpace, WhiteSpaceInsideALiteralIsRefused)
{
    for (const char* text : {"1 000", "uint# 1", "uint #1", "16# f", "2#1 0"}) {
        EXPECT_EQ(U(text), std::nullopt) << text;
    }
    EXPECT_EQ(S("- 5"), std::nullopt);
    EXPECT_EQ(B("bool# true"), std::nullopt);
    EXPECT_EQ(D("1. 5"), std::nullopt);
    EXPECT_EQ(D("1.5 e3"), std::nullopt);
}

TEST(Iec61131ConvertWhiteSpace, ATextEndsAtItsFirstNul)
{
    EXPECT_EQ(U(std::string("42\0garbage", 10)), 42ul);
    EXPECT_EQ(B(std::string("true\0false", 10)), true);
    EXPECT_EQ(D(std::string("\0" "1.5", 4)), std::nullopt);
}

// --- the To... operations ------------------------------------------------------------------------

TEST(Iec61131ConvertTo, GiveTheValueOfAGoodLiteral)
{
    EXPECT_EQ(Convert::ToUint("udint#16#FF"), 255ul);
    EXPECT_EQ(Convert::ToInt("dint#-16"), -16l);
    EXPECT_TRUE(Convert::ToBoolean("bool#true"));
    EXPECT_FALSE(Convert::ToBoolean("0"));
    EXPECT_EQ(Convert::ToFloat("lreal#-2.5e1"), -25.0);
    EXPECT_EQ(Convert::ToUint("18446744073709551616"), maxUnsigned);
}

TEST(Iec61131ConvertTo, ThrowWithTheirTextForARefusedLiteral)
{
    EXPECT_EQ(MessageOf([] { Convert::ToUint("-5"); }), "Value `-5` is not an IEC61131 compliant unsigned integer");
    EXPECT_EQ(MessageOf([] { Convert::ToInt("uint#1"); }), "Value `uint#1` is not an IEC61131 compliant signed integer");
    EXPECT_EQ(MessageOf([] { Convert::ToBoolean("yes"); }), "Value `yes` is not an IEC61131 compliant boolean");
    EXPECT_EQ(MessageOf([] { Convert::ToFloat("1e5"); }), "Value `1e5` is not an IEC61131 compliant floating point");
}

TEST(Iec61131ConvertTo, TheTextCarriesTheValueAsItStands)
{
    EXPECT_EQ(MessageOf([] { Convert::ToUint("  {0} x "); }), "Value `  {0} x ` is not an IEC61131 compliant unsigned integer");
    EXPECT_EQ(MessageOf([] { Convert::ToFloat(""); }), "Value `` is not an IEC61131 compliant floating point");
}

// --- long texts ------------------------------------------------------------------------------------

TEST(Iec61131ConvertLength, LiteralsOfAnyLengthAreRead)
{
    // Far beyond what a recursive matcher could take: the conversion reads any length.
    for (std::size_t length : {1024u, 1025u, 4096u, 100000u}) {
        std::string zeros(length - 1, '0');
        EXPECT_EQ(U(zeros + "1"), 1ul) << length;
        EXPECT_EQ(S("-" + zeros + "7"), -7l) << length;
        EXPECT_EQ(U("16#" + zeros + "Ff"), 255ul) << length;
        EXPECT_EQ(S("8#" + zeros + "17"), 15l) << length;
        EXPECT_EQ(D("0.5" + zeros), 0.5) << length;
        EXPECT_EQ(D("\t " + zeros + "2.5" + zeros + "e" + zeros + "1 \n"), 25.0) << length;
        EXPECT_EQ(D("lreal#" + zeros + "0.0" + zeros + "1e" + std::to_string(length + 1)), 1.0) << length;
    }
}

TEST(Iec61131ConvertLength, LongLiteralsOverflowAsShortOnesDo)
{
    std::string many(5000, '9');
    EXPECT_EQ(U(many), maxUnsigned);
    EXPECT_EQ(S(many), maxSigned);
    EXPECT_EQ(S("-" + many), minSigned);
    EXPECT_EQ(U("16#" + std::string(5000, 'f')), maxUnsigned);
    EXPECT_EQ(S("8#" + std::string(5000, '7')), maxSigned);
    EXPECT_EQ(D(many + ".5"), maxDouble);
    EXPECT_EQ(D("-" + many + ".5"), -maxDouble);
    EXPECT_EQ(D("0." + std::string(5000, '0') + "1"), 0.0);
    EXPECT_TRUE(std::signbit(*D("-0." + std::string(5000, '0') + "1")));
}

TEST(Iec61131ConvertLength, LongBinaryLiteralsKeepTheirLastSixtyFourDigits)
{
    // 10,000 digits: the value is that of the last 64, with the separators left out.
    std::string digits;
    for (std::size_t index = 0; index < 10000; ++index) {
        digits += index % 3 == 0 ? '1' : '0';
        if (index % 7 == 6) {
            digits += '_';
        }
    }
    digits += "1";
    unsigned long expected = 0;
    for (char unit : digits) {
        if (unit != '_') {
            expected = (expected << 1) | (unit == '1' ? 1ul : 0ul);
        }
    }
    EXPECT_EQ(U("2#" + digits), expected);
    EXPECT_EQ(S("2#" + digits), static_cast<long>(expected));
}

TEST(Iec61131ConvertLength, LongSeparatedRealsGiveTheValueOfTheirDigits)
{
    // The value of a long number with separators is that of the same number without them.
    std::string plain;
    std::string separated;
    for (std::size_t index = 0; index < 3000; ++index) {
        char digit = static_cast<char>('0' + (index * 7) % 10);
        plain += digit;
        separated += digit;
        if (index % 5 == 4 && index + 1 < 3000) {
            separated += '_';
        }
    }
    EXPECT_EQ(D("1." + separated + "e-2_0"), std::strtod(("1." + plain + "e-20").c_str(), nullptr));
    EXPECT_EQ(D("-" + separated + ".2_5e-3_000"), std::strtod(("-" + plain + ".25e-3000").c_str(), nullptr));
}

TEST(Iec61131ConvertLength, LongTextsThatAreNoLiteralAreRefused)
{
    EXPECT_EQ(S(std::string(200000, '1') + "x"), std::nullopt);
    EXPECT_EQ(U("2#" + std::string(200000, '1') + "2"), std::nullopt);
    EXPECT_EQ(D(std::string(200000, '1') + ".5e"), std::nullopt);
    EXPECT_EQ(D(std::string(200000, '1')), std::nullopt);
    EXPECT_EQ(B(std::string(200000, 't')), std::nullopt);
    EXPECT_EQ(U(std::string(100000, '1') + "__1"), std::nullopt);
    EXPECT_THROW(Convert::ToUint("-" + std::string(5000, '1')), ArgumentException);
}

TEST(Iec61131ConvertLength, WhiteSpaceAroundDoesNotCountTowardsTheLength)
{
    std::string pad(100000, ' ');
    EXPECT_EQ(U(pad + "42" + pad), 42ul);
    EXPECT_EQ(B(pad + "true" + std::string(100000, '\t')), true);
}

TEST(Iec61131ConvertLength, AMegabyteLiteralNeedsLittleStack)
{
    // The matcher does not recurse: a literal of a million digits converts on a thread with 256 KiB
    // of stack (room for the sanitizers' larger frames, and still far less than a recursive engine
    // takes per thousand characters).
    struct Job {
        std::string text;
        unsigned long value = 0;
        bool accepted = false;
    } job{"uint#" + std::string(1000000, '0') + "9", 0, false};
    pthread_attr_t attributes;
    ASSERT_EQ(pthread_attr_init(&attributes), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, 256 * 1024), 0);
    pthread_t thread;
    auto run = [](void* argument) -> void* {
        auto* work = static_cast<Job*>(argument);
        Zon::String value(work->text);
        work->accepted = Convert::TryParse(value, work->value);
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &attributes, run, &job), 0);
    ASSERT_EQ(pthread_join(thread, nullptr), 0);
    pthread_attr_destroy(&attributes);
    EXPECT_TRUE(job.accepted);
    EXPECT_EQ(job.value, 9ul);
}

TEST(Iec61131ConvertLength, ConversionAllocatesNothing)
{
    // Only a floating-point number with separators longer than the buffer on the stack is copied
    // to the heap; none of these is.
    const std::vector<Zon::String> texts = {Zon::String("  udint#16#FF "), Zon::String("-1_234"), Zon::String("bool#TRUE"),
                                            Zon::String("lreal#-1.5e3"), Zon::String(std::string(3000, '7')),
                                            Zon::String("1_0.2_5e1_0"), Zon::String("2#" + std::string(3000, '1')),
                                            Zon::String(std::string(3000, '3') + ".5e-10")};
    VarnixTest::ResourceCounter counter;
    for (const auto& text : texts) {
        unsigned long u = 0;
        long s = 0;
        bool b = false;
        double d = 0;
        static_cast<void>(Convert::TryParse(text, u));
        static_cast<void>(Convert::TryParse(text, s));
        static_cast<void>(Convert::TryParse(text, b));
        static_cast<void>(Convert::TryParse(text, d));
    }
    EXPECT_EQ(counter.Allocations(), 0u);
}
