#include "commands/command_binding.h"

#include <xsi_application.h>
#include <xsi_argument.h>
#include <xsi_command.h>
#include <xsi_context.h>

namespace quillix::commands {

using namespace XSI;

namespace {
// The host's no-logging capability bit.
constexpr LONG kNoLoggingFlag = 0x800000;
}  // namespace

CValue DefaultValue(const ArgumentDef& argument) {
  switch (argument.type) {
    case ArgumentType::String:
      return CValue(CString());
    case ArgumentType::Integer:
      return CValue(LONG(argument.defaultValue));
    case ArgumentType::Double:
      return CValue(argument.defaultValue);
    case ArgumentType::Boolean:
      return CValue(argument.defaultValue != 0.0);
    case ArgumentType::Float:
      return CValue(float(argument.defaultValue));
  }
  return CValue();
}

CStatus DefineCommand(CRef& contextRef, const wchar_t* description,
                      std::span<const ArgumentDef> arguments) {
  try {
    Context context(contextRef);
    Command command(context.GetSource());
    command.PutDescription(description);
    command.SetFlag(kNoLoggingFlag, false);
    ArgumentArray definitions = command.GetArguments();
    for (const ArgumentDef& argument : arguments) {
      definitions.Add(argument.name, DefaultValue(argument));
    }
    return CStatus::OK;
  } catch (...) {
    return CStatus::Fail;
  }
}

void Log(const CString& text, siSeverityType severity) { Application().LogMessage(text, severity); }

CString Quoted(const CString& text) { return CString(L"\"") + text + L"\""; }

}  // namespace quillix::commands
