#include <xsihost/definitions.h>

namespace xsihost {

const PortRecord* NodeDefinitionRecord::FindInput(ULONG id) const {
  for (const PortRecord& p : inputs)
    if (p.id == id) return &p;
  return nullptr;
}
const PortRecord* NodeDefinitionRecord::FindOutput(ULONG id) const {
  for (const PortRecord& p : outputs)
    if (p.id == id) return &p;
  return nullptr;
}
const PortRecord* NodeDefinitionRecord::FindPort(ULONG id) const {
  const PortRecord* p = FindInput(id);
  return p ? p : FindOutput(id);
}

const NodeDefinitionRecord* PluginRecord::FindNode(const std::wstring& name) const {
  for (const auto& n : nodes)
    if (n->name == name) return n.get();
  return nullptr;
}

}  // namespace xsihost
