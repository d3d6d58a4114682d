#include "support/plugin_fixture.h"

#include <gtest/gtest.h>

#include <memory>

namespace quillix::test {

std::string PluginPath() { return QUILLIX_PLUGIN_PATH; }

xsihost::Host& TestHost() {
  static std::unique_ptr<xsihost::Host> loaded = [] {
    std::string error;
    auto h = xsihost::Host::Load(PluginPath(), error);
    if (!h) {
      ADD_FAILURE() << error;
      std::abort();
    }
    h->TakeLog();
    return h;
  }();
  return *loaded;
}

const xsihost::LoadedPlugin& Plugin() { return TestHost().Loaded(); }

const xsihost::NodeDefinitionRecord* NodeDefinition(const std::wstring& node) {
  const auto* definition = TestHost().FindNode(node);
  if (definition == nullptr) ADD_FAILURE() << "node not registered";
  return definition;
}

std::vector<OutputResult> Evaluate(const std::wstring& node, const EvaluationRequest& request,
                                   const std::vector<ULONG>& ports) {
  const auto* definition = NodeDefinition(node);
  if (definition == nullptr) return {};
  xsihost::NodeInstance instance(Plugin(), *definition);
  return instance.Evaluate(request, ports);
}

OutputResult Evaluate(const std::wstring& node, const EvaluationRequest& request, ULONG port) {
  std::vector<OutputResult> results = Evaluate(node, request, std::vector<ULONG>{port});
  return results.empty() ? OutputResult{} : std::move(results.front());
}

// Reads the log without loading the shared plug-in: some tests load their own.
std::vector<xsihost::LogLine> TakeLog() { return xsihost::HostLog().Take(); }

}  // namespace quillix::test
