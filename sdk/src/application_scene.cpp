// Scene access of Application and CRef. Until the offline host has a scene, there is nothing
// to find: every lookup fails cleanly.
#include <xsi_application.h>
#include <xsi_ref.h>

namespace XSI {

CStatus CRef::Set(const CString& /*path*/) {
  m_object.reset();
  return CStatus::Fail;
}

CRefArray Application::GetPlugins() const { return CRefArray(); }

CStatus Application::ExecuteCommand(const CString& /*name*/, const CValueArray& /*arguments*/,
                                    CValue& /*result*/) const {
  return CStatus::Fail;
}

}  // namespace XSI
