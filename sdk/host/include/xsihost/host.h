// The offline host's public API: what the `quillix` tool, the tests and language bindings use
// to run a plug-in outside the application.
//
// A Host loads one plug-in by path (XSILoadPlugin, then the Init of its commands), lists what
// it registered, keeps named node instances, evaluates nodes on typed port data, loads scenes
// and runs commands. Every call returns what the plug-in logged meanwhile, so the caller never
// reads the process-wide log directly. The pieces it is built from are public too:
//   xsihost/definitions.h  PluginRecord, NodeDefinitionRecord, GroupRecord, PortRecord
//   xsihost/port_values.h  PortValues (typed data of one port) and the data type names
//   xsihost/evaluation.h   EvaluationRequest, OutputResult, NodeInstance
//   xsihost/plugin_host.h  LoadedPlugin, DefaultPluginPath
//   xsihost/session.h      LogLine, the process-wide Log
//   xsihost/scene.h, scene_file.h, scene_commands.h  the scene, scene files, commands
// Everything under sdk/host/src is private to the SDK.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <xsi_value.h>
#include <xsihost/definitions.h>
#include <xsihost/evaluation.h>
#include <xsihost/plugin_host.h>
#include <xsihost/port_values.h>
#include <xsihost/session.h>

namespace xsihost {

/// One evaluation's outputs, one per requested port in order, and the lines logged meanwhile.
struct EvaluationOutcome {
  std::vector<OutputResult> outputs;
  std::vector<LogLine> log;
};

/// One command run: its status code (0 on success), its "ReturnValue", the lines logged and the
/// selection afterwards as object names.
struct CommandOutcome {
  ULONG status = 0;
  XSI::CValue returnValue;
  std::vector<LogLine> log;
  std::vector<std::wstring> selection;
};

class Host {
 public:
  /// Loads the plug-in at `pluginPath`. On failure returns null and sets `error` to one line
  /// naming the path and the reason. What the plug-in logged while loading is in TakeLog().
  static std::unique_ptr<Host> Load(const std::string& pluginPath, std::string& error);
  /// Destroys the named instances (their Term runs), then unloads the plug-in.
  ~Host();
  Host(const Host&) = delete;
  Host& operator=(const Host&) = delete;

  /// Destroys the named instances, then calls XSIUnloadPlugin; later calls must not evaluate.
  void Unload();

  /// What the plug-in registered: identity, commands and node definitions in order.
  const PluginRecord& Plugin() const { return plugin_->Record(); }
  const LoadedPlugin& Loaded() const { return *plugin_; }
  /// The definition of node `name`, or null.
  const NodeDefinitionRecord* FindNode(const std::wstring& name) const;

  /// The instance called `name`, created for `node` when there is none yet. Returns null when
  /// `node` is not registered or `name` already belongs to an instance of another node.
  NodeInstance* Instance(const std::string& name, const std::wstring& node);
  /// Destroys every named instance, Term included, in name order. Returns what they logged.
  std::vector<LogLine> DestroyInstances();

  /// Evaluates `ports` on `instance` (see NodeInstance::Evaluate).
  EvaluationOutcome Evaluate(NodeInstance& instance, const EvaluationRequest& request,
                             const std::vector<ULONG>& ports);
  /// The same into `outcome`, whose earlier outputs lend their buffers to the new ones (see
  /// NodeInstance::Evaluate); repeated evaluations of one instance then reuse their outputs.
  void Evaluate(NodeInstance& instance, const EvaluationRequest& request,
                const std::vector<ULONG>& ports, EvaluationOutcome& outcome);
  /// Evaluates `ports` on a fresh instance of `node`, from Init to Term; null when `node` is
  /// not registered.
  std::optional<EvaluationOutcome> EvaluateOnce(const std::wstring& node,
                                                const EvaluationRequest& request,
                                                const std::vector<ULONG>& ports);

  /// Reads the scene file at `path` and makes it the scene every call sees (the selection is
  /// cleared). On failure returns false, sets `error` and keeps the current scene.
  static bool LoadScene(const std::string& path, std::string& error);

  /// Runs the command `name` (the plug-in's or the host's "OpenScene") with `arguments` by
  /// position; missing or empty ones take the command's defaults.
  CommandOutcome RunCommand(const std::wstring& name, const XSI::CValueArray& arguments);

  /// The lines logged since the last call (or since loading) that no other call returned.
  std::vector<LogLine> TakeLog() { return HostLog().Take(); }

 private:
  explicit Host(std::unique_ptr<LoadedPlugin> plugin) : plugin_(std::move(plugin)) {}

  std::unique_ptr<LoadedPlugin> plugin_;
  std::map<std::string, std::unique_ptr<NodeInstance>> instances_;
};

}  // namespace xsihost
