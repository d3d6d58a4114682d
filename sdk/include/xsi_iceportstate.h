// CICEPortState: whether an input port changed since its state was last cleared.
#pragma once

#include <xsi_decl.h>
#include <xsi_icenodecontext.h>

namespace XSI {

class CICEPortState {
 public:
  CICEPortState(ICENodeContext& context, ULONG portID, ULONG instance = 0)
      : context_(&context), portID_(portID), instance_(instance) {}

  bool IsDirty(int stateMask = siAnyDirtyState) const;
  CStatus ClearState();

 private:
  ICENodeContext* context_;
  ULONG portID_;
  ULONG instance_;
};

}  // namespace XSI
