// Quillix__OpenMostRecentScene: opens the first scene of the host's recent-scenes list. The
// list file is scanned in commands/recent_scene.h; here are the environment, the log and the
// host's "OpenScene".
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

namespace {

using namespace XSI;

using quillix::commands::Log;
using quillix::commands::Quoted;

CStatus Execute() {
  const char* home = std::getenv(quillix::kUserHomeVariable);
  if (home == nullptr) {
    Log(L"unable to get user home directory (environment variable " +
            Quoted(quillix::kUserHomeVariable) + L" not set?).",
        siErrorMsg);
    return CStatus::Fail;
  }
  const CString listPath = CUtils::BuildPath(CString(home), CString(quillix::kRecentListFolder),
                                             CString(quillix::kRecentListSubfolder),
                                             CString(quillix::kRecentListFileName));
  // The path's characters are bytes widened one by one, so this gives the bytes back.
  const std::string listFile = listPath.GetAsciiString();

  const std::int64_t size = quillix::FileSize(listFile.c_str());
  if (!quillix::IsReadableListSize(size)) {
    Log(L"unable to open " + Quoted(listPath) + L".", siErrorMsg);
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
    Log(L"unable to extract the most recent scene from " + Quoted(listPath) + L".", siErrorMsg);
    return CStatus::Fail;
  }

  const CString scene(scenePath.c_str());
  Log(L"found most recent scene " + Quoted(scene) + L".", siCommentMsg);
  CValueArray arguments;
  arguments.Add(CValue(scene));
  CValue result;
  // The host reports its own failures to open the scene; its result is not examined.
  Application().ExecuteCommand(L"OpenScene", arguments, result);
  return CStatus::OK;
}

}  // namespace

XSIPLUGINCALLBACK CStatus Quillix__OpenMostRecentScene_Init(CRef& contextRef) {
  // The command takes no arguments.
  return quillix::commands::DefineCommand(contextRef, L"Opens the most recent scene file", {});
}

XSIPLUGINCALLBACK CStatus Quillix__OpenMostRecentScene_Execute(CRef& /*contextRef*/) {
  try {
    return Execute();
  } catch (...) {
    // Only an exhausted allocation (a huge list file) gets here; the host must never see it.
    Log(L"Quillix__OpenMostRecentScene: out of memory.", siErrorMsg);
    return CStatus::Fail;
  }
}
