// Quillix_cuappid through the offline host.
#include <gtest/gtest.h>

#include "nodes/utility/node_values.h"

namespace quillix::test {
namespace {

constexpr ULONG kArraySize = 1010, kIds = 2010;

Written<Ints> Ids(EvaluationRequest request) {
  return writtenArrays<XSI::LONG>(Evaluate(L"Quillix_cuappid", request, kIds));
}

TEST(RunningIdsNode, NumbersAllPointsConsecutivelyInPointOrder) {
  EXPECT_EQ(Ids(requestOf(3, {{kArraySize, PortValues::Singles<XSI::LONG>({2, 0, 3})}})),
            (Written<Ints>{Ints{0, 1}, Ints{}, Ints{2, 3, 4}}));
  EXPECT_EQ(Ids(requestOf(3, {{kArraySize, PortValues::Singles<XSI::LONG>({1, -4, 2})}})),
            (Written<Ints>{Ints{0}, Ints{}, Ints{1, 2}}));
  EXPECT_EQ(Ids(requestOf(2, {{kArraySize, PortValues::Singles<XSI::LONG>({0, 0})}})),
            (Written<Ints>{Ints{}, Ints{}}));
  EXPECT_EQ(Ids(requestOf(0, {{kArraySize, PortValues::Singles<XSI::LONG>({})}})),
            (Written<Ints>{}));
}

TEST(RunningIdsNode, ConstantSizeNumbersEveryPoint) {
  EXPECT_EQ(Ids(requestOf(3, {{kArraySize, PortValues::Singles<XSI::LONG>({2}).AsConstant()}})),
            (Written<Ints>{Ints{0, 1}, Ints{2, 3}, Ints{4, 5}}));
}

TEST(RunningIdsNode, NumberingDoesNotDependOnTheBatches) {
  const PortValues sizes = PortValues::Singles<XSI::LONG>({3, 1, 0, 2, 4});
  auto request = requestOf(5, {{kArraySize, sizes}});
  const Written<Ints> whole = Ids(request);
  request.batchSize = 2;
  EXPECT_EQ(Ids(request), whole);
  request.batch = std::vector<ULONG>{3};
  EXPECT_EQ(Ids(request), whole);
}

}  // namespace
}  // namespace quillix::test
