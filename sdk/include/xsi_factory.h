// Factory: creates definitions for the registrar.
#pragma once

#include <xsi_icenodedef.h>
#include <xsi_string.h>

namespace XSI {

class Factory {
 public:
  // A new, empty node definition named `name`; the second string is unused by custom nodes.
  ICENodeDef CreateICENodeDef(const CString& name, const CString& category = CString()) const;
};

}  // namespace XSI
