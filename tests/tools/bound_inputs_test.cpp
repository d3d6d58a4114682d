// Inputs bound to the scene and to mesh files: each kind of data lands in the port's typed buffer
// as one constant item, mesh files keep their numbering and are read once, and every mistake is
// one message naming its place (through the tool: one line and exit status 2).
#include "tools/quillix/bound_inputs.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include <xsi_mathf.h>
#include <xsihost/scene_file.h>

#include "tools/quillix/json_values.h"

namespace quillix::tool {
namespace {

using nlohmann::json;
using XSI::ULONG;
using XSI::MATH::CVector3f;
namespace fs = std::filesystem;

const fs::path kMeshes = fs::path(QUILLIX_SOURCE_DIR) / "examples" / "scenes" / "meshes";

constexpr const char* kScene = R"({"objects": [
  {"name": "grid", "type": "polymsh", "transform": {"translation": [1, 2, 3]},
   "mesh": {"points": [[0, 0, 0], [1, 0, 0], [1, 1, 0], [0, 1, 0], [2, 0, 0]],
            "polygons": [[0, 1, 2, 3], [1, 4, 2]],
            "attributes": {
              "Weights": {"type": "float", "values": [0.5, 1, 1.5, 2, 2.5]},
              "Up": {"type": "vector3", "context": "polygon", "values": [[0, 0, 1], [0, 1, 0]]},
              "Count": {"type": "long", "context": "singleton", "values": [7]}}}},
  {"name": "crv", "type": "crvlist", "parent": "grid", "transform": {"rotation": [0, 0, 90]},
   "curves": [{"degree": 1, "points": [[0, 0, 0], [1, 2, 3]]},
              {"degree": 1, "points": [[4, 5, 6], [7, 8, 9, 2]]}]}]})";

xsihost::PortRecord Port(ULONG types, ULONG structures) {
  xsihost::PortRecord port;
  port.id = 1010;
  port.dataTypes = types;
  port.structures = structures;
  return port;
}
const xsihost::PortRecord kAnyPort = Port(0x2C3FF, 3);

class BoundInputs : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    std::string error;
    auto scene = xsihost::ParseSceneText(kScene, ".", "test.json", error);
    ASSERT_NE(scene, nullptr) << error;
    xsihost::SetActiveScene(std::move(scene));
  }
  static void TearDownTestSuite() { xsihost::SetActiveScene(std::make_shared<xsihost::Scene>()); }

  xsihost::PortValues Read(const json& from, const xsihost::PortRecord& port = kAnyPort) {
    return reader_.Read({{"from", from}}, port, 1.0, place_);
  }
  // The message of the InputError that reading `from` raises.
  std::string Mistake(const json& input, const xsihost::PortRecord& port = kAnyPort) {
    try {
      reader_.Read(input, port, 1.0, place_);
    } catch (const InputError& e) {
      return e.what();
    }
    return "no error";
  }

  BoundInputReader reader_{kMeshes};
  const JsonPlace root_, inputs_{root_, "inputs"}, place_{inputs_, "1010"};
};

TEST_F(BoundInputs, SceneDataBecomeOneConstantTypedItem) {
  const xsihost::PortValues points = Read({{"object", "grid"}, {"data", "points"}});
  EXPECT_TRUE(points.constant && points.array && points.count == 1);
  EXPECT_EQ(points.type, XSI::siICENodeDataVector3);
  EXPECT_EQ(points.ArrayAt<CVector3f>(0).at(4).GetX(), 2.0f);
  EXPECT_EQ(Read({{"object", "grid"}, {"data", "polygons"}}).ArrayAt<XSI::LONG>(0),
            (std::vector<XSI::LONG>{0, 1, 2, 3, -2, 1, 4, 2, -2}));

  const auto second = Read({{"object", "crv"}, {"data", "controlPoints"}, {"curve", 1}});
  EXPECT_EQ(second.ArrayAt<CVector3f>(0)[1].GetZ(), 9.0f);  // the weight is not a coordinate

  EXPECT_EQ(Read({{"object", "grid"}, {"attribute", "Weights"}}).ArrayAt<float>(0),
            (std::vector<float>{0.5f, 1, 1.5f, 2, 2.5f}));
  EXPECT_EQ(Read({{"object", "grid"}, {"attribute", "Up"}}).ArrayAt<CVector3f>(0)[1].GetY(), 1.0f);
  const auto count = Read({{"object", "grid"}, {"attribute", "Count"}});
  EXPECT_FALSE(count.array);
  EXPECT_EQ(count.Single<XSI::LONG>(0), 7);

  // The curve's global transform is its local one (90° about z) moved by its parent.
  using XSI::MATH::CMatrix4f;
  const auto local = Read({{"object", "crv"}, {"data", "localTransform"}}).Single<CMatrix4f>(0);
  const auto global = Read({{"object", "crv"}, {"data", "globalTransform"}}).Single<CMatrix4f>(0);
  EXPECT_NEAR(local.GetValue(0, 1), 1.0f, 1e-6f);
  EXPECT_EQ(local.GetValue(3, 2), 0.0f);
  EXPECT_EQ(global.GetValue(3, 2), 3.0f);
}

TEST_F(BoundInputs, MeshFilesKeepTheirNumberingAndAreReadOnce) {
  for (const char* file : {"tetra.obj", "pyramid.ply", "pyramid_and_triangle.gltf"}) {
    SCOPED_TRACE(file);
    xsihost::MeshData mesh;
    std::string error;
    if (!xsihost::LoadMeshFile((kMeshes / file).string(), mesh, error)) {
      EXPECT_STREQ(file, "pyramid_and_triangle.gltf") << error;  // a build without glTF
      continue;
    }
    const auto points = Read({{"meshFile", file}, {"data", "points"}}).ArrayAt<CVector3f>(0);
    ASSERT_EQ(points.size(), mesh.points.size());
    EXPECT_EQ(points.back().GetY(), static_cast<float>(mesh.points.back()[1]));
    const auto polygons = Read({{"meshFile", file}, {"data", "polygons"}}).ArrayAt<XSI::LONG>(0);
    EXPECT_EQ(polygons.front(), mesh.polygons.front().front());
    EXPECT_EQ(polygons.back(), -2);
  }
  const fs::path copy = fs::temp_directory_path() / ("bound-once-" + std::to_string(getpid()));
  fs::create_directories(copy);
  fs::copy_file(kMeshes / "tetra.obj", copy / "tetra.obj");
  BoundInputReader reader(copy);
  const json input = {{"from", {{"meshFile", "tetra.obj"}, {"data", "points"}}}};
  const auto first = reader.Read(input, kAnyPort, 1.0, JsonPlace());
  fs::remove_all(copy);  // a second naming must not read the file again
  EXPECT_TRUE(reader.Read(input, kAnyPort, 1.0, JsonPlace()).SameData(first));
}

TEST_F(BoundInputs, EachMistakeNamesItsPlace) {
  auto from = [](const json& j) { return json{{"from", j}}; };
  EXPECT_EQ(Mistake(from({{"object", "crv"}, {"data", "points"}})),
            "/inputs/1010/from/data: \"crv\" is a crvlist, not a polygon mesh: it has no points");
  EXPECT_EQ(Mistake(from({{"object", "grid"}, {"attribute", "Mass"}})),
            "/inputs/1010/from/attribute: \"grid\" has no attribute \"Mass\"");
  EXPECT_EQ(Mistake(from({{"object", "crv"}, {"data", "controlPoints"}, {"curve", 2}})),
            "/inputs/1010/from/curve: expected a curve index from 0 to 1");
  EXPECT_EQ(Mistake(from({{"object", "grid"}, {"data", "localTransform"}}), Port(256, 2)),
            "/inputs/1010/from: port 1010 does not accept a single matrix44, which this gives");
  // A bound input takes its type and structure from its data.
  EXPECT_EQ(Mistake({{"from", {{"object", "grid"}, {"data", "points"}}}, {"type", "int"}})
                .rfind("/inputs/1010/type: unknown key", 0),
            0u);
}

// Through the tool: mesh files whose counts claim more than they hold, and the other mistakes,
// end in one line naming the file and the place, with exit status 2.
TEST(BoundInputsTool, BadBindingsEndInOneLineAndStatusTwo) {
  const fs::path dir = fs::temp_directory_path() / ("bound-tool-" + std::to_string(getpid()));
  fs::create_directories(dir);
  std::ofstream(dir / "many.ply") << "ply\nformat ascii 1.0\nelement edge 1000000000000\n"
                                     "element vertex 1000000000000\nproperty float x\n"
                                     "property float y\nproperty float z\nend_header\n0 0 0\n";
  std::ofstream(dir / "long_face.ply")
      << "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\n"
         "property float z\nelement face 1\nproperty list uint int vertex_indices\nend_header\n"
         "0 0 0\n1 0 0\n0 1 0\n1000000000000 0 1 2\n";
  std::ofstream(dir / "short.gltf")
      << R"({"asset": {"version": "2.0"}, "buffers": [{"byteLength": 12,
         "uri": "data:application/octet-stream;base64,AAAAAAAAAAAAAAAA"}],
         "bufferViews": [{"buffer": 0, "byteLength": 12}],
         "accessors": [{"bufferView": 0, "componentType": 5126, "count": 1000000000000,
                        "type": "VEC3"}],
         "meshes": [{"primitives": [{"attributes": {"POSITION": 0}}]}]})";
  const std::vector<std::pair<json, std::string>> cases = {
      {{{"meshFile", "many.ply"}, {"data", "points"}}, "many.ply: the file ends before"},
      {{{"meshFile", "long_face.ply"}, {"data", "polygons"}}, "long_face.ply: face 0: bad list"},
#ifdef QUILLIX_HAVE_GLTF
      {{{"meshFile", "short.gltf"}, {"data", "points"}},
       "short.gltf: mesh 0, primitive 0: the positions claim 1000000000000"},
#endif
      {{{"object", "ghost"}, {"data", "points"}}, "/from/object: no object \"ghost\""}};
  for (const auto& [from, expected] : cases) {
    SCOPED_TRACE(from.dump());
    const json request = {
        {"requests",
         {{{"node", "Quillix_slins"}, {"port", 2010}, {"inputs", {{"1010", {{"from", from}}}}}}}}};
    std::ofstream(dir / "request.json") << request.dump();
    const std::string command = std::string(QUILLIX_TOOL_PATH) + " eval " +
                                (dir / "request.json").string() + " > /dev/null 2> " +
                                (dir / "err.txt").string();
    const int status = std::system(command.c_str());
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 2);
    std::ifstream in(dir / "err.txt");
    const std::string err{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    EXPECT_EQ(err.find('\n'), err.size() - 1) << err;
    EXPECT_NE(err.find(expected), std::string::npos) << err;
  }
  fs::remove_all(dir);
}

}  // namespace
}  // namespace quillix::tool
