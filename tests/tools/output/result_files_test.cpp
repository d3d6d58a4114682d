// OBJ and PLY text of small results, exactly; file naming; write failures.
#include "tools/output/result_files.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <vector>

#include "tools/output/file_write.h"
#include "tools/output/shapes.h"

namespace quillix {
namespace {

TEST(ResultFilesTest, PolylinesBecomeObjectsWithLineElementsNumberedAcrossObjects) {
  const std::vector<Vec3f> input = {{0, 0, 0}, {1, 0.05f, 0}, {2, -0.5f, 1e20f}};
  const std::vector<Vec3f> single = {{7, 7, 7}};
  ObjText obj("r0 p2010 e0");
  obj.AddPolyline("input", input);
  obj.AddPolyline("result", single);
  obj.AddPolyline("empty", {});
  obj.AddPolyline("again", std::vector<Vec3f>{{1, 2, 3}, {4, 5, 6}});
  EXPECT_EQ(obj.Text(),
            "# r0 p2010 e0\n"
            "o input\nv 0 0 0\nv 1 0.05 0\nv 2 -0.5 1e+20\nl 1 2 3\n"
            "o result\nv 7 7 7\np 4\n"
            "o empty\n"
            "o again\nv 1 2 3\nv 4 5 6\nl 5 6\n");
}

TEST(ResultFilesTest, PathIsAChainOverItsMeshVertices) {
  // Two quads side by side, a degenerate two-vertex polygon, and one with a bad index.
  const std::vector<Vec3f> grid = {{0, 0, 0}, {1, 0, 0}, {2, 0, 0},
                                   {0, 1, 0}, {1, 1, 0}, {2, 1, 0}};
  const std::vector<std::int32_t> description = {0, 1, 4, 3, -2, 1, 2, 5, 4, -2, 0, 5, -2, 0, 9, 1};
  ObjText obj;
  obj.AddPolyline("before", std::vector<Vec3f>{{5, 5, 5}});
  const std::size_t mesh = obj.AddMesh("mesh", grid, description);
  EXPECT_TRUE(obj.AddVertexPath("path", mesh, std::vector<std::int32_t>{3, 4, 1, 2}));
  EXPECT_FALSE(obj.AddVertexPath("bad", mesh, std::vector<std::int32_t>{0, 6}));
  EXPECT_FALSE(obj.AddVertexPath("unknown", mesh + 1, std::vector<std::int32_t>{0}));
  EXPECT_EQ(obj.Text(),
            "o before\nv 5 5 5\np 1\n"
            "o mesh\nv 0 0 0\nv 1 0 0\nv 2 0 0\nv 0 1 0\nv 1 1 0\nv 2 1 0\n"
            "f 2 3 6 5\nf 3 4 7 6\n"
            "o path\nl 5 6 3 4\n");
}

TEST(ResultFilesTest, BoxIsItsCornersAndTwelveEdges) {
  Mat4f m = Mat4f::Identity();
  m.m[0][0] = 2;
  m.m[3][0] = 10;
  m.m[0][3] = 5;  // velocity column of a packed moving box: not part of the shape
  ObjText obj;
  obj.AddBox("a", m);
  EXPECT_EQ(obj.Text(),
            "o a\nv 8 -1 -1\nv 12 -1 -1\nv 8 1 -1\nv 12 1 -1\n"
            "v 8 -1 1\nv 12 -1 1\nv 8 1 1\nv 12 1 1\n"
            "l 1 2\nl 3 4\nl 5 6\nl 7 8\nl 1 3\nl 2 4\nl 5 7\nl 6 8\n"
            "l 1 5\nl 2 6\nl 3 7\nl 4 8\n");
}

TEST(ResultFilesTest, SphereListsBecomePlyPointsWithRadius) {
  Mat4f encoded;
  encoded.m[0][3] = 1.125f;
  encoded.m[3][0] = 1.5f;
  encoded.m[3][3] = 1;
  std::vector<SpherePoint> spheres = SpheresFromEncodedMatrices(std::span(&encoded, 1));
  const std::vector<std::array<float, 4>> vectors = {{0, 0.5f, -1, 0.25f}};
  const std::vector<SpherePoint> fromVectors = SpheresFromVectors(vectors);
  spheres.insert(spheres.end(), fromVectors.begin(), fromVectors.end());
  const std::vector<Vec3f> points = {{3, 2, 1}};
  const std::vector<SpherePoint> fromPoints = SpheresFromPoints(points, 0);
  spheres.insert(spheres.end(), fromPoints.begin(), fromPoints.end());
  EXPECT_EQ(SpheresToPly(spheres, "r1 p2010 e0"),
            "ply\nformat ascii 1.0\ncomment r1 p2010 e0\nelement vertex 3\n"
            "property float x\nproperty float y\nproperty float z\nproperty float radius\n"
            "end_header\n"
            "1.5 0 0 1.125\n0 0.5 -1 0.25\n3 2 1 0\n");
  EXPECT_EQ(SpheresToPly({}),
            "ply\nformat ascii 1.0\nelement vertex 0\n"
            "property float x\nproperty float y\nproperty float z\nproperty float radius\n"
            "end_header\n");
}

TEST(ResultFilesTest, MeshEdgesAreDistinctAndSkipBadPolygons) {
  const std::vector<std::int32_t> description = {0, 1, 2, -2, 2, 1, 3, -1, -1, 4, 5, -2, 0, 7, 1};
  const auto edges = MeshEdges(description, 6);
  const std::vector<std::array<std::int32_t, 2>> expected = {{0, 1}, {1, 2}, {0, 2},
                                                             {1, 3}, {2, 3}, {4, 5}};
  EXPECT_EQ(edges, expected);
  EXPECT_EQ(SplitPolygons(description).size(), 4u);  // the unterminated tail counts
}

TEST(ResultFilesTest, FilesAreNamedByRequestPortAndElement) {
  EXPECT_EQ(ResultFileName(0, 2010, 3, "obj"), "r0_p2010_e3.obj");
  EXPECT_EQ(ResultFileName(12, 2020, 0, "png"), "r12_p2020_e0.png");
}

TEST(ResultFilesTest, WriteFailuresAreReportedWithThePath) {
  const std::filesystem::path dir = testing::TempDir() + "/output_write_test";
  ASSERT_TRUE(EnsureDirectory(dir / "a" / "b").ok);
  ASSERT_TRUE(WriteFileBytes(dir / "a" / "f.obj", "o x\n").ok);
  EXPECT_EQ(std::filesystem::file_size(dir / "a" / "f.obj"), 4u);

  const OutputStatus missing = WriteFileBytes(dir / "missing" / "f.obj", "x");
  EXPECT_FALSE(missing.ok);
  EXPECT_NE(missing.message.find("missing/f.obj"), std::string::npos) << missing.message;
  const OutputStatus underFile = EnsureDirectory(dir / "a" / "f.obj" / "sub");
  EXPECT_FALSE(underFile.ok);
  EXPECT_NE(underFile.message.find("f.obj/sub"), std::string::npos) << underFile.message;
  std::filesystem::remove_all(dir);
}

}  // namespace
}  // namespace quillix
