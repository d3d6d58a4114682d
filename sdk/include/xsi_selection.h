// Selection: the host's list of selected objects.
#pragma once

#include <xsi_base.h>
#include <xsi_ref.h>

namespace XSI {

class Selection : public CBase {
 public:
  Selection() = default;

  /// Appends `item` unless it is already selected; fails for an invalid reference.
  CStatus Add(const CRef& item);
  CStatus Clear();
  LONG GetCount() const;
  CRef GetItem(LONG index) const;
  CRef operator[](LONG index) const { return GetItem(index); }
};

}  // namespace XSI
