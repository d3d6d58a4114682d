#include <xsihost/plugin_host.h>

#include <dlfcn.h>

#include <filesystem>

#include <xsi_pluginregistrar.h>
#include <xsi_status.h>
#include <xsihost/scene_commands.h>

namespace xsihost {

namespace {
using LoadFunction = XSI::CStatus (*)(XSI::PluginRegistrar&);
using UnloadFunction = XSI::CStatus (*)(const XSI::PluginRegistrar&);
}  // namespace

std::unique_ptr<LoadedPlugin> LoadedPlugin::Load(const std::string& path, std::string& error) {
  std::error_code ec;
  if (!std::filesystem::is_regular_file(path, ec)) {
    error = path + ": no such plug-in file";
    return nullptr;
  }
  // The plug-in stays mapped after it is closed: its OpenMP runtime keeps worker threads that
  // would otherwise run on unmapped code once the library and its runtime were unloaded.
  void* handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
  if (handle == nullptr) {
    const char* reason = dlerror();
    error = path + ": cannot load plug-in: " + (reason ? reason : "unknown reason");
    return nullptr;
  }
  auto load = reinterpret_cast<LoadFunction>(dlsym(handle, "XSILoadPlugin"));
  if (load == nullptr) {
    dlclose(handle);
    error = path + ": not a plug-in (no exported XSILoadPlugin)";
    return nullptr;
  }
  std::unique_ptr<LoadedPlugin> plugin(new LoadedPlugin());
  plugin->handle_ = handle;
  plugin->path_ = path;
  plugin->record_ = std::make_unique<xsihost::PluginRecord>();
  XSI::PluginRegistrar registrar(plugin->record_.get());
  const XSI::CStatus status = load(registrar);
  if (!status.Succeeded()) {
    plugin->Unload();
    error = path + ": XSILoadPlugin failed";
    return nullptr;
  }
  // Registered commands run their Init now, as the host does at load.
  AttachPluginCommands(*plugin);
  return plugin;
}

LoadedPlugin::~LoadedPlugin() { Unload(); }

void LoadedPlugin::Unload() {
  if (handle_ == nullptr) return;
  DetachPluginCommands(*this);
  if (auto unloadFn = reinterpret_cast<UnloadFunction>(dlsym(handle_, "XSIUnloadPlugin"))) {
    XSI::PluginRegistrar registrar(record_.get());
    unloadFn(registrar);
  }
  dlclose(handle_);
  handle_ = nullptr;
}

void* LoadedPlugin::Symbol(const std::string& name) const {
  return handle_ ? dlsym(handle_, name.c_str()) : nullptr;
}

std::string DefaultPluginPath(const std::string& executable) {
  std::error_code ec;
  std::filesystem::path exe = std::filesystem::canonical("/proc/self/exe", ec);
  if (ec) exe = std::filesystem::absolute(executable, ec);
  const std::filesystem::path beside = exe.parent_path() / "libQuillix.so";
  // An installed tree keeps the plug-in in lib/quillix/ beside bin/.
  const std::filesystem::path installed =
      exe.parent_path().parent_path() / "lib" / "quillix" / "libQuillix.so";
  if (!std::filesystem::exists(beside, ec) && std::filesystem::exists(installed, ec))
    return installed.string();
  return beside.string();
}

}  // namespace xsihost
