// QRVGeometry::Set over every position and description encoding, random counts and indices,
// optional channels of every form and a memory limit; then the derived items, the clean-ups
// and the removals. Whatever Set returns, the container must be usable or empty, and every
// byte it took must come back to the memory context.
#include <cstdint>
#include <cstring>
#include <vector>

#include "fuzz/fuzz_common.h"
#include "kernel/geometry.h"

using namespace quillix;
using quillix::fuzz::Check;

namespace {

constexpr std::int32_t kPositionEncodings[] = {0, 14, 1, 7, 15, 2, -1};
constexpr std::int32_t kDescriptionEncodings[] = {16, 17, 18, 19, 15, 20};

std::size_t EncodedSize(std::int32_t encoding) {
  return encoding == 1 || encoding == 7 ? 2 : encoding == 15 ? 8 : 4;
}

// `count` vectors of three components in `encoding`, as raw bytes. Counts beyond 4096 only
// come with null positions, which Set refuses before it reads any other array.
std::vector<std::uint8_t> Vectors(FuzzedDataProvider& in, std::int32_t count,
                                  std::int32_t encoding) {
  if (count > 4096) return {};
  std::vector<std::uint8_t> bytes(std::size_t(count < 0 ? 0 : count) * 3 * EncodedSize(encoding));
  if (encoding == 15) {
    for (std::size_t i = 0; i < bytes.size(); i += 8) {
      const double d =
          double(quillix::fuzz::ConsumeNastyFloat(in)) * (in.ConsumeBool() ? 1e30 : 1.0);
      std::memcpy(bytes.data() + i, &d, 8);
    }
  } else if (encoding == 1 || encoding == 7) {
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = in.ConsumeIntegral<std::uint8_t>();
  } else {
    for (std::size_t i = 0; i < bytes.size(); i += 4) {
      const float f = quillix::fuzz::ConsumeNastyFloat(in);
      std::memcpy(bytes.data() + i, &f, 4);
    }
  }
  return bytes;
}

struct Channel {
  std::vector<std::uint8_t> data;
  std::vector<std::int32_t> indices;
  QRVChannelInput input;
};

// A channel in one of its forms: absent, per node with or without indices, per vertex. The
// counts are usually right and sometimes deliberately not.
void MakeChannel(FuzzedDataProvider& in, std::int32_t vertexCount, std::int32_t nodeCount,
                 Channel& c) {
  const int form = in.ConsumeIntegralInRange<int>(0, 3);
  if (form == 0) return;
  const std::int32_t encoding = in.PickValueInArray(kPositionEncodings);
  const auto count = [&](std::int32_t right) {
    return in.ConsumeIntegralInRange<int>(0, 7) == 0
               ? in.ConsumeIntegralInRange<std::int32_t>(-1, 40)
               : right;
  };
  if (form == 3) {
    c.input.perVertex.count = count(vertexCount);
    c.input.perVertex.encoding = encoding;
    c.data = Vectors(in, std::max(c.input.perVertex.count, vertexCount), encoding);
    c.input.perVertex.data = c.data.empty() ? nullptr : c.data.data();
    return;
  }
  QRVNodeChannelInput& n = c.input.perNode;
  n.count = count(nodeCount);
  n.encoding = encoding;
  if (form == 2) {
    n.dataCount = in.ConsumeIntegralInRange<std::int32_t>(-1, 16);
    c.data = Vectors(in, std::max(n.dataCount, 1), encoding);
    // Indices cover the node count, so that a wrong count is caught by the count check.
    c.indices.resize(std::size_t(std::max(nodeCount, n.count < 0 ? 0 : n.count)));
    for (auto& i : c.indices)
      i = in.ConsumeIntegralInRange<std::int32_t>(-1, std::max(n.dataCount, 0));
    n.indices = c.indices.empty() ? nullptr : c.indices.data();
  } else {
    c.data = Vectors(in, std::max(n.count, nodeCount), encoding);
  }
  n.data = c.data.empty() ? nullptr : c.data.data();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  FuzzedDataProvider in(bytes, size);
  QRVMemoryContext memory;
  if (in.ConsumeBool())
    memory.SetLimit(true, in.ConsumeIntegralInRange<std::int64_t>(-16, 1 << 16));
  {
    QRVGeometry geo(&memory);

    // Positions: a count that is usually small, its buffer always as large as the count says
    // (a null buffer only when the input asks for one).
    std::int32_t vertexCount = quillix::fuzz::SmallOrAnyCount(in, 48);
    const std::int32_t positionEncoding = in.PickValueInArray(kPositionEncodings);
    const bool nullPositions = in.ConsumeIntegralInRange<int>(0, 15) == 0;
    if (!nullPositions && (vertexCount < -1 || vertexCount > 4096))
      vertexCount = vertexCount < 0 ? -1 : 4096;
    const std::vector<std::uint8_t> positions =
        nullPositions ? std::vector<std::uint8_t>() : Vectors(in, vertexCount, positionEncoding);
    const void* positionData = nullPositions       ? nullptr
                               : positions.empty() ? bytes
                                                   : positions.data();

    // Polygons in the chosen encoding, indices usually in range and sometimes not.
    const std::int32_t encoding = in.PickValueInArray(kDescriptionEncodings);
    std::int32_t polygonCount = quillix::fuzz::SmallOrAnyCount(in, 24);
    if (polygonCount > 4096) polygonCount = 4096;
    const auto vertexIndex = [&] {
      if (in.ConsumeIntegralInRange<int>(0, 31) == 0) return in.ConsumeIntegral<std::int32_t>();
      return in.ConsumeIntegralInRange<std::int32_t>(0, std::max(vertexCount, 1) - 1);
    };
    const auto polygonSize = [&]() -> std::int32_t {
      if (in.ConsumeIntegralInRange<int>(0, 31) == 0) return in.ConsumeIntegral<std::int32_t>();
      return in.ConsumeIntegralInRange<std::int32_t>(0, in.ConsumeBool() ? 6 : 260);
    };
    std::vector<std::uint8_t> byteSizes;
    std::vector<std::int32_t> words, indices;
    for (std::int32_t p = 0; p < polygonCount; ++p) {
      const std::int32_t s = polygonSize();
      const std::int32_t kept = s < 0 || s > 255 ? 0 : s;
      switch (encoding) {
        case kDescriptionByteSizes:
          byteSizes.push_back(std::uint8_t(s));
          for (int k = 0; k < std::uint8_t(s); ++k) indices.push_back(vertexIndex());
          break;
        case kDescriptionInline:
          words.push_back(s);
          for (int k = 0; k < kept; ++k) words.push_back(vertexIndex());
          break;
        case kDescriptionIntSizes:
          words.push_back(s);
          for (int k = 0; k < kept; ++k) indices.push_back(vertexIndex());
          break;
        default:
          for (int k = 0; k < 3; ++k) words.push_back(vertexIndex());
          break;
      }
    }
    const void* description = encoding == kDescriptionByteSizes
                                  ? static_cast<const void*>(byteSizes.data())
                                  : static_cast<const void*>(words.data());
    if (polygonCount <= 0 || in.ConsumeIntegralInRange<int>(0, 31) == 0) description = nullptr;
    const std::int32_t* indexData = indices.empty() ? nullptr : indices.data();
    std::int64_t nodeCount = 0;
    if (encoding == kDescriptionTriangles)
      nodeCount = 3 * std::int64_t(std::max(polygonCount, 0));
    else if (encoding == kDescriptionInline)
      nodeCount = std::int64_t(words.size()) - std::max(polygonCount, 0);
    else
      nodeCount = std::int64_t(indices.size());

    Channel channels[3];
    for (auto& c : channels) MakeChannel(in, vertexCount, std::int32_t(nodeCount), c);
    std::vector<std::uint8_t> motionData;
    QRVVertexChannelInput motion;
    if (in.ConsumeBool()) {
      motion.count =
          in.ConsumeBool() ? vertexCount : in.ConsumeIntegralInRange<std::int32_t>(-1, 40);
      motion.encoding = in.PickValueInArray(kPositionEncodings);
      motionData = Vectors(in, std::max(motion.count, vertexCount), motion.encoding);
      motion.data = motionData.empty() ? nullptr : motionData.data();
    }

    const QRVStatus status =
        geo.Set(positionData, vertexCount, positionEncoding, description, indexData, polygonCount,
                encoding, channels[0].input, channels[1].input, channels[2].input, motion);
    if (status != 0) {
      Check(geo.Positions() == nullptr && geo.VertexCount() == 0 && geo.PolygonCount() == 0,
            "a failed Set left data behind");
      Check(memory.BytesInUse() == 0, "a failed Set kept memory");
      return 0;
    }

    // Every stored index lies inside the vertices; sizes add up to the node count.
    std::int64_t nodes = 0;
    for (std::int32_t p = 0; p < geo.PolygonCount(); ++p) nodes += geo.PolygonSizes()[p];
    Check(nodes == geo.NodeCount(), "polygon sizes do not add up to the node count");
    for (std::int32_t n = 0; n < geo.NodeCount(); ++n) {
      const std::int32_t v = geo.PolygonVertexIndices()[n];
      Check(v >= 0 && v < geo.VertexCount(), "stored index outside the vertices");
    }

    // Derived items in an order the input chooses, the clean-ups and removals between them.
    while (in.remaining_bytes() > 0) {
      switch (in.ConsumeIntegralInRange<int>(0, 12)) {
        case 0:
          (void)geo.ReferencedVertexCount();
          (void)geo.UnreferencedVertexCount();
          break;
        case 1:
          (void)geo.InvalidPolygonCount();
          (void)geo.FanTriangleCount();
          break;
        case 2:
          (void)geo.Octree();
          break;
        case 3: {
          const std::int32_t edges = geo.EdgeCount();
          const std::int32_t* e = geo.Edges();
          for (std::int32_t i = 0; e && i < edges; ++i)
            Check(e[2 * i] < e[2 * i + 1] && e[2 * i + 1] < geo.VertexCount(),
                  "edge out of order or range");
          break;
        }
        case 4: {
          const std::int32_t* offsets = geo.NeighbourOffsets();
          const std::int32_t* lists = geo.NeighbourLists();
          for (std::int32_t v = 0; offsets && lists && v < geo.VertexCount(); ++v)
            for (std::int32_t k = offsets[v]; k < offsets[v + 1]; ++k)
              Check(lists[k] >= 0 && lists[k] < geo.VertexCount(),
                    "neighbour outside the vertices");
          break;
        }
        case 5:
          (void)geo.ComponentNumbers();
          break;
        case 6:
          (void)geo.VertexFlags();
          (void)geo.PolygonFlags();
          break;
        case 7:
          (void)geo.PolygonMeasures();
          (void)geo.NeighbourSteps();
          break;
        case 8:
          geo.Reset(in.ConsumeIntegral<std::uint32_t>());
          break;
        case 9:
          (void)geo.CleanUp(in.ConsumeBool(), in.ConsumeBool(), in.ConsumeBool());
          break;
        case 10: {
          std::vector<std::int32_t> drop(in.ConsumeIntegralInRange<std::size_t>(0, 8));
          for (auto& p : drop) p = in.ConsumeIntegralInRange<std::int32_t>(-1, geo.PolygonCount());
          (void)geo.RemovePolygons(drop.empty() ? nullptr : drop.data(),
                                   in.ConsumeBool() ? std::int32_t(drop.size()) : -1);
          break;
        }
        case 11:
          (void)geo.RemoveUnreferencedVertices();
          break;
        default:
          if (in.ConsumeBool())
            memory.SetLimit(in.ConsumeBool(), in.ConsumeIntegralInRange<std::int64_t>(0, 1 << 16));
          break;
      }
    }
  }
  Check(memory.BytesInUse() == 0, "the geometry did not give back all its bytes");
  return 0;
}
