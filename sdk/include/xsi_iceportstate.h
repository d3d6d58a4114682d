// CICEPortState: whether an input port changed since its state was last cleared.
#pragma once

#include <xsi_decl.h>
#include <xsi_icenodecontext.h>

namespace XSI {

class CICEPortState {
 public:
  CICEPortState(ICENodeContext& context, ULONG portID, ULONG instance = 0)
      : m_context(&context), m_portID(portID), m_instance(instance) {}

  bool IsDirty(int stateMask = siAnyDirtyState) const;
  CStatus ClearState();

 private:
  ICENodeContext* m_context;
  ULONG m_portID;
  ULONG m_instance;
};

}  // namespace XSI
