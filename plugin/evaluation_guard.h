// Keeps exceptions on the plug-in's side of the host boundary.
#pragma once

#include <xsi_status.h>

namespace quillix::plugin {

// Runs `evaluation` and reports success whatever happens in it. The only exception an
// evaluation can meet is a failed allocation (strings, work buffers); the host must never see
// it, so the elements written so far stay and the rest stay unwritten, as for any other
// degenerate input.
template <class Evaluation>
XSI::CStatus evaluateGuarded(Evaluation&& evaluation) noexcept {
  try {
    evaluation();
  } catch (...) {
  }
  return XSI::CStatus::OK;
}

}  // namespace quillix::plugin
