// The path-finding node's state between evaluations, host-neutral: which input changes
// rebuild the mesh, when the vertex flags are taken, what the evaluation may search, and the
// events a begin-of-evaluation reports. The binding reads the ports into the plain structs
// below, words the events as log lines and chains the paths (core/mesh/path_chain.h).
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "core/math/math_types.h"
#include "kernel/geometry.h"
#include "kernel/memory_context.h"
#include "kernel/status.h"

namespace quillix {

// Elapsed time of the verbose report, from a steady high-resolution clock.
class PathNodeTimer {
 public:
  void Start() { start_ = std::chrono::steady_clock::now(); }
  double ElapsedMilliseconds() const;
  // `milliseconds` rounded, as "% 6ld ms" formats them: " " or "-", then at least 6 columns.
  static std::string Format(double milliseconds);

 private:
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

// Which inputs changed since the last begin-of-evaluation (each change is reported once).
struct PathNodeChanges {
  bool enable = false;
  bool verbose = false;
  bool positions = false;
  bool vertexFlags = false;
  bool description = false;
  bool algorithm = false;
  bool init = false;

  bool Any() const {
    return enable || verbose || positions || vertexFlags || description || algorithm || init;
  }
};

// The inputs a begin-of-evaluation reads once it has to (PathNodeState::Update). The spans
// belong to the caller and are read during the call only.
struct PathNodeInputs {
  bool anyEnabled = false;                         // some element of the batch is enabled
  std::int32_t verbose = 0;                        // report level: 0 none, 1 times, 2 also the mesh
  std::span<const Vec3f> positions = {};           // #V vertex positions
  std::span<const std::int32_t> description = {};  // polygonal description (BuildPathGeometry)
  std::span<const bool> vertexFlags = {};  // #V flags, false blocking a vertex; 0 or 1 entry: none
};

// One thing a begin-of-evaluation reports, in the order it happens.
struct PathNodeEvent {
  enum class Kind {
    kVerboseTime,       // verbose: the begin-of-evaluation runs at `time`
    kBuildFailed,       // the mesh could not be built (kFailed follows with the status)
    kBuildTime,         // verbose > 1: the build took `milliseconds`
    kVertexCount,       // verbose > 1: the built mesh has `count` vertices
    kPolygonCount,      // verbose > 1: ... and `count` polygons
    kFlagSizeMismatch,  // `count` vertex flags for `expected` vertices: searched without flags
    kTotalTime,         // verbose > 0: the whole begin-of-evaluation took `milliseconds`
    kFailed,            // it ended with `status` (never the start-equals-end code -2)
  };
  Kind kind;
  double time = 0.0;
  double milliseconds = 0.0;
  std::int64_t count = 0;
  std::int64_t expected = 0;
  QRVStatus status = 0;
};

// One node instance's state. A begin-of-evaluation is Refresh, then Update when Refresh
// asks for it; evaluations read Ready, ReturnValue, Geometry and VertexFlags; EndEvaluate
// closes the evaluation. Not for concurrent use, except the const readers during evaluations.
class PathNodeState {
 public:
  // The last time before the first begin-of-evaluation: matches no real evaluation time.
  static constexpr double kNoTime = -127.127127;

  PathNodeState();
  ~PathNodeState();
  PathNodeState(const PathNodeState&) = delete;
  PathNodeState& operator=(const PathNodeState&) = delete;

  // Starts a begin-of-evaluation at scene `time` with the input `changes`. Returns false
  // when nothing changed and the time is the last one: the previous state stays valid and
  // Update must not be called. Otherwise changed positions or description release the mesh,
  // changed flags release the flags, and Update must follow.
  bool Refresh(const PathNodeChanges& changes, double time);
  // Finishes the begin-of-evaluation: enables the node when `inputs.anyEnabled`, (re)builds
  // the mesh and takes the flags as needed; appends what it reports to `events`.
  void Update(const PathNodeInputs& inputs, std::vector<PathNodeEvent>& events);
  // Closes an evaluation: keeps the mesh while enabled, releases it and the flags otherwise.
  void EndEvaluate();

  // Whether paths can be searched in this evaluation.
  bool Ready() const { return enabled_ && geometry_->Positions() != nullptr; }
  // The node's return value: the last status while enabled, else -2.
  std::int32_t ReturnValue() const { return enabled_ ? lastStatus_ : -2; }
  const QRVGeometry& Geometry() const { return *geometry_; }
  // One byte per vertex (0 blocks it), or null for none.
  const std::uint8_t* VertexFlags() const { return vertexFlags_; }
  // Accounts the mesh, the flags and the evaluations' search scratch.
  QRVMemoryContext& Memory() const { return *memory_; }

  std::int32_t CurrentFrame() const { return currentFrame_; }  // time rounded half away from 0
  bool WholeFrame() const { return wholeFrame_; }              // within 0.001 of CurrentFrame

 private:
  // Takes `flags` when they hold one per vertex; false when memory refuses them.
  bool TakeFlags(std::span<const bool> flags, std::vector<PathNodeEvent>& events);
  void ReleaseFlags();

  PathNodeTimer timer_;
  std::unique_ptr<QRVMemoryContext> memory_;
  std::unique_ptr<QRVGeometry> geometry_;
  std::uint8_t* vertexFlags_ = nullptr;  // through memory_
  bool enabled_ = false;
  std::int32_t verbose_ = 0;
  double lastTime_ = kNoTime;
  double currentTime_ = 0.0;
  std::int32_t currentFrame_ = 0;
  bool wholeFrame_ = false;
  std::int32_t lastStatus_ = 0;
};

}  // namespace quillix
