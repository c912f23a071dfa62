#include "PairCases.hpp"

namespace ConnectorTest {

std::vector<PairCase> ScalePairCases()
{
    std::vector<PairCase> cases;
    [&cases]<class... I>(TypeList<I...>) { (AddScaleRow<I>(cases, ScaleTypes{}), ...); }(ScaleTypes{});
    return cases;
}

} // namespace ConnectorTest
