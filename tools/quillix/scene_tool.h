// The scene side of `quillix`: loading a scene for eval, `run` (a command over a scene) and
// `scene` (the loaded scene as a tree).
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include <xsihost/host.h>

namespace quillix::tool {

struct RunOptions {
  std::string command;
  std::vector<std::string> assignments;  // "name=value", by argument name
  std::string scenePath;                 // empty: the empty scene
  bool asJson = false;
};

struct SceneOptions {
  std::string scenePath;
  double frame = 1e300;  // above 1e100: the scene's own frame
  bool asJson = false;
};

/// Adds the `run` and `scene` subcommands, filling `run` and `scene`.
void AddSceneSubcommands(CLI::App& app, RunOptions& run, SceneOptions& scene);

/// Loads `path` as the active scene; on failure prints one message to `err` and returns false.
bool LoadActiveScene(const std::string& path, std::ostream& err);

/// Runs a command of the loaded plug-in (or of the host) over the scene and prints its log,
/// status, return value and resulting selection. Returns 0 when the command succeeded, 1 when it
/// failed, 2 for bad input.
int RunCommand(xsihost::Host& host, const RunOptions& options, std::ostream& out,
               std::ostream& err);

/// Prints the scene as a tree with types and global positions. Returns 0, or 2 for bad input.
int RunScene(const SceneOptions& options, std::ostream& out, std::ostream& err);

}  // namespace quillix::tool
