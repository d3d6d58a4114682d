// Plugin: a loaded plug-in, as Application::GetPlugins lists it.
#pragma once

#include <xsi_base.h>

namespace XSI {

class Plugin : public SIObject {
 public:
  Plugin() = default;
  explicit Plugin(const CRef& ref);

  /// The folder that holds the plug-in's file, ending with a path separator.
  CString GetOriginPath() const;
};

}  // namespace XSI
