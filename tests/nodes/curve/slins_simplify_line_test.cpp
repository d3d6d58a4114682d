// Quillix_slins through the offline host: port table, per-element inputs, constants, batches,
// unknown ports and threads.
#include <gtest/gtest.h>

#include <vector>

#include "tests/nodes/curve/curve_node_values.h"
#include "tests/nodes/utility/node_values.h"

namespace quillix::test {
namespace {

TEST(SlinsNode, RegistersItsPortTable) {
  ExpectPortTable(
      L"Quillix_slins", 2,
      {{1010, 16, 2, L"controlPoints", L"In Array of Control Points",
        XSI::CValue(CVector3f(0, 0, 0))},
       {1020, 4, 1, L"epsilon", L"Epsilon", XSI::CValue(1.0)},
       {1030, 1, 1, L"closed", L"Treat Spline as closed", XSI::CValue(false)},
       {1040, 1, 1, L"minThree", L"Result must have at least three Points", XSI::CValue(false)}},
      {2010, 16, 2, L"result", L"Result", {}});
}

TEST(SlinsNode, EachElementUsesItsOwnLineToleranceAndFlags) {
  EvaluationRequest r;
  r.elements = 4;
  r.SetInput(1010, PointArrays({{{0, 0, 0}, {1, 0.1f, 0}, {2, 0, 0}, {3, 0, 0}},
                                {{0, 0, 0}, {1, 0.1f, 0}, {2, 0, 0}, {3, 0, 0}},
                                {},
                                {{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 0.5f, 0}}}));
  r.SetInput(1020, PortValues::Singles<float>({1.0f, 0.01f, 1.0f, 0.5f}));
  r.SetInput(1030, boolSingles({false, false, false, true}));
  r.SetInput(1040, boolSingles({true, false, true, false}));
  const OutputResult out = Evaluate(L"Quillix_slins", r, 2010);
  ExpectPoints(PointsOf(out, 0), {{0, 0, 0}, {1.5f, 0, 0}, {3, 0, 0}});
  ExpectPoints(PointsOf(out, 1), {{0, 0, 0}, {1, 0.1f, 0}, {2, 0, 0}, {3, 0, 0}});
  ExpectPoints(PointsOf(out, 2), {{0, 0, 0}, {0, 0, 0}, {0, 0, 0}});
  ExpectPoints(PointsOf(out, 3), {{0, 0.25f, 0}, {4, 0, 0}, {4, 4, 0}});
}

TEST(SlinsNode, ConstantInputsBatchesAndUnknownPorts) {
  const Points line{{0, 0, 0}, {1, 0.2f, 0}, {2, 0, 0}, {3, 2, 0}};
  EvaluationRequest r;
  r.elements = 3;
  r.SetInput(1010, PointArrays({line}).AsConstant());
  r.SetInput(1020, PortValues::Singles<float>({0.5f}).AsConstant());
  r.batch = std::vector<ULONG>{0, 2};
  OutputResult out = Evaluate(L"Quillix_slins", r, 2010);
  EXPECT_TRUE(out.values.WasWritten(0));
  EXPECT_FALSE(out.values.WasWritten(1));
  ExpectPoints(PointsOf(out, 2), {{0, 0, 0}, {2, 0, 0}, {3, 2, 0}});
  out = Evaluate(L"Quillix_slins", r, 2020);
  EXPECT_EQ(out.status, 0u);
  EXPECT_FALSE(out.values.WasWritten(0));
}

TEST(SlinsNode, SeveralThreadsGiveTheSameResultsAsOne) {
  ExpectLinesAlikeOnFourThreads(L"Quillix_slins", 0.6f);  // tolerance
}

}  // namespace
}  // namespace quillix::test
