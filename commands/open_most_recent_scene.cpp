// Quillix__OpenMostRecentScene: opens the first scene of the host's recent-scenes list. The
// list file is read and scanned by core/recent/recent_scene.h; here are the environment, the
// log and the host's "OpenScene".
#include <xsi_application.h>
#include <xsi_status.h>
#include <xsi_string.h>
#include <xsi_utils.h>
#include <xsi_value.h>
#include <xsi_valuearray.h>

#include <cstdlib>
#include <span>
#include <string>
#include <vector>

#include "commands/command_binding.h"
#include "core/recent/recent_scene.h"
#include "plugin/callback_guard.h"
#include "plugin/log.h"

using namespace XSI;
using quillix::commands::Quoted;
using quillix::plugin::kLogError;
using quillix::plugin::kLogInfo;
using quillix::plugin::LogLine;

QUILLIX_COMMAND_CALLBACK(Quillix__OpenMostRecentScene_Init, XSI::CRef&, contextRef) {
  // The command takes no arguments.
  return quillix::commands::DefineCommand(contextRef, L"Opens the most recent scene file", {});
}

QUILLIX_COMMAND_CALLBACK(Quillix__OpenMostRecentScene_Execute, [[maybe_unused]] XSI::CRef&,
                         contextRef) {
  const char* home = std::getenv(quillix::kUserHomeVariable);
  if (home == nullptr) {
    LogLine(kLogError, L"unable to get user home directory (environment variable " +
                           Quoted(quillix::kUserHomeVariable) + L" not set?).");
    return CStatus::Fail;
  }
  const CString listPath = CUtils::BuildPath(CString(home), CString(quillix::kRecentListFolder),
                                             CString(quillix::kRecentListSubfolder),
                                             CString(quillix::kRecentListFileName));
  // The path's characters are bytes widened one by one, so this gives the bytes back.
  const std::string listFile = listPath.GetAsciiString();

  const std::int64_t size = quillix::FileSize(listFile.c_str());
  if (!quillix::IsReadableListSize(size)) {
    LogLine(kLogError, L"unable to open " + Quoted(listPath) + L".");
    return CStatus::Fail;
  }
  std::string scenePath;
  int code;
  {
    // Zero-filled, so that a short read still leaves a terminated text.
    std::vector<char> text(static_cast<std::size_t>(size) + 1, '\0');
    quillix::ReadWholeFile(listFile.c_str(), std::span<char>(text.data(), text.size() - 1));
    code = quillix::FindMostRecentScene(text.data(), scenePath);
  }
  if (code != quillix::kExtractOk) {
    LogLine(kLogError, L"unable to extract the most recent scene from " + Quoted(listPath) + L".");
    return CStatus::Fail;
  }

  const CString scene(scenePath.c_str());
  LogLine(kLogInfo, L"found most recent scene " + Quoted(scene) + L".");
  CValueArray arguments;
  arguments.Add(CValue(scene));
  CValue result;
  // The host reports its own failures to open the scene; its result is not examined.
  Application().ExecuteCommand(L"OpenScene", arguments, result);
  return CStatus::OK;
}
