// Factory, ICENodeDef and PluginRegistrar: registration calls recorded for the host.
#include <xsi_factory.h>
#include <xsi_icenodedef.h>
#include <xsi_pluginregistrar.h>


#include <xsihost/definitions.h>

namespace XSI {

using host_detail::GroupRecord;
using host_detail::NodeDefinitionRecord;
using host_detail::PortRecord;

ICENodeDef Factory::CreateICENodeDef(const CString& name, const CString& category) const {
  auto record = std::make_shared<NodeDefinitionRecord>();
  record->name = name.Wide();
  record->category = category.Wide();
  return ICENodeDef(std::move(record));
}

CStatus ICENodeDef::PutThreadingModel(siICENodeThreadingModel model) {
  if (!m_record || (model != siICENodeSingleThreading && model != siICENodeMultiThreading))
    return CStatus::InvalidArgument;
  m_record->threadingModel = model;
  return CStatus::OK;
}

CStatus ICENodeDef::AddPortGroup(ULONG groupID, ULONG minInstances, ULONG maxInstances,
                                 const CString& name) {
  if (!m_record || minInstances > maxInstances) return CStatus::InvalidArgument;
  for (const GroupRecord& g : m_record->groups)
    if (g.id == groupID) return CStatus::InvalidArgument;
  m_record->groups.push_back({groupID, minInstances, maxInstances, name.Wide()});
  return CStatus::OK;
}

namespace {

// A port needs a unique ID, at least one type, structure and context bit, and names.
bool acceptablePort(const NodeDefinitionRecord& node, const PortRecord& port) {
  if (node.findPort(port.id) != nullptr) return false;
  if (port.dataTypes == 0 || port.structures == 0 || port.structures > 3 || port.contexts == 0)
    return false;
  return !port.scriptName.empty() && !port.displayName.empty();
}

}  // namespace

CStatus ICENodeDef::AddInputPort(ULONG portID, ULONG groupID, ULONG dataTypes, ULONG structures,
                                 ULONG contexts, const CString& displayName,
                                 const CString& scriptName, const CValue& defaultValue,
                                 ULONG typeConstraint, ULONG structureConstraint,
                                 ULONG contextConstraint) {
  if (!m_record) return CStatus::Fail;
  bool groupExists = false;
  for (const GroupRecord& g : m_record->groups) groupExists |= g.id == groupID;
  PortRecord port{portID, true, groupID, dataTypes, structures, contexts, displayName.Wide(),
                  scriptName.Wide(), defaultValue, typeConstraint, structureConstraint,
                  contextConstraint};
  if (!groupExists || !acceptablePort(*m_record, port)) return CStatus::InvalidArgument;
  m_record->inputs.push_back(std::move(port));
  return CStatus::OK;
}

CStatus ICENodeDef::AddOutputPort(ULONG portID, ULONG dataTypes, ULONG structures,
                                  ULONG contexts, const CString& displayName,
                                  const CString& scriptName, ULONG typeConstraint,
                                  ULONG structureConstraint, ULONG contextConstraint) {
  if (!m_record) return CStatus::Fail;
  PortRecord port{portID, false, 0xFFFFFFFFu, dataTypes, structures, contexts, displayName.Wide(),
                  scriptName.Wide(), CValue(), typeConstraint, structureConstraint,
                  contextConstraint};
  if (!acceptablePort(*m_record, port)) return CStatus::InvalidArgument;
  m_record->outputs.push_back(std::move(port));
  return CStatus::OK;
}

CStatus PluginRegistrar::PutAuthor(const CString& author) {
  if (!m_record) return CStatus::Fail;
  m_record->author = author.Wide();
  m_record->calls.push_back(L"author");
  return CStatus::OK;
}
CStatus PluginRegistrar::PutName(const CString& name) {
  if (!m_record) return CStatus::Fail;
  m_record->name = name.Wide();
  m_record->calls.push_back(L"name");
  return CStatus::OK;
}
CString PluginRegistrar::GetName() const {
  return m_record ? CString(m_record->name.c_str()) : CString();
}
CStatus PluginRegistrar::PutEmail(const CString& email) {
  if (!m_record) return CStatus::Fail;
  m_record->email = email.Wide();
  m_record->calls.push_back(L"email");
  return CStatus::OK;
}
CStatus PluginRegistrar::PutURL(const CString& url) {
  if (!m_record) return CStatus::Fail;
  m_record->url = url.Wide();
  m_record->calls.push_back(L"url");
  return CStatus::OK;
}
CStatus PluginRegistrar::PutVersion(LONG major, LONG minor) {
  if (!m_record) return CStatus::Fail;
  m_record->versionMajor = major;
  m_record->versionMinor = minor;
  m_record->calls.push_back(L"version");
  return CStatus::OK;
}

PluginItem PluginRegistrar::RegisterCommand(const CString& name, const CString& /*scriptName*/) {
  if (!m_record || name.IsEmpty()) return PluginItem();
  m_record->commands.push_back(name.Wide());
  m_record->calls.push_back(L"command:" + name.Wide());
  return PluginItem();
}

PluginItem PluginRegistrar::RegisterICENode(const ICENodeDef& definition) {
  const auto& node = definition.GetRecord();
  if (!m_record || !node || node->threadingModel == 0 || node->outputs.empty() ||
      m_record->findNode(node->name) != nullptr)
    return PluginItem();
  node->registered = true;
  m_record->nodes.push_back(node);
  m_record->calls.push_back(L"node:" + node->name);
  return PluginItem();
}

}  // namespace XSI
