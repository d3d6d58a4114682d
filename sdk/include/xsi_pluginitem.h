// PluginItem: one item (node or command) registered by a plug-in.
#pragma once

#include <xsi_base.h>

namespace XSI {

class PluginItem : public SIObject {
 public:
  PluginItem() = default;
  explicit PluginItem(const CRef& ref) : SIObject(ref) {}
};

}  // namespace XSI
