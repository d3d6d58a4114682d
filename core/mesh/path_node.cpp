#include "core/mesh/path_node.h"

#include <cmath>
#include <cstdio>
#include <cstring>

#include "kernel/status_codes.h"
#include "core/mesh/vertex_path.h"

namespace quillix {

double PathNodeTimer::ElapsedMilliseconds() const {
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start_)
      .count();
}

std::string PathNodeTimer::Format(double milliseconds) {
  char text[32];
  std::snprintf(text, sizeof text, "% 6ld ms", std::lround(milliseconds));
  return text;
}

std::string PathNodeTimer::Text() const { return Format(ElapsedMilliseconds()); }

QRVStatus BuildPathGeometry(std::span<const Vec3f> positions,
                            std::span<const std::int32_t> description, QRVGeometry& geo) {
  geo.Clear();
  QRVMemoryContext& memory = geo.Memory();
  std::size_t polygons = 0, indexCount = 0;
  for (std::int32_t value : description) (value < 0 ? polygons : indexCount) += 1;

  // Temporary arrays go through the memory context like the geometry's own.
  Vec3f* points = memory.AllocateArray<Vec3f>(positions.size());
  // One counter more than closed polygons: indices after the last negative value count into a
  // polygon that is never closed and never passed on.
  std::uint8_t* sizes = memory.AllocateArray<std::uint8_t>(polygons + 1);
  std::int32_t* indices = memory.AllocateArray<std::int32_t>(indexCount);
  const auto release = [&] {
    memory.Release(points);
    memory.Release(sizes);
    memory.Release(indices);
  };
  if (points == nullptr || sizes == nullptr || indices == nullptr) {
    release();
    return kStatusNoMemory;
  }
  if (!positions.empty()) std::memcpy(points, positions.data(), positions.size_bytes());
  std::memset(sizes, 0, polygons + 1);
  std::size_t polygon = 0, node = 0;
  for (std::int32_t value : description) {
    if (value >= 0) {
      if (polygon == polygons) break;  // indices after the last closer belong to no polygon
      ++sizes[polygon];                // an 8-bit count: 256 corners wrap to 0
      indices[node++] = value;
    } else {
      if (sizes[polygon] == 255) {
        release();
        return kStatusPolygonTooLarge;
      }
      ++polygon;
    }
  }
  QRVStatus status = geo.Set(points, std::int32_t(positions.size()), kEncodingFloat, sizes, indices,
                             std::int32_t(polygons), kDescriptionByteSizes);
  release();
  if (status == kStatusOk) {
    if (geo.ComponentNumbers() == nullptr || geo.NeighbourLists() == nullptr) {
      status = kStatusDynamicGeometryFailed;
      geo.Clear();
    } else {
      geo.NeighbourDistances();  // optional: the search measures steps itself without it
    }
  }
  return status;
}

bool PathScratch::ChainPath(const QRVGeometry& geo, std::span<const std::int32_t> init,
                            std::int32_t algorithm, const std::uint8_t* vertexFlags,
                            std::vector<std::int32_t>& out) {
  out.clear();
  if (init.size() < 2) return false;
  const std::int32_t vertexCount = geo.VertexCount();
  if (path_ == nullptr || pathCapacity_ < vertexCount) {
    memory_.Release(path_);
    pathCapacity_ = 0;
    path_ = memory_.AllocateArray<std::int32_t>(std::size_t(std::max(vertexCount, 1)));
    if (path_ == nullptr) return false;
    pathCapacity_ = vertexCount;
  }
  for (std::size_t k = 0; k + 1 < init.size(); ++k) {
    std::int32_t* path = path_;
    std::int32_t length = vertexCount;
    QRVStatus status = kStatusOk;
    if (!FindVertexPath(geo, init[k], init[k + 1], path, length, algorithm, vertexFlags, status,
                        memory_, &distances_, &predecessors_, &marks_)) {
      out.clear();
      return false;
    }
    // Each later segment starts with the vertex the previous one ended with.
    out.insert(out.end(), path + (k == 0 ? 0 : 1), path + length);
  }
  return true;
}

PathNodeInstance::PathNodeInstance(std::uint32_t id, bool isInteractive)
    : objectID(id),
      messagePrefix("Quillix_fpom(" + std::to_string(id) + "): "),
      timePrefix("Quillix_fpom(" + std::to_string(id) + ")__"),
      memory(std::make_unique<QRVMemoryContext>()),
      interactive(isInteractive),
      geo(std::make_unique<QRVGeometry>(memory.get())) {}

PathNodeInstance::~PathNodeInstance() {
  geo->Clear();
  ReleaseFlags();
}

void PathNodeInstance::ReleaseFlags() {
  memory->Release(vertexFlags);
  vertexFlags = nullptr;
}

void PathNodeInstance::BeginEvaluate(const PathNodeBeginInputs& in, const PathNodeLog& log) {
  PathNodeTimer timer;
  timer.Start();
  currentTime = in.time;
  currentFrame = std::int32_t(std::lround(in.time));
  wholeFrame = std::fabs(in.time - double(currentFrame)) < 0.001;

  const bool anyChanged = in.enableChanged || in.verboseChanged || in.positionsChanged ||
                          in.flagsChanged || in.descriptionChanged || in.algorithmChanged ||
                          in.initChanged;
  if (!anyChanged && lastTime == currentTime) return;
  if (in.positionsChanged || in.descriptionChanged) geo->Clear();
  if (in.flagsChanged) ReleaseFlags();
  lastTime = currentTime;

  enabled = in.anyEnabled();
  verbose = in.verbose;
  if (!enabled) {
    lastStatus = 0;
    return;
  }
  if (verbose != 0) log(kLogInfo, timePrefix + "f=" + in.timeText + "__");

  QRVStatus status = kStatusOk;
  bool built = true;
  if (geo->Positions() == nullptr) {
    status = BuildPathGeometry(in.positions(), in.description(), *geo);
    built = status == kStatusOk;
    if (!built) {
      log(kLogError, messagePrefix + "(*ud.geo).Set() failed.");
    } else if (verbose > 1) {
      log(kLogInfo, messagePrefix + "    build geometry time:               " + timer.Text());
      log(kLogInfo, messagePrefix + "    #vertices: " + std::to_string(geo->VertexCount()));
      log(kLogInfo, messagePrefix + "    #polygons: " + std::to_string(geo->PolygonCount()));
    }
  }

  if (built && geo->Positions() != nullptr && vertexFlags == nullptr) {
    const std::span<const bool> flags = in.vertexFlags();
    const std::size_t vertexCount = std::size_t(geo->VertexCount());
    if (flags.size() == vertexCount) {
      vertexFlags = memory->AllocateArray<std::uint8_t>(std::max<std::size_t>(vertexCount, 1));
      if (vertexFlags == nullptr) {
        status = kStatusNoMemory;
      } else {
        for (std::size_t v = 0; v < vertexCount; ++v) vertexFlags[v] = flags[v] ? 1 : 0;
      }
    } else if (flags.size() > 1) {
      // The default single true value means "no flags"; other sizes are a user's mistake.
      log(kLogWarning, messagePrefix + "    vertex flag array has wrong size... it's size is " +
                           std::to_string(flags.size()) + ", but it should be " +
                           std::to_string(vertexCount) + ".");
    }
  }

  if (verbose > 0)
    log(kLogInfo, messagePrefix + "    total initialisation time:         " + timer.Text());

  lastStatus = std::int32_t(status);
  if (status != kStatusOk) {
    enabled = false;
    if (status != kStatusSameVertex) {
      char text[kStatusMessageBufferSize];
      // The closing quotation mark without an opening one is part of the line as users know it.
      log(kLogError, messagePrefix + StatusMessage(status, text, true) + "\".");
    }
  }
}

void PathNodeInstance::EndEvaluate() {
  if (enabled) return;
  geo->Clear();
  ReleaseFlags();
  enabled = false;
  verbose = 0;
}

}  // namespace quillix
