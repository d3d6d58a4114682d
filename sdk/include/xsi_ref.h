// CRef: a reference to any object of the host (scene objects, contexts, plug-in items).
#pragma once

#include <memory>
#include <vector>

#include <xsi_decl.h>
#include <xsi_status.h>
#include <xsi_string.h>

// Host-side object behind this class; opaque to plug-ins.
namespace xsihost {
class Object;
}

namespace XSI {

class CRef {
 public:
  CRef() = default;
  explicit CRef(std::shared_ptr<xsihost::Object> object) : object_(std::move(object)) {}

  // Resolves a full object name ("Model.child") in the active scene.
  CStatus Set(const CString& path);
  CString GetAsText() const;
  bool IsValid() const { return object_ != nullptr; }
  bool operator==(const CRef& other) const { return object_ == other.object_; }
  bool operator!=(const CRef& other) const { return object_ != other.object_; }

  // Host side only.
  const std::shared_ptr<xsihost::Object>& GetObjectHandle() const { return object_; }

 private:
  std::shared_ptr<xsihost::Object> object_;
};

class CRefArray {
 public:
  CRefArray() = default;
  LONG GetCount() const { return static_cast<LONG>(refs_.size()); }
  void Add(const CRef& ref) { refs_.push_back(ref); }
  CStatus Remove(const CRef& ref);
  const CRef& operator[](LONG index) const { return refs_[index]; }

 private:
  std::vector<CRef> refs_;
};

}  // namespace XSI
