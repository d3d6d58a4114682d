// Scene objects of the SDK over the offline host's scene: hierarchy, search, properties,
// kinematics, primitives, selection, plug-in listing and path utilities.
#include <xsi_kinematics.h>
#include <xsi_kinematicstate.h>
#include <xsi_model.h>
#include <xsi_plugin.h>
#include <xsi_primitive.h>
#include <xsi_property.h>
#include <xsi_selection.h>
#include <xsi_utils.h>
#include <xsi_x3dobject.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include <xsihost/scene.h>

#include <xsihost/scene_commands.h>
#include "scene_refs.h"

namespace XSI {

using xsihost::PrimitiveObject;
using xsihost::PropertyObject;
using xsihost::SceneObject;

using scene_detail::as;
using scene_detail::bindIf;

namespace {

// Families of the scene's object types, as FindChild2 filters them.
std::vector<std::wstring> familiesOf(const std::wstring& type) {
  if (type == L"polymsh") return {siMeshFamily, siGeometryFamily};
  if (type == L"crvlist") return {siNurbsCurveListFamily, siGeometryFamily};
  if (type == L"null") return {siNullPrimitiveFamily};
  if (type == L"bone" || type == L"root" || type == L"eff") return {siChainElementFamily};
  if (type == L"#model") return {siModelFamily};
  if (type == L"cube" || type == L"sphere" || type == L"cone" || type == L"cylinder" ||
      type == L"disc" || type == L"grid" || type == L"torus")
    return {siImplicitGeometryFamily};
  return {};
}

bool matches(const SceneObject& o, const CString& name, const CString& type,
             const CStringArray& families) {
  if (!name.IsEmpty() && o.name_ != name.Wide()) return false;
  if (!type.IsEmpty() && o.type_ != type.Wide()) return false;
  if (families.GetCount() == 0) return true;
  const std::vector<std::wstring> own = familiesOf(o.type_);
  for (LONG i = 0; i < families.GetCount(); ++i)
    if (std::find(own.begin(), own.end(), families[i].Wide()) != own.end()) return true;
  return false;
}

// Depth-first, pre-order, children in scene order; an explicit stack keeps deep hierarchies
// (long bone chains) off the call stack. Stops at the first match when `firstOnly`.
CRefArray search(const CRef& from, const CString& name, const CString& type,
                 const CStringArray& families, bool recursive, bool firstOnly) {
  CRefArray found;
  const auto start = as<SceneObject>(from);
  if (!start) return found;
  std::vector<std::shared_ptr<SceneObject>> stack(start->children_.rbegin(),
                                                  start->children_.rend());
  while (!stack.empty()) {
    const std::shared_ptr<SceneObject> o = stack.back();
    stack.pop_back();
    if (matches(*o, name, type, families)) {
      found.Add(CRef(o));
      if (firstOnly) break;
    }
    if (recursive) stack.insert(stack.end(), o->children_.rbegin(), o->children_.rend());
  }
  return found;
}

}  // namespace

// ---- SceneItem, Property ------------------------------------------------------------------

Property SceneItem::GetPropertyFromName(const CString& name) const {
  const auto o = as<SceneObject>(ref_);
  if (!o) return Property();
  if (name.Wide() == L"Visibility")
    return Property(CRef(std::make_shared<PropertyObject>(o, PropertyObject::Kind::Visibility)));
  if (name.Wide() == L"Kinematics")
    return Property(CRef(std::make_shared<PropertyObject>(o, PropertyObject::Kind::Kinematics)));
  return Property();
}

Property::Property(const CRef& ref) : SceneItem(bindIf(ref, as<PropertyObject>(ref) != nullptr)) {}

CValue Property::GetParameterValue(const CString& name, double frame) const {
  CValue value;
  if (const auto p = as<PropertyObject>(ref_)) p->ParameterAt(name.Wide(), frame, value);
  return value;
}

// ---- X3DObject, Model ---------------------------------------------------------------------

X3DObject::X3DObject(const CRef& ref) : SceneItem(bindIf(ref, as<SceneObject>(ref) != nullptr)) {}

X3DObject X3DObject::FindChild2(const CString& name, const CString& type,
                                const CStringArray& families, bool recursive) const {
  const CRefArray found = search(ref_, name, type, families, recursive, true);
  return found.GetCount() ? X3DObject(found[0]) : X3DObject();
}

CRefArray X3DObject::FindChildren2(const CString& name, const CString& type,
                                   const CStringArray& families, bool recursive) const {
  return search(ref_, name, type, families, recursive, false);
}

Primitive X3DObject::GetActivePrimitive() const {
  const auto o = as<SceneObject>(ref_);
  if (!o || o->IsModel()) return Primitive();
  return Primitive(CRef(std::make_shared<PrimitiveObject>(o)));
}

Kinematics X3DObject::GetKinematics() const {
  const auto o = as<SceneObject>(ref_);
  if (!o) return Kinematics();
  return Kinematics(CRef(std::make_shared<PropertyObject>(o, PropertyObject::Kind::Kinematics)));
}

Model::Model(const CRef& ref) {
  const auto o = as<SceneObject>(ref);
  SetObject(o && o->IsModel() ? ref : CRef());
}

// ---- Kinematics ---------------------------------------------------------------------------

Kinematics::Kinematics(const CRef& ref) {
  const auto p = as<PropertyObject>(ref);
  SetObject(p && p->kind_ == PropertyObject::Kind::Kinematics ? ref : CRef());
}

KinematicState Kinematics::GetGlobal() const {
  const auto p = as<PropertyObject>(ref_);
  if (!p) return KinematicState();
  return KinematicState(
      CRef(std::make_shared<PropertyObject>(p->owner_, PropertyObject::Kind::GlobalState)));
}

KinematicState Kinematics::GetLocal() const {
  const auto p = as<PropertyObject>(ref_);
  if (!p) return KinematicState();
  return KinematicState(
      CRef(std::make_shared<PropertyObject>(p->owner_, PropertyObject::Kind::LocalState)));
}

KinematicState::KinematicState(const CRef& ref) {
  const auto p = as<PropertyObject>(ref);
  SetObject(p && (p->kind_ == PropertyObject::Kind::GlobalState ||
                  p->kind_ == PropertyObject::Kind::LocalState)
                ? ref
                : CRef());
}

MATH::CTransformation KinematicState::GetTransform(double frame) const {
  const auto p = as<PropertyObject>(ref_);
  if (!p) return MATH::CTransformation();
  return p->kind_ == PropertyObject::Kind::GlobalState ? p->owner_->GlobalAt(frame)
                                                       : p->owner_->LocalAt(frame);
}

// ---- Primitive ----------------------------------------------------------------------------

Primitive::Primitive(const CRef& ref)
    : ProjectItem(bindIf(ref, as<PrimitiveObject>(ref) != nullptr)) {}

CValue Primitive::GetParameterValue(const CString& name, double frame) const {
  CValue value;
  if (const auto p = as<PrimitiveObject>(ref_)) p->ParameterAt(name.Wide(), frame, value);
  return value;
}

Geometry Primitive::GetGeometry(double /*frame*/, siConstructionMode /*mode*/) const {
  const auto p = as<PrimitiveObject>(ref_);
  if (!p || (!p->owner_->mesh_ && p->owner_->curves_.empty())) return Geometry();
  return Geometry(CRef(std::make_shared<xsihost::GeometryObject>(p->owner_)));
}

// ---- Selection ----------------------------------------------------------------------------

CStatus Selection::Add(const CRef& item) {
  if (!item.IsValid()) return CStatus::InvalidArgument;
  auto& items = xsihost::Selection();
  if (std::find(items.begin(), items.end(), item) == items.end()) items.push_back(item);
  return CStatus::OK;
}

CStatus Selection::Clear() {
  xsihost::Selection().clear();
  return CStatus::OK;
}

LONG Selection::GetCount() const { return static_cast<LONG>(xsihost::Selection().size()); }

CRef Selection::GetItem(LONG index) const {
  const auto& items = xsihost::Selection();
  if (index < 0 || static_cast<std::size_t>(index) >= items.size()) return CRef();
  return items[static_cast<std::size_t>(index)];
}

// ---- Plugin, CUtils -----------------------------------------------------------------------

Plugin::Plugin(const CRef& ref)
    : SIObject(bindIf(ref, as<xsihost::PluginObject>(ref) != nullptr)) {}

CString Plugin::GetOriginPath() const {
  const auto p = as<xsihost::PluginObject>(ref_);
  if (!p) return CString();
  std::string folder = std::filesystem::path(p->path_).parent_path().string();
  if (folder.empty() || folder.back() != '/') folder += '/';
  return CString(folder.c_str());
}

CString CUtils::BuildPath(const CString& p1, const CString& p2, const CString& p3,
                          const CString& p4, const CString& p5, const CString& p6) {
  std::wstring out;
  for (const CString* part : {&p1, &p2, &p3, &p4, &p5, &p6}) {
    if (part->IsEmpty()) continue;
    std::wstring piece = part->Wide();
    if (!out.empty()) {
      const bool endsWithSeparator = out.back() == L'/';
      const bool startsWithSeparator = piece.front() == L'/';
      if (endsWithSeparator && startsWithSeparator) piece.erase(0, 1);
      if (!endsWithSeparator && !startsWithSeparator) out += L'/';
    }
    out += piece;
  }
  return CString(out.c_str());
}

}  // namespace XSI
