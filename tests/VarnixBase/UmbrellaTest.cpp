// Both umbrella headers compile together in one translation unit.
#include <gtest/gtest.h>

#include "VarnixBase/VarnixBase.hpp"
#include "Zon/Zon.hpp"

TEST(Umbrella, BothLayersCompileTogether)
{
    EXPECT_EQ(VarnixBase::Core::Info::GetAppName(), "VarnixBase");
    EXPECT_EQ(Zon::CommonTypeName<Zon::AppDomain>(), "Zon.AppDomain");
}
