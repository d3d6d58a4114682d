#include <xsi_base.h>

#include <algorithm>

#include <xsihost/object.h>

namespace XSI {

CString SIObject::GetName() const {
  return ref_.IsValid() ? CString(ref_.GetObjectHandle()->Name().c_str()) : CString();
}
CString SIObject::GetFullName() const {
  return ref_.IsValid() ? CString(ref_.GetObjectHandle()->FullName().c_str()) : CString();
}
CString SIObject::GetType() const {
  return ref_.IsValid() ? CString(ref_.GetObjectHandle()->TypeName().c_str()) : CString();
}
CRef SIObject::GetParent() const {
  return ref_.IsValid() ? CRef(ref_.GetObjectHandle()->Parent()) : CRef();
}

ULONG ProjectItem::GetObjectID() const {
  return ref_.IsValid() ? ref_.GetObjectHandle()->ObjectID() : 0;
}

CValue ProjectItem::GetParameterValue(const CString& name, const CValue& defaultValue) const {
  CValue value;
  if (ref_.IsValid() && ref_.GetObjectHandle()->ParameterValue(name.Wide(), value)) return value;
  return defaultValue;
}

CString CRef::GetAsText() const {
  return object_ ? CString(object_->FullName().c_str()) : CString();
}

CStatus CRefArray::Remove(const CRef& ref) {
  const auto it = std::find(refs_.begin(), refs_.end(), ref);
  if (it == refs_.end()) return CStatus::Fail;
  refs_.erase(it);
  return CStatus::OK;
}

}  // namespace XSI
