#include "commands/command_binding.h"

#include <xsi_argument.h>
#include <xsi_command.h>
#include <xsi_context.h>

namespace quillix::commands {

using namespace XSI;

namespace {

// The host's no-logging capability bit.
constexpr LONG kNoLoggingFlag = 0x800000;

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

}  // namespace

CStatus DefineCommand(CRef& contextRef, const wchar_t* description,
                      std::span<const ArgumentDef> arguments) {
  Context context(contextRef);
  Command command(context.GetSource());
  command.PutDescription(description);
  command.SetFlag(kNoLoggingFlag, false);
  ArgumentArray definitions = command.GetArguments();
  for (const ArgumentDef& argument : arguments) {
    definitions.Add(argument.name, DefaultValue(argument));
  }
  return CStatus::OK;
}

std::vector<CValue> ReadArguments(const CValueArray& given,
                                  std::span<const ArgumentDef> arguments) {
  std::vector<CValue> values;
  values.reserve(arguments.size());
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const LONG position = LONG(i);
    const bool present = position < given.GetCount() && !given[position].IsEmpty();
    values.push_back(present ? given[position] : DefaultValue(arguments[i]));
  }
  return values;
}

CString Quoted(const CString& text) { return CString(L"\"") + text + L"\""; }

}  // namespace quillix::commands
