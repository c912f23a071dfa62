#include <gtest/gtest.h>

#include "Zon/Exception.hpp"
#include "Zon/System/Commons/ArgumentException.hpp"
#include "Zon/System/Commons/IndexOutOfRangeException.hpp"
#include "Zon/System/Commons/InvalidCastException.hpp"
#include "Zon/System/Commons/InvalidConfigException.hpp"
#include "Zon/System/Commons/InvalidOperationException.hpp"
#include "Zon/System/Commons/Io/NotExistException.hpp"
#include "Zon/System/Commons/NotImplementedException.hpp"
#include "Zon/System/Commons/ParseException.hpp"

using namespace Zon::System::Commons;

TEST(Exception, FormatsEmptyPlaceholders)
{
    ArgumentException error("Unable to bind parameter `{}` to `{}`.", Zon::String("gain"), Zon::String("App/Main.x"));
    EXPECT_STREQ(error.what(), "Unable to bind parameter `gain` to `App/Main.x`.");
    EXPECT_EQ(error.GetMessage(), "Unable to bind parameter `gain` to `App/Main.x`.");
}

TEST(Exception, FormatsNumberedPlaceholders)
{
    IndexOutOfRangeException error("Port {0}/{1} out of range", "Root", "[10");
    EXPECT_STREQ(error.what(), "Port Root/[10 out of range");
}

TEST(Exception, TakesATextWithoutArgumentsAsItStands)
{
    Zon::Exception error("braces {0} stay");
    EXPECT_STREQ(error.what(), "braces {0} stay");
}

TEST(Exception, KeepsAFormatThatDoesNotParse)
{
    InvalidConfigException error("unmatched { brace {0}", 5);
    EXPECT_STREQ(error.what(), "unmatched { brace {0}");
}

TEST(Exception, EveryPlatformExceptionIsAZonException)
{
    auto check = [](const Zon::Exception& error, const char* text) { EXPECT_STREQ(error.what(), text); };
    check(InvalidOperationException("a{}", 1), "a1");
    check(ParseException("b{0}", 2), "b2");
    check(InvalidCastException("c{}", 3), "c3");
    check(Io::NotExistException("File `{0}` not found.", "/x"), "File `/x` not found.");
    check(NotImplementedException(NotImplementedException::defaultMessage, "void F()"),
          "The operation 'void F()' is not implemented.");
}
