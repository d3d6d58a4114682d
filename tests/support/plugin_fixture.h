// Binding tests load the real plug-in through the offline host, as a user's host would.
#pragma once

#include <string>
#include <vector>

#include <xsihost/host.h>

namespace quillix::test {

using XSI::ULONG;
using xsihost::EvaluationRequest;
using xsihost::OutputResult;
using xsihost::PortValues;

// The plug-in built with the tests, loaded once per test process.
xsihost::Host& TestHost();
const xsihost::LoadedPlugin& Plugin();
std::string PluginPath();

// The registered definition of `node`; fails the test (and returns null) when missing.
const xsihost::NodeDefinitionRecord* NodeDefinition(const std::wstring& node);

// Evaluates `ports` of a fresh instance of `node` (Init, Begin, Evaluate, End, Term).
std::vector<OutputResult> Evaluate(const std::wstring& node, const EvaluationRequest& request,
                                   const std::vector<ULONG>& ports);
// The same for one port.
OutputResult Evaluate(const std::wstring& node, const EvaluationRequest& request, ULONG port);

// The log lines written since the last call.
std::vector<xsihost::LogLine> TakeLog();

}  // namespace quillix::test
