// Quillix_dsals through the offline host: port table, packing, intervals and batch-wide
// emptiness.
#include <gtest/gtest.h>

#include <vector>

#include "tests/nodes/curve/curve_node_values.h"

namespace quillix::test {
namespace {

TEST(DsalsNode, RegistersTheSharedPortsWithItsInterpolationFlags) {
  std::vector<PortRow> inputs = LeadingSpherePorts();
  inputs.push_back({1100, 2, 1, L"interpolate", L"Interpolate", XSI::CValue(XSI::LONG(3))});
  inputs.push_back(kMaxSpheresPort);
  ExpectPortTable(L"Quillix_dsals", 2, inputs, kSpheresPort);
}

TEST(DsalsNode, PacksUnitSpheresAlongAStraightSpline) {
  ExpectUnitSpheresAlongAStraightSpline(L"Quillix_dsals");
}

TEST(DsalsNode, IntervalsAndBatchWideEmptiness) {
  Points eight;
  for (int i = 0; i < 8; ++i) eight.push_back({float(i), 0, 0});
  EvaluationRequest r = SphereRequest(1, {eight});
  r.SetInput(1025, PortValues::ArraysOf<XSI::LONG>({{2, 5}}));
  r.SetInput(1030, PortValues::ArraysOf<float>({{0.5f}}));
  const auto spheres = SpheresOf(Evaluate(L"Quillix_dsals", r, 2010), 0);
  ASSERT_EQ(spheres.size(), 4u);  // two per interval: points 0-2 and 3-5
  EXPECT_FLOAT_EQ(spheres[0][12], 0.5f);
  EXPECT_FLOAT_EQ(spheres[2][12], 3.5f);
  EXPECT_FLOAT_EQ(spheres[3][12], 4.5f);

  // No up vector anywhere in the batch: nothing for anyone.
  r.SetInput(1020, PointArrays({{}}));
  const OutputResult empty = Evaluate(L"Quillix_dsals", r, 2010);
  EXPECT_TRUE(empty.values.WasWritten(0));
  EXPECT_TRUE(SpheresOf(empty, 0).empty());
}

}  // namespace
}  // namespace quillix::test
