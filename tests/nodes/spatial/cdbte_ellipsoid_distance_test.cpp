// Quillix_cdbte through the offline host: the four structure paths, constants, defaults,
// the mode warning, batches and threads.
#include <gtest/gtest.h>

#include <vector>

#include "tests/nodes/spatial/matrix_pair_fixtures.h"

namespace quillix::test {
namespace {

constexpr const wchar_t* kNode = L"Quillix_cdbte";

CMatrix4f Scaled(float s, Vec3f at) {
  return Host(quillix::testing::ScaleTranslate({s, s, s}, at));
}

TEST(CdbteNode, EllipsoidGapOverEveryStructureCombination) {
  const CMatrix4f unit = Scaled(1, {0, 0, 0});
  // Single × single, B constant: gaps 3 (5 apart) and 0 (radius 2 and 1 at 2.5).
  auto out = Evaluate(
      kNode,
      PairRequest(PortValues::Singles(Matrices{Scaled(1, {5, 0, 0}), Scaled(2, {2.5f, 0, 0})}),
                  PortValues::Singles(Matrices{unit}).AsConstant(), 2),
      kResultPort);
  EXPECT_EQ(Singles<float>(out), (std::vector<float>{3.0f, 0.0f}));
  // Array × array (5 and 3 entries) gives 3 values; array × single one per entry.
  const Matrices five{Scaled(1, {5, 0, 0}), Scaled(1, {0, 6, 0}), unit, unit, unit};
  out = Evaluate(kNode,
                 PairRequest(PortValues::ArraysOf(std::vector<Matrices>{five}),
                             PortValues::ArraysOf(std::vector<Matrices>{{unit, unit, unit}}), 1),
                 kResultPort);
  EXPECT_EQ(out.values.ArrayAt<float>(0), (std::vector<float>{3.0f, 4.0f, 0.0f}));
  out = Evaluate(
      kNode,
      PairRequest(PortValues::Singles(Matrices{Scaled(3, {0, 0, 0})}),
                  PortValues::ArraysOf(std::vector<Matrices>{{Scaled(1, {10, 0, 0}), unit}}), 1),
      kResultPort);
  EXPECT_EQ(out.values.ArrayAt<float>(0), (std::vector<float>{6.0f, 0.0f}));
  // Inputs left at their all-zero defaults: centres coincide.
  EvaluationRequest defaults;
  EXPECT_EQ(Singles<float>(Evaluate(kNode, defaults, kResultPort)), (std::vector<float>{0.0f}));
  EXPECT_TRUE(TakeLog().empty());
}

TEST(CdbteNode, WarnsOfAnUnknownModeAndStillComputes) {
  auto r = PairRequest(PortValues::Singles(Matrices{Scaled(1, {0, 0, 0})}),
                       PortValues::Singles(Matrices{Scaled(1, {5, 0, 0})}), 1);
  r.SetInput(kModePort, PortValues::Singles<XSI::LONG>({3}));
  TakeLog();
  EXPECT_EQ(Singles<float>(Evaluate(kNode, r, kResultPort)), (std::vector<float>{3.0f}));
  const auto log = TakeLog();
  ASSERT_EQ(log.size(), 1u);
  EXPECT_EQ(log[0].severity, 4);
  EXPECT_EQ(log[0].text, L"Quillix_cdbte: illegal method!");
}

TEST(CdbteNode, WritesOnlyTheBatchAndNothingForUnknownPortsOrFailedQueries) {
  ExpectWritesOnlyTheBatchAndNothingOnFailedQueries(kNode);
}

TEST(CdbteNode, ManyThreadsGiveTheSingleThreadedResults) {
  ExpectManyThreadsGiveTheSingleThreadedResults(kNode);
}

}  // namespace
}  // namespace quillix::test
