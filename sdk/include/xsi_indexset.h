// CIndexSet: the element indices of the current batch, ascending.
#pragma once

#include <vector>

#include <xsi_decl.h>
#include <xsi_icenodecontext.h>

namespace XSI {

class CIndexSet {
 public:
  class Iterator {
   public:
    Iterator() = default;
    bool HasNext() const { return m_indices != nullptr && m_position < m_indices->size(); }
    void Next() { ++m_position; }
    ULONG GetAbsoluteIndex() const { return (*m_indices)[m_position]; }
    // Data arrays are indexed by absolute element index, so both indices agree.
    ULONG GetIndex() const { return (*m_indices)[m_position]; }
    operator ULONG() const { return (*m_indices)[m_position]; }

   private:
    friend class CIndexSet;
    const std::vector<ULONG>* m_indices = nullptr;
    std::size_t m_position = 0;
  };

  CIndexSet() = default;
  explicit CIndexSet(const ICENodeContext& context) : m_context(&context) {
    context.AcquireIndexSet(*this);
  }
  ~CIndexSet() {
    if (m_context != nullptr) m_context->ReleaseIndexSet(*this);
  }
  CIndexSet(const CIndexSet&) = delete;
  CIndexSet& operator=(const CIndexSet&) = delete;

  Iterator Begin() const {
    Iterator it;
    it.m_indices = m_indices;
    return it;
  }
  ULONG GetCount() const { return m_indices ? static_cast<ULONG>(m_indices->size()) : 0; }

  // Host side only.
  void SetIndices(const std::vector<ULONG>* indices) { m_indices = indices; }

 private:
  const ICENodeContext* m_context = nullptr;
  const std::vector<ULONG>* m_indices = nullptr;
};

}  // namespace XSI
