// CIndexSet: the element indices of the current batch, ascending.
#pragma once

#include <span>
#include <vector>

#include <xsi_decl.h>
#include <xsi_icenodecontext.h>

namespace XSI {

class CIndexSet {
 public:
  class Iterator {
   public:
    Iterator() = default;
    bool HasNext() const { return indices_ != nullptr && position_ < indices_->size(); }
    void Next() { ++position_; }
    operator ULONG() const { return (*indices_)[position_]; }

   private:
    friend class CIndexSet;
    const std::vector<ULONG>* indices_ = nullptr;
    std::size_t position_ = 0;
  };

  CIndexSet() = default;
  explicit CIndexSet(const ICENodeContext& context) : context_(&context) {
    context.AcquireIndexSet(*this);
  }
  ~CIndexSet() {
    if (context_ != nullptr) context_->ReleaseIndexSet(*this);
  }
  CIndexSet(const CIndexSet&) = delete;
  CIndexSet& operator=(const CIndexSet&) = delete;

  Iterator Begin() const {
    Iterator it;
    it.indices_ = indices_;
    return it;
  }
  ULONG GetCount() const { return indices_ ? static_cast<ULONG>(indices_->size()) : 0; }
  // The indices the iterator walks, at once: loops over a batch keep them in registers.
  std::span<const ULONG> GetIndices() const {
    return indices_ ? std::span<const ULONG>(*indices_) : std::span<const ULONG>();
  }

  // Host side only.
  void SetIndices(const std::vector<ULONG>* indices) { indices_ = indices; }

 private:
  const ICENodeContext* context_ = nullptr;
  const std::vector<ULONG>* indices_ = nullptr;
};

}  // namespace XSI
