#include <memory>

#include <gtest/gtest.h>

#include "Zon/Plc/Commons/Esm/ProgramBase.hpp"

using Zon::Plc::Commons::Esm::ProgramBase;

namespace {

class CountingProgram : public ProgramBase {
public:
    CountingProgram(const Zon::String& name, int& destroyed) : ProgramBase(name), destroyed(destroyed) {}
    ~CountingProgram() override { ++destroyed; }
    void Execute() override { ++cycles; }
    int cycles = 0;
    int& destroyed;
};

} // namespace

TEST(ProgramBase, KeepsTheNameItWasGiven)
{
    int destroyed = 0;
    CountingProgram program("App/Main", destroyed);
    EXPECT_EQ(program.GetName(), Zon::String("App/Main"));
}

TEST(ProgramBase, ExecuteThroughTheBaseRunsTheDerivedProgram)
{
    int destroyed = 0;
    CountingProgram program("App/Main", destroyed);
    ProgramBase& base = program;
    base.Execute();
    base.Execute();
    EXPECT_EQ(program.cycles, 2);
}

TEST(ProgramBase, DeletingThroughTheBaseRunsTheDerivedDestructor)
{
    int destroyed = 0;
    std::unique_ptr<ProgramBase> program = std::make_unique<CountingProgram>("App/Main", destroyed);
    program.reset();
    EXPECT_EQ(destroyed, 1);
}
