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

LONG ArgumentArray::GetCount() const {
  const auto c = as<CommandObject>(ref_);
  return c ? static_cast<LONG>(c->arguments_.size()) : 0;
}

Argument ArgumentArray::GetItem(LONG index) const {
  const auto c = as<CommandObject>(ref_);
  if (!c || index < 0 || static_cast<std::size_t>(index) >= c->arguments_.size()) return Argument();
  return Argument(CRef(std::make_shared<ArgumentObject>(c, static_cast<std::size_t>(index))));
}

Argument ArgumentArray::GetItem(const CString& name) const {
  const auto c = as<CommandObject>(ref_);
  if (!c) return Argument();
  for (std::size_t i = 0; i < c->arguments_.size(); ++i)
    if (c->arguments_[i].name == name.Wide())
      return Argument(CRef(std::make_shared<ArgumentObject>(c, i)));
  return Argument();
}

Argument::Argument(const CRef& ref) : SIObject(as<ArgumentObject>(ref) ? ref : CRef()) {}

CValue Argument::GetValue() const {
  const auto a = as<ArgumentObject>(ref_);
  return a ? a->command_->arguments_[a->index_].value : CValue();
}

}  // namespace XSI
