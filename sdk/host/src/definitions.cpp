#include <xsihost/definitions.h>

namespace XSI::host_detail {

const PortRecord* NodeDefinitionRecord::findInput(ULONG id) const {
  for (const PortRecord& p : inputs)
    if (p.id == id) return &p;
  return nullptr;
}
const PortRecord* NodeDefinitionRecord::findOutput(ULONG id) const {
  for (const PortRecord& p : outputs)
    if (p.id == id) return &p;
  return nullptr;
}
const PortRecord* NodeDefinitionRecord::findPort(ULONG id) const {
  const PortRecord* p = findInput(id);
  return p ? p : findOutput(id);
}

const NodeDefinitionRecord* PluginRecord::findNode(const std::wstring& name) const {
  for (const auto& n : nodes)
    if (n->name == name) return n.get();
  return nullptr;
}

}  // namespace XSI::host_detail
