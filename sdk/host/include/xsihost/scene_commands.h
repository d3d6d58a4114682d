// The offline host's commands: definitions filled in by plug-in Init callbacks, execution with
// arguments by position, the built-in "OpenScene", and the list of loaded plug-ins.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <xsi_status.h>
#include <xsi_value.h>
#include <xsihost/object.h>

namespace xsihost {

class LoadedPlugin;

/// A command's definition (what Init put into it) and its per-command user data.
class CommandObject : public xsihost::Object {
 public:
  struct Argument {
    std::wstring name;
    XSI::CValue value;  // the default, or the value of the running call
  };

  std::wstring name_;
  std::wstring description_;
  XSI::LONG flags_ = 0;
  std::vector<Argument> arguments_;
  XSI::CValue userData_;
  const LoadedPlugin* plugin_ = nullptr;  // null for the host's own commands
  std::function<XSI::CStatus(const XSI::CValueArray&, XSI::CValue&)> native_;

  std::wstring Name() const override { return name_; }
  std::wstring TypeName() const override { return L"Command"; }
};

/// One argument of a command, as Argument objects refer to it.
class ArgumentObject : public xsihost::Object {
 public:
  ArgumentObject(std::shared_ptr<CommandObject> command, std::size_t index)
      : command_(std::move(command)), index_(index) {}
  std::wstring Name() const override { return command_->arguments_[index_].name; }
  std::wstring TypeName() const override { return L"Argument"; }
  std::shared_ptr<CommandObject> command_;
  std::size_t index_;
};

/// A loaded plug-in as Application::GetPlugins lists it.
class PluginObject : public xsihost::Object {
 public:
  std::wstring name_;
  std::string path_;  // the plug-in's file
  const LoadedPlugin* plugin_ = nullptr;
  std::wstring Name() const override { return name_; }
  std::wstring TypeName() const override { return L"Plugin"; }
};

/// The capability bit that keeps a command's calls out of the log.
inline constexpr XSI::LONG kCommandNoLoggingFlag = 0x800000;

/// Makes `plugin`'s registered commands runnable: runs each command's `<name>_Init` with a
/// fresh definition, and lists the plug-in for Application::GetPlugins. A command name already
/// known is replaced. LoadedPlugin::load calls it; attaching a plug-in again does nothing.
void AttachPluginCommands(const LoadedPlugin& plugin);
/// Forgets the commands and the listing of `plugin`; LoadedPlugin::unload calls it.
void DetachPluginCommands(const LoadedPlugin& plugin);

/// Runs the command `name` with `arguments` by position (missing or empty values take the
/// defaults) and sets `result` to its "ReturnValue". Logs one line at severity 8 with the call
/// unless the command has the no-logging flag. Unknown commands, too many arguments and
/// failing callbacks are logged at severity 2 and return CStatus::Fail.
XSI::CStatus ExecuteCommand(const std::wstring& name, const XSI::CValueArray& arguments,
                            XSI::CValue& result);
/// The definition of `name`, or null.
std::shared_ptr<CommandObject> FindCommand(const std::wstring& name);
std::vector<std::shared_ptr<PluginObject>> LoadedPlugins();

/// Puts `scenePath` at the top of the recent-scenes section of `fileText` (an empty text
/// starts a new file), drops its older entries and keeps at most ten; other sections are kept
/// as they are. Paths are written verbatim.
std::string UpdateRecentScenes(const std::string& fileText, const std::string& scenePath);

}  // namespace xsihost
