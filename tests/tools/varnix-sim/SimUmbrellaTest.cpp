// The simulation engine's umbrella header compiles on its own and with the library's.
#include "VarnixBase/Sim/Sim.hpp"
#include "VarnixBase/VarnixBase.hpp"

#include <gtest/gtest.h>

TEST(SimUmbrellaTest, NamesTheEngineAndTheLibraryTogether)
{
    VarnixBase::Sim::SimulationOptions options;
    EXPECT_EQ(options.instance, "App/Main");
    EXPECT_TRUE(VarnixBase::Sim::ParseStimulus("cycle,a\n1,2\n", "s").size() == 1);
}
