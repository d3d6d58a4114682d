// Quillix_iotb through the offline host: one answer per mode, arrays, batches and threads.
#include <gtest/gtest.h>

#include <vector>

#include "tests/nodes/spatial/matrix_pair_fixtures.h"

namespace quillix::test {
namespace {

constexpr const wchar_t* kNode = L"Quillix_iotb";

TEST(IotbNode, AnswersOneOrZeroPerMode) {
  const CMatrix4f unit = HostTranslation({0, 0, 0});
  const Matrices others{HostTranslation({2, 0, 0}), HostTranslation({2.001f, 0, 0}),
                        Host(quillix::testing::RotationZ(45.0, {1.75f, 1.75f, 0}))};
  for (XSI::LONG mode : {-1, 0, 1}) {
    auto r = PairRequest(PortValues::Singles(Matrices{unit}).AsConstant(),
                         PortValues::Singles(others), 3);
    r.SetInput(kModePort, PortValues::Singles<XSI::LONG>({mode}));
    const std::vector<XSI::LONG> expected{1, 0, mode < 0 ? 1 : 0};
    EXPECT_EQ(Singles<XSI::LONG>(Evaluate(kNode, r, kResultPort)), expected) << mode;
  }
  // Arrays of 5 and 3 boxes give 3 answers; the default mode is 0.
  const Matrices five{unit, others[0], others[1], others[2], unit};
  const auto out =
      Evaluate(kNode,
               PairRequest(PortValues::ArraysOf(std::vector<Matrices>{five}),
                           PortValues::ArraysOf(std::vector<Matrices>{{unit, unit, unit}}), 1),
               kResultPort);
  EXPECT_EQ(out.values.ArrayAt<XSI::LONG>(0), (std::vector<XSI::LONG>{1, 1, 0}));
}

TEST(IotbNode, WritesOnlyTheBatchAndNothingForUnknownPortsOrFailedQueries) {
  ExpectWritesOnlyTheBatchAndNothingOnFailedQueries(kNode);
}

TEST(IotbNode, ManyThreadsGiveTheSingleThreadedResults) {
  ExpectManyThreadsGiveTheSingleThreadedResults(kNode);
}

}  // namespace
}  // namespace quillix::test
