// A small plug-in with one command, loaded by the command tests as a user's plug-in would be.
// The command adds its two numeric arguments, counts its calls in its user data and selects
// the object named by its third argument.
#include <xsi_application.h>
#include <xsi_argument.h>
#include <xsi_command.h>
#include <xsi_context.h>
#include <xsi_pluginregistrar.h>
#include <xsi_selection.h>

using namespace XSI;

XSIPLUGINCALLBACK CStatus XSILoadPlugin(PluginRegistrar& registrar) {
  registrar.PutName(L"SceneTestPlugin");
  registrar.PutVersion(1, 0);
  registrar.RegisterCommand(L"SceneTest__Sum");
  registrar.RegisterCommand(L"SceneTest__Quiet");
  return CStatus::OK;
}

XSIPLUGINCALLBACK CStatus XSIUnloadPlugin(const PluginRegistrar&) { return CStatus::OK; }

XSIPLUGINCALLBACK CStatus SceneTest__Sum_Init(CRef& in) {
  Context context(in);
  Command command(context.GetSource());
  command.PutDescription(L"Adds two numbers");
  command.SetFlag(0x800000, false);
  ArgumentArray arguments = command.GetArguments();
  arguments.Add(L"a", CValue(1));
  arguments.Add(L"b", CValue(2.5));
  arguments.Add(L"select", CValue(L""));
  return CStatus::OK;
}

XSIPLUGINCALLBACK CStatus SceneTest__Sum_Execute(CRef& in) {
  Context context(in);
  CValueArray arguments = context.GetAttribute(L"Arguments");
  const double sum = static_cast<LONG>(arguments[0]) + static_cast<double>(arguments[1]);
  context.PutUserData(CValue(static_cast<LONG>(context.GetUserData()) + 1));
  const CString name(arguments[2]);
  if (!name.IsEmpty()) {
    CRef object;
    if (object.Set(name) != CStatus::OK) {
      Application().LogMessage(L"no object " + name, siErrorMsg);
      return CStatus::Fail;
    }
    Selection selection = Application().GetSelection();
    selection.Clear();
    selection.Add(object);
  }
  context.PutAttribute(L"ReturnValue", CValue(sum));
  return CStatus::OK;
}

XSIPLUGINCALLBACK CStatus SceneTest__Quiet_Init(CRef& in) {
  Command command(Context(in).GetSource());
  command.SetFlag(0x800000, true);
  return CStatus::OK;
}

XSIPLUGINCALLBACK CStatus SceneTest__Quiet_Execute(CRef& in) {
  // Runs the host's own command from inside a plug-in command, as a command that re-opens a
  // scene does.
  CValueArray arguments;
  arguments.Add(CValue(static_cast<CString>(Context(in).GetUserData())));
  CValue result;
  return Application().ExecuteCommand(L"OpenScene", arguments, result);
}
