// The offline host's scene model: keyed channels, transforms through the hierarchy, mesh
// derived data, and the process-wide active scene.
#include "xsihost/scene.h"

#include <algorithm>
#include <cmath>
#include <mutex>
#include <type_traits>

#include <xsi_math.h>

namespace xsihost {

using XSI::CValue;
using XSI::MATH::CMatrix3;
using XSI::MATH::CRotation;
using XSI::MATH::CTransformation;
using XSI::MATH::CVector3;

namespace {

double lerp(double a, double b, double t) { return a + t * (b - a); }
CVector3 lerp(const CVector3& a, const CVector3& b, double t) {
  CVector3 out;
  out.LinearlyInterpolate(a, b, t);
  return out;
}

// Name and type name of each kind of property, in the order of PropertyObject::Kind.
constexpr const wchar_t* kPropertyNames[4][2] = {{L"Visibility", L"visibility"},
                                                 {L"Kinematics", L"kine"},
                                                 {L"Global", L"kinestate"},
                                                 {L"Local", L"kinestate"}};

}  // namespace

template <class T>
T Channel<T>::At(double time) const {
  if (keys.empty()) return value;
  if (time <= keys.front().first) return keys.front().second;
  if (time >= keys.back().first) return keys.back().second;
  const auto next = std::upper_bound(keys.begin(), keys.end(), time,
                                     [](double t, const auto& key) { return t < key.first; });
  const auto prev = next - 1;
  if constexpr (std::is_same_v<T, bool>) {
    return prev->second;
  } else {
    const double span = next->first - prev->first;
    const double t = span > 0.0 ? (time - prev->first) / span : 0.0;
    return lerp(prev->second, next->second, t);
  }
}

template struct Channel<double>;
template struct Channel<bool>;
template struct Channel<CVector3>;

// ---- mesh derived data ----------------------------------------------------------------------

MeshDerived DeriveMesh(const MeshData& mesh) {
  MeshDerived d;
  const std::size_t polygonCount = mesh.polygons.size();
  std::vector<Vec3d> polygonNormals(polygonCount, Vec3d{0, 0, 0});  // area-weighted (Newell)
  std::vector<std::vector<std::int32_t>> vertexPolygons(mesh.points.size());
  std::int32_t node = 0;
  for (std::size_t p = 0; p < polygonCount; ++p) {
    const auto& poly = mesh.polygons[p];
    Vec3d n{0, 0, 0};
    for (std::size_t i = 0; i < poly.size(); ++i) {
      const Vec3d& a = mesh.points[static_cast<std::size_t>(poly[i])];
      const Vec3d& b = mesh.points[static_cast<std::size_t>(poly[(i + 1) % poly.size()])];
      n[0] += (a[1] - b[1]) * (a[2] + b[2]);
      n[1] += (a[2] - b[2]) * (a[0] + b[0]);
      n[2] += (a[0] - b[0]) * (a[1] + b[1]);
      vertexPolygons[static_cast<std::size_t>(poly[i])].push_back(static_cast<std::int32_t>(p));
    }
    polygonNormals[p] = {0.5 * n[0], 0.5 * n[1], 0.5 * n[2]};
    for (std::size_t i = 1; i + 1 < poly.size(); ++i) {
      d.triangles.push_back({poly[0], poly[i], poly[i + 1]});
      d.trianglePolygon.push_back(static_cast<std::int32_t>(p));
      d.triangleNodes.insert(d.triangleNodes.end(), {node, node + static_cast<std::int32_t>(i),
                                                     node + static_cast<std::int32_t>(i + 1)});
    }
    node += static_cast<std::int32_t>(poly.size());
  }

  auto unit = [](const Vec3d& v) {
    const double n = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
    return n > 0.0 ? Vec3d{v[0] / n, v[1] / n, v[2] / n} : Vec3d{0, 0, 0};
  };
  std::vector<Vec3d> unitNormals(polygonCount);
  for (std::size_t p = 0; p < polygonCount; ++p) unitNormals[p] = unit(polygonNormals[p]);
  const double cosLimit = std::cos(60.0 * XSI::MATH::PI / 180.0);

  d.nodeNormals.reserve(static_cast<std::size_t>(node));
  for (std::size_t p = 0; p < polygonCount; ++p) {
    const Vec3d& own = unitNormals[p];
    for (std::int32_t v : mesh.polygons[p]) {
      Vec3d sum{0, 0, 0};
      for (std::int32_t q : vertexPolygons[static_cast<std::size_t>(v)]) {
        const Vec3d& other = unitNormals[static_cast<std::size_t>(q)];
        const double c = own[0] * other[0] + own[1] * other[1] + own[2] * other[2];
        if (static_cast<std::size_t>(q) != p && c < cosLimit - 1e-12) continue;
        const Vec3d& w = polygonNormals[static_cast<std::size_t>(q)];
        sum = {sum[0] + w[0], sum[1] + w[1], sum[2] + w[2]};
      }
      d.nodeNormals.push_back(unit(sum));
    }
  }
  return d;
}

// ---- SceneObject ------------------------------------------------------------------------------

double SceneObject::ResolveTime(double time) const {
  if (time > 1e100 || std::isnan(time)) return currentFrame_ ? *currentFrame_ : 1.0;
  return time;
}

CTransformation SceneObject::LocalAt(double time) const {
  time = ResolveTime(time);
  CTransformation t;
  if (matrix_) return t.SetMatrix4(*matrix_);
  const CVector3 r = rotation_.At(time);
  t.SetScaling(scaling_.At(time));
  t.SetRotation(CRotation(XSI::MATH::DegreesToRadians(r.GetX()),
                          XSI::MATH::DegreesToRadians(r.GetY()),
                          XSI::MATH::DegreesToRadians(r.GetZ()), rotationOrder_));
  t.SetTranslation(translation_.At(time));
  return t;
}

CTransformation SceneObject::GlobalAt(double time) const {
  time = ResolveTime(time);
  CTransformation global = LocalAt(time);
  for (auto p = parent_.lock(); p; p = p->parent_.lock()) global.MulInPlace(p->LocalAt(time));
  return global;
}

bool SceneObject::ParameterValue(const std::wstring& name, CValue& out) const {
  // The object's own parameters: its name and the current visibility, as the host's property
  // pages show them.
  if (name == L"Name") {
    out = CValue(name_.c_str());
    return true;
  }
  if (name == L"viewvis" || name == L"visibility") {
    out = CValue(visible_.At(ResolveTime(1e300)));
    return true;
  }
  return false;
}

// ---- views --------------------------------------------------------------------------------

std::shared_ptr<xsihost::Object> PrimitiveObject::Parent() const {
  return std::const_pointer_cast<SceneObject>(owner_);
}

bool PrimitiveObject::ParameterValue(const std::wstring& name, CValue& out) const {
  return ParameterAt(name, 1e300, out);
}

bool PrimitiveObject::ParameterAt(const std::wstring& name, double time, CValue& out) const {
  const auto it = owner_->parameters_.find(name);
  if (it == owner_->parameters_.end()) return false;
  const ParameterData& p = it->second;
  if (p.isText) {
    out = CValue(p.text.c_str());
  } else if (p.isBool) {
    out = CValue(p.number.At(owner_->ResolveTime(time)) != 0.0);
  } else {
    out = CValue(p.number.At(owner_->ResolveTime(time)));
  }
  return true;
}

std::wstring GeometryObject::TypeName() const {
  if (owner_->mesh_) return L"PolygonMesh";
  if (!owner_->curves_.empty()) return L"NurbsCurveList";
  return L"Geometry";
}

std::shared_ptr<xsihost::Object> GeometryObject::Parent() const {
  return std::make_shared<PrimitiveObject>(owner_);
}

std::wstring PropertyObject::Name() const { return kPropertyNames[static_cast<int>(kind_)][0]; }

std::wstring PropertyObject::TypeName() const { return kPropertyNames[static_cast<int>(kind_)][1]; }

std::shared_ptr<xsihost::Object> PropertyObject::Parent() const {
  if (kind_ == Kind::GlobalState || kind_ == Kind::LocalState)
    return std::make_shared<PropertyObject>(owner_, Kind::Kinematics);
  return std::const_pointer_cast<SceneObject>(owner_);
}

bool PropertyObject::ParameterValue(const std::wstring& name, CValue& out) const {
  return ParameterAt(name, 1e300, out);
}

bool PropertyObject::ParameterAt(const std::wstring& name, double time, CValue& out) const {
  time = owner_->ResolveTime(time);
  if (kind_ == Kind::Visibility) {
    if (name != L"viewvis" && name != L"rendvis") return false;
    out = CValue(owner_->visible_.At(time));
    return true;
  }
  if (kind_ == Kind::Kinematics) return false;
  // Kinematic states: position, rotation (degrees, XYZ) and scaling components.
  const CTransformation t =
      kind_ == Kind::GlobalState ? owner_->GlobalAt(time) : owner_->LocalAt(time);
  const CVector3 r = t.GetRotationXYZAngles();
  const CVector3 vectors[3] = {
      t.GetScaling(),
      CVector3(XSI::MATH::RadiansToDegrees(r.GetX()), XSI::MATH::RadiansToDegrees(r.GetY()),
               XSI::MATH::RadiansToDegrees(r.GetZ())),
      t.GetTranslation()};
  static const wchar_t* const kNames[9] = {L"sclx", L"scly", L"sclz", L"rotx", L"roty",
                                           L"rotz", L"posx", L"posy", L"posz"};
  for (short i = 0; i < 9; ++i) {
    if (name == kNames[i]) {
      out = CValue(vectors[i / 3][i % 3]);
      return true;
    }
  }
  return false;
}

// ---- Scene --------------------------------------------------------------------------------

Scene::Scene()
    : root_(std::make_shared<SceneObject>()), currentFrame_(std::make_shared<double>(1.0)) {
  root_->name_ = L"Scene_Root";
  root_->type_ = L"#model";
  root_->id_ = nextID_++;
  root_->currentFrame_ = currentFrame_;
  byFullName_[root_->name_] = root_;
}

Scene::~Scene() {
  for (const auto& object : objects_) object->children_.clear();
  root_->children_.clear();
}

std::shared_ptr<SceneObject> Scene::Find(const std::wstring& fullName) const {
  const auto it = byFullName_.find(fullName);
  return it == byFullName_.end() ? nullptr : it->second;
}

void Scene::Add(const std::shared_ptr<SceneObject>& object,
                const std::shared_ptr<SceneObject>& parent) {
  const auto& p = parent ? parent : root_;
  object->parent_ = p;
  // Names are unique within a model; objects of the scene root's own model need no prefix.
  const bool prefixedByParent = p->IsModel() && p != root_;
  const std::wstring& parentName = p->FullName();
  const std::wstring inherited =
      prefixedByParent
          ? parentName + L"."
          : parentName.substr(0, parentName.size() - std::min(parentName.size(), p->name_.size()));
  object->fullName_ = (p == root_ ? std::wstring() : inherited) + object->name_;
  p->children_.push_back(object);
  object->id_ = nextID_++;
  object->currentFrame_ = currentFrame_;
  objects_.push_back(object);
  byFullName_[object->FullName()] = object;
}

namespace {

std::mutex g_sceneMutex;
std::shared_ptr<Scene> g_scene;
std::vector<XSI::CRef> g_selection;

}  // namespace

Scene& ActiveScene() {
  std::lock_guard<std::mutex> lock(g_sceneMutex);
  if (!g_scene) g_scene = std::make_shared<Scene>();
  return *g_scene;
}

void SetActiveScene(std::shared_ptr<Scene> scene) {
  std::lock_guard<std::mutex> lock(g_sceneMutex);
  g_scene = scene ? std::move(scene) : std::make_shared<Scene>();
  g_selection.clear();
}

std::vector<XSI::CRef>& Selection() { return g_selection; }

}  // namespace xsihost
