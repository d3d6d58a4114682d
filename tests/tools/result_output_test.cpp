// Result files and pictures written from `quillix eval` results: the shipped examples, evaluated
// by the real tool, give one file per geometric result element with the result's counts; other
// nodes give nothing; a path's picture shows the path where its vertices project.
#include "tools/quillix/result_output.h"

#include <cairo.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "tools/output/figures.h"
#include "tools/output/picture.h"

namespace quillix {
namespace {

using nlohmann::json;
namespace fs = std::filesystem;

std::string ReadText(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// Lines of `text` starting with `prefix`.
int CountLines(const std::string& text, const std::string& prefix) {
  int count = 0;
  for (std::size_t at = 0; at < text.size(); at = text.find('\n', at) + 1) {
    if (text.compare(at, prefix.size(), prefix) == 0) ++count;
    if (text.find('\n', at) == std::string::npos) break;
  }
  return count;
}

// The result document `quillix eval` prints for `requestFile`.
json Evaluate(const fs::path& requestFile) {
  const std::string command = std::string(QUILLIX_TOOL_PATH) + " eval " + requestFile.string();
  FILE* pipe = popen(command.c_str(), "r");
  std::string out;
  char buffer[4096];
  for (std::size_t n; pipe != nullptr && (n = fread(buffer, 1, sizeof buffer, pipe)) > 0;)
    out.append(buffer, n);
  EXPECT_TRUE(pipe != nullptr && pclose(pipe) == 0) << command;
  return json::parse(out);
}

class ResultOutput : public ::testing::Test {
 protected:
  void SetUp() override {
    dir_ = fs::temp_directory_path() /
           ("quillix-result-output-" + std::to_string(getpid()) + "-" +
            ::testing::UnitTest::GetInstance()->current_test_info()->name());
    options_.outDir = dir_ / "files";
  }
  void TearDown() override { fs::remove_all(dir_); }

  // Evaluates an example with the tool, which writes the outputs of all its requests into the
  // folders of options_ (emptied first). Returns the files written.
  std::vector<std::string> WriteExample(const std::string& example) {
    const fs::path file = fs::path(QUILLIX_SOURCE_DIR) / "examples" / example;
    std::string command = std::string(QUILLIX_TOOL_PATH) + " eval " + file.string();
    const std::pair<const char*, fs::path> folders[] = {{" --out ", options_.outDir},
                                                        {" --png ", options_.pngDir}};
    for (const auto& [option, folder] : folders) {
      if (folder.empty()) continue;
      fs::remove_all(folder);
      command += option + folder.string();
    }
    EXPECT_EQ(std::system((command + " > /dev/null").c_str()), 0) << command;
    std::vector<std::string> written;
    for (const auto& [option, folder] : folders) {
      if (folder.empty() || !fs::exists(folder)) continue;
      for (const auto& entry : fs::directory_iterator(folder)) written.push_back(entry.path());
    }
    return written;
  }
  std::string File(const std::string& name) const { return ReadText(options_.outDir / name); }

  fs::path dir_;
  ResultOutputOptions options_;
};

TEST_F(ResultOutput, PolylinesGiveOneObjPerElementWithTheResultPoints) {
  options_.pngDir = dir_ / "png";
  const std::vector<std::string> written = WriteExample("curve/slins.json");
  EXPECT_EQ(written.size(), 12u);  // (4 + 2 elements) × (OBJ, PNG)
  const std::string e0 = File("r0_p2010_e0.obj");
  EXPECT_EQ(CountLines(e0, "v "), 4);
  EXPECT_EQ(CountLines(e0, "l 1 2 3 4"), 1);
  EXPECT_EQ(CountLines(File("r1_p2010_e1.obj"), "v "), 3);
  EXPECT_TRUE(fs::exists(options_.pngDir / "r1_p2010_e1.png"));

  WriteExample("curve/rlins.json");
  EXPECT_EQ(CountLines(File("r0_p2010_e0.obj"), "v "), 5);
  EXPECT_EQ(CountLines(File("r1_p2010_e0.obj"), "v "), 0);  // count 1.4 gives no points
}

TEST_F(ResultOutput, PathsRunOverTheirMeshAndOnlyPathPortsAreWritten) {
  WriteExample("pathfind/fpom.json");
  const std::string first = File("r0_p2020_e0.obj");
  EXPECT_EQ(CountLines(first, "v "), 30);
  EXPECT_EQ(CountLines(first, "f "), 20);
  EXPECT_EQ(CountLines(first, "l 1 2 3 4 5 6 12 18 24 30"), 1);   // vertices 0..5, 11, 17, 23, 29
  EXPECT_EQ(CountLines(File("r0_p2020_e2.obj"), "l "), 0);        // no path
  EXPECT_FALSE(fs::exists(options_.outDir / "r0_p2010_e0.obj"));  // the return value
}

TEST_F(ResultOutput, SpheresGivePlyWithOneVertexPerSphere) {
  WriteExample("curve/dsals.json");
  EXPECT_EQ(CountLines(File("r0_p2010_e0.ply"), "element vertex 5"), 1);
  EXPECT_EQ(CountLines(File("r0_p2010_e1.ply"), "element vertex 4"), 1);  // length 9
  EXPECT_EQ(CountLines(File("r4_p2010_e0.ply"), "element vertex 0"), 1);  // seed −1
  WriteExample("spatial/otos.json");
  const std::string otos = File("r1_p2010_e0.ply");
  EXPECT_EQ(CountLines(otos, "element vertex 1"), 1);
  EXPECT_EQ(CountLines(otos, "5 2 12 3"), 1);
}

TEST_F(ResultOutput, ShapePairsFollowTheNodesPairing) {
  options_.pngDir = dir_ / "png";
  WriteExample("spatial/iotb.json");
  EXPECT_EQ(CountLines(File("r0_p2010_e2.obj"), "o "), 2);
  const std::string arrays = File("r2_p2010_e0.obj");  // arrays of 5 and 3 matrices
  EXPECT_EQ(CountLines(arrays, "o "), 6);
  EXPECT_EQ(CountLines(arrays, "v "), 48);
  EXPECT_EQ(CountLines(File("r3_p2010_e0.obj"), "o "), 2);  // default all-zero matrices

  WriteExample("spatial/iotmb.json");
  EXPECT_EQ(CountLines(File("r0_p2010_e0.obj"), "o "), 8);  // one box against four
  WriteExample("spatial/cdbte.json");
  EXPECT_EQ(CountLines(File("r1_p2010_e0.obj"), "o "), 18);  // three pairs, three rings each
  cairo_surface_t* png =
      cairo_image_surface_create_from_png((options_.pngDir / "r1_p2010_e0.png").c_str());
  EXPECT_EQ(cairo_image_surface_get_width(png), 3 * PictureOptions().panelWidth);
  cairo_surface_destroy(png);
}

TEST_F(ResultOutput, OtherResultsWriteNothing) {
  EXPECT_TRUE(WriteExample("divi.json").empty());
  // The port the node does not define (request 5) answers null for its one element.
  const json unknown =
      Evaluate(fs::path(QUILLIX_SOURCE_DIR) / "examples" / "divi.json")["results"][5];
  EXPECT_EQ(unknown["outputs"][0]["values"], json::parse("[null]"));
  EXPECT_TRUE(WriteExample("curve/gpoc.json").empty());
  EXPECT_FALSE(fs::exists(options_.outDir));
}

TEST_F(ResultOutput, FloatBitStringsAndUnreadableElements) {
  const json request = {{"node", "Quillix_slins"}, {"port", 2010}, {"elements", 2}};
  const json result = {
      {"node", "Quillix_slins"},
      {"outputs",
       {{{"port", 2010}, {"status", 0}, {"values", {{{"0x7FC00000", 1, 2}}, "not points"}}}}}};
  std::vector<std::string> written;
  EXPECT_TRUE(WriteResultOutputs(request, result, 7, options_, written).ok);
  ASSERT_EQ(written.size(), 1u);
  EXPECT_EQ(CountLines(File("r7_p2010_e0.obj"), "v nan 1 2"), 1);
}

TEST_F(ResultOutput, AnUnwritableDirectoryIsReported) {
  fs::create_directories(dir_);
  std::ofstream(dir_ / "taken") << "a file";
  options_.outDir = dir_ / "taken";
  std::vector<std::string> written;
  const json result = {{"node", "Quillix_slins"},
                       {"outputs", {{{"port", 2010}, {"status", 0}, {"values", {{{0, 0, 0}}}}}}}};
  const OutputStatus status =
      WriteResultOutputs({{"node", "Quillix_slins"}}, result, 1, options_, written);
  EXPECT_FALSE(status.ok);
  EXPECT_NE(status.message.find("taken"), std::string::npos) << status.message;
  EXPECT_TRUE(written.empty());
}

// The path's vertices carry the path colour where the figure's own layout projects them.
TEST_F(ResultOutput, PathPictureShowsThePathOverTheMesh) {
  options_.outDir.clear();
  options_.pngDir = dir_ / "png";
  std::vector<Vec3f> positions;
  json positionsJson = json::array();
  for (int j = 0; j < 3; ++j) {
    for (int i = 0; i < 3; ++i) {
      positions.push_back({float(i), float(j), 0.0f});
      positionsJson.push_back({i, j, 0});
    }
  }
  const std::vector<std::int32_t> polygons = {0, 1, 4, 3, -2, 1, 2, 5, 4, -2,
                                              3, 4, 7, 6, -2, 4, 5, 8, 7, -2};
  const std::vector<std::int32_t> path = {0, 1, 2, 5, 8}, requested = {0, 8};
  const json request = {
      {"node", "Quillix_fpom"},
      {"port", 2020},
      {"inputs",
       {{"1020", {{"structure", "array"}, {"type", "vector3"}, {"values", {positionsJson}}}},
        {"1030", {{"structure", "array"}, {"type", "int"}, {"values", {polygons}}}},
        {"1040", {{"structure", "array"}, {"type", "int"}, {"values", {requested}}}}}}};
  const json result = {{"node", "Quillix_fpom"},
                       {"outputs", {{{"port", 2020}, {"status", 0}, {"values", {path}}}}}};
  std::vector<std::string> written;
  ASSERT_TRUE(WriteResultOutputs(request, result, 0, options_, written).ok);
  ASSERT_EQ(written.size(), 1u);

  const Figure figure = PathOnMeshFigure(positions, polygons, path, requested, {},
                                         "Quillix_fpom, request 0, element 0");
  const OrthoView view = LayoutFigure(figure, PictureOptions()).front();
  cairo_surface_t* png = cairo_image_surface_create_from_png(written.front().c_str());
  ASSERT_EQ(cairo_surface_status(png), CAIRO_STATUS_SUCCESS);
  const auto pixel = [&](const Vec3f& p) {
    const PixelPoint at = view.Project(p);
    const unsigned char* row = cairo_image_surface_get_data(png) +
                               int(std::floor(at.y)) * cairo_image_surface_get_stride(png);
    const std::uint32_t argb = reinterpret_cast<const std::uint32_t*>(row)[int(std::floor(at.x))];
    return Colour{((argb >> 16) & 0xFF) / 255.0, ((argb >> 8) & 0xFF) / 255.0,
                  (argb & 0xFF) / 255.0};
  };
  const auto near = [](const Colour& a, const Colour& b) {
    return std::abs(a.r - b.r) < 0.02 && std::abs(a.g - b.g) < 0.02 && std::abs(a.b - b.b) < 0.02;
  };
  for (const std::int32_t vertex : {1, 2, 5}) {
    EXPECT_TRUE(near(pixel(positions[vertex]), figure_colours::kPath)) << "vertex " << vertex;
  }
  for (const std::int32_t vertex : {3, 4, 6}) {
    EXPECT_FALSE(near(pixel(positions[vertex]), figure_colours::kPath)) << "vertex " << vertex;
  }
  cairo_surface_destroy(png);
}

}  // namespace
}  // namespace quillix
