// Geometry classes of the SDK over the offline host's meshes and curve lists: points,
// triangles, bounding volumes, ICE attributes, ray casts, the geometry accessor and curves.
#include <xsi_geometry.h>
#include <xsi_geometryaccessor.h>
#include <xsi_iceattribute.h>
#include <xsi_math.h>
#include <xsi_nurbscurve.h>
#include <xsi_nurbscurvelist.h>
#include <xsi_polygonmesh.h>

#include <cmath>
#include <limits>

#include <xsihost/scene.h>

#include "scene_refs.h"

namespace XSI {

using MATH::CTransformation;
using MATH::CVector3;
using MATH::CVector3Array;
using xsihost::AttributeData;
using xsihost::GeometryObject;
using xsihost::SceneObject;

using scene_detail::as;
using scene_detail::bindIf;

namespace {

// The points of a geometry: mesh vertices, or the control points of every curve in order.
std::vector<CVector3> pointsOf(const SceneObject& o) {
  std::vector<CVector3> out;
  if (o.mesh_) {
    for (const auto& p : o.mesh_->points) out.emplace_back(p[0], p[1], p[2]);
  } else {
    for (const auto& c : o.curves_)
      for (const auto& p : c->Data().points) out.emplace_back(p[0], p[1], p[2]);
  }
  return out;
}

CVector3 toVector(const xsihost::Vec3d& v) { return CVector3(v[0], v[1], v[2]); }

// An ICE attribute as an object: the geometry's owner and the attribute's name.
class AttributeObject : public xsihost::Object {
 public:
  AttributeObject(std::shared_ptr<const SceneObject> owner, std::wstring name)
      : owner_(std::move(owner)), name_(std::move(name)) {}
  std::wstring Name() const override { return name_; }
  std::wstring TypeName() const override { return L"ICEAttribute"; }
  const AttributeData* data() const {
    if (!owner_->mesh_) return nullptr;
    const auto it = owner_->mesh_->attributes.find(name_);
    return it == owner_->mesh_->attributes.end() ? nullptr : &it->second;
  }
  std::shared_ptr<const SceneObject> owner_;
  std::wstring name_;
};

// Möller–Trumbore: the line parameter t and barycentric (u, v) of the hit, if any.
bool intersect(const CVector3& origin, const CVector3& dir, const CVector3& a, const CVector3& b,
               const CVector3& c, double& t, double& u, double& v) {
  CVector3 e1, e2, p, s, q;
  e1.Sub(b, a);
  e2.Sub(c, a);
  p.Cross(dir, e2);
  const double det = e1.Dot(p);
  if (det == 0.0 || !std::isfinite(det)) return false;
  const double inv = 1.0 / det;
  s.Sub(origin, a);
  u = s.Dot(p) * inv;
  if (u < 0.0 || u > 1.0) return false;
  q.Cross(s, e1);
  v = dir.Dot(q) * inv;
  if (v < 0.0 || u + v > 1.0) return false;
  t = e2.Dot(q) * inv;
  return true;
}

}  // namespace

// ---- Geometry -----------------------------------------------------------------------------

Geometry::Geometry(const CRef& ref) : SIObject(bindIf(ref, as<GeometryObject>(ref) != nullptr)) {}

CPointRefArray Geometry::GetPoints() const {
  CPointRefArray out;
  if (const auto g = as<GeometryObject>(ref_))
    for (const CVector3& p : pointsOf(*g->owner_)) out.positions_.Add(p);
  return out;
}

CTriangleRefArray Geometry::GetTriangles() const {
  CTriangleRefArray out;
  const auto g = as<GeometryObject>(ref_);
  if (!g || !g->owner_->mesh_) return out;
  const auto& mesh = *g->owner_->mesh_;
  const auto& derived = *g->owner_->meshDerived_;
  for (std::size_t t = 0; t < derived.triangles.size(); ++t) {
    for (int k = 0; k < 3; ++k) {
      out.positions_.Add(toVector(mesh.points[static_cast<std::size_t>(derived.triangles[t][k])]));
      out.normals_.Add(toVector(
          derived.nodeNormals[static_cast<std::size_t>(derived.triangleNodes[3 * t + k])]));
    }
  }
  return out;
}

CStatus Geometry::GetBoundingBox(double& centerX, double& centerY, double& centerZ, double& extentX,
                                 double& extentY, double& extentZ,
                                 const CTransformation& transform) const {
  const auto g = as<GeometryObject>(ref_);
  if (!g) return CStatus::Fail;
  const std::vector<CVector3> points = pointsOf(*g->owner_);
  if (points.empty()) return CStatus::Fail;
  double lo[3], hi[3];
  for (int k = 0; k < 3; ++k) lo[k] = std::numeric_limits<double>::infinity(), hi[k] = -lo[k];
  for (const CVector3& p : points) {
    const CVector3 w = MATH::MapObjectPositionToWorldSpace(transform, p);
    for (short k = 0; k < 3; ++k) lo[k] = std::min(lo[k], w[k]), hi[k] = std::max(hi[k], w[k]);
  }
  centerX = 0.5 * (lo[0] + hi[0]), centerY = 0.5 * (lo[1] + hi[1]), centerZ = 0.5 * (lo[2] + hi[2]);
  extentX = hi[0] - lo[0], extentY = hi[1] - lo[1], extentZ = hi[2] - lo[2];
  return CStatus::OK;
}

CStatus Geometry::GetBoundingSphere(double& centerX, double& centerY, double& centerZ,
                                    double& radius, siVolumeCenterMethod method,
                                    const CTransformation& transform) const {
  const auto g = as<GeometryObject>(ref_);
  if (!g) return CStatus::Fail;
  std::vector<CVector3> points = pointsOf(*g->owner_);
  if (points.empty()) return CStatus::Fail;
  for (CVector3& p : points) p = MATH::MapObjectPositionToWorldSpace(transform, p);
  CVector3 center;
  if (method == siVolumeCenterMethodCOG) {
    for (const CVector3& p : points) center.AddInPlace(p);
    center.ScaleInPlace(1.0 / static_cast<double>(points.size()));
  } else {
    double ex, ey, ez, cx, cy, cz;
    GetBoundingBox(cx, cy, cz, ex, ey, ez, transform);
    center.Set(cx, cy, cz);
  }
  double r = 0.0;
  for (const CVector3& p : points) {
    CVector3 d;
    d.Sub(p, center);
    r = std::max(r, d.GetLength());
  }
  center.Get(centerX, centerY, centerZ);
  radius = r;
  return CStatus::OK;
}

ICEAttribute Geometry::GetICEAttributeFromName(const CString& name) const {
  const auto g = as<GeometryObject>(ref_);
  if (!g) return ICEAttribute();
  return ICEAttribute(CRef(std::make_shared<AttributeObject>(g->owner_, name.Wide())));
}

CStatus Geometry::SetupPointLocatorQueries(siClosestLocationMethod /*method*/,
                                           const CTransformation& transform,
                                           const CLongArray& facets, LONG /*pointCacheSize*/) {
  const auto g = as<GeometryObject>(ref_);
  if (!g || !g->owner_->mesh_) return CStatus::Fail;
  locatorTransform_ = transform;
  locatorFacets_ = facets;
  return CStatus::OK;
}

PointLocatorData Geometry::GetRaycastIntersections(LONG count, const double* positions,
                                                   const double* directions,
                                                   siLineIntersectionType type) const {
  PointLocatorData out;
  const auto g = as<GeometryObject>(ref_);
  if (!g || !g->owner_->mesh_ || count < 0 || (count > 0 && (!positions || !directions)))
    return out;
  const auto& mesh = *g->owner_->mesh_;
  const auto& derived = *g->owner_->meshDerived_;
  std::vector<bool> allowed;
  if (locatorFacets_.GetCount() > 0) {
    allowed.assign(mesh.polygons.size(), false);
    for (LONG i = 0; i < locatorFacets_.GetCount(); ++i) {
      const LONG f = locatorFacets_[i];
      if (f >= 0 && static_cast<std::size_t>(f) < allowed.size())
        allowed[static_cast<std::size_t>(f)] = true;
    }
  }
  std::vector<CVector3> points;
  for (const auto& p : mesh.points)
    points.push_back(MATH::MapObjectPositionToWorldSpace(locatorTransform_, toVector(p)));
  out.triangles_.assign(static_cast<std::size_t>(count), -1);
  out.weights_.assign(static_cast<std::size_t>(count) * 3, 0.0);
  for (LONG r = 0; r < count; ++r) {
    const CVector3 origin(positions[3 * r], positions[3 * r + 1], positions[3 * r + 2]);
    const CVector3 dir(directions[3 * r], directions[3 * r + 1], directions[3 * r + 2]);
    double best = std::numeric_limits<double>::infinity();
    for (std::size_t t = 0; t < derived.triangles.size(); ++t) {
      if (!allowed.empty() && !allowed[static_cast<std::size_t>(derived.trianglePolygon[t])])
        continue;
      const auto& tri = derived.triangles[t];
      double hit, u, v;
      if (!intersect(origin, dir, points[static_cast<std::size_t>(tri[0])],
                     points[static_cast<std::size_t>(tri[1])],
                     points[static_cast<std::size_t>(tri[2])], hit, u, v))
        continue;
      if (type == siSemiLineIntersection && hit < 0.0) continue;
      if (type == siSegmentIntersection && (hit < 0.0 || hit > 1.0)) continue;
      if (std::fabs(hit) < best) {
        best = std::fabs(hit);
        out.triangles_[static_cast<std::size_t>(r)] = static_cast<LONG>(t);
        out.weights_[3 * static_cast<std::size_t>(r)] = 1.0 - u - v;
        out.weights_[3 * static_cast<std::size_t>(r) + 1] = u;
        out.weights_[3 * static_cast<std::size_t>(r) + 2] = v;
      }
    }
  }
  return out;
}

CStatus Geometry::EvaluatePositions(const PointLocatorData& locators, LONG count,
                                    const LONG* indices, double* positions) const {
  const auto g = as<GeometryObject>(ref_);
  if (!g || !g->owner_->mesh_ || count < 0 || (count > 0 && !positions))
    return CStatus::InvalidArgument;
  const auto& mesh = *g->owner_->mesh_;
  const auto& derived = *g->owner_->meshDerived_;
  for (LONG i = 0; i < count; ++i) {
    const LONG k = indices ? indices[i] : i;
    CVector3 p;
    if (locators.IsPtLocatorValid(k)) {
      const auto& tri = derived.triangles[static_cast<std::size_t>(
          locators.triangles_[static_cast<std::size_t>(k)])];
      for (int c = 0; c < 3; ++c) {
        CVector3 corner = MATH::MapObjectPositionToWorldSpace(
            locatorTransform_, toVector(mesh.points[static_cast<std::size_t>(tri[c])]));
        corner.ScaleInPlace(
            locators.weights_[3 * static_cast<std::size_t>(k) + static_cast<std::size_t>(c)]);
        p.AddInPlace(corner);
      }
    }
    p.Get(positions[3 * i], positions[3 * i + 1], positions[3 * i + 2]);
  }
  return CStatus::OK;
}

// ---- ICE attributes -----------------------------------------------------------------------

ICEAttribute::ICEAttribute(const CRef& ref)
    : SIObject(bindIf(ref, as<AttributeObject>(ref) != nullptr)) {}

namespace {
const AttributeData* attributeData(const CRef& ref) {
  const auto a = as<AttributeObject>(ref);
  return a ? a->data() : nullptr;
}
}  // namespace

bool ICEAttribute::IsDefined() const { return attributeData(ref_) != nullptr; }

siICENodeDataType ICEAttribute::GetDataType() const {
  const AttributeData* a = attributeData(ref_);
  if (!a) return siICENodeDataAny;
  switch (a->type) {
    case AttributeData::Type::Bool:
      return siICENodeDataBool;
    case AttributeData::Type::Long:
      return siICENodeDataLong;
    case AttributeData::Type::Float:
      return siICENodeDataFloat;
    case AttributeData::Type::Vector3:
      return siICENodeDataVector3;
  }
  return siICENodeDataAny;
}

siICENodeContextType ICEAttribute::GetContextType() const {
  const AttributeData* a = attributeData(ref_);
  if (!a) return siICENodeContextAny;
  switch (a->context) {
    case AttributeData::Context::Singleton:
      return siICENodeContextSingleton;
    case AttributeData::Context::Point:
      return siICENodeContextComponent0D;
    case AttributeData::Context::Polygon:
      return siICENodeContextComponent2D;
    case AttributeData::Context::PolygonNode:
      return siICENodeContextComponent0D2D;
  }
  return siICENodeContextAny;
}

CStatus ICEAttribute::GetDataArray(CBaseICEAttributeDataArray& data) const {
  const AttributeData* a = attributeData(ref_);
  if (!a) return CStatus::Fail;
  if (data.GetDataType() != GetDataType()) return CStatus::InvalidArgument;
  const std::size_t n = a->ElementCount();
  data.count_ = static_cast<ULONG>(n);
  data.constant_ = a->context == AttributeData::Context::Singleton;
  switch (a->type) {
    case AttributeData::Type::Bool: {
      auto& out = static_cast<CICEAttributeDataArray<bool>&>(data);
      out.values_.clear();
      for (double v : a->values) out.values_.push_back({v != 0.0});
      break;
    }
    case AttributeData::Type::Long: {
      auto& out = static_cast<CICEAttributeDataArray<LONG>&>(data);
      out.values_.assign(a->values.begin(), a->values.end());
      break;
    }
    case AttributeData::Type::Float: {
      auto& out = static_cast<CICEAttributeDataArray<float>&>(data);
      out.values_.clear();
      for (double v : a->values) out.values_.push_back(static_cast<float>(v));
      break;
    }
    case AttributeData::Type::Vector3: {
      auto& out = static_cast<CICEAttributeDataArray<MATH::CVector3f>&>(data);
      out.values_.clear();
      for (std::size_t i = 0; i < n; ++i)
        out.values_.emplace_back(static_cast<float>(a->values[3 * i]),
                                 static_cast<float>(a->values[3 * i + 1]),
                                 static_cast<float>(a->values[3 * i + 2]));
      break;
    }
  }
  return CStatus::OK;
}

CStatus ICEAttribute::ReleaseDataArray(CBaseICEAttributeDataArray& data) const {
  data.count_ = 0;
  data.constant_ = false;
  return CStatus::OK;
}

// ---- PolygonMesh and its accessor -----------------------------------------------------------

PolygonMesh::PolygonMesh(const CRef& ref) {
  const auto g = as<GeometryObject>(ref);
  SetObject(g && g->owner_->mesh_ ? ref : CRef());
}

CStatus PolygonMesh::Get(CVector3Array& points, CLongArray& polygonData) const {
  const auto g = as<GeometryObject>(ref_);
  if (!g || !g->owner_->mesh_) return CStatus::Fail;
  points.Clear();
  polygonData.Clear();
  for (const auto& p : g->owner_->mesh_->points) points.Add(toVector(p));
  for (const auto& poly : g->owner_->mesh_->polygons) {
    polygonData.Add(static_cast<LONG>(poly.size()));
    for (std::int32_t v : poly) polygonData.Add(v);
  }
  return CStatus::OK;
}

LONG PolygonMesh::GetPolygonCount() const {
  const auto g = as<GeometryObject>(ref_);
  return g && g->owner_->mesh_ ? static_cast<LONG>(g->owner_->mesh_->polygons.size()) : 0;
}

CGeometryAccessor PolygonMesh::GetGeometryAccessor(siConstructionMode /*mode*/,
                                                   LONG /*subdivisionLevel*/) const {
  const auto g = as<GeometryObject>(ref_);
  if (!g || !g->owner_->mesh_) return CGeometryAccessor();
  return CGeometryAccessor(g);
}

namespace {
const GeometryObject* meshOf(const std::shared_ptr<xsihost::Object>& o) {
  return dynamic_cast<const GeometryObject*>(o.get());
}

// Writes every entry of every row of `rows` into `out`, row after row, as out's element type.
template <class Rows, class T>
CStatus Flatten(const Rows& rows, CPlainArray<T>& out) {
  out.Clear();
  for (const auto& row : rows)
    for (const auto entry : row) out.Add(static_cast<T>(entry));
  return CStatus::OK;
}
}  // namespace

CStatus CGeometryAccessor::GetVertexPositions(CDoubleArray& positions) const {
  if (!mesh_) return CStatus::Fail;
  return Flatten(meshOf(mesh_)->owner_->mesh_->points, positions);
}

CStatus CGeometryAccessor::GetVertexIndices(CLongArray& indices) const {
  if (!mesh_) return CStatus::Fail;
  return Flatten(meshOf(mesh_)->owner_->mesh_->polygons, indices);
}

CStatus CGeometryAccessor::GetPolygonVerticesCount(CLongArray& counts) const {
  if (!mesh_) return CStatus::Fail;
  counts.Clear();
  for (const auto& poly : meshOf(mesh_)->owner_->mesh_->polygons)
    counts.Add(static_cast<LONG>(poly.size()));
  return CStatus::OK;
}

CStatus CGeometryAccessor::GetTriangleVertexIndices(CLongArray& indices) const {
  if (!mesh_) return CStatus::Fail;
  return Flatten(meshOf(mesh_)->owner_->meshDerived_->triangles, indices);
}

// ---- curves -------------------------------------------------------------------------------

NurbsCurveList::NurbsCurveList(const CRef& ref) {
  const auto g = as<GeometryObject>(ref);
  SetObject(g && !g->owner_->curves_.empty() ? ref : CRef());
}

CNurbsCurveRefArray NurbsCurveList::GetCurves() const {
  CNurbsCurveRefArray out;
  if (const auto g = as<GeometryObject>(ref_))
    for (std::size_t i = 0; i < g->owner_->curves_.size(); ++i)
      out.Add(CRef(std::make_shared<xsihost::CurveObject>(g->owner_, i)));
  return out;
}

NurbsCurve::NurbsCurve(const CRef& ref)
    : SIObject(bindIf(ref, as<xsihost::CurveObject>(ref) != nullptr)) {}

namespace {

CStatus sample(const CRef& ref, int mode, double value, CVector3& position, CVector3& tangent,
               CVector3& normal, CVector3& binormal) {
  const auto c = as<xsihost::CurveObject>(ref);
  if (!c) return CStatus::Fail;
  if (!std::isfinite(value)) return CStatus::InvalidArgument;
  const xsihost::NurbsCurveEvaluator& curve = c->Curve();
  const double u = mode == 0   ? value
                   : mode == 1 ? curve.ParameterFromNormalized(value)
                               : curve.ParameterFromPercentage(value);
  const xsihost::CurveSample s = curve.Evaluate(u);
  position = toVector(s.position);
  tangent = toVector(s.tangent);
  normal = toVector(s.normal);
  binormal = toVector(s.binormal);
  return CStatus::OK;
}

}  // namespace

CStatus NurbsCurve::EvaluatePosition(double u, CVector3& position, CVector3& tangent,
                                     CVector3& normal, CVector3& binormal) const {
  return sample(ref_, 0, u, position, tangent, normal, binormal);
}

CStatus NurbsCurve::EvaluateNormalizedPosition(double u, CVector3& position, CVector3& tangent,
                                               CVector3& normal, CVector3& binormal) const {
  return sample(ref_, 1, u, position, tangent, normal, binormal);
}

CStatus NurbsCurve::EvaluatePositionFromPercentage(double percentage, CVector3& position,
                                                   CVector3& tangent, CVector3& normal,
                                                   CVector3& binormal) const {
  return sample(ref_, 2, percentage, position, tangent, normal, binormal);
}

}  // namespace XSI
