// Quillix_dsals2 through the offline host: port table, packing, equality with the flags of
// Quillix_dsals, and threads.
#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "tests/nodes/curve/curve_node_values.h"

namespace quillix::test {
namespace {

TEST(Dsals2Node, RegistersTheSharedPortsWithOneInterpolationTypePerChannel) {
  std::vector<PortRow> inputs = LeadingSpherePorts();
  for (auto [id, name] :
       {std::pair{1100u, L"interpTypePositions"}, std::pair{1104u, L"interpTypeTangents"},
        std::pair{1108u, L"interpTypeUpVectors"}}) {
    inputs.push_back({id, 2, 1, name, name, XSI::CValue(XSI::LONG(20))});
  }
  inputs.push_back(kMaxSpheresPort);
  ExpectPortTable(L"Quillix_dsals2", 2, inputs, kSpheresPort);
}

TEST(Dsals2Node, PacksUnitSpheresAlongAStraightSpline) {
  ExpectUnitSpheresAlongAStraightSpline(L"Quillix_dsals2");
}

TEST(Dsals2Node, TypesEqualTheFlagsOfTheFirstNode) {
  EvaluationRequest r = SphereRequest(
      2, {{{0, 0, 0}, {3, 1, 0}, {6, 0, 2}, {9, 4, 1}}, {{0, 0, 0}, {0, 5, 0}, {5, 5, 0}}});
  r.SetInput(1020, PointArrays({{{0, 1, 0}, {0, 0, 1}, {1, 1, 0}, {0, 1, 1}}, {{0, 0, 1}}}));
  r.SetInput(1030, PortValues::ArraysOf<float>({{0.3f, 0.5f}}).AsConstant());
  r.SetInput(1040, PortValues::Singles<float>({0.5f}).AsConstant());
  r.SetInput(1090, PortValues::Singles<XSI::LONG>({3, 4}));
  for (XSI::LONG flags : {0, 1, 2, 3}) {
    EvaluationRequest first = r;
    first.SetInput(1100, PortValues::Singles<XSI::LONG>({flags}).AsConstant());
    EvaluationRequest second = r;
    second.SetInput(1100, PortValues::Singles<XSI::LONG>({20}).AsConstant());
    second.SetInput(1104, PortValues::Singles<XSI::LONG>({(flags & 1) ? 20 : 0}).AsConstant());
    second.SetInput(1108, PortValues::Singles<XSI::LONG>({(flags & 2) ? 20 : 0}).AsConstant());
    const OutputResult a = Evaluate(L"Quillix_dsals", first, 2010);
    const OutputResult b = Evaluate(L"Quillix_dsals2", second, 2010);
    for (ULONG e = 0; e < 2; ++e) {
      EXPECT_FALSE(SpheresOf(a, e).empty());
      EXPECT_EQ(SpheresOf(a, e), SpheresOf(b, e)) << "flags " << flags << " element " << e;
    }
  }
}

TEST(Dsals2Node, SeveralThreadsGiveTheSameResultsAsOne) {
  EvaluationRequest r = SphereRequest(64, WavyLines());
  r.SetInput(1030, PortValues::ArraysOf<float>({{0.2f, 0.4f, 0.3f}}).AsConstant());
  r.SetInput(1040, PortValues::Singles<float>({0.8f}).AsConstant());
  r.SetInput(1080, PortValues::Singles<XSI::LONG>({1}).AsConstant());
  const OutputResult single = Evaluate(L"Quillix_dsals2", r, 2010);
  r.threads = 4;
  r.batchSize = 5;
  const OutputResult threaded = Evaluate(L"Quillix_dsals2", r, 2010);
  for (ULONG e = 0; e < 64; ++e) {
    ASSERT_FALSE(SpheresOf(single, e).empty());
    EXPECT_EQ(SpheresOf(single, e), SpheresOf(threaded, e)) << e;
  }
}

}  // namespace
}  // namespace quillix::test
