// CTime: a time of the scene, in frames.
#pragma once

namespace XSI {

class CTime {
 public:
  CTime() = default;
  explicit CTime(double frames) : frames_(frames) {}
  double GetTime() const { return frames_; }

 private:
  double frames_ = 1.0;
};

}  // namespace XSI
