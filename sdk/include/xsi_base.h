// CBase, SIObject, ProjectItem: the root of the host's object classes.
#pragma once

#include <xsi_decl.h>
#include <xsi_ref.h>
#include <xsi_status.h>
#include <xsi_string.h>
#include <xsi_value.h>

namespace XSI {

class CBase {
 public:
  CBase() = default;
  explicit CBase(const CRef& ref) { SetObject(ref); }
  virtual ~CBase() = default;

  CRef GetRef() const { return ref_; }
  bool IsValid() const { return ref_.IsValid(); }
  void SetObject(const CRef& ref) { ref_ = ref; }

 protected:
  CRef ref_;
};

class SIObject : public CBase {
 public:
  SIObject() = default;
  explicit SIObject(const CRef& ref) : CBase(ref) {}

  CString GetName() const;
  CString GetFullName() const;
  CString GetType() const;
  CRef GetParent() const;
};

class ProjectItem : public SIObject {
 public:
  ProjectItem() = default;
  explicit ProjectItem(const CRef& ref) : SIObject(ref) {}

  ULONG GetObjectID() const;
  // Value of the parameter `name`, or `defaultValue` when the object has none by that name.
  CValue GetParameterValue(const CString& name, const CValue& defaultValue = CValue()) const;
};

}  // namespace XSI
