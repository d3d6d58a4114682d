// CRef: a reference to any object of the host (scene objects, contexts, plug-in items).
#pragma once

#include <memory>
#include <vector>

#include <xsi_decl.h>
#include <xsi_status.h>
#include <xsi_string.h>

namespace XSI {

namespace host_detail {
class Object;  // defined by the host side; opaque to plug-ins
}

class CRef {
 public:
  CRef() = default;
  explicit CRef(std::shared_ptr<host_detail::Object> object) : m_object(std::move(object)) {}

  // Resolves a full object name ("Model.child") in the active scene.
  CStatus Set(const CString& path);
  CString GetAsText() const;
  bool IsValid() const { return m_object != nullptr; }
  bool operator==(const CRef& other) const { return m_object == other.m_object; }
  bool operator!=(const CRef& other) const { return m_object != other.m_object; }

  // Host side only.
  const std::shared_ptr<host_detail::Object>& GetObjectHandle() const { return m_object; }

 private:
  std::shared_ptr<host_detail::Object> m_object;
};

class CRefArray {
 public:
  CRefArray() = default;
  LONG GetCount() const { return static_cast<LONG>(m_refs.size()); }
  void Add(const CRef& ref) { m_refs.push_back(ref); }
  CStatus Remove(const CRef& ref);
  void Clear() { m_refs.clear(); }
  const CRef& operator[](LONG index) const { return m_refs[index]; }
  CRef& operator[](LONG index) { return m_refs[index]; }

 private:
  std::vector<CRef> m_refs;
};

}  // namespace XSI
