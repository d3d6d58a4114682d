// Host-side base of every object a CRef can point at, and the callback context object.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include <xsi_ref.h>
#include <xsi_value.h>

namespace xsihost {

// Scene objects, node instances, commands and contexts derive from this. The defaults
// describe an object without name, parent or parameters.
class Object : public std::enable_shared_from_this<Object> {
 public:
  virtual ~Object() = default;
  virtual std::wstring Name() const { return {}; }
  virtual std::wstring FullName() const { return Name(); }
  virtual std::wstring TypeName() const { return {}; }
  virtual std::shared_ptr<Object> Parent() const { return nullptr; }
  virtual std::uint32_t ObjectID() const { return 0; }
  // Value of the parameter `name`; false when the object has no such parameter.
  virtual bool ParameterValue(const std::wstring& /*name*/, XSI::CValue& /*out*/) const {
    return false;
  }
};

// What a callback's Context refers to: the user data slot of its owner (a node instance or a
// command), named attributes, and the owning object.
class ContextObject : public Object {
 public:
  explicit ContextObject(XSI::CValue* userData, XSI::CRef source = XSI::CRef())
      : userData(userData), source(std::move(source)) {}
  std::wstring TypeName() const override { return L"Context"; }

  XSI::CValue* userData;  // owned by the node instance or command
  std::map<std::wstring, XSI::CValue> attributes;
  XSI::CRef source;
};

}  // namespace xsihost
