// The path-finding node's state between evaluations and its per-call work, host-neutral:
// the binding reads the ports and writes the results; everything decided here is testable
// without the host.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "kernel/geometry.h"
#include "core/math/math_types.h"
#include "kernel/memory_context.h"
#include "kernel/status.h"

namespace quillix {

// Severities of the host's message log.
inline constexpr int kLogError = 2;
inline constexpr int kLogWarning = 4;
inline constexpr int kLogInfo = 32;

// Receives one log line (severity, text).
using PathNodeLog = std::function<void(int severity, const std::string& text)>;

// Elapsed time of the verbose log, from a steady high-resolution clock.
class PathNodeTimer {
 public:
  void Start() { start_ = std::chrono::steady_clock::now(); }
  double ElapsedMilliseconds() const;
  // The elapsed milliseconds rounded, as "% 6ld ms" formats them.
  std::string Text() const;
  static std::string Format(double milliseconds);

 private:
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

// Builds `geo` from a host polygonal description: vertex indices, each polygon closed by a
// negative value (indices after the last negative value belong to no polygon). Polygon sizes
// are counted in 8 bits: a polygon closed while its count is exactly 255 stops the build with
// 101, larger ones wrap silently (and so garble the polygons after them). Then Set with
// encoding 0 / 16, and the neighbour lists, components and step lengths are computed (78 when
// the first two fail). `positions`: #V vertices. Returns the status; on failure `geo` is empty.
QRVStatus BuildPathGeometry(std::span<const Vec3f> positions,
                            std::span<const std::int32_t> description, QRVGeometry& geo);

// Scratch shared by every search of one evaluation call: a path array of vertex count entries
// and the three work buffers, all accounted by `memory`.
class PathScratch {
 public:
  explicit PathScratch(QRVMemoryContext& memory) : memory_(memory) {}
  ~PathScratch() { memory_.Release(path_); }
  PathScratch(const PathScratch&) = delete;
  PathScratch& operator=(const PathScratch&) = delete;

  // Chains the shortest paths init[0] → init[1] → ... into `out`, the joint vertex of two
  // segments written once. `out` is emptied when init has fewer than 2 entries or any segment
  // fails (the remaining pairs are not searched); returns whether a path was written.
  bool ChainPath(const QRVGeometry& geo, std::span<const std::int32_t> init, std::int32_t algorithm,
                 const std::uint8_t* vertexFlags, std::vector<std::int32_t>& out);

 private:
  QRVMemoryContext& memory_;
  std::int32_t* path_ = nullptr;
  std::int32_t pathCapacity_ = 0;
  QRVWorkBuffer distances_, predecessors_, marks_;
};

// What BeginEvaluate learns from the host.
struct PathNodeBeginInputs {
  // Port states (changed since the last begin-of-evaluation); every one is consumed.
  bool enableChanged = false, verboseChanged = false, positionsChanged = false,
       flagsChanged = false, descriptionChanged = false, algorithmChanged = false,
       initChanged = false;
  double time = 0.0;
  std::string timeText;              // the host's text of `time`
  std::function<bool()> anyEnabled;  // any element of "enable" true
  std::int32_t verbose = 0;
  // Read only when needed (the build, the flags): first sub-arrays of the mesh ports.
  std::function<std::span<const Vec3f>()> positions;
  std::function<std::span<const std::int32_t>()> description;
  std::function<std::span<const bool>()> vertexFlags;
};

// One node instance's record, kept between evaluations.
struct PathNodeInstance {
  static constexpr double kNoTime = -127.127127;  // matches no real evaluation time

  PathNodeInstance(std::uint32_t objectID, bool interactive);
  ~PathNodeInstance();
  PathNodeInstance(const PathNodeInstance&) = delete;
  PathNodeInstance& operator=(const PathNodeInstance&) = delete;

  // "Quillix_fpom(<id>): " before every line but the verbose time line, which starts with
  // "Quillix_fpom(<id>)__".
  std::uint32_t objectID;
  std::string messagePrefix;
  std::string timePrefix;
  std::unique_ptr<QRVMemoryContext> memory;
  bool interactive;
  bool enabled = false;
  std::int32_t verbose = 0;
  double lastTime = kNoTime;
  double currentTime = 0.0;
  std::int32_t currentFrame = 0;
  bool wholeFrame = false;
  std::int32_t lastStatus = 0;
  std::unique_ptr<QRVGeometry> geo;
  std::uint8_t* vertexFlags = nullptr;  // one byte per vertex, through `memory`, or null

  // Reads the changed inputs, (re)builds the geometry and the flags when needed, and logs.
  void BeginEvaluate(const PathNodeBeginInputs& in, const PathNodeLog& log);
  // Output "returnValue": the last status while enabled, else -2.
  std::int32_t ReturnValue() const { return enabled ? lastStatus : -2; }
  // Whether paths can be searched in this evaluation.
  bool Ready() const { return enabled && geo->Positions() != nullptr; }
  // Keeps the geometry while enabled; releases it and the flags otherwise.
  void EndEvaluate();
  void ReleaseFlags();
};

}  // namespace quillix
