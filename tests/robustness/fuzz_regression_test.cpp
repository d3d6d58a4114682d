// Inputs that the fuzz targets found faulting, kept as tests so the faults stay fixed.
#include <gtest/gtest.h>

#include <fstream>

#include <string>
#include <vector>

#include <xsihost/scene_file.h>

#include "core/mesh/path_chain.h"
#include "kernel/geometry.h"

namespace quillix::test {
namespace {

// fuzz_geometry_set: zero polygons with a null description in the byte-size encoding made Set
// pass the null pointer to memcpy (undefined behaviour, reported by UBSan).
TEST(FuzzRegression, SetWithoutPolygonsAcceptsANullDescriptionInEveryEncoding) {
  const Vec3f points[2] = {{0, 0, 0}, {1, 0, 0}};
  for (std::int32_t encoding :
       {kDescriptionByteSizes, kDescriptionInline, kDescriptionIntSizes, kDescriptionTriangles}) {
    for (std::int32_t polygons : {0, -1, -2147483647 - 1}) {
      QRVMemoryContext memory;
      {
        QRVGeometry geo(&memory);
        EXPECT_EQ(geo.Set(points, 2, kEncodingFloat, nullptr, nullptr, polygons, encoding), 0u)
            << encoding;
        EXPECT_EQ(geo.PolygonCount(), 0);
      }
      EXPECT_EQ(memory.BytesInUse(), 0);
    }
  }
}

// fuzz_path_description: indices after the last closing negative value were counted into a
// polygon one past the size array (heap overflow). They belong to no polygon.
TEST(FuzzRegression, PathDescriptionIgnoresIndicesAfterTheLastCloser) {
  const std::vector<Vec3f> points = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}};
  struct Case {
    std::vector<std::int32_t> description;
    std::int32_t polygons;  // -1: the build fails (nothing left to search)
  };
  const Case cases[] = {
      {{0, 1, 2, -1, 3, 0}, 1},     // trailing indices after a polygon
      {{0, 1, 2, -1, 0, 2, 3}, 1},  // an unclosed second polygon
      {{0, 1, 2}, -1},              // no closer at all: no polygon
      {{3, 3, 3, 3, 3, 3}, -1},
  };
  for (const auto& c : cases) {
    QRVMemoryContext memory;
    {
      QRVGeometry geo(&memory);
      const QRVStatus status = BuildPathGeometry(points, c.description, geo);
      if (c.polygons < 0) {
        EXPECT_NE(status, 0u);
        EXPECT_EQ(geo.Positions(), nullptr);
      } else {
        EXPECT_EQ(status, 0u);
        EXPECT_EQ(geo.PolygonCount(), c.polygons);
      }
    }
    EXPECT_EQ(memory.BytesInUse(), 0);
  }
}

// fuzz_scene_file: a number beyond a double ("6E2044") made the JSON library throw an
// out-of-range error that escaped the reader, which promises to report every failure.
TEST(FuzzRegression, SceneNumbersBeyondADoubleAreReportedNotThrown) {
  for (const std::string text :
       {"6E2044", "{\"objects\": [{\"name\": \"a\", \"transform\": {\"scaling\": [1E400, 1, 1]}}]}",
        "[-1e99999]"}) {
    std::string error;
    std::shared_ptr<xsihost::Scene> scene;
    EXPECT_NO_THROW(scene = xsihost::ParseSceneText(text, ".", "big.json", error)) << text;
    EXPECT_EQ(scene, nullptr);
    EXPECT_NE(error.find("big.json: invalid JSON"), std::string::npos) << error;
  }
}

// fuzz_mesh_file: a PLY face index or list length far beyond any integer (8.9e44) was
// converted to an integer before its range was checked, which is undefined.
TEST(FuzzRegression, PlyIndicesBeyondAnIntegerAreRefusedWithOneMessage) {
  const std::string header =
      "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\n"
      "property float z\nelement face 1\nproperty list uchar int vertex_indices\nend_header\n"
      "0 0 0\n1 0 0\n0 1 0\n";
  const std::string path = ::testing::TempDir() + "quillix_huge_index.ply";
  for (const std::string face :
       {"3 0 1 888888888888888888888888888888888888888888888\n",
        "888888888888888888888888888888888888888888888 0 1 2\n", "3 0 1 nan\n"}) {
    std::ofstream(path, std::ios::binary | std::ios::trunc) << header << face;
    xsihost::MeshData mesh;
    std::string error;
    EXPECT_FALSE(xsihost::LoadMeshFile(path, mesh, error)) << face;
    EXPECT_FALSE(error.empty());
    EXPECT_EQ(error.find('\n'), std::string::npos) << error;
  }
}

}  // namespace
}  // namespace quillix::test
