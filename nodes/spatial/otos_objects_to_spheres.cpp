// Quillix_otos: bounding spheres (centre and radius as 4-vectors) of named scene objects,
// placed by the global transforms given beside the names. Reads the scene, so it runs on one
// thread.
#include <string>
#include <vector>

#include <xsi_application.h>
#include <xsi_math.h>
#include <xsi_model.h>
#include <xsi_primitive.h>
#include <xsi_transformation.h>
#include <xsi_x3dobject.h>

#include "core/spatial/object_spheres.h"
#include "plugin/node.h"

using namespace XSI;
using namespace quillix::plugin;

namespace {

constexpr ULONG kNamesPort = 1010;
constexpr ULONG kTransformsPort = 1020;
constexpr ULONG kScalePort = 1030;
constexpr ULONG kBoneScalePort = 1040;
constexpr ULONG kSpheresPort = 2010;

// clang-format off
constexpr PortDef kPorts[] = {
    {.id = kNamesPort, .direction = kIn, .dataTypes = siICENodeDataString,
     .structures = siICENodeStructureArray, .contexts = siICENodeContextSingleton,
     .scriptName = L"Names", .displayName = L"In Names", .defaultValue = DefaultString(L"")},
    {.id = kTransformsPort, .direction = kIn, .dataTypes = siICENodeDataMatrix44,
     .structures = siICENodeStructureArray, .contexts = siICENodeContextSingleton,
     .scriptName = L"GlobalTransform", .displayName = L"In Global Transform",
     .defaultValue = DefaultMatrix44Zero()},
    {.id = kScalePort, .direction = kIn, .dataTypes = siICENodeDataFloat,
     .structures = siICENodeStructureSingle, .contexts = siICENodeContextSingleton,
     .scriptName = L"Scale", .displayName = L"Scale", .defaultValue = DefaultFloat(1.0f)},
    {.id = kBoneScalePort, .direction = kIn, .dataTypes = siICENodeDataFloat,
     .structures = siICENodeStructureSingle, .contexts = siICENodeContextSingleton,
     .scriptName = L"ScaleBone", .displayName = L"Scale Bone", .defaultValue = DefaultFloat(1.0f)},
    {.id = kSpheresPort, .direction = kOut, .dataTypes = siICENodeDataVector4,
     .structures = siICENodeStructureArray, .contexts = siICENodeContextSingleton,
     .scriptName = L"Spheres", .displayName = L"Array of Spheres"},
};
// clang-format on

// A global transform given as a matrix, through the host's own transformation maths.
class HostTransform final : public quillix::ObjectTransform {
 public:
  explicit HostTransform(const MATH::CMatrix4f& matrix) {
    MATH::CMatrix4 wide;
    for (short r = 0; r < 4; ++r)
      for (short c = 0; c < 4; ++c) wide.SetValue(r, c, matrix.GetValue(r, c));
    transform_.SetMatrix4(wide);
  }
  quillix::Vec3d Scaling() const override {
    return {transform_.GetSclX(), transform_.GetSclY(), transform_.GetSclZ()};
  }
  quillix::Vec3d Position() const override {
    return {transform_.GetPosX(), transform_.GetPosY(), transform_.GetPosZ()};
  }
  quillix::Vec3d MapToWorld(quillix::Vec3d p) const override {
    const MATH::CVector3 world =
        MATH::MapObjectPositionToWorldSpace(transform_, MATH::CVector3(p.x, p.y, p.z));
    return {world.GetX(), world.GetY(), world.GetZ()};
  }

 private:
  MATH::CTransformation transform_;
};

// What the core needs of the object named `name` under `root`, parameters read at `frame`;
// not valid when no object has that name.
quillix::SceneObjectInfo DescribeObject(const X3DObject& root, const CString& name, double frame) {
  const X3DObject object = root.FindChild2(name, CString(), CStringArray(), true);
  quillix::SceneObjectInfo info;
  if (!object.IsValid()) return info;
  info.valid = true;
  info.type = object.GetType().GetWideString();
  // A parameter the primitive lacks comes back empty, which reads as 0.
  const Primitive primitive = object.GetActivePrimitive();
  info.length = primitive.GetParameterValue(L"length", frame);
  info.radius = primitive.GetParameterValue(L"radius", frame);
  info.size = primitive.GetParameterValue(L"size", frame);
  return info;
}

}  // namespace

QUILLIX_EVALUATE(Quillix_otos) {
  if (context.GetEvaluatedOutputPortID() != kSpheresPort) return CStatus::OK;
  const double frame = context.GetTime().GetTime();
  if (!QueryPortInfo(context, kNamesPort) || !QueryPortInfo(context, kTransformsPort)) {
    return CStatus::OK;
  }
  const Model root = Application().GetActiveSceneRoot();
  const CDataArray2D<CString> names(context, kNamesPort);
  const CDataArray2D<MATH::CMatrix4f> transforms(context, kTransformsPort);
  const CDataArrayFloat scale(context, kScalePort);
  const CDataArrayFloat boneScale(context, kBoneScalePort);
  CDataArray2D<MATH::CVector4f> result(context);
  CIndexSet indexSet(context);
  for (CIndexSet::Iterator it = indexSet.Begin(); it.HasNext(); it.Next()) {
    const auto nameList = names[it];
    const auto matrixList = transforms[it];
    if (nameList.GetCount() == 0 || nameList.GetCount() != matrixList.GetCount()) {
      result.Resize(it, 0);
      continue;
    }
    std::vector<quillix::SceneObjectInfo> objects;
    std::vector<HostTransform> placements;
    for (ULONG i = 0; i < nameList.GetCount(); ++i) {
      objects.push_back(DescribeObject(root, nameList[i], frame));
      placements.emplace_back(matrixList[i]);
    }
    std::vector<const quillix::ObjectTransform*> placementViews;
    for (const HostTransform& placement : placements) placementViews.push_back(&placement);
    const std::vector<quillix::Sphere> spheres =
        quillix::SpheresOfObjects(objects, placementViews, scale.GetCount() > 0 ? scale[0] : 1.0f,
                                  boneScale.GetCount() > 0 ? boneScale[0] : 1.0f);
    auto out = result.Resize(it, static_cast<ULONG>(spheres.size()));
    for (ULONG k = 0; k < out.GetCount(); ++k) {
      const quillix::Sphere& s = spheres[k];
      out[k] = MATH::CVector4f(static_cast<float>(s.x), static_cast<float>(s.y),
                               static_cast<float>(s.z), static_cast<float>(s.radius));
    }
  }
  return CStatus::OK;
}

QUILLIX_REGISTER_NODE(otos, siICENodeSingleThreading, kPorts)
