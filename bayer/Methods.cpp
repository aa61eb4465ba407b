#include "Methods.h"

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

const Method* FindMethod(int method) {
  if (method < 0 || method >= static_cast<int>(std::size(kMethods))) return nullptr;
  return kMethods[method];
}

}  // namespace Korvex2::Bayer
