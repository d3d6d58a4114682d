// Command, ArgumentArray and Argument over the offline host's command definitions.
#include <xsi_argument.h>
#include <xsi_command.h>

#include <xsihost/scene_commands.h>

#include "scene_refs.h"

namespace XSI {

using xsihost::ArgumentObject;
using xsihost::CommandObject;

using scene_detail::as;

Command::Command(const CRef& ref) : SIObject(as<CommandObject>(ref) ? ref : CRef()) {}

ArgumentArray Command::GetArguments() const {
  return ArgumentArray(as<CommandObject>(ref_) ? ref_ : CRef());
}

CStatus Command::PutDescription(const CString& description) {
  const auto c = as<CommandObject>(ref_);
  if (!c) return CStatus::Fail;
  c->description_ = description.Wide();
  return CStatus::OK;
}

CStatus Command::SetFlag(LONG flag, bool value) {
  const auto c = as<CommandObject>(ref_);
  if (!c) return CStatus::Fail;
  c->flags_ = value ? (c->flags_ | flag) : (c->flags_ & ~flag);
  return CStatus::OK;
}

CStatus ArgumentArray::Add(const CString& name, const CValue& value) {
  const auto c = as<CommandObject>(ref_);
  if (!c) return CStatus::Fail;
  if (name.IsEmpty()) return CStatus::InvalidArgument;
  for (const auto& a : c->arguments_)
    if (a.name == name.Wide()) return CStatus::InvalidArgument;
  c->arguments_.push_back({name.Wide(), value});
  return CStatus::OK;
}

Argument::Argument(const CRef& ref) : SIObject(as<ArgumentObject>(ref) ? ref : CRef()) {}

}  // namespace XSI
