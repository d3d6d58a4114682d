// Requests and checks shared by the tests of the three matrix-pair nodes (Quillix_cdbte,
// Quillix_iotb, Quillix_iotmb), which have the same ports and the same broadcast.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <utility>
#include <vector>

#include "support/plugin_fixture.h"
#include "tests/core/spatial/box_fixtures.h"

namespace quillix::test {

using XSI::MATH::CMatrix4f;
using Matrices = std::vector<CMatrix4f>;

inline constexpr ULONG kModePort = 1000, kMatrixAPort = 1010, kMatrixBPort = 1020;
inline constexpr ULONG kResultPort = 2010;

inline CMatrix4f Host(const Mat4f& m) {
  CMatrix4f h;
  std::memcpy(h.Get(), m.m, sizeof(m.m));
  return h;
}

inline CMatrix4f HostTranslation(Vec3f at) { return Host(quillix::testing::Translation(at)); }

inline EvaluationRequest PairRequest(PortValues a, PortValues b, ULONG elements) {
  EvaluationRequest r;
  r.elements = elements;
  r.SetInput(kMatrixAPort, std::move(a));
  r.SetInput(kMatrixBPort, std::move(b));
  return r;
}

// The single-valued results of every element.
template <class T>
std::vector<T> Singles(const OutputResult& out) {
  std::vector<T> v;
  for (ULONG i = 0; i < out.values.count; ++i) v.push_back(out.values.Single<T>(i));
  return v;
}

// `node` writes exactly the elements of its batch, nothing for an unknown output port, and
// nothing when the host cannot report either matrix input's structure.
inline void ExpectWritesOnlyTheBatchAndNothingOnFailedQueries(const wchar_t* node) {
  auto r = PairRequest(PortValues::Singles(Matrices(4, HostTranslation({0, 0, 0}))),
                       PortValues::Singles(Matrices(4, HostTranslation({1, 0, 0}))), 4);
  r.batch = std::vector<ULONG>{0, 2};
  auto out = Evaluate(node, r, kResultPort);
  EXPECT_TRUE(out.values.WasWritten(0) && out.values.WasWritten(2));
  EXPECT_FALSE(out.values.WasWritten(1) || out.values.WasWritten(3));
  r.batch.reset();
  EXPECT_EQ(Evaluate(node, r, 2020).values.count, 0u);
  for (ULONG failing : {kMatrixAPort, kMatrixBPort}) {
    r.failingPortInfo = {failing};
    out = Evaluate(node, r, kResultPort);
    EXPECT_EQ(out.status, 0u);
    for (ULONG i = 0; i < 4; ++i) EXPECT_FALSE(out.values.WasWritten(i));
  }
}

// `node` over 3000 random pairs (boxes with velocities and subdivision counts packed in)
// gives the same results on four threads as on one.
inline void ExpectManyThreadsGiveTheSingleThreadedResults(const wchar_t* node) {
  const ULONG n = 3000;
  quillix::testing::RandomBoxes boxes(17);
  Matrices a(n), b(n);
  for (ULONG i = 0; i < n; ++i) {
    Mat4f ma = boxes.Next();
    Mat4f mb = boxes.Next();
    for (int r = 0; r < 3; ++r) {
      ma.m[r][3] = static_cast<float>(boxes.Uniform(-4, 4));
      mb.m[r][3] = static_cast<float>(boxes.Uniform(-4, 4));
    }
    ma.m[3][3] = static_cast<float>(i % 3);
    a[i] = Host(ma);
    b[i] = Host(mb);
  }
  auto r = PairRequest(PortValues::Singles(a), PortValues::Singles(b), n);
  r.batchSize = 50;
  r.threads = 1;
  const auto single = Evaluate(node, r, kResultPort);
  r.threads = 4;
  const auto threaded = Evaluate(node, r, kResultPort);
  EXPECT_EQ(single.values.flat, threaded.values.flat);
}

}  // namespace quillix::test
