// What a plug-in registered: identity, commands and node definitions, in order.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <xsi_decl.h>
#include <xsi_value.h>

namespace xsihost {

using XSI::LONG;
using XSI::ULONG;

struct PortRecord {
  ULONG id = 0;
  bool input = true;
  ULONG groupID = 0xFFFFFFFFu;  // outputs belong to no group
  ULONG dataTypes = 0;
  ULONG structures = 0;
  ULONG contexts = 0;
  std::wstring displayName;
  std::wstring scriptName;
  XSI::CValue defaultValue;
  ULONG typeLink = 0xFFFFFFFFu;
  ULONG structureLink = 0xFFFFFFFFu;
  ULONG contextLink = 0xFFFFFFFFu;
};

struct GroupRecord {
  ULONG id = 0;
  ULONG minInstances = 0;
  ULONG maxInstances = 0;
  std::wstring name;
};

struct NodeDefinitionRecord {
  std::wstring name;
  std::wstring category;
  ULONG threadingModel = 0;  // 0 until PutThreadingModel
  std::vector<GroupRecord> groups;
  std::vector<PortRecord> inputs;   // in the order added
  std::vector<PortRecord> outputs;  // in the order added
  bool registered = false;

  const PortRecord* FindInput(ULONG id) const;
  const PortRecord* FindOutput(ULONG id) const;
  const PortRecord* FindPort(ULONG id) const;
};

struct PluginRecord {
  std::wstring author;
  std::wstring name;
  std::wstring email;
  std::wstring url;
  LONG versionMajor = 0;
  LONG versionMinor = 0;
  // Identity properties in the order they were put ("author", "name", "email", "url",
  // "version"), and registrations in order ("command:<name>", "node:<name>").
  std::vector<std::wstring> calls;
  std::vector<std::wstring> commands;
  std::vector<std::shared_ptr<NodeDefinitionRecord>> nodes;

  const NodeDefinitionRecord* FindNode(const std::wstring& name) const;
};

}  // namespace xsihost
