// `quillix run` and `quillix scene`, and scene loading for `quillix eval`.
#include "tools/quillix/scene_tool.h"

#include <charconv>
#include <cmath>
#include <iomanip>
#include <iostream>
#include <sstream>

#include <xsi_math.h>
#include <xsihost/scene.h>
#include <xsihost/scene_commands.h>
#include <nlohmann/json.hpp>

#include "tools/quillix/file_text.h"
#include "tools/quillix/json_values.h"
#include "tools/quillix/nearest_name.h"

namespace quillix::tool {

using nlohmann::json;
using XSI::CValue;

namespace {

std::string Text(const std::wstring& s) { return WideToUtf8(s); }

// Reads `value` as the type of the argument's default; false when it does not parse.
bool Convert(const std::string& value, const CValue& defaultValue, CValue& out) {
  auto parseDouble = [&](double& d) {
    const char* end = value.data() + value.size();
    const auto [ptr, ec] = std::from_chars(value.data(), end, d);
    return ec == std::errc() && ptr == end;
  };
  switch (defaultValue.GetType()) {
    case CValue::siBool:
      if (value == "true" || value == "True" || value == "1")
        out = CValue(true);
      else if (value == "false" || value == "False" || value == "0")
        out = CValue(false);
      else
        return false;
      return true;
    case CValue::siInt2:
    case CValue::siInt4:
    case CValue::siInt8:
    case CValue::siUInt4: {
      long long n = 0;
      const char* end = value.data() + value.size();
      const auto [ptr, ec] = std::from_chars(value.data(), end, n);
      if (ec != std::errc() || ptr != end || n < INT32_MIN || n > INT32_MAX) return false;
      out = CValue(static_cast<int>(n));
      return true;
    }
    case CValue::siFloat: {
      double d = 0.0;
      if (!parseDouble(d)) return false;
      out = CValue(static_cast<float>(d));
      return true;
    }
    case CValue::siDouble: {
      double d = 0.0;
      if (!parseDouble(d)) return false;
      out = CValue(d);
      return true;
    }
    default:
      out = CValue(XSI::CString(Utf8ToWide(value).c_str()));
      return true;
  }
}

const char* ArgumentTypeName(const CValue& v) {
  switch (v.GetType()) {
    case CValue::siBool:
      return "a boolean (true or false)";
    case CValue::siInt2:
    case CValue::siInt4:
    case CValue::siInt8:
    case CValue::siUInt4:
      return "a 32-bit integer";
    default:
      return "a number";
  }
}

json ValueJson(const CValue& v) {
  switch (v.GetType()) {
    case CValue::siEmpty:
      return nullptr;
    case CValue::siBool:
      return static_cast<bool>(v);
    case CValue::siInt2:
    case CValue::siInt4:
    case CValue::siInt8:
    case CValue::siUInt4:
      return static_cast<std::int64_t>(v);
    case CValue::siFloat:
    case CValue::siDouble:
      return static_cast<double>(v);
    default:
      return Text(v.GetAsText().Wide());
  }
}

std::string Position(const XSI::MATH::CVector3& p) {
  std::ostringstream s;
  s << std::setprecision(6) << "(" << p.GetX() << ", " << p.GetY() << ", " << p.GetZ() << ")";
  return s.str();
}

}  // namespace

void AddSceneSubcommands(CLI::App& app, RunOptions& run, SceneOptions& scene) {
  CLI::App* runCmd = app.add_subcommand(
      "run", "Run a command over a scene and print its log, return value and selection");
  runCmd->add_option("command", run.command, "Command name (a plug-in command or OpenScene)")
      ->required();
  runCmd->add_option("arguments", run.assignments,
                     "Arguments as name=value, by the command's argument names");
  runCmd->add_option("--scene", run.scenePath, "Scene file to load first");
  runCmd->add_flag("--json", run.asJson, "Print as JSON");

  CLI::App* sceneCmd = app.add_subcommand(
      "scene", "Print a scene file's objects as a tree with types and global positions");
  sceneCmd->add_option("file", scene.scenePath, "Scene file")->required();
  sceneCmd->add_option("--frame", scene.frame,
                       "Frame to evaluate transforms at (default: the scene's)");
  sceneCmd->add_flag("--json", scene.asJson, "Print as JSON");
}

bool LoadActiveScene(const std::string& path, std::ostream& err) {
  std::string error;
  if (CheckReadableFile(path, "scene", error) && xsihost::Host::LoadScene(path, error)) return true;
  err << "quillix: " << error << '\n';
  return false;
}

int RunCommand(xsihost::Host& host, const RunOptions& options, std::ostream& out,
               std::ostream& err) {
  if (!options.scenePath.empty() && !LoadActiveScene(options.scenePath, err)) return 2;
  // The plug-in's commands were defined (their Init run) when it was loaded.
  host.TakeLog();  // lines of the load are not this command's

  const std::wstring name = Utf8ToWide(options.command);
  const auto definition = xsihost::FindCommand(name);
  if (!definition) {
    std::vector<std::string> names{"OpenScene"};
    for (const std::wstring& c : host.Plugin().commands) names.push_back(Text(c));
    err << "quillix: run: unknown command \"" << options.command << "\""
        << DidYouMean(options.command, names) << '\n';
    return 2;
  }
  XSI::CValueArray arguments(static_cast<XSI::LONG>(definition->arguments_.size()));
  for (const std::string& assignment : options.assignments) {
    const auto eq = assignment.find('=');
    if (eq == std::string::npos || eq == 0) {
      err << "quillix: run: argument \"" << assignment << "\" is not of the form name=value\n";
      return 2;
    }
    const std::wstring argName = Utf8ToWide(assignment.substr(0, eq));
    std::size_t index = 0;
    while (index < definition->arguments_.size() && definition->arguments_[index].name != argName)
      ++index;
    if (index == definition->arguments_.size()) {
      std::vector<std::string> names;
      for (const auto& a : definition->arguments_) names.push_back(Text(a.name));
      err << "quillix: run: " << options.command << " has no argument \""
          << assignment.substr(0, eq) << "\"" << DidYouMean(assignment.substr(0, eq), names)
          << '\n';
      return 2;
    }
    const std::string value = assignment.substr(eq + 1);
    CValue converted;
    if (!Convert(value, definition->arguments_[index].value, converted)) {
      err << "quillix: run: argument \"" << assignment.substr(0, eq) << "\": \"" << value
          << "\" is not " << ArgumentTypeName(definition->arguments_[index].value) << '\n';
      return 2;
    }
    arguments[static_cast<XSI::LONG>(index)] = converted;
  }

  const xsihost::CommandOutcome outcome = host.RunCommand(name, arguments);
  const XSI::CStatus status(outcome.status);
  std::vector<std::string> selected;
  for (const std::wstring& s : outcome.selection) selected.push_back(Text(s));

  if (options.asJson) {
    json j;
    j["command"] = options.command;
    j["status"] = status.GetCode();
    j["returnValue"] = ValueJson(outcome.returnValue);
    j["log"] = LogJson(outcome.log);
    j["selection"] = selected;
    out << j.dump(2) << '\n';
  } else {
    for (const auto& line : outcome.log)
      out << "log " << line.severity << ": " << Text(line.text) << '\n';
    out << "status: " << (status.Succeeded() ? "OK" : "failed") << " (0x" << std::hex
        << status.GetCode() << std::dec << ")\n";
    out << "return value: " << ValueJson(outcome.returnValue).dump() << '\n';
    out << "selection:";
    for (const std::string& s : selected) out << ' ' << s;
    out << '\n';
  }
  return status.Succeeded() ? 0 : 1;
}

int RunScene(const SceneOptions& options, std::ostream& out, std::ostream& err) {
  if (!LoadActiveScene(options.scenePath, err)) return 2;
  const xsihost::Scene& scene = xsihost::ActiveScene();
  // Depth-first over the hierarchy with an explicit stack, children in file order.
  std::vector<std::pair<std::shared_ptr<const xsihost::SceneObject>, int>> stack{{scene.Root(), 0}};
  json objects = json::array();
  while (!stack.empty()) {
    const auto [o, depth] = stack.back();
    stack.pop_back();
    const XSI::MATH::CVector3 p = o->GlobalAt(options.frame).GetTranslation();
    std::string detail;
    if (o->mesh_) {
      detail = std::to_string(o->mesh_->points.size()) + " points, " +
               std::to_string(o->mesh_->polygons.size()) + " polygons";
    } else if (!o->curves_.empty()) {
      detail = std::to_string(o->curves_.size()) + " curve(s)";
    }
    const bool visible = o->visible_.At(o->ResolveTime(options.frame));
    if (options.asJson) {
      objects.push_back({{"name", Text(o->FullName())},
                         {"type", Text(o->type_)},
                         {"depth", depth},
                         {"position", {p.GetX(), p.GetY(), p.GetZ()}},
                         {"visible", visible}});
    } else {
      out << std::string(2 * static_cast<std::size_t>(depth), ' ') << Text(o->name_) << " ["
          << Text(o->type_) << "] at " << Position(p);
      if (!detail.empty()) out << ", " << detail;
      if (!visible) out << ", hidden";
      out << '\n';
    }
    for (auto it = o->children_.rbegin(); it != o->children_.rend(); ++it)
      stack.push_back({*it, depth + 1});
  }
  if (options.asJson)
    out << json{{"frame", scene.CurrentFrame()}, {"objects", objects}}.dump(2) << '\n';
  return 0;
}

}  // namespace quillix::tool
