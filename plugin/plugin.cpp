// The plug-in's entry points: identity, the two commands, then every node in catalogue order.
#include <xsi_application.h>
#include <xsi_pluginregistrar.h>
#include <xsi_status.h>

#include "plugin/callback_guard.h"

namespace {

using RegisterFunction = XSI::CStatus (*)(XSI::PluginRegistrar&);

}  // namespace

#define QUILLIX_NODE(shortName) XSI::CStatus Quillix_##shortName##_Register(XSI::PluginRegistrar&);
#include "plugin/catalogue.inc"
#undef QUILLIX_NODE

namespace {

constexpr RegisterFunction kCatalogue[] = {
#define QUILLIX_NODE(shortName) &Quillix_##shortName##_Register,
#include "plugin/catalogue.inc"
#undef QUILLIX_NODE
};

}  // namespace

XSIPLUGINCALLBACK XSI::CStatus XSILoadPlugin(XSI::PluginRegistrar& registrar) {
  registrar.PutAuthor(L"Quillix developers");
  registrar.PutName(L"Quillix Plugin");
  registrar.PutEmail(L"developers@quillix.example");
  registrar.PutURL(L"https://quillix.example");
  // Registered as the two integers 1900 and 0, not as a decimal version.
  registrar.PutVersion(1900, 0);

  // The returned items are not needed: the commands' own callbacks define them.
  registrar.RegisterCommand(L"Quillix__FindMatchingObjects", L"Quillix__FindMatchingObjects");
  registrar.RegisterCommand(L"Quillix__OpenMostRecentScene", L"Quillix__OpenMostRecentScene");

  // One node whose registration throws must not keep the others from registering.
  for (RegisterFunction registerNode : kCatalogue) {
    quillix::plugin::CallGuarded([&] { return registerNode(registrar); }, XSI::CStatus::OK);
  }
  return XSI::CStatus::OK;
}

XSIPLUGINCALLBACK XSI::CStatus XSIUnloadPlugin(const XSI::PluginRegistrar& registrar) {
  XSI::Application().LogMessage(registrar.GetName() + L" has been unloaded.", XSI::siCommentMsg);
  return XSI::CStatus::OK;
}
