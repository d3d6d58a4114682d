// Command runner of the offline host, the built-in "OpenScene", and the recent-scenes list.
#include "xsihost/scene_commands.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <mutex>

#include <xsi_ref.h>
#include <xsihost/plugin_host.h>
#include <xsihost/scene.h>
#include <xsihost/scene_file.h>
#include <xsihost/session.h>

namespace xsihost {

using XSI::CRef;
using XSI::CStatus;
using XSI::CValue;
using XSI::CValueArray;

namespace {

using RefCallback = CStatus (*)(CRef&);

std::wstring widen(const std::string& s) { return std::wstring(s.begin(), s.end()); }
std::string narrow(const std::wstring& s) {
  std::string out;
  for (wchar_t c : s) out.push_back(c < 256 ? static_cast<char>(c) : '?');
  return out;
}

CStatus openScene(const CValueArray& arguments, CValue& result);

struct Registry {
  std::mutex mutex;
  std::map<std::wstring, std::shared_ptr<CommandObject>> commands;
  std::vector<std::shared_ptr<PluginObject>> plugins;

  Registry() {
    auto open = std::make_shared<CommandObject>();
    open->name_ = L"OpenScene";
    open->description_ = L"Opens a scene file";
    open->arguments_ = {{L"PathName", CValue(L"")}, {L"Confirm", CValue(true)}};
    open->native_ = openScene;
    commands[open->name_] = open;
  }
};

// Never destroyed: a host may unload its plug-ins during static destruction, and unloading
// detaches their commands from here.
Registry& registry() {
  static Registry* r = new Registry;
  return *r;
}

// The call as the log shows it: name("text", 1, true).
std::wstring callText(const std::wstring& name, const std::vector<CommandObject::Argument>& args) {
  std::wstring text = name + L"(";
  for (std::size_t i = 0; i < args.size(); ++i) {
    if (i) text += L", ";
    const CValue& v = args[i].value;
    if (v.GetType() == CValue::siString) {
      text += L"\"" + XSI::CString(v).Wide() + L"\"";
    } else if (v.GetType() == CValue::siBool) {
      text += static_cast<bool>(v) ? L"True" : L"False";
    } else {
      text += v.GetAsText().Wide();
    }
  }
  return text + L")";
}

// The host's recent-scenes list file: $XSI_USERHOME/Data/Preferences/RecentFileMenus.xml, or
// an empty string when XSI_USERHOME is not set.
std::string recentScenesFilePath() {
  const char* home = std::getenv("XSI_USERHOME");
  if (home == nullptr || *home == '\0') return {};
  return (std::filesystem::path(home) / "Data" / "Preferences" / "RecentFileMenus.xml").string();
}

CStatus openScene(const CValueArray& arguments, CValue& /*result*/) {
  const std::string path = narrow(XSI::CString(arguments[0]).Wide());
  std::string error;
  std::shared_ptr<Scene> scene = path.empty() ? nullptr : LoadSceneFile(path, error);
  if (!scene) {
    HostLog().Add(
        XSI::siErrorMsg,
        L"OpenScene: " + (path.empty() ? std::wstring(L"no scene file given") : widen(error)));
    return CStatus::Fail;
  }
  SetActiveScene(scene);

  const std::string listPath = recentScenesFilePath();
  if (listPath.empty()) {
    HostLog().Add(XSI::siWarningMsg,
                  L"OpenScene: XSI_USERHOME is not set; the recent-scenes list was not updated.");
    return CStatus::OK;
  }
  std::error_code ec;
  const std::string absolute = std::filesystem::absolute(path, ec).lexically_normal().string();
  std::string previous;
  if (std::ifstream in(listPath, std::ios::binary); in)
    previous.assign(std::istreambuf_iterator<char>(in), {});
  std::filesystem::create_directories(std::filesystem::path(listPath).parent_path(), ec);
  std::ofstream out(listPath, std::ios::binary | std::ios::trunc);
  out << UpdateRecentScenes(previous, ec ? path : absolute);
  if (!out.flush()) {
    HostLog().Add(XSI::siWarningMsg, L"OpenScene: cannot write " + widen(listPath));
  }
  return CStatus::OK;
}

}  // namespace

void AttachPluginCommands(const LoadedPlugin& plugin) {
  Registry& r = registry();
  auto listing = std::make_shared<PluginObject>();
  listing->name_ = plugin.Record().name;
  listing->path_ = plugin.Path();
  listing->plugin_ = &plugin;
  {
    std::lock_guard<std::mutex> lock(r.mutex);
    for (const auto& p : r.plugins)
      if (p->plugin_ == &plugin) return;  // attached already: keep its definitions and user data
    r.plugins.push_back(listing);
  }
  for (const std::wstring& name : plugin.Record().commands) {
    auto command = std::make_shared<CommandObject>();
    command->name_ = name;
    command->plugin_ = &plugin;
    if (auto init = reinterpret_cast<RefCallback>(plugin.Symbol(narrow(name) + "_Init"))) {
      auto context = std::make_shared<ContextObject>(&command->userData_, CRef(command));
      CRef ref(context);
      const CStatus status = CallPlugin(init, ref, name + L"_Init");
      if (!status.Succeeded())
        HostLog().Add(XSI::siErrorMsg, name + L"_Init failed; the command keeps what it defined.");
    }
    std::lock_guard<std::mutex> lock(r.mutex);
    r.commands[name] = command;
  }
}

void DetachPluginCommands(const LoadedPlugin& plugin) {
  Registry& r = registry();
  std::lock_guard<std::mutex> lock(r.mutex);
  std::erase_if(r.commands, [&](const auto& entry) { return entry.second->plugin_ == &plugin; });
  std::erase_if(r.plugins, [&](const auto& p) { return p->plugin_ == &plugin; });
}

std::shared_ptr<CommandObject> FindCommand(const std::wstring& name) {
  Registry& r = registry();
  std::lock_guard<std::mutex> lock(r.mutex);
  const auto it = r.commands.find(name);
  return it == r.commands.end() ? nullptr : it->second;
}

std::vector<std::shared_ptr<PluginObject>> LoadedPlugins() {
  Registry& r = registry();
  std::lock_guard<std::mutex> lock(r.mutex);
  return r.plugins;
}

CStatus ExecuteCommand(const std::wstring& name, const CValueArray& arguments, CValue& result) {
  result = CValue();
  const std::shared_ptr<CommandObject> definition = FindCommand(name);
  if (!definition) {
    HostLog().Add(XSI::siErrorMsg, L"Unknown command \"" + name + L"\".");
    return CStatus::Fail;
  }
  if (static_cast<std::size_t>(arguments.GetCount()) > definition->arguments_.size()) {
    HostLog().Add(XSI::siErrorMsg, name + L": " + std::to_wstring(arguments.GetCount()) +
                                       L" arguments given, but the command takes " +
                                       std::to_wstring(definition->arguments_.size()) + L".");
    return CStatus::Fail;
  }
  // The running call works on a copy of the definition, so that the defaults stay intact;
  // the user data is the command's own and persists between calls.
  auto call = std::make_shared<CommandObject>(*definition);
  CValueArray values;
  for (std::size_t i = 0; i < call->arguments_.size(); ++i) {
    if (i < static_cast<std::size_t>(arguments.GetCount()) &&
        !arguments[static_cast<XSI::LONG>(i)].IsEmpty())
      call->arguments_[i].value = arguments[static_cast<XSI::LONG>(i)];
    values.Add(call->arguments_[i].value);
  }
  if (!(call->flags_ & kCommandNoLoggingFlag))
    HostLog().Add(XSI::siInfoMsg, callText(name, call->arguments_));

  if (call->native_) return call->native_(values, result);

  auto execute = reinterpret_cast<RefCallback>(
      call->plugin_ ? call->plugin_->Symbol(narrow(name) + "_Execute") : nullptr);
  if (!execute) {
    HostLog().Add(XSI::siErrorMsg, name + L": the plug-in exports no " + name + L"_Execute.");
    return CStatus::Fail;
  }
  auto context = std::make_shared<ContextObject>(&definition->userData_, CRef(call));
  context->attributes[L"Arguments"] = CValue(values);
  CRef ref(context);
  const CStatus status = CallPlugin(execute, ref, name + L"_Execute");
  const auto it = context->attributes.find(L"ReturnValue");
  if (it != context->attributes.end()) result = it->second;
  return status;
}

std::string UpdateRecentScenes(const std::string& fileText, const std::string& scenePath) {
  static const std::string kOpen = "<menu name=\"RECENT_SCENES_MENU\">";
  static const std::string kClose = "</menu>";
  static const std::string kEntryOpen = "<recent_file>";
  static const std::string kEntryClose = "</recent_file>";
  constexpr std::size_t kMaxEntries = 10;

  std::string before, after;
  std::vector<std::string> entries;
  const std::size_t start = fileText.find(kOpen);
  const std::size_t end =
      start == std::string::npos ? std::string::npos : fileText.find(kClose, start);
  if (start != std::string::npos && end != std::string::npos) {
    before = fileText.substr(0, start);
    after = fileText.substr(end + kClose.size());
    const std::string section = fileText.substr(start + kOpen.size(), end - start - kOpen.size());
    for (std::size_t pos = section.find(kEntryOpen); pos != std::string::npos;
         pos = section.find(kEntryOpen, pos)) {
      const std::size_t from = pos + kEntryOpen.size();
      const std::size_t to = section.find(kEntryClose, from);
      if (to == std::string::npos) break;
      entries.push_back(section.substr(from, to - from));
      pos = to + kEntryClose.size();
    }
  } else if (const std::size_t root = fileText.find("</recent_file_menus>");
             root != std::string::npos) {
    before = fileText.substr(0, root) + "  ";
    after = "\n" + fileText.substr(root);
  } else {
    before = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<recent_file_menus>\n  ";
    after = "\n</recent_file_menus>\n";
  }
  std::erase(entries, scenePath);
  entries.insert(entries.begin(), scenePath);
  if (entries.size() > kMaxEntries) entries.resize(kMaxEntries);
  std::string section = kOpen + "\n";
  for (const std::string& e : entries) section += "    " + kEntryOpen + e + kEntryClose + "\n";
  section += "  " + kClose;
  return before + section + after;
}

}  // namespace xsihost
