#include <xsi_base.h>

#include <xsihost/object.h>

namespace XSI {

CString SIObject::GetName() const {
  return ref_.IsValid() ? CString(ref_.GetObjectHandle()->name().c_str()) : CString();
}
CString SIObject::GetFullName() const {
  return ref_.IsValid() ? CString(ref_.GetObjectHandle()->fullName().c_str()) : CString();
}
CString SIObject::GetType() const {
  return ref_.IsValid() ? CString(ref_.GetObjectHandle()->typeName().c_str()) : CString();
}
CRef SIObject::GetParent() const {
  return ref_.IsValid() ? CRef(ref_.GetObjectHandle()->parent()) : CRef();
}

ULONG ProjectItem::GetObjectID() const {
  return ref_.IsValid() ? ref_.GetObjectHandle()->objectID() : 0;
}

CValue ProjectItem::GetParameterValue(const CString& name, const CValue& defaultValue) const {
  CValue value;
  if (ref_.IsValid() && ref_.GetObjectHandle()->parameterValue(name.Wide(), value)) return value;
  return defaultValue;
}

CString CRef::GetAsText() const {
  return object_ ? CString(object_->fullName().c_str()) : CString();
}

CStatus CRefArray::Remove(const CRef& ref) {
  for (auto it = refs_.begin(); it != refs_.end(); ++it) {
    if (*it == ref) {
      refs_.erase(it);
      return CStatus::OK;
    }
  }
  return CStatus::Fail;
}

}  // namespace XSI
