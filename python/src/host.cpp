// The offline host from Python: the plug-in loaded as `quillix` loads it, and the tool's own
// list, eval and run code over it, so that every answer is the one `quillix` gives. Requests
// and results cross as JSON text; the package's Python side turns them into dictionaries and
// NumPy arrays.
#include <dlfcn.h>

#include <filesystem>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <pybind11/stl.h>
#include <xsihost/host.h>
#include <nlohmann/json.hpp>

#include "python/src/arrays.h"
#include "tools/quillix/commands.h"
#include "tools/quillix/json_values.h"
#include "tools/quillix/scene_tool.h"

namespace quillix::python {

namespace {

// The lines logged since the last call, as the tool prints them: [[severity, "text"], ...].
std::string TakeLogJson() {
  nlohmann::json log = nlohmann::json::array();
  return tool::LogJson(xsihost::HostLog().Take()).dump();
}

// An installed package carries the plug-in beside its module; the build tree's is elsewhere.
std::string DefaultPluginPath() {
  Dl_info info{};
  if (dladdr(reinterpret_cast<const void*>(&DefaultPluginPath), &info) != 0 && info.dli_fname) {
    const std::filesystem::path beside =
        std::filesystem::path(info.dli_fname).parent_path() / "libQuillix.so";
    if (std::filesystem::exists(beside)) return beside.string();
  }
  return QUILLIX_BUILD_PLUGIN_PATH;
}

// `message` without the trailing newline the tool ends its lines with.
std::string Trimmed(std::string message) {
  while (!message.empty() && message.back() == '\n') message.pop_back();
  return message;
}

class Host {
 public:
  explicit Host(const std::optional<std::string>& pluginPath) {
    std::string error;
    host_ = xsihost::Host::Load(pluginPath ? *pluginPath : DefaultPluginPath(), error);
    if (!host_) throw py::value_error(Trimmed(error));
    loadLog_ = TakeLogJson();
  }
  ~Host() { Unload(); }

  const std::string& PluginPath() const { return Loaded().Loaded().Path(); }
  const std::string& LoadLog() const { return loadLog_; }

  std::string NodesJson() {
    std::ostringstream out;
    tool::RunList(Loaded().Plugin(), true, out);
    return out.str();
  }

  // `quillix eval REQUEST` of a request file; bad input raises ValueError with the tool's line.
  // Named instances stay with this host between calls and end when it unloads.
  std::string Eval(const std::string& requestPath, unsigned threads, unsigned batchSize) {
    tool::EvalOptions options;
    options.requestPath = requestPath;
    options.threads = threads;
    options.batchSize = batchSize;
    options.keepInstances = true;
    tool::ResultDocument out;
    std::ostringstream err, text;
    int status;
    {
      py::gil_scoped_release release;
      status = tool::RunEval(Loaded(), options, out, err);
      if (status == 0) out.Write(text, -1);
    }
    if (status != 0) throw py::value_error(Trimmed(err.str()));
    return text.str();
  }

  void LoadScene(const std::string& path) {
    std::ostringstream err;
    if (!tool::LoadActiveScene(path, err)) throw py::value_error(Trimmed(err.str()));
  }

  // `quillix run COMMAND name=value ... --json`.
  std::string Run(const std::string& command, const std::vector<std::string>& assignments) {
    tool::RunOptions options;
    options.command = command;
    options.assignments = assignments;
    options.asJson = true;
    std::ostringstream out, err;
    int status;
    {
      py::gil_scoped_release release;
      status = tool::RunCommand(Loaded(), options, out, err);
    }
    if (status == 2) throw py::value_error(Trimmed(err.str()));
    return out.str();
  }

  // Ends the named instances (their Term) and unloads the plug-in (XSIUnloadPlugin); returns
  // {"shutdownLog", "unloadLog"}, what each step logged. Later calls raise.
  std::string Unload() {
    if (!host_) return R"({"shutdownLog": [], "unloadLog": []})";
    nlohmann::json out;
    out["shutdownLog"] = tool::LogJson(host_->DestroyInstances());
    host_->Unload();
    host_.reset();
    out["unloadLog"] = nlohmann::json::parse(TakeLogJson());
    return out.dump();
  }

 private:
  xsihost::Host& Loaded() const {
    if (!host_) throw py::value_error("the plug-in has been unloaded");
    return *host_;
  }

  std::unique_ptr<xsihost::Host> host_;
  std::string loadLog_;
};

}  // namespace

void BindHost(py::module_& m) {
  py::class_<Host>(m, "_Host")
      .def(py::init<const std::optional<std::string>&>(), py::arg("plugin") = py::none())
      .def_property_readonly("plugin_path", &Host::PluginPath)
      .def_property_readonly("load_log_json", &Host::LoadLog)
      .def("nodes_json", &Host::NodesJson)
      .def("eval_file", &Host::Eval, py::arg("path"), py::arg("threads") = 0,
           py::arg("batch_size") = 0)
      .def("load_scene", &Host::LoadScene, py::arg("path"))
      .def("run_json", &Host::Run, py::arg("command"), py::arg("assignments"))
      .def("unload", &Host::Unload);
}

}  // namespace quillix::python
