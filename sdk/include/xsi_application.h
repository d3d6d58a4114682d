// Application: the running host.
#pragma once

#include <xsi_base.h>
#include <xsi_decl.h>
#include <xsi_ref.h>
#include <xsi_status.h>
#include <xsi_string.h>
#include <xsi_value.h>

namespace XSI {

class Factory;
class Model;
class Selection;

class Application : public SIObject {
 public:
  Application() = default;

  // Appends one line to the host's message log.
  CStatus LogMessage(const CString& text, siSeverityType severity = siInfoMsg) const;
  Factory GetFactory() const;
  bool IsInteractive() const;

  // Scene access (implemented by the host's scene).
  Model GetActiveSceneRoot() const;
  Selection GetSelection() const;
  CRefArray GetPlugins() const;
  CStatus ExecuteCommand(const CString& name, const CValueArray& arguments, CValue& result) const;
};

}  // namespace XSI
