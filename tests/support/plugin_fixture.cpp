#include "support/plugin_fixture.h"

#include <gtest/gtest.h>

#include <memory>

namespace quillix::test {

std::string pluginPath() { return QUILLIX_PLUGIN_PATH; }

xsihost::Host& host() {
  static std::unique_ptr<xsihost::Host> loaded = [] {
    std::string error;
    auto h = xsihost::Host::Load(pluginPath(), error);
    if (!h) {
      ADD_FAILURE() << error;
      std::abort();
    }
    h->TakeLog();
    return h;
  }();
  return *loaded;
}

const xsihost::LoadedPlugin& plugin() { return host().Loaded(); }

const xsihost::NodeDefinitionRecord* nodeDefinition(const std::wstring& node) {
  const auto* definition = host().FindNode(node);
  if (definition == nullptr) ADD_FAILURE() << "node not registered";
  return definition;
}

std::vector<OutputResult> evaluate(const std::wstring& node, const EvaluationRequest& request,
                                   const std::vector<ULONG>& ports) {
  const auto* definition = nodeDefinition(node);
  if (definition == nullptr) return {};
  xsihost::NodeInstance instance(plugin(), *definition);
  return instance.evaluate(request, ports);
}

OutputResult evaluate(const std::wstring& node, const EvaluationRequest& request, ULONG port) {
  std::vector<OutputResult> results = evaluate(node, request, std::vector<ULONG>{port});
  return results.empty() ? OutputResult{} : std::move(results.front());
}

// Reads the log without loading the shared plug-in: some tests load their own.
std::vector<xsihost::LogLine> takeLog() { return xsihost::HostLog().Take(); }

}  // namespace quillix::test
