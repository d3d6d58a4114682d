// ICENodeDef: the definition of a custom ICE node, built at load time.
#pragma once

#include <memory>

#include <xsi_decl.h>
#include <xsi_status.h>
#include <xsi_string.h>
#include <xsi_value.h>

namespace XSI {

namespace host_detail {
struct NodeDefinitionRecord;
}

class ICENodeDef {
 public:
  ICENodeDef() = default;

  CStatus PutThreadingModel(siICENodeThreadingModel model);
  CStatus AddPortGroup(ULONG groupID, ULONG minInstances, ULONG maxInstances,
                       const CString& name);
  CStatus AddInputPort(ULONG portID, ULONG groupID, ULONG dataTypes, ULONG structures,
                       ULONG contexts, const CString& displayName, const CString& scriptName,
                       const CValue& defaultValue = CValue(), ULONG typeConstraint = 0xFFFFFFFFu,
                       ULONG structureConstraint = 0xFFFFFFFFu,
                       ULONG contextConstraint = 0xFFFFFFFFu);
  CStatus AddOutputPort(ULONG portID, ULONG dataTypes, ULONG structures, ULONG contexts,
                        const CString& displayName, const CString& scriptName,
                        ULONG typeConstraint = 0xFFFFFFFFu, ULONG structureConstraint = 0xFFFFFFFFu,
                        ULONG contextConstraint = 0xFFFFFFFFu);
  bool IsValid() const { return m_record != nullptr; }

  // Host side only.
  explicit ICENodeDef(std::shared_ptr<host_detail::NodeDefinitionRecord> record)
      : m_record(std::move(record)) {}
  const std::shared_ptr<host_detail::NodeDefinitionRecord>& GetRecord() const { return m_record; }

 private:
  std::shared_ptr<host_detail::NodeDefinitionRecord> m_record;
};

}  // namespace XSI
