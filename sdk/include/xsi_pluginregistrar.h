// PluginRegistrar: handed to XSILoadPlugin; records the plug-in's identity and items.
#pragma once

#include <xsi_base.h>
#include <xsi_icenodedef.h>
#include <xsi_pluginitem.h>
#include <xsi_status.h>
#include <xsi_string.h>

// Host-side object behind this class; opaque to plug-ins.
namespace xsihost {
struct PluginRecord;
}

namespace XSI {

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
  explicit PluginRegistrar(xsihost::PluginRecord* record) : record_(record) {}

 private:
  xsihost::PluginRecord* record_ = nullptr;
};

}  // namespace XSI
