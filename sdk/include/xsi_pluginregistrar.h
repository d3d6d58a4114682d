// PluginRegistrar: handed to XSILoadPlugin; records the plug-in's identity and items.
#pragma once

#include <xsi_base.h>
#include <xsi_icenodedef.h>
#include <xsi_pluginitem.h>
#include <xsi_status.h>
#include <xsi_string.h>

namespace XSI {

namespace host_detail {
struct PluginRecord;
}

class PluginRegistrar : public SIObject {
 public:
  PluginRegistrar() = default;

  CStatus PutAuthor(const CString& author);
  CStatus PutName(const CString& name);
  CString GetName() const;
  CStatus PutEmail(const CString& email);
  CStatus PutURL(const CString& url);
  CStatus PutVersion(LONG major, LONG minor);
  PluginItem RegisterCommand(const CString& name, const CString& scriptName = CString());
  PluginItem RegisterICENode(const ICENodeDef& definition);

  // Host side only.
  explicit PluginRegistrar(host_detail::PluginRecord* record) : m_record(record) {}

 private:
  host_detail::PluginRecord* m_record = nullptr;
};

}  // namespace XSI
