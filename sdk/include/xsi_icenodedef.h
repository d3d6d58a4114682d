// ICENodeDef: the definition of a custom ICE node, built at load time.
#pragma once

#include <memory>

#include <xsi_decl.h>
#include <xsi_status.h>
#include <xsi_string.h>
#include <xsi_value.h>

// Host-side object behind this class; opaque to plug-ins.
namespace xsihost {
struct NodeDefinitionRecord;
}

namespace XSI {

class ICENodeDef {
 public:
  ICENodeDef() = default;

  CStatus PutThreadingModel(siICENodeThreadingModel model);
  CStatus AddPortGroup(ULONG groupID, ULONG minInstances, ULONG maxInstances, const CString& name);
  CStatus AddInputPort(ULONG portID, ULONG groupID, ULONG dataTypes, ULONG structures,
                       ULONG contexts, const CString& displayName, const CString& scriptName,
                       const CValue& defaultValue = CValue(), ULONG typeConstraint = 0xFFFFFFFFu,
                       ULONG structureConstraint = 0xFFFFFFFFu,
                       ULONG contextConstraint = 0xFFFFFFFFu);
  CStatus AddOutputPort(ULONG portID, ULONG dataTypes, ULONG structures, ULONG contexts,
                        const CString& displayName, const CString& scriptName,
                        ULONG typeConstraint = 0xFFFFFFFFu, ULONG structureConstraint = 0xFFFFFFFFu,
                        ULONG contextConstraint = 0xFFFFFFFFu);

  // Host side only.
  explicit ICENodeDef(std::shared_ptr<xsihost::NodeDefinitionRecord> record)
      : record_(std::move(record)) {}
  const std::shared_ptr<xsihost::NodeDefinitionRecord>& GetRecord() const { return record_; }

 private:
  std::shared_ptr<xsihost::NodeDefinitionRecord> record_;
};

}  // namespace XSI
