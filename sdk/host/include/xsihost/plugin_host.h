// Loading a plug-in by path, as the host does: dlopen, XSILoadPlugin with a registrar that
// records everything, callbacks found by their exported names.
#pragma once

#include <memory>
#include <string>

#include <xsihost/definitions.h>

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
  const xsihost::NodeDefinitionRecord* FindNode(const std::wstring& name) const {
    return record_->FindNode(name);
  }
  // Exported symbol `name`, or null.
  void* Symbol(const std::string& name) const;
  const std::string& Path() const { return path_; }

 private:
  LoadedPlugin() = default;
  void* handle_ = nullptr;
  std::string path_;
  std::unique_ptr<xsihost::PluginRecord> record_;
};

// The plug-in `quillix` and the tests load by default: libQuillix.so beside `executable`, or
// in ../lib/quillix/ from it (an installed tree) when there is none beside it.
std::string DefaultPluginPath(const std::string& executable);

}  // namespace xsihost
