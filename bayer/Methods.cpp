#include "Methods.h"

#include <cstddef>
#include <iterator>

#include "DirectionalFilter.h"
#include "EdgeSensing.h"
#include "HqLinear.h"
#include "NearestNeighbor.h"
#include "Rigorous.h"
#include "WeightedDirectional.h"

namespace Korvex2::Bayer {
namespace {

// In the order of BayerMethod.
constexpr const Method* kMethods[] = {
    &kNearestNeighbor,      // nearest neighbour
    &kEdgeSensing,          // edge sensing
    &kHqLinear,             // HQ linear
    &kDirectionalFilter,    // directional filter
    &kWeightedDirectional,  // weighted directional filter
    &kRigorous,             // rigorous
};

}  // namespace

const Method* findMethod(int method) {
  const auto index = static_cast<std::size_t>(method);
  return index < std::size(kMethods) ? kMethods[index] : nullptr;
}

}  // namespace Korvex2::Bayer
