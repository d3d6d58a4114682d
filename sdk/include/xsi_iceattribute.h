// ICEAttribute: a named attribute of a geometry (per point, polygon, polygon node or one for
// the whole object).
#pragma once

#include <xsi_base.h>
#include <xsi_iceattributedataarray.h>

namespace XSI {

class ICEAttribute : public SIObject {
 public:
  ICEAttribute() = default;
  explicit ICEAttribute(const CRef& ref);

  /// True when the geometry holds values for this attribute.
  bool IsDefined() const;
  siICENodeDataType GetDataType() const;
  siICENodeContextType GetContextType() const;

  /// Copies the values into `data`, whose element type must match the attribute's data type
  /// (CStatus::InvalidArgument otherwise; CStatus::Fail for an undefined attribute).
  CStatus GetDataArray(CBaseICEAttributeDataArray& data) const;
  /// Empties `data`.
  CStatus ReleaseDataArray(CBaseICEAttributeDataArray& data) const;
};

}  // namespace XSI
