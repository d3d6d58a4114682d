#include <xsihost/host.h>

#include <xsi_ref.h>
#include <xsi_status.h>
#include <xsihost/scene.h>
#include <xsihost/scene_commands.h>
#include <xsihost/scene_file.h>

namespace xsihost {

std::unique_ptr<Host> Host::Load(const std::string& pluginPath, std::string& error) {
  // The log must outlive the plug-in, whose unload at exit logs a line.
  HostLog();
  std::unique_ptr<LoadedPlugin> plugin = LoadedPlugin::Load(pluginPath, error);
  if (!plugin) return nullptr;
  return std::unique_ptr<Host>(new Host(std::move(plugin)));
}

Host::~Host() { Unload(); }

void Host::Unload() {
  instances_.clear();
  plugin_->Unload();
}

const NodeDefinitionRecord* Host::FindNode(const std::wstring& name) const {
  return plugin_->Record().FindNode(name);
}

NodeInstance* Host::Instance(const std::string& name, const std::wstring& node) {
  const NodeDefinitionRecord* definition = FindNode(node);
  if (!definition) return nullptr;
  auto& slot = instances_[name];
  if (slot && &slot->Definition() != definition) return nullptr;
  if (!slot) slot = std::make_unique<NodeInstance>(*plugin_, *definition);
  return slot.get();
}

std::vector<LogLine> Host::DestroyInstances() {
  instances_.clear();
  return TakeLog();
}

EvaluationOutcome Host::Evaluate(NodeInstance& instance, const EvaluationRequest& request,
                                 const std::vector<ULONG>& ports) {
  EvaluationOutcome outcome;
  Evaluate(instance, request, ports, outcome);
  return outcome;
}

void Host::Evaluate(NodeInstance& instance, const EvaluationRequest& request,
                    const std::vector<ULONG>& ports, EvaluationOutcome& outcome) {
  instance.Evaluate(request, ports, outcome.outputs);
  outcome.log = TakeLog();
}

std::optional<EvaluationOutcome> Host::EvaluateOnce(const std::wstring& node,
                                                    const EvaluationRequest& request,
                                                    const std::vector<ULONG>& ports) {
  const NodeDefinitionRecord* definition = FindNode(node);
  if (!definition) return std::nullopt;
  EvaluationOutcome outcome;
  {
    NodeInstance instance(*plugin_, *definition);
    outcome.outputs = instance.Evaluate(request, ports);
  }  // Term belongs to this evaluation's log
  outcome.log = TakeLog();
  return outcome;
}

bool Host::LoadScene(const std::string& path, std::string& error) {
  std::shared_ptr<Scene> scene = LoadSceneFile(path, error);
  if (!scene) return false;
  SetActiveScene(std::move(scene));
  return true;
}

CommandOutcome Host::RunCommand(const std::wstring& name, const XSI::CValueArray& arguments) {
  CommandOutcome outcome;
  outcome.status = ExecuteCommand(name, arguments, outcome.returnValue).GetCode();
  outcome.log = TakeLog();
  for (const XSI::CRef& r : Selection()) outcome.selection.push_back(r.GetAsText().Wide());
  return outcome;
}

}  // namespace xsihost
