// The literal conversion against the regular expressions that define it (LiteralOracle.hpp): every
// edge case of the conversion, every byte as white space or inside a literal, and at least a
// million generated texts must give the same acceptance and the same value, bit for bit, in all
// four target types. Texts too long for the oracle's recursive engine are checked against values
// computed here by other means.

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "VarnixBase/Commons/Iec61131/Convert.hpp"
#include "VarnixBase/Commons/Iec61131/LiteralOracle.hpp"

using VarnixBase::Commons::Iec61131::Convert;
using namespace std::string_view_literals;

namespace {

/// How many generated texts the differential test compares. Optimised builds do a million; the
/// debug and sanitized builds, whose regular-expression engine is many times slower, do a tenth.
/// `VARNIX_LITERAL_TEXTS` in the environment sets another number.
std::size_t GeneratedTexts()
{
#if defined(NDEBUG) && !defined(__SANITIZE_ADDRESS__)
    std::size_t count = 1000000;
#else
    std::size_t count = 100000;
#endif
    if (const char* configured = std::getenv("VARNIX_LITERAL_TEXTS")) {
        count = std::strtoul(configured, nullptr, 10);
    }
    return count;
}

/// The text with every byte outside printable ASCII as \xNN, for failure messages.
std::string Printable(std::string_view text)
{
    std::string out;
    for (char unit : text) {
        auto byte = static_cast<unsigned char>(unit);
        if (byte >= 0x20 && byte < 0x7f && byte != '\\') {
            out += unit;
        } else {
            static constexpr char hex[] = "0123456789abcdef";
            out += "\\x";
            out += hex[byte >> 4];
            out += hex[byte & 15];
        }
    }
    return out;
}

template <class T>
constexpr const char* TypeName()
{
    if constexpr (std::is_same_v<T, unsigned long>) {
        return "unsigned long";
    } else if constexpr (std::is_same_v<T, long>) {
        return "long";
    } else if constexpr (std::is_same_v<T, bool>) {
        return "bool";
    } else {
        return "double";
    }
}

template <class T>
std::string ValueText(T value)
{
    if constexpr (std::is_same_v<T, double>) {
        std::array<char, 40> buffer{};
        std::snprintf(buffer.data(), buffer.size(), "%.17g", value);
        return buffer.data();
    } else {
        return std::to_string(value);
    }
}

/// Compares the conversion with the oracle for one text and one type: the same answer, and the
/// same bits in the result (both start from the same value, which a refusal must leave).
template <class T>
bool Agrees(const std::string& text, std::string& why)
{
    T sentinel{};
    if constexpr (std::is_same_v<T, bool>) {
        sentinel = text.size() % 2 == 0;
    } else {
        sentinel = static_cast<T>(77);
    }
    T fast = sentinel;
    T oracle = sentinel;
    bool fastAccepted = Convert::TryParse(Zon::String(text), fast);
    bool oracleAccepted = VarnixTest::LiteralOracle::TryParse(text.c_str(), oracle);
    if (fastAccepted == oracleAccepted && std::memcmp(&fast, &oracle, sizeof(T)) == 0) {
        return true;
    }
    why = std::string(TypeName<T>()) + " \"" + Printable(text) + "\": conversion " +
          (fastAccepted ? "accepts with " + ValueText(fast) : "refuses") + ", oracle " +
          (oracleAccepted ? "accepts with " + ValueText(oracle) : "refuses");
    return false;
}

/// Compares all four types for each text; returns the disagreements (at most `limit` of them).
class Differences {
public:
    void Check(const std::string& text)
    {
        Record<unsigned long>(text);
        Record<long>(text);
        Record<bool>(text);
        Record<double>(text);
    }

    std::size_t Count() const { return count; }

    std::string Report() const
    {
        std::string out;
        for (const auto& line : shown) {
            out += line + "\n";
        }
        return out;
    }

private:
    template <class T>
    void Record(const std::string& text)
    {
        std::string why;
        if (!Agrees<T>(text, why)) {
            ++count;
            if (shown.size() < 20) {
                shown.push_back(why);
            }
        }
    }

    std::size_t count = 0;
    std::vector<std::string> shown;
};

// --- every edge case and a neighbourhood of each ---------------------------------------------

const std::vector<std::string>& EdgeCases()
{
    static const std::vector<std::string> texts = {
        "  42  ", "", "   ", "42", "uint#42", "UDINT#42", "ULint#42", "int#42", "usint#300", "sint#-1000",
        "16#ff", "16#FF", "UINT#16#Ff", "2#1010", "8#17", "2#1111_0000", "010", "0x10", "-5", "+5", "16#-1",
        "-16#1", "18446744073709551616", "18446744073709551615", "9223372036854775808", "9223372036854775807",
        "-9223372036854775809", "-9223372036854775808", "-9223372036854775807", "16#FFFFFFFFFFFFFFFF",
        "16#7FFFFFFFFFFFFFFF", "16#8000000000000000", "16#10000000000000000", "8#1777777777777777777777",
        "8#2000000000000000000000", "8#777777777777777777777", "8#1000000000000000000000",
        "2#" + std::string(64, '1'), "2#" + std::string(65, '1'), "2#1" + std::string(63, '0'),
        "2#1" + std::string(64, '0') + "1", "1.5", "-1.5", "real#1.5", "LREAL#1.5e3", "1_0.2_5E-1_0", "1", "1.",
        ".5", "1e5", "1.5e", "float#1.5", "1.0e999", "-1.0e999", "1.0e308", "1.7976931348623157e308",
        "1.7976931348623158e308", "1.7976931348623159e308", "-1.7976931348623159e308", "2.2250738585072014e-308",
        "2.2250738585072011e-308", "4.9406564584124654e-324", "2.4703282292062327e-324",
        "2.4703282292062328e-324", "2.4703282292062329e-324", "-2.4703282292062329e-324", "1.0e-324", "1.0e-400",
        "-1.0e-400", "0.0e99999", "-0.0", "0.0", "1.0e-99999999999999999999", "1.0e99999999999999999999",
        "0.0000000000000000000000000000001e-300", "100000000000000000000000000000000000.0e280", "true", "TRUE",
        "bool#True", "1", "BOOL#1", "false", "0", "bool#FALSE", "2", "t", "yes", "bool#", "abc", "no",
        std::string("42\0garbage", 10), std::string("true\0false", 10), std::string("\0" "1.5", 4),
        std::string("1.5\0", 4), " \t\r\n\v\f16#1f \t\r\n\v\f", "1__0", "_1", "1_", "-_1", "_", "2#_1010",
        "16#_f", "2#1010_", "2#__1", "2#1__0", "16#f__f", "16#_", "2#", "8#", "16#", "1._5", "1.5_", "_1.5",
        "1_.5", "1.5e_1", "1.5e1_", "1.5_e1", "1.2__5", "1.2_5_0", "uint#uint#7", "bool#bool#1", "llreal#1.5",
        "real#16#1.0", "1.5e+", "1.5e-", "--1.5", "1.5.5", "inf", "nan", "1,5", "INF", "1.5E+0_1", "int#+",
        "int#-", "-", "+", "uint #1", "uint# 1", "1 000", "- 5", "bool# true", "1. 5", "1.5 e3", "0.5", "01",
        "truefalse", "true#", "1.0", "-1", "u#7", "#7", "xint#7", "10#5", "16#0x1", "0b1", "1e", "e5", "1.e5",
        "+1.5e+5", "-0.0e-0", "LiNt#16#dEaD", "uSiNt#16#aBcD",
    };
    return texts;
}

TEST(LiteralOracle, EveryEdgeCaseAgrees)
{
    Differences differences;
    for (const auto& text : EdgeCases()) {
        differences.Check(text);
        // The same text with white space around it, with a prefix of each family, and cut short
        // by one character at either end.
        differences.Check(" \t" + text + "\n ");
        for (const char* prefix : {"uint#", "int#", "real#", "bool#", "LREAL#", "ULINT#"}) {
            differences.Check(prefix + text);
        }
        if (!text.empty()) {
            differences.Check(text.substr(1));
            differences.Check(text.substr(0, text.size() - 1));
        }
    }
    EXPECT_EQ(differences.Count(), 0u) << differences.Report();
}

TEST(LiteralOracle, EveryByteAsWhiteSpaceAndInsideALiteralAgrees)
{
    Differences differences;
    for (int byte = 0; byte < 256; ++byte) {
        const std::string unit(1, static_cast<char>(byte));
        for (const char* literal : {"7", "1.5", "true", "uint#16#ff", "int#-3", "bool#1", "real#2.5e1"}) {
            const std::string text = literal;
            differences.Check(unit + text);
            differences.Check(text + unit);
            differences.Check(unit + text + unit);
            differences.Check(unit + unit + text + unit + unit);
            for (std::size_t at = 1; at < text.size(); ++at) {
                differences.Check(text.substr(0, at) + unit + text.substr(at));
                std::string replaced = text;
                replaced[at] = unit[0];
                differences.Check(replaced);
            }
        }
    }
    EXPECT_EQ(differences.Count(), 0u) << differences.Report();
}

// --- generated texts ---------------------------------------------------------------------------

/// A small, fast generator with a fixed seed, so that every run compares the same texts.
class Random {
public:
    explicit Random(std::uint64_t seed) : state(seed) {}

    std::uint64_t Next()
    {
        std::uint64_t z = (state += 0x9e3779b97f4a7c15ull);
        z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ull;
        z = (z ^ (z >> 27)) * 0x94d049bb133111ebull;
        return z ^ (z >> 31);
    }

    /// A number in [0, bound).
    std::size_t Below(std::size_t bound) { return static_cast<std::size_t>(Next() % bound); }

    /// True with the given chance in percent.
    bool Chance(unsigned percent) { return Below(100) < percent; }

    template <class Container>
    const auto& Pick(const Container& items)
    {
        return items[Below(std::size(items))];
    }

private:
    std::uint64_t state;
};

/// Writes texts that are literals or nearly so: white space, prefixes, bases, signs, digit runs
/// with separators, fractions, exponents, letters in random case, NULs, and random edits.
class TextGenerator {
public:
    explicit TextGenerator(std::uint64_t seed) : random(seed) {}

    std::string Next()
    {
        std::string text;
        Blanks(text);
        if (random.Chance(40)) {
            Prefix(text);
        }
        switch (random.Below(10)) {
        case 0:
        case 1:
            Decimal(text, true);
            break;
        case 2:
        case 3:
            Based(text);
            break;
        case 4:
        case 5:
        case 6:
            Float(text);
            break;
        case 7:
            text += Cased(random.Pick(booleanWords));
            break;
        case 8:
            text += random.Pick(specialNumbers);
            break;
        default:
            for (std::size_t count = random.Below(12); count > 0; --count) {
                text += random.Pick(alphabet);
            }
            break;
        }
        Blanks(text);
        if (random.Chance(20)) {
            for (std::size_t edits = 1 + random.Below(2); edits > 0; --edits) {
                Edit(text);
            }
        }
        return text;
    }

private:
    static constexpr std::string_view alphabet = "0123456789abcdefABCDEF_#.+-eExXuUiInNtT \t\n\r\v\f\0"sv;
    static constexpr std::array<std::string_view, 21> prefixes = {
        "usint", "uint", "udint", "ulint", "sint", "int", "dint", "lint", "real", "lreal", "bool",
        "u",     "xint", "llreal", "float", "boo", "",    "uuint", "bint", "ureal", "int#int"};
    static constexpr std::array<std::string_view, 12> booleanWords = {
        "0", "1", "true", "false", "t", "f", "yes", "truefalse", "01", "tru", "falsee", "2"};
    static constexpr std::array<std::string_view, 24> specialNumbers = {
        "18446744073709551615", "18446744073709551616", "9223372036854775807", "9223372036854775808",
        "-9223372036854775808", "-9223372036854775809", "+9223372036854775807", "16#FFFFFFFFFFFFFFFF",
        "16#7fffffffffffffff", "16#8000000000000000", "8#1777777777777777777777", "8#777777777777777777777",
        "8#1000000000000000000000", "1.7976931348623157e308", "1.7976931348623159e308",
        "2.4703282292062328e-324", "2.4703282292062329e-324", "4.9406564584124654e-324",
        "2.2250738585072011e-308", "-1.0e-400", "1.0e999", "0.0e-999", "-0.0", "99999999999999999999"};
    static constexpr std::string_view blanks = " \t\n\v\f\r";
    static constexpr std::string_view oddBytes = "\x1c\x1d\x1e\x1f\x85\xa0\x08\x0e\x7f\xff";

    std::string Cased(std::string_view word)
    {
        std::string out(word);
        for (char& unit : out) {
            if (random.Chance(30) && unit >= 'a' && unit <= 'z') {
                unit = static_cast<char>(unit - 'a' + 'A');
            }
        }
        return out;
    }

    void Blanks(std::string& text)
    {
        if (random.Chance(30)) {
            for (std::size_t count = 1 + random.Below(3); count > 0; --count) {
                text += random.Chance(95) ? random.Pick(blanks) : random.Pick(oddBytes);
            }
        }
    }

    void Prefix(std::string& text)
    {
        text += Cased(random.Pick(prefixes));
        if (random.Chance(95)) {
            text += '#';
        }
    }

    std::size_t RunLength()
    {
        switch (random.Below(20)) {
        case 0:
            return 15 + random.Below(12);
        case 1:
            return 60 + random.Below(8);
        case 2:
            return 100 + random.Below(250);
        case 3:
            return 0;
        default:
            return 1 + random.Below(8);
        }
    }

    /// A run of digits from `digits`, with `_` between them now and then, and seldom a `_` at an
    /// end or a doubled one.
    void Run(std::string& text, std::string_view digits)
    {
        std::size_t length = RunLength();
        unsigned separators = random.Chance(30) ? 25 : 0;
        if (random.Chance(3)) {
            text += '_';
        }
        bool zeros = random.Chance(10);
        for (std::size_t index = 0; index < length; ++index) {
            if (index > 0 && random.Chance(separators)) {
                text += random.Chance(97) ? "_" : "__";
            }
            text += zeros && index + 3 < length ? '0' : random.Pick(digits);
        }
        if (random.Chance(3)) {
            text += '_';
        }
    }

    void Sign(std::string& text, unsigned percent)
    {
        if (random.Chance(percent)) {
            text += random.Chance(50) ? '-' : '+';
        }
    }

    void Decimal(std::string& text, bool signable)
    {
        if (signable) {
            Sign(text, 30);
        }
        Run(text, random.Chance(95) ? "0123456789" : "0123456789aF");
    }

    void Based(std::string& text)
    {
        static constexpr std::array<std::string_view, 9> marks = {"2#", "8#", "16#", "2#", "8#", "16#", "10#", "#", "16"};
        static constexpr std::array<std::string_view, 4> digitSets = {"01", "01234567", "0123456789abcdefABCDEF", "0123456789abcdefgABCDEFG"};
        std::string_view mark = random.Pick(marks);
        Sign(text, 5);
        text += mark;
        Sign(text, 5);
        std::string_view digits = mark == "2#" ? digitSets[0] : mark == "8#" ? digitSets[1] : digitSets[2];
        if (random.Chance(10)) {
            digits = random.Pick(digitSets);
        }
        Run(text, digits);
    }

    void Float(std::string& text)
    {
        Decimal(text, true);
        if (random.Chance(95)) {
            text += random.Chance(98) ? '.' : ',';
        }
        Run(text, "0123456789");
        if (random.Chance(50)) {
            text += random.Chance(50) ? 'e' : 'E';
            Sign(text, 50);
            switch (random.Below(6)) {
            case 0:
                text += std::to_string(295 + random.Below(40));
                break;
            case 1:
                text += std::to_string(random.Below(100000));
                break;
            default:
                Run(text, "0123456789");
                break;
            }
        }
    }

    void Edit(std::string& text)
    {
        std::size_t at = random.Below(text.size() + 1);
        switch (random.Below(3)) {
        case 0:
            text.insert(text.begin() + static_cast<std::ptrdiff_t>(at), random.Pick(alphabet));
            break;
        case 1:
            if (at < text.size()) {
                text.erase(at, 1);
            }
            break;
        default:
            if (at < text.size()) {
                text[at] = random.Pick(alphabet);
            }
            break;
        }
    }

    Random random;
};

TEST(LiteralOracle, GeneratedTextsAgree)
{
    const std::size_t count = GeneratedTexts();
    TextGenerator generator(0x5eed1ab5);
    Differences differences;
    std::size_t accepted = 0;
    for (std::size_t index = 0; index < count; ++index) {
        std::string text = generator.Next();
        differences.Check(text);
        unsigned long u = 0;
        long s = 0;
        bool b = false;
        double d = 0;
        Zon::String value(text);
        accepted += (Convert::TryParse(value, u) || Convert::TryParse(value, s) || Convert::TryParse(value, b) ||
                     Convert::TryParse(value, d))
                        ? 1
                        : 0;
    }
    EXPECT_EQ(differences.Count(), 0u) << differences.Report();
    // The generator is worth its name only if it writes good and bad literals alike.
    EXPECT_GT(accepted, count / 5);
    EXPECT_LT(accepted, count - count / 5);
    std::printf("compared %zu generated texts in four types; %zu of them are a literal of some type\n", count, accepted);
}

} // namespace
