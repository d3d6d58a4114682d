// Scene access of Application and CRef, over the offline host's active scene and command
// runner.
#include <xsi_application.h>
#include <xsi_model.h>
#include <xsi_ref.h>
#include <xsi_selection.h>

#include <xsihost/scene.h>
#include <xsihost/scene_commands.h>

namespace XSI {

CStatus CRef::Set(const CString& path) {
  object_ = xsihost::ActiveScene().Find(path.Wide());
  return object_ ? CStatus::OK : CStatus::Fail;
}

Model Application::GetActiveSceneRoot() const { return Model(CRef(xsihost::ActiveScene().Root())); }

namespace {

// What a Selection refers to: the host's one selection (kept by the scene side).
class SelectionObject : public xsihost::Object {
 public:
  std::wstring Name() const override { return L"Selection"; }
  std::wstring TypeName() const override { return L"Selection"; }
};

}  // namespace

Selection Application::GetSelection() const {
  static const auto selection = std::make_shared<SelectionObject>();
  Selection out;
  out.SetObject(CRef(selection));
  return out;
}

CRefArray Application::GetPlugins() const {
  CRefArray plugins;
  for (const auto& p : xsihost::LoadedPlugins()) plugins.Add(CRef(p));
  return plugins;
}

CStatus Application::ExecuteCommand(const CString& name, const CValueArray& arguments,
                                    CValue& result) const {
  return xsihost::ExecuteCommand(name.Wide(), arguments, result);
}

}  // namespace XSI
