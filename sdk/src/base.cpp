#include <xsi_base.h>

#include <xsihost/object.h>

namespace XSI {

CString SIObject::GetName() const {
  return m_ref.IsValid() ? CString(m_ref.GetObjectHandle()->name().c_str()) : CString();
}
CString SIObject::GetFullName() const {
  return m_ref.IsValid() ? CString(m_ref.GetObjectHandle()->fullName().c_str()) : CString();
}
CString SIObject::GetType() const {
  return m_ref.IsValid() ? CString(m_ref.GetObjectHandle()->typeName().c_str()) : CString();
}
CRef SIObject::GetParent() const {
  return m_ref.IsValid() ? CRef(m_ref.GetObjectHandle()->parent()) : CRef();
}

ULONG ProjectItem::GetObjectID() const {
  return m_ref.IsValid() ? m_ref.GetObjectHandle()->objectID() : 0;
}

CValue ProjectItem::GetParameterValue(const CString& name, const CValue& defaultValue) const {
  CValue value;
  if (m_ref.IsValid() && m_ref.GetObjectHandle()->parameterValue(name.Wide(), value)) return value;
  return defaultValue;
}

CString CRef::GetAsText() const {
  return m_object ? CString(m_object->fullName().c_str()) : CString();
}

CStatus CRefArray::Remove(const CRef& ref) {
  for (auto it = m_refs.begin(); it != m_refs.end(); ++it) {
    if (*it == ref) {
      m_refs.erase(it);
      return CStatus::OK;
    }
  }
  return CStatus::Fail;
}

}  // namespace XSI
