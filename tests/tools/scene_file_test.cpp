// Scene files and mesh files: what loads, the vertex numbering of mesh files, and one clear
// message for every kind of bad input.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>

#include <sys/wait.h>

#include <xsihost/scene.h>
#include <xsihost/scene_file.h>

namespace {

namespace fs = std::filesystem;
using xsihost::LoadSceneFile;
using xsihost::ParseSceneText;

const fs::path kExamples = fs::path(QUILLIX_SOURCE_DIR) / "examples" / "scenes";

std::string errorOf(const std::string& json, const std::string& base = ".") {
  std::string error;
  const auto scene = ParseSceneText(json, base, "s.json", error);
  EXPECT_EQ(scene, nullptr);
  return error;
}

std::string objects(const std::string& list) { return "{\"objects\": [" + list + "]}"; }

TEST(SceneFile, TheShowcaseLoadsWithEveryKindOfObject) {
  std::string error;
  const auto scene = LoadSceneFile((kExamples / "showcase.json").string(), error);
  ASSERT_NE(scene, nullptr) << error;
  EXPECT_EQ(scene->Objects().size(), 23u);
  const auto bone3 = scene->Find(L"arm_bone3");
  ASSERT_NE(bone3, nullptr);
  const auto p = bone3->GlobalAt(1.0).GetTranslation();
  EXPECT_NEAR(p.GetX(), -5 + 2 + 1.5 * std::sqrt(3.0) / 2, 1e-12);
  EXPECT_NEAR(p.GetY(), 0.75, 1e-12);
  EXPECT_EQ(scene->Find(L"props.crate")->mesh_->polygons.size(), 6u);
  EXPECT_FALSE(scene->Find(L"props.crate_hidden")->visible_.At(1.0));
  EXPECT_EQ(scene->Find(L"track")->curves_.size(), 2u);
  EXPECT_EQ(scene->CurrentFrame(), 1.0);
}

TEST(MeshFiles, VertexIOfTheFileIsPointIOfTheMesh) {
  xsihost::MeshData obj, ascii, binary, ell;
  std::string error;
  ASSERT_TRUE(xsihost::LoadMeshFile((kExamples / "meshes" / "tetra.obj").string(), obj, error))
      << error;
  ASSERT_EQ(obj.points.size(), 4u);  // texture coordinates and normals add no vertices
  EXPECT_EQ(obj.points[2], (xsihost::Vec3d{-1, 1, -1}));
  EXPECT_EQ(obj.polygons[1], (std::vector<std::int32_t>{0, 3, 1}));

  ASSERT_TRUE(xsihost::LoadMeshFile((kExamples / "meshes" / "pyramid.ply").string(), ascii, error))
      << error;
  ASSERT_EQ(ascii.points.size(), 5u);
  EXPECT_EQ(ascii.points[4], (xsihost::Vec3d{0, 1.5, 0}));
  EXPECT_EQ(ascii.polygons[0], (std::vector<std::int32_t>{0, 1, 2, 3}));  // the quad stays a quad

  ASSERT_TRUE(
      xsihost::LoadMeshFile((kExamples / "meshes" / "prism_binary.ply").string(), binary, error))
      << error;
  ASSERT_EQ(binary.points.size(), 6u);
  EXPECT_EQ(binary.points[5], (xsihost::Vec3d{0, 1, 2}));
  EXPECT_EQ(binary.polygons[3], (std::vector<std::int32_t>{1, 2, 5, 4}));

  ASSERT_TRUE(xsihost::LoadMeshFile((kExamples / "meshes" / "lprism.obj").string(), ell, error))
      << error;
  EXPECT_EQ(ell.polygons[0].size(), 6u);
  EXPECT_EQ(ell.polygons[7], (std::vector<std::int32_t>{11, 5, 0, 6}));  // relative indices
}

TEST(MeshFiles, GltfVerticesFollowTheirAccessorsInMeshAndPrimitiveOrder) {
  xsihost::MeshData mesh;
  std::string error;
  const std::string path = (kExamples / "meshes" / "pyramid_and_triangle.gltf").string();
  const bool loaded = xsihost::LoadMeshFile(path, mesh, error);
#ifndef QUILLIX_HAVE_GLTF
  if (!loaded) GTEST_SKIP() << error;
#endif
  ASSERT_TRUE(loaded) << error;
  // Two primitives share the pyramid's five positions; the triangle's own three follow them.
  ASSERT_EQ(mesh.points.size(), 8u);
  EXPECT_EQ(mesh.points[4], (xsihost::Vec3d{0, 1, 0}));
  EXPECT_EQ(mesh.points[7], (xsihost::Vec3d{3, 1, 0}));
  ASSERT_EQ(mesh.polygons.size(), 7u);
  EXPECT_EQ(mesh.polygons[2], (std::vector<std::int32_t>{0, 4, 1}));
  EXPECT_EQ(mesh.polygons[6], (std::vector<std::int32_t>{5, 6, 7}));
}

TEST(MeshFiles, BigEndianPlyWithMixedScalarTypes) {
  const fs::path path = fs::temp_directory_path() / "scene_file_test_big.ply";
  std::string data =
      "ply\nformat binary_big_endian 1.0\nelement vertex 3\nproperty short x\nproperty float y\n"
      "property double z\nelement face 1\nproperty list ushort int vertex_indices\nend_header\n";
  auto put = [&](std::initializer_list<unsigned char> bytes) {
    data.append(bytes.begin(), bytes.end());
  };
  put({0x00, 0x01, 0x3F, 0x80, 0x00, 0x00, 0x40, 0x00, 0, 0, 0, 0, 0, 0});  // 1, 1.0f, 2.0
  put({0xFF, 0xFE, 0x00, 0x00, 0x00, 0x00, 0, 0, 0, 0, 0, 0, 0, 0});        // −2, 0, 0
  put({0x00, 0x00, 0xC0, 0x00, 0x00, 0x00, 0x3F, 0xF0, 0, 0, 0, 0, 0, 0});  // 0, −2.0f, 1.0
  put({0x00, 0x03, 0, 0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 1});                    // face 2 0 1
  std::ofstream(path, std::ios::binary) << data;
  xsihost::MeshData mesh;
  std::string error;
  ASSERT_TRUE(xsihost::LoadMeshFile(path.string(), mesh, error)) << error;
  ASSERT_EQ(mesh.points.size(), 3u);
  EXPECT_EQ(mesh.points[0], (xsihost::Vec3d{1, 1, 2}));
  EXPECT_EQ(mesh.points[1], (xsihost::Vec3d{-2, 0, 0}));
  EXPECT_EQ(mesh.points[2], (xsihost::Vec3d{0, -2, 1}));
  EXPECT_EQ(mesh.polygons[0], (std::vector<std::int32_t>{2, 0, 1}));
  fs::remove(path);
}

TEST(MeshFiles, BadFilesNameTheFileAndThePlace) {
  const fs::path dir = fs::temp_directory_path() / "scene_file_test_meshes";
  fs::create_directories(dir);
  auto write = [&](const char* name, const std::string& text) {
    std::ofstream(dir / name, std::ios::binary) << text;
    return (dir / name).string();
  };
  xsihost::MeshData mesh;
  std::string error;
  const std::string badValue = write("bad.ply",
                                     "ply\nformat ascii 1.0\nelement vertex 2\nproperty float "
                                     "x\nproperty float y\nproperty float z\n"
                                     "end_header\n0 0 0\n1 x 0\n");
  EXPECT_FALSE(xsihost::LoadMeshFile(badValue, mesh, error));
  EXPECT_EQ(error, badValue + ": line 9: \"x\" is not a number");
  const std::string shortBinary = write(
      "short.ply",
      "ply\nformat binary_little_endian 1.0\nelement vertex 3\nproperty float x\nproperty float y\n"
      "property float z\nend_header\n\1\2\3");
  EXPECT_FALSE(xsihost::LoadMeshFile(shortBinary, mesh, error));
  EXPECT_EQ(error, shortBinary + ": the binary data end early");
  EXPECT_TRUE(mesh.points.empty());  // nothing half filled
  const std::string badIndex = write("bad.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\nf 1 2 9\n");
  EXPECT_FALSE(xsihost::LoadMeshFile(badIndex, mesh, error));
  EXPECT_NE(error.find(badIndex + ": "), std::string::npos);
  EXPECT_FALSE(xsihost::LoadMeshFile(write("mesh.stl", "solid"), mesh, error));
  EXPECT_NE(error.find("unknown mesh file type \".stl\""), std::string::npos);
  fs::remove_all(dir);
}

TEST(SceneFile, EachKindOfBadInputGetsOneMessageWithItsPlace) {
  EXPECT_EQ(errorOf("{\n  \"objects\": [\n    { \"name\": \"a\", }\n  ]\n}"),
            "s.json:3:20: invalid JSON: syntax error while parsing object key - unexpected '}'; "
            "expected string literal");
  EXPECT_EQ(
      errorOf(objects(R"({"name": "a", "type": "polymsh", "mesh": {"file": "missing.obj"}})")),
      "s.json: /objects/0/mesh/file: ./missing.obj: cannot open the mesh file");
  EXPECT_EQ(errorOf(objects(R"({"name": "a", "type": "null", "parent": "b"})")),
            "s.json: /objects/0/parent: unknown parent \"b\"");
  EXPECT_EQ(errorOf(objects(R"({"name": "a", "type": "null", "parent": "c"},
                               {"name": "b", "type": "null", "parent": "a"},
                               {"name": "c", "type": "null", "parent": "b"})")),
            "s.json: /objects/0/parent: cycle of parents: \"a\" -> \"c\" -> \"b\" -> \"a\"");
  EXPECT_EQ(errorOf(objects(R"({"name": "a", "type": "null", "parent": "a"})")),
            "s.json: /objects/0/parent: cycle of parents: \"a\" -> \"a\"");
  EXPECT_EQ(errorOf(objects(R"({"name": "a", "type": "null"}, {"name": "a", "type": "cube"})")),
            "s.json: /objects/1/name: duplicate name \"a\" (also /objects/0)");
  EXPECT_EQ(errorOf(objects(R"({"name": "c", "type": "crvlist",
                               "curves": [{"degree": 2, "points": [[0,0,0],[1,0,0],[2,0,0]], "knots": [0,0,1,1,1]}]})")),
            "s.json: /objects/0/curves/0: inconsistent knots: 3 control points of degree 2 need 6 "
            "knots, not 5");
  EXPECT_EQ(errorOf(objects(R"({"name": "c", "type": "crvlist",
                               "curves": [{"degree": 1, "points": [[0,0,0],[1,0,0]], "knots": [0,1,0.5,1]}]})")),
            "s.json: /objects/0/curves/0: inconsistent knots: knot 2 (0.5) is smaller than the "
            "knot before it (1)");
  EXPECT_EQ(
      errorOf(objects(R"({"name": "a", "type": "null", "transform": {"rotation": [0, "90", 0]}})")),
      "s.json: /objects/0/transform/rotation/1: expected a number");
  EXPECT_EQ(errorOf(objects(R"({"name": "a", "type": "null", "colour": "red"})")),
            "s.json: /objects/0/colour: unknown key \"colour\"");
  EXPECT_EQ(
      errorOf(objects(
          R"({"name": "m", "type": "polymsh", "mesh": {"points": [[0,0,0],[1,0,0],[0,1,0]], "polygons": [[0,1,3]]}})")),
      "s.json: /objects/0/mesh/polygons/0/2: vertex 3 does not exist (the mesh has 3 points)");
  EXPECT_EQ(
      errorOf(objects(
          R"({"name": "m", "type": "polymsh", "mesh": {"points": [[0,0,0],[1,0,0],[0,1,0]], "polygons": [[0,1,2]],
                               "attributes": {"w": {"type": "float", "values": [1, 2]}}}})")),
      "s.json: /objects/0/mesh/attributes/w/values: expected 3 values, one per point");
  EXPECT_EQ(
      errorOf(objects(
          R"({"name": "a", "type": "null", "transform": {"matrix": [[1,0,0,0],[0,1,0,0],[0,0,1,0],[0,0,0,1]]},
                               "keys": {"translation": [[1, [0,0,0]]]}})")),
      "s.json: /objects/0/keys: a transform given as a matrix cannot be keyed; give scaling, "
      "rotation and translation");
  EXPECT_EQ(
      errorOf(objects(
          R"({"name": "a", "type": "null", "keys": {"translation": [[2, [0,0,0]], [1, [1,0,0]]]}})")),
      "s.json: /objects/0/keys/translation/1/0: key times must increase strictly");
  EXPECT_EQ(errorOf(objects(R"({"name": "m", "type": "polymsh"})")),
            "s.json: /objects/0: a \"polymsh\" object needs a \"mesh\"");
  EXPECT_EQ(errorOf("[]"), "s.json: /: expected a JSON object with \"objects\"");
  // Control characters from the file (found by fuzz_scene_file) are escaped: still one line.
  EXPECT_EQ(errorOf(objects(R"({"name": "a", "type": "null", "par\nt\u0001": "b"})")),
            "s.json: /objects/0/par\\nt\\u0001: unknown key \"par\\nt\\u0001\"");
}

TEST(SceneFile, ALongChainOfParentsLoadsAndGoesAwayWithoutDeepRecursion) {
  // Each object is the parent of the one before it; the chain is listed child first.
  constexpr int kDepth = 100000;
  std::string list;
  for (int i = 0; i < kDepth; ++i) {
    if (i) list += ",";
    list += "{\"name\": \"n" + std::to_string(i) + "\", \"type\": \"null\", " +
            (i + 1 < kDepth ? "\"parent\": \"n" + std::to_string(i + 1) + "\", " : "") +
            "\"transform\": {\"translation\": [1, 0, 0]}}";
  }
  std::string error;
  auto scene = ParseSceneText("{\"objects\": [" + list + "]}", ".", "s.json", error);
  ASSERT_NE(scene, nullptr) << error;
  EXPECT_EQ(scene->Find(L"n0")->GlobalAt(1.0).GetPosX(), static_cast<double>(kDepth));
  scene.reset();
}

TEST(SceneFile, FullNamesCarryTheEnclosingModels) {
  std::string error;
  const auto scene = ParseSceneText(objects(R"(
      {"name": "leaf", "type": "null", "parent": "mid"},
      {"name": "outer", "type": "#model"},
      {"name": "inner", "type": "#model", "parent": "outer"},
      {"name": "mid", "type": "null", "parent": "inner"},
      {"name": "top", "type": "null"})"),
                                    ".", "s.json", error);
  ASSERT_NE(scene, nullptr) << error;
  EXPECT_EQ(scene->Find(L"outer.inner.mid.leaf"), nullptr);  // only models prefix names
  EXPECT_NE(scene->Find(L"outer.inner.mid"), nullptr);
  EXPECT_EQ(scene->Find(L"outer.inner.leaf")->FullName(), L"outer.inner.leaf");
  EXPECT_EQ(scene->Find(L"outer.inner")->name_, L"inner");
  EXPECT_NE(scene->Find(L"top"), nullptr);
}

TEST(SceneFile, KnotVectorsWithoutEndKnotsOrWithoutKnotsAtAll) {
  std::string error;
  const auto scene = ParseSceneText(objects(R"(
      {"name": "short", "type": "crvlist", "curves": [{"degree": 2, "points": [[0,0,0],[1,1,0],[2,0,0]], "knots": [0, 0, 1, 1]}]},
      {"name": "open", "type": "crvlist", "curves": [{"degree": 3, "points": [[0,0,0],[1,1,0],[2,0,0],[3,1,0],[4,0,0]]}]},
      {"name": "loop", "type": "crvlist", "curves": [{"degree": 3, "closed": true, "points": [[1,0,0],[0,1,0],[-1,0,0],[0,-1,0]]}]})"),
                                    ".", "s.json", error);
  ASSERT_NE(scene, nullptr) << error;
  EXPECT_EQ(scene->Find(L"short")->curves_[0]->Data().knots,
            (std::vector<double>{0, 0, 0, 1, 1, 1}));
  EXPECT_EQ(scene->Find(L"open")->curves_[0]->Data().knots,
            (std::vector<double>{0, 0, 0, 0, 1, 2, 2, 2, 2}));
  const auto& loop = *scene->Find(L"loop")->curves_[0];
  EXPECT_EQ(loop.Data().points.size(), 7u);
  EXPECT_EQ(loop.ParameterFromNormalized(0.0), 0.0);
  EXPECT_EQ(loop.ParameterFromNormalized(1.0), 4.0);
  // A periodic curve ends where it starts, with the same tangent.
  const auto a = loop.Evaluate(0.0), b = loop.Evaluate(4.0);
  for (int k = 0; k < 3; ++k) {
    EXPECT_NEAR(a.position[k], b.position[k], 1e-12);
    EXPECT_NEAR(a.tangent[k], b.tangent[k], 1e-12);
  }
}

TEST(SceneTool, BadSceneFilesExitWithStatusTwoAndOneMessage) {
  const fs::path bad = fs::temp_directory_path() / "scene_tool_bad.json";
  std::ofstream(bad) << objects(R"({"name": "a", "type": "null", "parent": "ghost"})");
  const fs::path errFile = fs::temp_directory_path() / "scene_tool_bad.err";
  const std::string command = std::string(QUILLIX_TOOL_PATH) + " scene " + bad.string() +
                              " > /dev/null 2> " + errFile.string();
  const int status = std::system(command.c_str());
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 2);
  std::ifstream in(errFile);
  std::string line, rest;
  std::getline(in, line);
  EXPECT_EQ(line, "quillix: " + bad.string() + ": /objects/0/parent: unknown parent \"ghost\"");
  EXPECT_FALSE(std::getline(in, rest));
  fs::remove(bad);
  fs::remove(errFile);

  const std::string good = std::string(QUILLIX_TOOL_PATH) + " scene " +
                           (kExamples / "showcase.json").string() + " > /dev/null";
  EXPECT_EQ(std::system(good.c_str()), 0);
}

TEST(SceneTool, RunOpensASceneAndReportsBadArgumentsWithStatusTwo) {
  const fs::path home = fs::temp_directory_path() / "scene_tool_run_home";
  fs::remove_all(home);
  const fs::path out = fs::temp_directory_path() / "scene_tool_run.out";
  const std::string prefix =
      "XSI_USERHOME=" + home.string() + " " + QUILLIX_TOOL_PATH + " run OpenScene ";
  const std::string ok =
      prefix + "PathName=" + (kExamples / "minimal.json").string() + " --json > " + out.string();
  ASSERT_EQ(std::system(ok.c_str()), 0);
  std::ifstream in(out);
  std::stringstream text;
  text << in.rdbuf();
  EXPECT_NE(text.str().find("\"status\": 0"), std::string::npos) << text.str();
  EXPECT_TRUE(fs::exists(home / "Data" / "Preferences" / "RecentFileMenus.xml"));

  const std::string bad = prefix + "Confirm=perhaps > /dev/null 2> " + out.string();
  const int status = std::system(bad.c_str());
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 2);
  std::ifstream err(out);
  std::string line;
  std::getline(err, line);
  EXPECT_EQ(line,
            "quillix: run: argument \"Confirm\": \"perhaps\" is not a boolean (true or false)");
  fs::remove_all(home);
  fs::remove(out);
}

}  // namespace
