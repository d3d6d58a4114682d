// Quillix_gpos: positions generated on the surfaces of named polygon meshes, placed by the
// global transforms given beside the names. Reads the scene, so it runs on one thread.
#include <xsi_application.h>
#include <xsi_longarray.h>
#include <xsi_matrix4f.h>
#include <xsi_model.h>
#include <xsi_polygonmesh.h>
#include <xsi_primitive.h>
#include <xsi_vector3.h>
#include <xsi_vector3f.h>
#include <xsi_x3dobject.h>

#include <span>
#include <string>
#include <vector>

#include "core/math/mat4_ops.h"
#include "kernel/geometry.h"
#include "kernel/status.h"
#include "plugin/host_arrays.h"
#include "plugin/log.h"
#include "plugin/node.h"

using namespace XSI;
using namespace quillix::plugin;

namespace {

constexpr ULONG kNamesPort = 1010;
constexpr ULONG kTransformsPort = 1020;
constexpr ULONG kLodPort = 1030;
constexpr ULONG kModePort = 1040;
constexpr ULONG kPositionsPort = 2010;

// clang-format off
constexpr PortDef kPorts[] = {
    {.id = kNamesPort, .direction = kIn, .dataTypes = siICENodeDataString,
     .structures = siICENodeStructureArray, .contexts = siICENodeContextSingleton,
     .scriptName = L"Names", .displayName = L"In Names", .defaultValue = DefaultString(L"")},
    {.id = kTransformsPort, .direction = kIn, .dataTypes = siICENodeDataMatrix44,
     .structures = siICENodeStructureArray, .contexts = siICENodeContextSingleton,
     .scriptName = L"GlobalTransform", .displayName = L"In Global Transform",
     .defaultValue = DefaultMatrix44Zero()},
    {.id = kLodPort, .direction = kIn, .dataTypes = siICENodeDataFloat,
     .structures = siICENodeStructureSingle, .contexts = siICENodeContextSingleton,
     .scriptName = L"LOD", .displayName = L"LOD", .defaultValue = DefaultFloat(1.0f)},
    {.id = kModePort, .direction = kIn, .dataTypes = siICENodeDataLong,
     .structures = siICENodeStructureSingle, .contexts = siICENodeContextSingleton,
     .scriptName = L"Mode", .displayName = L"Mode", .defaultValue = DefaultInt(0)},
    {.id = kPositionsPort, .direction = kOut, .dataTypes = siICENodeDataVector3,
     .structures = siICENodeStructureArray, .contexts = siICENodeContextSingleton,
     .scriptName = L"Positions", .displayName = L"Array of Positions"},
};
// clang-format on

void LogError(const std::string& text) { LogLine(kLogError, "Quillix: " + text); }

void LogStatus(quillix::QRVStatus status) {
  char text[quillix::kStatusMessageBufferSize];
  LogError(std::string("failed to get input geometry: ") +
           quillix::StatusMessage(status, text, true));
}

// The same name always gives the same random sequence: FNV-1a over the name's characters.
std::uint64_t SeedOf(const CString& name) {
  std::uint64_t hash = 1469598103934665603ull;
  for (const wchar_t* c = name.GetWideString(); *c != 0; ++c)
    hash = (hash ^ std::uint64_t(*c)) * 1099511628211ull;
  return hash;
}

// Fills `geo` from the one polygon mesh named `name`; logs and returns false otherwise.
bool ReadMesh(const X3DObject& root, const CString& name, quillix::QRVGeometry& geo) {
  const CRefArray found = root.FindChildren2(name, CString(), CStringArray(), true);
  if (found.GetCount() == 0) {
    LogStatus(176);
    return false;
  }
  if (found.GetCount() > 1) {
    LogError("\"" + std::string(name.GetAsciiString()) + "\" names " +
             std::to_string(found.GetCount()) + " objects; only one object per name is accepted.");
    return false;
  }
  const X3DObject object(found[0]);
  if (object.GetType() != CString(L"polymsh")) {
    LogStatus(170);
    return false;
  }
  const PolygonMesh mesh(object.GetActivePrimitive().GetGeometry().GetRef());
  MATH::CVector3Array points;
  CLongArray polygons;
  if (!mesh.IsValid() || mesh.Get(points, polygons) != CStatus::OK) {
    LogStatus(170);
    return false;
  }
  std::vector<double> coordinates;
  coordinates.reserve(std::size_t(points.GetCount()) * 3);
  for (LONG i = 0; i < points.GetCount(); ++i) {
    coordinates.insert(coordinates.end(), {points[i].GetX(), points[i].GetY(), points[i].GetZ()});
  }
  const quillix::QRVStatus status =
      geo.Set(coordinates.data(), points.GetCount(), quillix::kEncodingDouble, polygons.GetArray(),
              nullptr, mesh.GetPolygonCount(), quillix::kDescriptionInline);
  if (status != quillix::kStatusOk) {
    LogStatus(status);
    return false;
  }
  return true;
}

}  // namespace

QUILLIX_EVALUATE(Quillix_gpos) {
  if (context.GetEvaluatedOutputPortID() != kPositionsPort) return CStatus::OK;
  const Model root = Application().GetActiveSceneRoot();
  const CDataArray2D<CString> names(context, kNamesPort);
  const CDataArray2D<MATH::CMatrix4f> transforms(context, kTransformsPort);
  const CDataArrayFloat lod(context, kLodPort);
  const CDataArrayLong mode(context, kModePort);
  CDataArray2DVector3f result(context);
  CIndexSet indexSet(context);
  for (CIndexSet::Iterator it = indexSet.Begin(); it.HasNext(); it.Next()) {
    const auto nameList = names[it];
    const auto matrixList = transforms[it];
    std::vector<quillix::Vec3f> placed;
    if (nameList.GetCount() == matrixList.GetCount()) {
      for (ULONG i = 0; i < nameList.GetCount(); ++i) {
        const CString name = nameList[i];
        quillix::QRVGeometry geo;
        if (!ReadMesh(root, name, geo)) continue;
        std::vector<quillix::Vec3f> positions;
        if (geo.GeneratePositionsFromSurface(mode.GetCount() > 0 ? mode[0] : 0,
                                             lod.GetCount() > 0 ? lod[0] : 1.0f, SeedOf(name),
                                             positions) != quillix::kStatusOk) {
          LogError("QRVGeometry::GeneratePositionsFromSurface() failed.");
          continue;
        }
        const quillix::Mat4f transform = ToMat4f(matrixList[i]);
        for (const quillix::Vec3f& p : positions)
          placed.push_back(quillix::TransformPoint(p, transform));
      }
    }
    WriteArray(result, it, std::span<const quillix::Vec3f>(placed));
  }
  return CStatus::OK;
}

QUILLIX_REGISTER_NODE(gpos, siICENodeSingleThreading, kPorts)
