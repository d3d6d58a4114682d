// The offline host's scene: a hierarchy of objects under a scene root, each with a keyable
// local transform, visibility, primitive parameters and an optional geometry (polygon mesh or
// NURBS curve list), plus the selection.
//
// The SDK's scene classes (X3DObject, Primitive, Geometry, ...) are thin views over these
// objects through CRef. Everything here is read on the host's main thread (commands and
// single-threaded nodes); a scene is replaced whole, never edited while a callback reads it.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <xsi_matrix4.h>
#include <xsi_rotation.h>
#include <xsi_transformation.h>
#include <xsi_value.h>
#include <xsi_vector3.h>
#include <xsihost/object.h>
#include <xsihost/scene_nurbs.h>

namespace xsihost {

/// A value with optional keys, linear between keys and constant before the first and after the
/// last. Booleans step: the value of the last key at or before the time.
template <class T>
struct Channel {
  T value{};
  std::vector<std::pair<double, T>> keys;  // ascending times
  T at(double time) const;
};

/// An ICE attribute stored on a mesh: one value (or one 3-vector) per element of its context.
struct AttributeData {
  enum class Type { Bool, Long, Float, Vector3 };
  enum class Context { Singleton, Point, Polygon, PolygonNode };
  Type type = Type::Float;
  Context context = Context::Point;
  std::vector<double> values;  // 3 numbers per element for vectors
  std::size_t elementCount() const {
    return type == Type::Vector3 ? values.size() / 3 : values.size();
  }
};

struct MeshData {
  std::vector<Vec3d> points;
  std::vector<std::vector<std::int32_t>> polygons;  // vertex indices, in the file's order
  std::map<std::wstring, AttributeData> attributes;
};

/// Derived data of a mesh, computed once when the mesh is loaded.
struct MeshDerived {
  std::vector<std::array<std::int32_t, 3>> triangles;  // fan triangulation of each polygon
  std::vector<std::int32_t> trianglePolygon;           // polygon of each triangle
  std::vector<std::int32_t> triangleNodes;             // 3 polygon-node indices per triangle
  std::vector<Vec3d> nodeNormals;                      // one unit normal per polygon node
  std::vector<std::int32_t> polygonFirstNode;          // first node of each polygon
};

/// Computes the triangulation and polygon-node normals of `mesh`. A node's normal averages the
/// area-weighted normals of the polygons around its vertex that turn by at most 60° from its
/// own polygon, so hard edges stay hard and curved surfaces come out smooth.
MeshDerived DeriveMesh(const MeshData& mesh);

class SceneObject;

/// A primitive parameter: a number (keyable) or a text.
struct ParameterData {
  bool isText = false;
  bool isBool = false;
  Channel<double> number;
  std::wstring text;
};

class SceneObject : public XSI::host_detail::Object {
 public:
  std::wstring m_name;
  std::wstring m_type;  // "polymsh", "crvlist", "null", "cube", "sphere", "bone", "#model", ...
  std::weak_ptr<SceneObject> m_parent;
  std::wstring m_fullName;  // set when the object joins a scene (objects never move)
  std::vector<std::shared_ptr<SceneObject>> m_children;  // in file order
  std::uint32_t m_id = 0;

  // Local transform: scaling, rotation (degrees, in m_rotationOrder) and translation, or a
  // fixed matrix when m_matrix is set.
  Channel<XSI::MATH::CVector3> m_scaling{XSI::MATH::CVector3(1, 1, 1), {}};
  Channel<XSI::MATH::CVector3> m_rotation;
  Channel<XSI::MATH::CVector3> m_translation;
  XSI::siRotationOrder m_rotationOrder = XSI::siXYZ;
  std::optional<XSI::MATH::CMatrix4> m_matrix;

  Channel<bool> m_visible{true, {}};
  std::map<std::wstring, ParameterData> m_parameters;

  std::shared_ptr<const MeshData> m_mesh;
  std::shared_ptr<const MeshDerived> m_meshDerived;
  std::vector<std::shared_ptr<const NurbsCurveEvaluator>> m_curves;

  /// The enclosing scene's current frame; read when a query passes no time.
  std::shared_ptr<const double> m_currentFrame;

  XSI::MATH::CTransformation localAt(double time) const;
  /// local × parent's global, walking up the hierarchy.
  XSI::MATH::CTransformation globalAt(double time) const;
  bool isModel() const { return m_type == L"#model"; }
  /// A time of the SDK's calls: values above 1e100 (the largest double) mean the current frame.
  double resolveTime(double time) const;

  std::wstring name() const override { return m_name; }
  /// "Model.name" for objects inside a model other than the scene root, else the name.
  std::wstring fullName() const override { return m_fullName.empty() ? m_name : m_fullName; }
  std::wstring typeName() const override { return m_type; }
  std::shared_ptr<XSI::host_detail::Object> parent() const override { return m_parent.lock(); }
  std::uint32_t objectID() const override { return m_id; }
  bool parameterValue(const std::wstring& name, XSI::CValue& out) const override;
};

/// Views handed out through CRef: they keep their object alive.
class PrimitiveObject : public XSI::host_detail::Object {
 public:
  explicit PrimitiveObject(std::shared_ptr<const SceneObject> owner) : m_owner(std::move(owner)) {}
  std::wstring name() const override { return m_owner->m_type; }
  std::wstring fullName() const override { return m_owner->fullName() + L"." + m_owner->m_type; }
  std::wstring typeName() const override { return m_owner->m_type; }
  std::shared_ptr<XSI::host_detail::Object> parent() const override;
  bool parameterValue(const std::wstring& name, XSI::CValue& out) const override;
  /// Value of the primitive parameter `name` at `time`; false when there is none.
  bool parameterAt(const std::wstring& name, double time, XSI::CValue& out) const;
  std::shared_ptr<const SceneObject> m_owner;
};

class GeometryObject : public XSI::host_detail::Object {
 public:
  explicit GeometryObject(std::shared_ptr<const SceneObject> owner) : m_owner(std::move(owner)) {}
  std::wstring name() const override { return L"Geometry"; }
  std::wstring fullName() const override { return m_owner->fullName() + L".geometry"; }
  std::wstring typeName() const override;
  std::shared_ptr<XSI::host_detail::Object> parent() const override;
  std::shared_ptr<const SceneObject> m_owner;
};

class CurveObject : public XSI::host_detail::Object {
 public:
  CurveObject(std::shared_ptr<const SceneObject> owner, std::size_t index)
      : m_owner(std::move(owner)), m_index(index) {}
  std::wstring name() const override { return L"NurbsCurve"; }
  std::wstring typeName() const override { return L"NurbsCurve"; }
  const NurbsCurveEvaluator& curve() const { return *m_owner->m_curves[m_index]; }
  std::shared_ptr<const SceneObject> m_owner;
  std::size_t m_index;
};

/// "Visibility" (parameter "viewvis") and "Kinematics" with its global and local states.
class PropertyObject : public XSI::host_detail::Object {
 public:
  enum class Kind { Visibility, Kinematics, GlobalState, LocalState };
  PropertyObject(std::shared_ptr<const SceneObject> owner, Kind kind)
      : m_owner(std::move(owner)), m_kind(kind) {}
  std::wstring name() const override;
  std::wstring fullName() const override { return m_owner->fullName() + L"." + name(); }
  std::wstring typeName() const override;
  std::shared_ptr<XSI::host_detail::Object> parent() const override;
  bool parameterValue(const std::wstring& name, XSI::CValue& out) const override;
  bool parameterAt(const std::wstring& name, double time, XSI::CValue& out) const;
  std::shared_ptr<const SceneObject> m_owner;
  Kind m_kind;
};

/// A loaded scene. The root is the model "Scene_Root"; objects are kept in file order.
class Scene {
 public:
  Scene();
  /// Releases the objects one by one, so that a long chain of parents is not torn down by
  /// nested destructor calls.
  ~Scene();
  Scene(const Scene&) = delete;
  Scene& operator=(const Scene&) = delete;
  std::shared_ptr<SceneObject> root() const { return m_root; }
  const std::vector<std::shared_ptr<SceneObject>>& objects() const { return m_objects; }
  /// The object whose full name is `fullName` ("Scene_Root" for the root), or null.
  std::shared_ptr<SceneObject> find(const std::wstring& fullName) const;
  double currentFrame() const { return *m_currentFrame; }
  void setCurrentFrame(double frame) { *m_currentFrame = frame; }
  /// Adds `object` under `parent` (the root when null), gives it the next object ID and the
  /// scene's frame. The caller has checked that its full name is free.
  void add(const std::shared_ptr<SceneObject>& object, const std::shared_ptr<SceneObject>& parent);
  const std::string& path() const { return m_path; }
  void setPath(std::string path) { m_path = std::move(path); }

 private:
  std::shared_ptr<SceneObject> m_root;
  std::vector<std::shared_ptr<SceneObject>> m_objects;
  std::map<std::wstring, std::shared_ptr<SceneObject>> m_byFullName;
  std::shared_ptr<double> m_currentFrame;
  std::string m_path;
  std::uint32_t m_nextID = 1000;
};

/// The scene the SDK's calls see (an empty scene until one is loaded), and the selection.
Scene& activeScene();
std::shared_ptr<Scene> activeSceneHandle();
void setActiveScene(std::shared_ptr<Scene> scene);  // clears the selection
std::vector<XSI::CRef>& selection();

}  // namespace xsihost
