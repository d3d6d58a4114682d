#include "support/plugin_fixture.h"

#include <gtest/gtest.h>

#include <memory>

namespace quillix::test {

std::string pluginPath() { return QUILLIX_PLUGIN_PATH; }

xsihost::LoadedPlugin& plugin() {
  // The log must outlive the plug-in, whose unload at exit logs a line.
  xsihost::hostLog();
  static std::unique_ptr<xsihost::LoadedPlugin> loaded = [] {
    std::string error;
    auto p = xsihost::LoadedPlugin::load(pluginPath(), error);
    if (!p) {
      ADD_FAILURE() << error;
      std::abort();
    }
    xsihost::hostLog().take();
    return p;
  }();
  return *loaded;
}

const XSI::host_detail::NodeDefinitionRecord* nodeDefinition(const std::wstring& node) {
  const auto* definition = plugin().findNode(node);
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

std::vector<xsihost::LogLine> takeLog() { return xsihost::hostLog().take(); }

}  // namespace quillix::test
