// Quillix_rlins through the offline host: port table, count and density per element, defaults
// and threads.
#include <gtest/gtest.h>

#include <vector>

#include "tests/nodes/curve/curve_node_values.h"

namespace quillix::test {
namespace {

TEST(RlinsNode, RegistersItsPortTable) {
  ExpectPortTable(L"Quillix_rlins", 2,
                  {{1010, 16, 2, L"pntControlPoints", L"In Array of Control Points",
                    XSI::CValue(CVector3f(0, 0, 0))},
                   {1020, 4, 1, L"pntBasicNumOutputPoints", L"(Basic) Number of Output Points",
                    XSI::CValue(20.0)},
                   {1030, 4, 1, L"pntBasicLaplacianSmoothStrength",
                    L"(Basic) Laplacian Smooth Strength", XSI::CValue(0.7f)},
                   {1040, 2, 1, L"pntBasicLaplacianSmoothIterations",
                    L"(Basic) Laplacian Smooth Iterations", XSI::CValue(XSI::LONG(3))}},
                  {2010, 16, 2, L"basicResult", L"(Basic) Result", {}});
}

TEST(RlinsNode, ResamplesByCountOrDensityPerElement) {
  EvaluationRequest r;
  r.elements = 3;
  r.SetInput(1010,
             PointArrays({{{0, 0, 0}, {4, 0, 0}}, {{0, 0, 0}, {2, 0, 0}, {2, 1, 0}}, {{5, 5, 5}}}));
  r.SetInput(1020, PortValues::Singles<float>({5.0f, -2.0f, 5.0f}));
  r.SetInput(1030, PortValues::Singles<float>({0.0f}).AsConstant());
  const OutputResult out = Evaluate(L"Quillix_rlins", r, 2010);
  ExpectPoints(PointsOf(out, 0), {{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {3, 0, 0}, {4, 0, 0}});
  ExpectPoints(PointsOf(out, 1),
               {{0, 0, 0}, {0.5f, 0, 0}, {1, 0, 0}, {1.5f, 0, 0}, {2, 0, 0}, {2, 0.5f, 0}});
  EXPECT_TRUE(out.values.WasWritten(2));
  EXPECT_TRUE(PointsOf(out, 2).empty());
}

TEST(RlinsNode, DefaultsGiveTwentySmoothedPoints) {
  EvaluationRequest r;
  r.elements = 1;
  r.SetInput(1010, PointArrays({{{0, 0, 0}, {5, 5, 0}, {10, 0, 0}}}));
  const auto points = PointsOf(Evaluate(L"Quillix_rlins", r, 2010), 0);
  ASSERT_EQ(points.size(), 20u);
  ExpectPoints({points.front(), points.back()}, {{0, 0, 0}, {10, 0, 0}});
  EXPECT_LT(points[10].y, 5.0f);  // the corner is smoothed
}

TEST(RlinsNode, SeveralThreadsGiveTheSameResultsAsOne) {
  ExpectLinesAlikeOnFourThreads(L"Quillix_rlins", 17.0f);  // output points
}

}  // namespace
}  // namespace quillix::test
