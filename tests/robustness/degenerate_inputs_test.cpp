// Every registered node fed degenerate inputs through the real plug-in: each evaluation must
// come back (no fault, no exception, no sanitizer report), report success, and write every
// element of the batch; where the defined value is simple to state, it is checked.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "robustness/node_inputs.h"
#include "support/plugin_fixture.h"

namespace quillix::test {
namespace {

constexpr ULONG kElements = 3;

// Nodes whose outputs live in the singleton context are evaluated over one element, as the
// host does; the others over three.
ULONG elementsFor(const NodeDefinitionRecord& node) {
  for (const auto& port : node.outputs)
    if (port.contexts != XSI::siICENodeContextSingleton) return kElements;
  return 1;
}

// Nodes that end a batch early at an empty or short array input, a kept behaviour: their
// written elements are a leading run of the batch, never empty.
bool endsBatchEarly(const std::wstring& node) {
  return node == L"Quillix_ntoa" || node == L"Quillix_btoa";
}

class DegenerateInputs : public ::testing::TestWithParam<Fill> {};

TEST_P(DegenerateInputs, EveryNodeAnswersEveryElementWithoutFaulting) {
  const Fill fill = GetParam();
  InputMaker maker(static_cast<unsigned>(fill) + 17);
  const auto& nodes = Plugin().Record().nodes;
  ASSERT_EQ(nodes.size(), 29u);
  for (const auto& node : nodes) {
    SCOPED_TRACE(narrow(node->name) + " with " + fillName(fill) + " inputs");
    const ULONG elements = elementsFor(*node);
    const EvaluationRequest request = maker.request(*node, fill, elements);
    const auto ports = outputPorts(*node);
    const auto results = Evaluate(node->name, request, ports);
    ASSERT_EQ(results.size(), ports.size());
    for (const auto& out : results) {
      EXPECT_EQ(out.status, 0u) << "port " << out.port;
      ASSERT_EQ(out.values.count, elements) << "port " << out.port;
      ULONG written = 0;
      while (written < elements && out.values.WasWritten(written)) ++written;
      if (endsBatchEarly(node->name)) {
        EXPECT_GE(written, 1u) << "port " << out.port;
        for (ULONG e = written; e < elements; ++e)
          EXPECT_FALSE(out.values.WasWritten(e)) << "port " << out.port;
      } else {
        EXPECT_EQ(written, elements)
            << "port " << out.port << ": element " << written << " not written";
      }
    }
    TakeLog();
  }
}

INSTANTIATE_TEST_SUITE_P(AllFills, DegenerateInputs,
                         ::testing::Values(Fill::Ordinary, Fill::EmptyArrays, Fill::SingleEntries,
                                           Fill::NaN, Fill::Infinite, Fill::Zero, Fill::Singular,
                                           Fill::Negative, Fill::Huge, Fill::IntMin,
                                           Fill::WideStrings, Fill::MismatchedLengths),
                         [](const auto& info) {
                           std::string name = fillName(info.param);
                           for (char& c : name)
                             if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
                           return name;
                         });

// The defined values that are simple to state, one degenerate input each.
using Vec3 = XSI::MATH::CVector3f;

TEST(DegenerateDefinedValues, EmptyAndShortLinesGiveTheirDefinedResults) {
  // Reversing an empty array gives an empty array.
  auto out = Evaluate(L"Quillix_arrrev",
                      requestFor({{1010, PortValues::ArraysOf<XSI::LONG>({{}})}}), 2010);
  ASSERT_TRUE(out.values.WasWritten(0));
  EXPECT_TRUE(out.values.ArrayAt<XSI::LONG>(0).empty());

  // Resampling fewer than two points gives no points, whatever the count asked for.
  for (float count : {5.0f, -2.0f, std::numeric_limits<float>::quiet_NaN(), 3.0e38f}) {
    out = Evaluate(L"Quillix_rlins",
                   requestFor({{1010, PortValues::ArraysOf<Vec3>({{Vec3{1, 2, 3}}})},
                               {1020, PortValues::Singles<float>({count})}}),
                   2010);
    ASSERT_TRUE(out.values.WasWritten(0));
    EXPECT_TRUE(out.values.arrays[0].empty()) << count;
  }
  // A count beyond a host array on a real line gives no points either, without allocating them.
  out = Evaluate(L"Quillix_rlins",
                 requestFor({{1010, PortValues::ArraysOf<Vec3>({{Vec3{0, 0, 0}, Vec3{1, 0, 0}}})},
                             {1020, PortValues::Singles<float>({3.0e38f})}}),
                 2010);
  ASSERT_TRUE(out.values.WasWritten(0));
  EXPECT_TRUE(out.values.arrays[0].empty());

  // Simplifying an empty line with a NaN tolerance leaves it empty.
  out = Evaluate(
      L"Quillix_slins",
      requestFor({{1010, PortValues::ArraysOf<Vec3>({{}})},
                  {1020, PortValues::Singles<float>({std::numeric_limits<float>::quiet_NaN()})},
                  {1040, boolSingle(false)}}),
      2010);
  ASSERT_TRUE(out.values.WasWritten(0));
  EXPECT_TRUE(out.values.arrays[0].empty());
}

TEST(DegenerateDefinedValues, FloatClassesOfNaNAndInfinities) {
  const float nan = std::numeric_limits<float>::quiet_NaN(),
              inf = std::numeric_limits<float>::infinity();
  const auto results = Evaluate(
      L"Quillix_nan2", requestFor({{1010, PortValues::Singles<float>({nan, inf, -inf, 0.0f})}}, 4),
      {2010, 2020, 2030});
  ASSERT_EQ(results.size(), 3u);
  const auto ints = [](const OutputResult& r) {
    std::vector<XSI::LONG> v;
    for (ULONG i = 0; i < r.values.count; ++i) v.push_back(r.values.Single<XSI::LONG>(i));
    return v;
  };
  EXPECT_EQ(ints(results[0])[0] != 0, true);
  EXPECT_EQ(ints(results[0])[1], 0);
  EXPECT_NE(ints(results[1])[1], 0);
  EXPECT_NE(ints(results[2])[2], 0);
  EXPECT_EQ(ints(results[1])[3], 0);
  EXPECT_EQ(ints(results[2])[3], 0);
}

TEST(DegenerateDefinedValues, DisabledPathNodeReturnsMinusTwoAndNoPaths) {
  auto r =
      requestFor({{1010, boolSingle(false)}, {1040, PortValues::ArraysOf<XSI::LONG>({{0, 1}})}});
  const auto results = Evaluate(L"Quillix_fpom", r, {2010, 2020});
  ASSERT_EQ(results.size(), 2u);
  ASSERT_TRUE(results[0].values.WasWritten(0));
  EXPECT_EQ(results[0].values.Single<XSI::LONG>(0), -2);
  ASSERT_TRUE(results[1].values.WasWritten(0));
  EXPECT_TRUE(results[1].values.arrays[0].empty());
  TakeLog();
}

}  // namespace
}  // namespace quillix::test
