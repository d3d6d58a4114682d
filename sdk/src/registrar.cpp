// Factory, ICENodeDef and PluginRegistrar: registration calls recorded for the host.
#include <xsi_factory.h>
#include <xsi_icenodedef.h>
#include <xsi_pluginregistrar.h>

#include <xsihost/definitions.h>

namespace XSI {

using xsihost::GroupRecord;
using xsihost::NodeDefinitionRecord;
using xsihost::PortRecord;

ICENodeDef Factory::CreateICENodeDef(const CString& name, const CString& category) const {
  auto record = std::make_shared<NodeDefinitionRecord>();
  record->name = name.Wide();
  record->category = category.Wide();
  return ICENodeDef(std::move(record));
}

CStatus ICENodeDef::PutThreadingModel(siICENodeThreadingModel model) {
  if (!record_ || (model != siICENodeSingleThreading && model != siICENodeMultiThreading))
    return CStatus::InvalidArgument;
  record_->threadingModel = model;
  return CStatus::OK;
}

CStatus ICENodeDef::AddPortGroup(ULONG groupID, ULONG minInstances, ULONG maxInstances,
                                 const CString& name) {
  if (!record_ || minInstances > maxInstances) return CStatus::InvalidArgument;
  for (const GroupRecord& g : record_->groups)
    if (g.id == groupID) return CStatus::InvalidArgument;
  record_->groups.push_back({groupID, minInstances, maxInstances, name.Wide()});
  return CStatus::OK;
}

namespace {

// A port needs a unique ID, at least one type, structure and context bit, and names.
bool acceptablePort(const NodeDefinitionRecord& node, const PortRecord& port) {
  if (node.FindPort(port.id) != nullptr) return false;
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
  if (!record_) return CStatus::Fail;
  bool groupExists = false;
  for (const GroupRecord& g : record_->groups) groupExists |= g.id == groupID;
  PortRecord port{portID,
                  true,
                  groupID,
                  dataTypes,
                  structures,
                  contexts,
                  displayName.Wide(),
                  scriptName.Wide(),
                  defaultValue,
                  typeConstraint,
                  structureConstraint,
                  contextConstraint};
  if (!groupExists || !acceptablePort(*record_, port)) return CStatus::InvalidArgument;
  record_->inputs.push_back(std::move(port));
  return CStatus::OK;
}

CStatus ICENodeDef::AddOutputPort(ULONG portID, ULONG dataTypes, ULONG structures, ULONG contexts,
                                  const CString& displayName, const CString& scriptName,
                                  ULONG typeConstraint, ULONG structureConstraint,
                                  ULONG contextConstraint) {
  if (!record_) return CStatus::Fail;
  PortRecord port{portID,     false,          0xFFFFFFFFu,         dataTypes,
                  structures, contexts,       displayName.Wide(),  scriptName.Wide(),
                  CValue(),   typeConstraint, structureConstraint, contextConstraint};
  if (!acceptablePort(*record_, port)) return CStatus::InvalidArgument;
  record_->outputs.push_back(std::move(port));
  return CStatus::OK;
}

namespace {

// Sets one identity text of the plug-in and records the call that set it.
CStatus putIdentity(xsihost::PluginRecord* record, std::wstring xsihost::PluginRecord::*field,
                    const CString& value, const wchar_t* call) {
  if (!record) return CStatus::Fail;
  record->*field = value.Wide();
  record->calls.push_back(call);
  return CStatus::OK;
}

}  // namespace

CStatus PluginRegistrar::PutAuthor(const CString& author) {
  return putIdentity(record_, &xsihost::PluginRecord::author, author, L"author");
}
CStatus PluginRegistrar::PutName(const CString& name) {
  return putIdentity(record_, &xsihost::PluginRecord::name, name, L"name");
}
CString PluginRegistrar::GetName() const {
  return record_ ? CString(record_->name.c_str()) : CString();
}
CStatus PluginRegistrar::PutEmail(const CString& email) {
  return putIdentity(record_, &xsihost::PluginRecord::email, email, L"email");
}
CStatus PluginRegistrar::PutURL(const CString& url) {
  return putIdentity(record_, &xsihost::PluginRecord::url, url, L"url");
}
CStatus PluginRegistrar::PutVersion(LONG major, LONG minor) {
  if (!record_) return CStatus::Fail;
  record_->versionMajor = major;
  record_->versionMinor = minor;
  record_->calls.push_back(L"version");
  return CStatus::OK;
}

PluginItem PluginRegistrar::RegisterCommand(const CString& name, const CString& /*scriptName*/) {
  if (!record_ || name.IsEmpty()) return PluginItem();
  record_->commands.push_back(name.Wide());
  record_->calls.push_back(L"command:" + name.Wide());
  return PluginItem();
}

PluginItem PluginRegistrar::RegisterICENode(const ICENodeDef& definition) {
  const auto& node = definition.GetRecord();
  if (!record_ || !node || node->threadingModel == 0 || node->outputs.empty() ||
      record_->FindNode(node->name) != nullptr)
    return PluginItem();
  node->registered = true;
  record_->nodes.push_back(node);
  record_->calls.push_back(L"node:" + node->name);
  return PluginItem();
}

}  // namespace XSI
