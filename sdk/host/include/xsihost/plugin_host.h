// Loading a plug-in by path, as the host does: dlopen, XSILoadPlugin with a registrar that
// records everything, callbacks found by their exported names and called safely.
#pragma once

#include <memory>
#include <string>

#include <xsi_status.h>
#include <xsihost/definitions.h>
#include <xsihost/session.h>

namespace xsihost {

class LoadedPlugin {
 public:
  // Loads the shared library at `path` and calls its XSILoadPlugin. On failure returns null
  // and sets `error` to one line naming the path and the reason.
  static std::unique_ptr<LoadedPlugin> Load(const std::string& path, std::string& error);
  ~LoadedPlugin();
  LoadedPlugin(const LoadedPlugin&) = delete;
  LoadedPlugin& operator=(const LoadedPlugin&) = delete;

  // Calls XSIUnloadPlugin and closes the library; the destructor does it if not done.
  void Unload();

  const xsihost::PluginRecord& Record() const { return *record_; }
  // Exported symbol `name`, or null.
  void* Symbol(const std::string& name) const;
  const std::string& Path() const { return path_; }

 private:
  LoadedPlugin() = default;
  void* handle_ = nullptr;
  std::string path_;
  std::unique_ptr<xsihost::PluginRecord> record_;
};

// Calls the plug-in callback `fn` with `arg`. An exception escaping the plug-in is a fault of
// the plug-in: it is logged at severity 2 as "<what>: an exception escaped the plug-in" and the
// call fails, instead of taking the host down.
template <class Fn, class Arg>
XSI::CStatus CallPlugin(Fn fn, Arg& arg, const std::wstring& what) {
  try {
    return fn(arg);
  } catch (...) {
    HostLog().Add(XSI::siErrorMsg, what + L": an exception escaped the plug-in");
    return XSI::CStatus::Fail;
  }
}

// The plug-in `quillix` and the tests load by default: libQuillix.so beside `executable`, or
// in ../lib/quillix/ from it (an installed tree) when there is none beside it.
std::string DefaultPluginPath(const std::string& executable);

}  // namespace xsihost
