// Quillix_gpos: positions generated on the surfaces of named polygon meshes, placed by the
// global transforms given beside the names. Reads the scene, so it runs on one thread.
#include <xsi_application.h>
#include <xsi_dataarray.h>
#include <xsi_dataarray2D.h>
#include <xsi_icenodecontext.h>
#include <xsi_indexset.h>
#include <xsi_longarray.h>
#include <xsi_matrix4f.h>
#include <xsi_model.h>
#include <xsi_pluginregistrar.h>
#include <xsi_polygonmesh.h>
#include <xsi_primitive.h>
#include <xsi_status.h>
#include <xsi_vector3.h>
#include <xsi_vector3f.h>
#include <xsi_x3dobject.h>

#include <string>
#include <vector>

#include "kernel/geometry.h"
#include "kernel/status.h"
#include "kernel/status_codes.h"
#include "plugin/callback_guard.h"
#include "plugin/registration.h"

using namespace XSI;
using namespace quillix::plugin;

namespace {

constexpr ULONG kNamesPort = 1010;
constexpr ULONG kTransformsPort = 1020;
constexpr ULONG kLodPort = 1030;
constexpr ULONG kModePort = 1040;
constexpr ULONG kPositionsPort = 2010;

constexpr PortDef kPorts[] = {
    {kNamesPort, PortDirection::In, siICENodeDataString, siICENodeStructureArray,
     siICENodeContextSingleton, L"Names", L"In Names", DefaultString(L""), kNoLink, kNoLink,
     kNoLink},
    {kTransformsPort, PortDirection::In, siICENodeDataMatrix44, siICENodeStructureArray,
     siICENodeContextSingleton, L"GlobalTransform", L"In Global Transform", DefaultMatrix44Zero(),
     kNoLink, kNoLink, kNoLink},
    {kLodPort, PortDirection::In, siICENodeDataFloat, siICENodeStructureSingle,
     siICENodeContextSingleton, L"LOD", L"LOD", DefaultFloat(1.0f), kNoLink, kNoLink, kNoLink},
    {kModePort, PortDirection::In, siICENodeDataLong, siICENodeStructureSingle,
     siICENodeContextSingleton, L"Mode", L"Mode", DefaultInt(0), kNoLink, kNoLink, kNoLink},
    {kPositionsPort, PortDirection::Out, siICENodeDataVector3, siICENodeStructureArray,
     siICENodeContextSingleton, L"Positions", L"Array of Positions", NoDefault(), kNoLink, kNoLink,
     kNoLink},
};

void logError(const std::string& text) {
  Application().LogMessage(CString(("Quillix: " + text).c_str()), siErrorMsg);
}

void logStatus(quillix::QRVStatus status) {
  char text[quillix::kStatusMessageBufferSize];
  logError(std::string("failed to get input geometry: ") +
           quillix::StatusMessage(status, text, true));
}

// The same name always gives the same random sequence: FNV-1a over the name's characters.
std::uint64_t seedOf(const CString& name) {
  std::uint64_t hash = 1469598103934665603ull;
  for (const wchar_t* c = name.GetWideString(); *c != 0; ++c)
    hash = (hash ^ std::uint64_t(*c)) * 1099511628211ull;
  return hash;
}

// Fills `geo` from the one polygon mesh named `name`; logs and returns false otherwise.
bool readMesh(const X3DObject& root, const CString& name, quillix::QRVGeometry& geo) {
  const CRefArray found = root.FindChildren2(name, CString(), CStringArray(), true);
  if (found.GetCount() == 0) {
    logStatus(176);
    return false;
  }
  if (found.GetCount() > 1) {
    logError("\"" + std::string(name.GetAsciiString()) + "\" names " +
             std::to_string(found.GetCount()) + " objects; only one object per name is accepted.");
    return false;
  }
  const X3DObject object(found[0]);
  if (object.GetType() != CString(L"polymsh")) {
    logStatus(170);
    return false;
  }
  const PolygonMesh mesh(object.GetActivePrimitive().GetGeometry().GetRef());
  MATH::CVector3Array points;
  CLongArray polygons;
  if (!mesh.IsValid() || mesh.Get(points, polygons) != CStatus::OK) {
    logStatus(170);
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
    logStatus(status);
    return false;
  }
  return true;
}

// A point as the row (x, y, z, 1) times the matrix.
MATH::CVector3f place(const quillix::Vec3f& p, const MATH::CMatrix4f& m) {
  float out[3];
  for (short c = 0; c < 3; ++c) {
    out[c] =
        p.x * m.GetValue(0, c) + p.y * m.GetValue(1, c) + p.z * m.GetValue(2, c) + m.GetValue(3, c);
  }
  return MATH::CVector3f(out[0], out[1], out[2]);
}

}  // namespace

XSIPLUGINCALLBACK CStatus Quillix_gpos_Evaluate(ICENodeContext& context) {
  if (context.GetEvaluatedOutputPortID() != kPositionsPort) return CStatus::OK;
  return quillix::plugin::EvaluateGuarded([&] {
    const Model root = Application().GetActiveSceneRoot();
    const CDataArray2D<CString> names(context, kNamesPort);
    const CDataArray2D<MATH::CMatrix4f> transforms(context, kTransformsPort);
    const CDataArrayFloat lod(context, kLodPort);
    const CDataArrayLong mode(context, kModePort);
    CDataArray2D<MATH::CVector3f> result(context);
    CIndexSet indexSet(context);
    for (CIndexSet::Iterator it = indexSet.Begin(); it.HasNext(); it.Next()) {
      const auto nameList = names[it];
      const auto matrixList = transforms[it];
      std::vector<MATH::CVector3f> placed;
      if (nameList.GetCount() == matrixList.GetCount()) {
        for (ULONG i = 0; i < nameList.GetCount(); ++i) {
          const CString name = nameList[i];
          quillix::QRVGeometry geo;
          if (!readMesh(root, name, geo)) continue;
          std::vector<quillix::Vec3f> positions;
          if (geo.GeneratePositionsFromSurface(mode.GetCount() > 0 ? mode[0] : 0,
                                               lod.GetCount() > 0 ? lod[0] : 1.0f, seedOf(name),
                                               positions) != quillix::kStatusOk) {
            logError("QRVGeometry::GeneratePositionsFromSurface() failed.");
            continue;
          }
          for (const quillix::Vec3f& p : positions) placed.push_back(place(p, matrixList[i]));
        }
      }
      auto out = result.Resize(it, static_cast<ULONG>(placed.size()));
      for (ULONG k = 0; k < out.GetCount(); ++k) out[k] = placed[k];
    }
  });
}

CStatus Quillix_gpos_Register(PluginRegistrar& registrar) {
  return RegisterNode(registrar, {L"Quillix_gpos", siICENodeSingleThreading, 1, 1, kPorts});
}
