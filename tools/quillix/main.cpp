// quillix: the command-line host. Loads the plug-in through its exported entry points and
// lists it, or evaluates its nodes on requests read from files.
#include <cstdio>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <xsihost/host.h>
#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include "tools/quillix/commands.h"
#include "tools/quillix/file_text.h"
#include "tools/quillix/json_values.h"
#include "tools/quillix/nearest_name.h"
#include "tools/quillix/request_names.h"
#include "tools/quillix/scene_tool.h"

namespace {

// The tool's build and the identity of the plug-in it loads by default.
std::string VersionText() {
  return "quillix " QUILLIX_VERSION " (the Quillix plug-in, version 1900.0, and its offline host)";
}

// The message for a first argument that names no subcommand, with the nearest one suggested.
std::optional<std::string> UnknownCommandText(const CLI::App& app) {
  if (!app.get_subcommands().empty()) return std::nullopt;
  for (const std::string& arg : app.remaining()) {
    if (arg.empty() || arg[0] == '-') continue;
    std::vector<std::string> names;
    for (const CLI::App* sub : app.get_subcommands({})) names.push_back(sub->get_name());
    const std::string hint = quillix::tool::DidYouMean(arg, names);
    return "unknown command \"" + arg + "\"" +
           (hint.empty() ? " (" + quillix::tool::Listed(names) + ")" : hint);
  }
  return std::nullopt;
}

// `eval --ndjson` over standard input or the file named.
int RunLines(xsihost::Host& host, const quillix::tool::EvalOptions& options) {
  if (options.requestPath.empty() || options.requestPath == "-")
    return quillix::tool::RunEvalLines(host, options, stdin, std::cout, std::cerr);
  std::string error;
  if (!quillix::tool::CheckReadableFile(options.requestPath, "request", error)) {
    std::cerr << "quillix: " << error << '\n';
    return 2;
  }
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> in(std::fopen(options.requestPath.c_str(), "r"),
                                                     &std::fclose);
  if (!in) {
    std::cerr << "quillix: " << options.requestPath << ": cannot open the request file\n";
    return 2;
  }
  return quillix::tool::RunEvalLines(host, options, in.get(), std::cout, std::cerr);
}

int Run(int argc, char** argv) {
  CLI::App app{
      "quillix: runs the Quillix plug-in's nodes and commands outside the host application"};
  app.require_subcommand(0, 1);
  app.set_version_flag("--version", VersionText());
  std::string pluginPath = xsihost::DefaultPluginPath(argv[0]);
  app.add_option("--plugin", pluginPath, "Plug-in to load (default: libQuillix.so beside quillix)");

  bool listJson = false;
  CLI::App* list = app.add_subcommand(
      "list", "Show the plug-in's identity, commands and nodes with their ports");
  list->add_flag("--json", listJson, "Print as JSON");

  quillix::tool::EvalOptions evalOptions;
  CLI::App* eval =
      app.add_subcommand("eval", "Evaluate node outputs described by a JSON request file");
  eval->add_option("request", evalOptions.requestPath, "Request file, or - for standard input");
  bool ndjson = false;
  CLI::Option* ndjsonFlag = eval->add_flag(
      "--ndjson", ndjson,
      "Read one request document per line (standard input, or the file) and write one result "
      "line per input line");
  eval->add_option("--threads", evalOptions.threads, "Threads for multi-threaded nodes")
      ->check(CLI::Range(1, 256));
  eval->add_option("--batch-size", evalOptions.batchSize, "Elements per batch")
      ->check(CLI::PositiveNumber);
  std::string evalScene;
  eval->add_option("--scene", evalScene, "Scene file for the nodes that read the scene");
  // Result files are named by request; lines of --ndjson input would overwrite each other's.
  eval->add_option("--out", evalOptions.outputs.outDir,
                   "Folder for the geometric results as OBJ and PLY files")
      ->excludes(ndjsonFlag);
  eval->add_option("--png", evalOptions.outputs.pngDir, "Folder for pictures of the results (PNG)")
      ->excludes(ndjsonFlag);
  eval->add_option("--svg", evalOptions.outputs.svgDir, "Folder for pictures of the results (SVG)")
      ->excludes(ndjsonFlag);
  std::string view = "z";
  eval->add_option("--view", view, "Axis the pictures look along: x, y, z or iso")
      ->check(CLI::IsMember({"x", "y", "z", "iso"}));
  bool compact = false;
  eval->add_flag("--compact", compact, "Print the results as one line of JSON");
  quillix::tool::RunOptions runOptions;
  quillix::tool::SceneOptions sceneOptions;
  quillix::tool::AddSceneSubcommands(app, runOptions, sceneOptions);

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& e) {
    if (e.get_exit_code() == 0) return app.exit(e);  // --help, --version
    std::cerr << "quillix: " << UnknownCommandText(app).value_or(e.what()) << '\n';
    return 2;
  }

  if (app.get_subcommands().empty()) {
    std::cerr << "quillix: a subcommand is required (list, eval, run, scene); see quillix --help\n";
    return 2;
  }
  if (*eval && !ndjson && evalOptions.requestPath.empty()) {
    std::cerr << "quillix: eval: a request file is required (- for standard input)\n";
    return 2;
  }
  evalOptions.outputs.view = *quillix::ParseViewAxis(view);
  if (app.got_subcommand("scene"))
    return quillix::tool::RunScene(sceneOptions, std::cout, std::cerr);
  if (!evalScene.empty() && !quillix::tool::LoadActiveScene(evalScene, std::cerr)) return 2;
  evalOptions.sceneGiven = !evalScene.empty();

  std::string error;
  std::unique_ptr<xsihost::Host> host = xsihost::Host::Load(pluginPath, error);
  if (!host) {
    std::cerr << "quillix: " << error << '\n';
    return 2;
  }
  const nlohmann::json loadLog = quillix::tool::LogJson(host->TakeLog());

  int status = 0;
  if (*list) {
    status = quillix::tool::RunList(host->Plugin(), listJson, std::cout);
    host->Unload();
    for (const auto& line : host->TakeLog())
      std::cerr << "log " << line.severity << ": " << quillix::tool::WideToUtf8(line.text) << '\n';
  } else if (app.got_subcommand("run")) {
    status = quillix::tool::RunCommand(*host, runOptions, std::cout, std::cerr);
    host->Unload();
  } else if (*eval && ndjson) {
    status = RunLines(*host, evalOptions);
    host->Unload();
  } else if (*eval) {
    quillix::tool::ResultDocument out;
    status = quillix::tool::RunEval(*host, evalOptions, out, std::cerr);
    host->Unload();
    if (status == 0) {
      out.tree["loadLog"] = loadLog;
      out.tree["unloadLog"] = quillix::tool::LogJson(host->TakeLog());
      out.Write(std::cout, compact ? -1 : 2);
      std::cout << '\n';
    }
  }
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Run(argc, argv);
  } catch (const std::exception& e) {
    std::cerr << "quillix: " << e.what() << '\n';
    return 2;
  }
}
