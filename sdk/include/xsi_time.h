// CTime: a time of the scene, in frames.
#pragma once

namespace XSI {

class CTime {
 public:
  CTime() = default;
  explicit CTime(double frames) : m_frames(frames) {}
  double GetTime() const { return m_frames; }
  void PutTime(double frames) { m_frames = frames; }

 private:
  double m_frames = 1.0;
};

}  // namespace XSI
