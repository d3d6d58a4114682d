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
  static std::unique_ptr<LoadedPlugin> load(const std::string& path, std::string& error);
  ~LoadedPlugin();
  LoadedPlugin(const LoadedPlugin&) = delete;
  LoadedPlugin& operator=(const LoadedPlugin&) = delete;

  // Calls XSIUnloadPlugin and closes the library; the destructor does it if not done.
  void unload();

  const XSI::host_detail::PluginRecord& record() const { return *m_record; }
  const XSI::host_detail::NodeDefinitionRecord* findNode(const std::wstring& name) const {
    return m_record->findNode(name);
  }
  // Exported symbol `name`, or null.
  void* symbol(const std::string& name) const;
  const std::string& path() const { return m_path; }

 private:
  LoadedPlugin() = default;
  void* m_handle = nullptr;
  std::string m_path;
  std::unique_ptr<XSI::host_detail::PluginRecord> m_record;
};

// The plug-in `quillix` and the tests load by default: libQuillix.so beside `executable`.
std::string defaultPluginPath(const std::string& executable);

}  // namespace xsihost
