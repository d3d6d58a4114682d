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
  T At(double time) const;
};

/// An ICE attribute stored on a mesh: one value (or one 3-vector) per element of its context.
struct AttributeData {
  enum class Type { Bool, Long, Float, Vector3 };
  enum class Context { Singleton, Point, Polygon, PolygonNode };
  Type type = Type::Float;
  Context context = Context::Point;
  std::vector<double> values;  // 3 numbers per element for vectors
  std::size_t ElementCount() const {
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

class SceneObject : public xsihost::Object {
 public:
  std::wstring name_;
  std::wstring type_;  // "polymsh", "crvlist", "null", "cube", "sphere", "bone", "#model", ...
  std::weak_ptr<SceneObject> parent_;
  std::wstring fullName_;  // set when the object joins a scene (objects never move)
  std::vector<std::shared_ptr<SceneObject>> children_;  // in file order
  std::uint32_t id_ = 0;

  // Local transform: scaling, rotation (degrees, in rotationOrder_) and translation, or a
  // fixed matrix when matrix_ is set.
  Channel<XSI::MATH::CVector3> scaling_{XSI::MATH::CVector3(1, 1, 1), {}};
  Channel<XSI::MATH::CVector3> rotation_;
  Channel<XSI::MATH::CVector3> translation_;
  XSI::siRotationOrder rotationOrder_ = XSI::siXYZ;
  std::optional<XSI::MATH::CMatrix4> matrix_;

  Channel<bool> visible_{true, {}};
  std::map<std::wstring, ParameterData> parameters_;

  std::shared_ptr<const MeshData> mesh_;
  std::shared_ptr<const MeshDerived> meshDerived_;
  std::vector<std::shared_ptr<const NurbsCurveEvaluator>> curves_;

  /// The enclosing scene's current frame; read when a query passes no time.
  std::shared_ptr<const double> currentFrame_;

  XSI::MATH::CTransformation LocalAt(double time) const;
  /// local × parent's global, walking up the hierarchy.
  XSI::MATH::CTransformation GlobalAt(double time) const;
  bool IsModel() const { return type_ == L"#model"; }
  /// A time of the SDK's calls: values above 1e100 (the largest double) mean the current frame.
  double ResolveTime(double time) const;

  std::wstring Name() const override { return name_; }
  /// "Model.name" for objects inside a model other than the scene root, else the name.
  std::wstring FullName() const override { return fullName_.empty() ? name_ : fullName_; }
  std::wstring TypeName() const override { return type_; }
  std::shared_ptr<xsihost::Object> Parent() const override { return parent_.lock(); }
  std::uint32_t ObjectID() const override { return id_; }
  bool ParameterValue(const std::wstring& name, XSI::CValue& out) const override;
};

/// Views handed out through CRef: they keep their object alive.
class PrimitiveObject : public xsihost::Object {
 public:
  explicit PrimitiveObject(std::shared_ptr<const SceneObject> owner) : owner_(std::move(owner)) {}
  std::wstring Name() const override { return owner_->type_; }
  std::wstring FullName() const override { return owner_->FullName() + L"." + owner_->type_; }
  std::wstring TypeName() const override { return owner_->type_; }
  std::shared_ptr<xsihost::Object> Parent() const override;
  bool ParameterValue(const std::wstring& name, XSI::CValue& out) const override;
  /// Value of the primitive parameter `name` at `time`; false when there is none.
  bool ParameterAt(const std::wstring& name, double time, XSI::CValue& out) const;
  std::shared_ptr<const SceneObject> owner_;
};

class GeometryObject : public xsihost::Object {
 public:
  explicit GeometryObject(std::shared_ptr<const SceneObject> owner) : owner_(std::move(owner)) {}
  std::wstring Name() const override { return L"Geometry"; }
  std::wstring FullName() const override { return owner_->FullName() + L".geometry"; }
  std::wstring TypeName() const override;
  std::shared_ptr<xsihost::Object> Parent() const override;
  std::shared_ptr<const SceneObject> owner_;
};

class CurveObject : public xsihost::Object {
 public:
  CurveObject(std::shared_ptr<const SceneObject> owner, std::size_t index)
      : owner_(std::move(owner)), index_(index) {}
  std::wstring Name() const override { return L"NurbsCurve"; }
  std::wstring TypeName() const override { return L"NurbsCurve"; }
  const NurbsCurveEvaluator& Curve() const { return *owner_->curves_[index_]; }
  std::shared_ptr<const SceneObject> owner_;
  std::size_t index_;
};

/// "Visibility" (parameter "viewvis") and "Kinematics" with its global and local states.
class PropertyObject : public xsihost::Object {
 public:
  enum class Kind { Visibility, Kinematics, GlobalState, LocalState };
  PropertyObject(std::shared_ptr<const SceneObject> owner, Kind kind)
      : owner_(std::move(owner)), kind_(kind) {}
  std::wstring Name() const override;
  std::wstring FullName() const override { return owner_->FullName() + L"." + Name(); }
  std::wstring TypeName() const override;
  std::shared_ptr<xsihost::Object> Parent() const override;
  bool ParameterValue(const std::wstring& name, XSI::CValue& out) const override;
  bool ParameterAt(const std::wstring& name, double time, XSI::CValue& out) const;
  std::shared_ptr<const SceneObject> owner_;
  Kind kind_;
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
  std::shared_ptr<SceneObject> Root() const { return root_; }
  const std::vector<std::shared_ptr<SceneObject>>& Objects() const { return objects_; }
  /// The object whose full name is `fullName` ("Scene_Root" for the root), or null.
  std::shared_ptr<SceneObject> Find(const std::wstring& fullName) const;
  double CurrentFrame() const { return *currentFrame_; }
  void SetCurrentFrame(double frame) { *currentFrame_ = frame; }
  /// Adds `object` under `parent` (the root when null), gives it the next object ID and the
  /// scene's frame. The caller has checked that its full name is free.
  void Add(const std::shared_ptr<SceneObject>& object, const std::shared_ptr<SceneObject>& parent);
  const std::string& Path() const { return path_; }
  void SetPath(std::string path) { path_ = std::move(path); }

 private:
  std::shared_ptr<SceneObject> root_;
  std::vector<std::shared_ptr<SceneObject>> objects_;
  std::map<std::wstring, std::shared_ptr<SceneObject>> byFullName_;
  std::shared_ptr<double> currentFrame_;
  std::string path_;
  std::uint32_t nextID_ = 1000;
};

/// The scene the SDK's calls see (an empty scene until one is loaded), and the selection.
Scene& ActiveScene();
void SetActiveScene(std::shared_ptr<Scene> scene);  // clears the selection
std::vector<XSI::CRef>& Selection();

}  // namespace xsihost
