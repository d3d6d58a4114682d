// Quillix_fpom through the offline host: one instance over several evaluations, its log
// lines, rebuild rules, flags, chained paths and failures.
#include <gtest/gtest.h>

#include <xsi_vector3f.h>

#include <algorithm>
#include <memory>
#include <string>

#include "support/plugin_fixture.h"
#include "tests/kernel/test_meshes.h"

namespace quillix::test {
namespace {

constexpr ULONG kEnable = 1010, kVerbose = 1015, kPositions = 1020, kFlags = 1823,
                kDescription = 1030, kAlgorithm = 1035, kInit = 1040, kReturn = 2010, kPaths = 2020;
using Ints = std::vector<XSI::LONG>;
using xsihost::LogLine;

// The host's polygonal description of a mesh: each polygon's indices closed by -2.
Ints Description(const testing::PlainMesh& mesh) {
  Ints d;
  std::size_t node = 0;
  for (std::uint8_t size : mesh.sizes) {
    for (std::uint8_t k = 0; k < size; ++k) d.push_back(mesh.indices[node++]);
    d.push_back(-2);
  }
  return d;
}

PortValues Positions(const testing::PlainMesh& mesh) {
  std::vector<XSI::MATH::CVector3f> points;
  for (const Vec3f& p : mesh.positions) points.emplace_back(p.x, p.y, p.z);
  return PortValues::ArraysOf<XSI::MATH::CVector3f>({points}).AsConstant();
}

// Bools one byte each (std::vector<bool> has no data()).
PortValues BoolArray(std::initializer_list<int> values) {
  PortValues p;
  p.type = XSI::siICENodeDataBool;
  p.array = true;
  p.Resize(1);
  for (int v : values) p.arrays[0].push_back(std::byte(v != 0));
  return p.AsConstant();
}
PortValues BoolSingles(std::initializer_list<int> values) {
  PortValues p;
  p.type = XSI::siICENodeDataBool;
  p.Resize(ULONG(values.size()));
  std::size_t i = 0;
  for (int v : values) p.flat[i++] = std::byte(v != 0);
  return p;
}

// One node instance driven over several evaluations, like a host playing frames.
class FpomNode : public ::testing::Test {
 protected:
  void SetUp() override {
    TakeLog();
    instance_ = std::make_unique<xsihost::NodeInstance>(Plugin(), *NodeDefinition(L"Quillix_fpom"));
    request_.elements = 1;
    setMesh(testing::QuadGrid(2, 2));  // 3 × 3 vertices
    setInit({{0, 8}});
  }

  void setMesh(const testing::PlainMesh& mesh) {
    request_.SetInput(kPositions, Positions(mesh));
    request_.SetInput(kDescription,
                      PortValues::ArraysOf<XSI::LONG>({Description(mesh)}).AsConstant());
  }
  void setInit(const std::vector<Ints>& init) {
    request_.elements = ULONG(init.size());
    request_.SetInput(kInit, PortValues::ArraysOf<XSI::LONG>(init));
  }
  std::vector<Ints> run() {
    const auto results = instance_->Evaluate(request_, {kReturn, kPaths});
    returnValue_ = results[0].values.Single<XSI::LONG>(0);
    std::vector<Ints> paths;
    for (ULONG i = 0; i < results[1].values.count; ++i)
      paths.push_back(results[1].values.ArrayAt<XSI::LONG>(i));
    return paths;
  }
  std::string prefix() const {
    return "Quillix_fpom(" + std::to_string(instance_->ObjectID()) + "): ";
  }
  std::wstring wide(const std::string& s) const { return {s.begin(), s.end()}; }

  EvaluationRequest request_;
  std::unique_ptr<xsihost::NodeInstance> instance_;
  XSI::LONG returnValue_ = 12345;
};

TEST_F(FpomNode, InitLogsVersionLinesAndTermLogsWithThePrefix) {
  run();
  const std::vector<LogLine> log = TakeLog();
  ASSERT_EQ(log.size(), 2u);
  EXPECT_EQ(log[0], (LogLine{32, L"Quillix_fpom_Init_Init() version 1.9 called,"}));
  EXPECT_EQ(log[1],
            (LogLine{32, L"built with XSISDK_VERSION = 12000, XSISDK_VERSION_NAME = \"2014\"."}));
  instance_->Terminate();
  EXPECT_EQ(TakeLog(), (std::vector<LogLine>{{32, wide(prefix() + "Sarnoth5_Term() called")}}));
}

TEST_F(FpomNode, ChainedPathsPerElementWithoutRepeatingTheJointVertex) {
  setInit({{4}, {0, 8, 2}, {4, 4}, {0, 1}, {6, 6, 0}});
  const std::vector<Ints> paths = run();
  EXPECT_EQ(returnValue_, 0);
  EXPECT_EQ(paths[0], Ints{});
  EXPECT_EQ(paths[1], (Ints{0, 1, 2, 5, 8, 5, 2}));
  EXPECT_EQ(paths[2], Ints{});
  EXPECT_EQ(paths[3], (Ints{0, 1}));
  EXPECT_EQ(paths[4], Ints{});  // equal consecutive indices empty the whole element
  // Algorithm 1 is refused per element, silently.
  request_.SetInput(kAlgorithm, PortValues::Singles<XSI::LONG>({1}).AsConstant());
  for (const Ints& path : run()) EXPECT_TRUE(path.empty());
  EXPECT_EQ(returnValue_, 0);
  TakeLog();
}

TEST_F(FpomNode, ThreeInitIndicesGiveBothSegmentsJoinedOnce) {
  setMesh(testing::QuadGrid(3, 2, 0.2f, 4));  // 12 vertices, irregular
  setInit({{4, 9, 2}, {4, 9}, {9, 2}});
  const std::vector<Ints> paths = run();
  ASSERT_FALSE(paths[1].empty());
  ASSERT_FALSE(paths[2].empty());
  Ints joined = paths[1];
  joined.insert(joined.end(), paths[2].begin() + 1, paths[2].end());
  EXPECT_EQ(paths[0], joined);
  EXPECT_EQ(std::count(paths[0].begin(), paths[0].end(), 9), 1);
  TakeLog();
}

TEST_F(FpomNode, DisabledNodeReturnsMinusTwoEmptyPathsAndLogsNothing) {
  run();
  TakeLog();
  request_.SetInput(kEnable, BoolSingles({0}).AsConstant());
  const std::vector<Ints> paths = run();
  EXPECT_EQ(returnValue_, -2);
  EXPECT_TRUE(paths[0].empty());
  EXPECT_TRUE(TakeLog().empty());
  // Enabled per element: only the enabled elements search.
  setInit({{0, 2}, {0, 6}});
  request_.SetInput(kEnable, BoolSingles({0, 1}));
  const std::vector<Ints> some = run();
  EXPECT_TRUE(some[0].empty());
  EXPECT_EQ(some[1], (Ints{0, 3, 6}));
}

TEST_F(FpomNode, RebuildsOnlyWhenPositionsOrDescriptionChange) {
  request_.SetInput(kVerbose, PortValues::Singles<XSI::LONG>({2}).AsConstant());
  request_.time = 3.0;
  run();
  std::vector<LogLine> log = TakeLog();
  ASSERT_EQ(log.size(), 2u + 5u);
  EXPECT_EQ(log[2].text,
            wide("Quillix_fpom(" + std::to_string(instance_->ObjectID()) + ")__f=3__"));
  EXPECT_EQ(log[3].text.rfind(wide(prefix() + "    build geometry time:               "), 0), 0u);
  EXPECT_EQ(log[3].text.substr(log[3].text.size() - 3), L" ms");
  EXPECT_EQ(log[4].text, wide(prefix() + "    #vertices: 9"));
  EXPECT_EQ(log[5].text, wide(prefix() + "    #polygons: 4"));
  EXPECT_EQ(log[6].text.rfind(wide(prefix() + "    total initialisation time:         "), 0), 0u);

  // Same inputs, same time: nothing happens at all.
  run();
  EXPECT_TRUE(TakeLog().empty());
  // A new time or a changed algorithm / init list: no rebuild (no build lines).
  request_.time = 4.0;
  run();
  EXPECT_EQ(TakeLog().size(), 2u);
  setInit({{2, 6}});
  EXPECT_EQ(run()[0], (Ints{2, 1, 0, 3, 6}));
  EXPECT_EQ(TakeLog().size(), 2u);
  // New positions: rebuilt.
  testing::PlainMesh moved = testing::QuadGrid(2, 2);
  moved.positions[1].y = 5.0f;  // a detour: the way along the bottom row gets long
  setMesh(moved);
  EXPECT_EQ(run()[0], (Ints{2, 5, 4, 3, 6}));
  EXPECT_EQ(TakeLog().size(), 5u);
}

TEST_F(FpomNode, WrongSizedFlagsWarnAndAreIgnoredRightSizedFlagsBlock) {
  request_.SetInput(kFlags, BoolArray({1, 1, 1, 1, 1, 1, 1}));
  EXPECT_EQ(run()[0], (Ints{0, 1, 2, 5, 8}));
  std::vector<LogLine> log = TakeLog();
  ASSERT_EQ(log.size(), 3u);
  EXPECT_EQ(
      log[2],
      (LogLine{
          4, wide(prefix() +
                  "    vertex flag array has wrong size... it's size is 7, but it should be 9.")}));

  // Blocking vertices 1 and 4 sends the path around the left and top.
  request_.SetInput(kFlags, BoolArray({1, 0, 1, 1, 0, 1, 1, 1, 1}));
  EXPECT_EQ(run()[0], (Ints{0, 3, 6, 7, 8}));
  EXPECT_TRUE(TakeLog().empty());
}

TEST_F(FpomNode, PolygonOfExactly255VerticesFailsWith101AndLogsTwoErrors) {
  testing::PlainMesh fan = testing::Fan(254, false);  // vertices 0..254
  testing::PlainMesh big;
  big.positions = fan.positions;
  big.sizes = {255};
  for (int v = 0; v < 255; ++v) big.indices.push_back(v);
  setMesh(big);
  setInit({{0, 5}});
  const std::vector<Ints> paths = run();
  EXPECT_EQ(returnValue_, -2);
  EXPECT_TRUE(paths[0].empty());
  const std::vector<LogLine> log = TakeLog();
  ASSERT_EQ(log.size(), 4u);
  EXPECT_EQ(log[2], (LogLine{2, wide(prefix() + "(*ud.geo).Set() failed.")}));
  EXPECT_EQ(log[3],
            (LogLine{2, wide(prefix() + "error 101: a polygon has more than 255 vertices.\".")}));
  // The same failure is not repeated while nothing changes.
  run();
  EXPECT_TRUE(TakeLog().empty());
  EXPECT_EQ(returnValue_, -2);
  // 254 corners are fine.
  big.sizes = {254};
  big.indices.pop_back();
  setMesh(big);
  EXPECT_EQ(run()[0], (Ints{0, 1, 2, 3, 4, 5}));
}

TEST_F(FpomNode, ManyElementsOnTwoThreadsMatchOneThread) {
  setMesh(testing::QuadGrid(30, 30, 0.3f, 9));
  std::vector<Ints> init;
  for (int k = 0; k < 300; ++k)
    init.push_back({(k * 37) % 961, (k * 101 + 7) % 961, (k * 13) % 961});
  setInit(init);
  request_.batchSize = 16;
  const std::vector<Ints> one = run();
  request_.threads = 2;
  request_.time = 2.0;
  const std::vector<Ints> two = run();
  EXPECT_EQ(one, two);
  int nonEmpty = 0;
  for (const Ints& p : two) nonEmpty += !p.empty();
  EXPECT_GT(nonEmpty, 250);
  TakeLog();
}

}  // namespace
}  // namespace quillix::test
