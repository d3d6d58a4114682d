#include "core/mesh/path_node_state.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "core/mesh/path_chain.h"
#include "kernel/status_codes.h"

namespace quillix {

using EventKind = PathNodeEvent::Kind;

double PathNodeTimer::ElapsedMilliseconds() const {
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start_)
      .count();
}

std::string PathNodeTimer::Format(double milliseconds) {
  char text[32];
  std::snprintf(text, sizeof text, "% 6ld ms", std::lround(milliseconds));
  return text;
}

PathNodeState::PathNodeState()
    : memory_(std::make_unique<QRVMemoryContext>()),
      geometry_(std::make_unique<QRVGeometry>(memory_.get())) {}

PathNodeState::~PathNodeState() {
  geometry_->Clear();
  ReleaseFlags();
}

void PathNodeState::ReleaseFlags() {
  memory_->Release(vertexFlags_);
  vertexFlags_ = nullptr;
}

bool PathNodeState::Refresh(const PathNodeChanges& changes, double time) {
  timer_.Start();
  currentTime_ = time;
  currentFrame_ = std::int32_t(std::lround(time));
  wholeFrame_ = std::fabs(time - double(currentFrame_)) < 0.001;
  if (!changes.Any() && lastTime_ == currentTime_) return false;
  if (changes.positions || changes.description) geometry_->Clear();
  if (changes.vertexFlags) ReleaseFlags();
  lastTime_ = currentTime_;
  return true;
}

void PathNodeState::Update(const PathNodeInputs& inputs, std::vector<PathNodeEvent>& events) {
  enabled_ = inputs.anyEnabled;
  verbose_ = inputs.verbose;
  if (!enabled_) {
    lastStatus_ = 0;
    return;
  }
  if (verbose_ != 0) events.push_back({.kind = EventKind::kVerboseTime, .time = currentTime_});

  QRVStatus status = kStatusOk;
  if (geometry_->Positions() == nullptr) {
    status = BuildPathGeometry(inputs.positions, inputs.description, *geometry_);
    if (status != kStatusOk) {
      events.push_back({.kind = EventKind::kBuildFailed});
    } else if (verbose_ > 1) {
      events.push_back(
          {.kind = EventKind::kBuildTime, .milliseconds = timer_.ElapsedMilliseconds()});
      events.push_back({.kind = EventKind::kVertexCount, .count = geometry_->VertexCount()});
      events.push_back({.kind = EventKind::kPolygonCount, .count = geometry_->PolygonCount()});
    }
  }
  if (status == kStatusOk && geometry_->Positions() != nullptr && vertexFlags_ == nullptr &&
      !TakeFlags(inputs.vertexFlags, events)) {
    status = kStatusNoMemory;
  }
  if (verbose_ > 0)
    events.push_back({.kind = EventKind::kTotalTime, .milliseconds = timer_.ElapsedMilliseconds()});

  lastStatus_ = std::int32_t(status);
  if (status != kStatusOk) {
    enabled_ = false;
    if (status != kStatusSameVertex)
      events.push_back({.kind = EventKind::kFailed, .status = status});
  }
}

bool PathNodeState::TakeFlags(std::span<const bool> flags, std::vector<PathNodeEvent>& events) {
  const std::size_t vertexCount = std::size_t(geometry_->VertexCount());
  if (flags.size() == vertexCount) {
    vertexFlags_ = memory_->AllocateArray<std::uint8_t>(std::max<std::size_t>(vertexCount, 1));
    if (vertexFlags_ == nullptr) return false;
    for (std::size_t v = 0; v < vertexCount; ++v) vertexFlags_[v] = flags[v] ? 1 : 0;
  } else if (flags.size() > 1) {
    // The default single true value means "no flags"; other sizes are a user's mistake.
    events.push_back({.kind = EventKind::kFlagSizeMismatch,
                      .count = std::int64_t(flags.size()),
                      .expected = std::int64_t(vertexCount)});
  }
  return true;
}

void PathNodeState::EndEvaluate() {
  if (enabled_) return;
  geometry_->Clear();
  ReleaseFlags();
  verbose_ = 0;
}

}  // namespace quillix
