// Quillix__FindMatchingObjects: ranks the scene's objects of the input's type by their
// similarity to the input, logs the ranking, optionally selects the best matches and returns
// them as "name,percentage" text. The scene's features are read here; the scoring and the
// ranking are RankMatches in core/matching/match_scoring.h.
#include <xsi_application.h>
#include <xsi_context.h>
#include <xsi_geometry.h>
#include <xsi_kinematics.h>
#include <xsi_kinematicstate.h>
#include <xsi_model.h>
#include <xsi_primitive.h>
#include <xsi_property.h>
#include <xsi_selection.h>
#include <xsi_status.h>
#include <xsi_string.h>
#include <xsi_transformation.h>
#include <xsi_value.h>
#include <xsi_valuearray.h>
#include <xsi_x3dobject.h>

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "commands/command_binding.h"
#include "core/matching/match_scoring.h"
#include "core/matching/object_features.h"
#include "plugin/callback_guard.h"
#include "plugin/log.h"

namespace {

using namespace XSI;
using quillix::ObjectFeatures;
using quillix::commands::ArgumentDef;
using quillix::commands::ArgumentType;
using quillix::commands::Quoted;
using quillix::plugin::kLogError;
using quillix::plugin::kLogInfo;
using quillix::plugin::kLogWarning;
using quillix::plugin::LogLine;

// The largest double: the host reads it as "the current frame".
constexpr double kCurrentFrame = 1.7976931348623157e308;

// The arguments in the order in which Execute reads them by position.
constexpr ArgumentDef kArguments[] = {
    {L"inObj", ArgumentType::String, 0.0},
    {L"inObjConstructionMode", ArgumentType::Integer, 0.0},
    {L"inObjEvaluationFrame", ArgumentType::Double, kCurrentFrame},
    {L"candidateConstructionMode", ArgumentType::Integer, 0.0},
    {L"candidateEvaluationFrame", ArgumentType::Double, kCurrentFrame},
    {L"candidateSkipIfSameParent", ArgumentType::Boolean, 1.0},
    {L"candidateSkipIfNotVisible", ArgumentType::Boolean, 1.0},
    {L"selectOut", ArgumentType::Boolean, 0.0},
    {L"numOut", ArgumentType::Integer, 1.0},
    {L"verbose", ArgumentType::Boolean, 0.0},
    {L"weightName", ArgumentType::Float, 0.0},
    {L"weightPointCount", ArgumentType::Float, 1.0},
    {L"weightTriangleCount", ArgumentType::Float, 1.0},
    {L"weightBoundingBox", ArgumentType::Float, 1.0},
    {L"weightBoundingSphere", ArgumentType::Float, 1.0},
    {L"weightLocalSurfArea", ArgumentType::Float, 1.0},
    {L"weightLocalSurfNormalAverage", ArgumentType::Float, 1.0},
    {L"weightLocalPos", ArgumentType::Float, 0.0},
    {L"weightLocalRot", ArgumentType::Float, 0.0},
    {L"weightLocalScl", ArgumentType::Float, 0.0},
    // Deliberately 0.125: a hint from the position of the vertices, not a shape measure.
    {L"weightGlobalVertexCenter", ArgumentType::Float, 0.125},
    {L"weightGlobalSurfArea", ArgumentType::Float, 0.0},
    {L"weightGlobalSurfNormalAverage", ArgumentType::Float, 0.0},
    {L"weightGlobalPos", ArgumentType::Float, 0.0},
    {L"weightGlobalRot", ArgumentType::Float, 0.0},
    {L"weightGlobalScl", ArgumentType::Float, 0.0},
};
constexpr LONG kArgumentCount = LONG(std::size(kArguments));
constexpr LONG kFirstWeightArgument = 10;
static_assert(kArgumentCount == kFirstWeightArgument + LONG(quillix::kMatchTermCount));

struct Options {
  CString inputName;
  LONG inputMode = 0;
  double inputFrame = kCurrentFrame;
  LONG candidateMode = 0;
  double candidateFrame = kCurrentFrame;
  bool skipSameParent = true;
  bool skipHidden = true;
  bool selectOut = false;
  LONG numOut = 1;
  bool verbose = false;
  quillix::MatchWeights weights{};
};

Options ReadOptions(const CValueArray& given) {
  const std::vector<CValue> values = quillix::commands::ReadArguments(given, kArguments);
  Options o;
  o.inputName = CString(values[0]);
  o.inputMode = LONG(values[1]);
  o.inputFrame = double(values[2]);
  o.candidateMode = LONG(values[3]);
  o.candidateFrame = double(values[4]);
  o.skipSameParent = bool(values[5]);
  o.skipHidden = bool(values[6]);
  o.selectOut = bool(values[7]);
  o.numOut = LONG(values[8]);
  o.verbose = bool(values[9]);
  for (std::size_t t = 0; t < quillix::kMatchTermCount; ++t) {
    o.weights[t] = float(values[kFirstWeightArgument + t]);
  }
  return o;
}

CString Number(std::int64_t value) { return CString(std::to_string(value).c_str()); }

quillix::Vec3d ToVector(const MATH::CVector3& v) { return {v.GetX(), v.GetY(), v.GetZ()}; }

std::vector<quillix::Vec3d> ToVectors(const MATH::CVector3Array& array) {
  std::vector<quillix::Vec3d> out(static_cast<std::size_t>(array.GetCount()));
  for (LONG i = 0; i < array.GetCount(); ++i) out[std::size_t(i)] = ToVector(array[i]);
  return out;
}

quillix::TransformParts ToParts(const MATH::CTransformation& transform) {
  quillix::TransformParts parts;
  parts.scaling = ToVector(transform.GetScaling());
  parts.translation = ToVector(transform.GetTranslation());
  const MATH::CMatrix3 rotation = transform.GetRotationMatrix3();
  for (short r = 0; r < 3; ++r) {
    for (short c = 0; c < 3; ++c) parts.rotation.m[r][c] = rotation.GetValue(r, c);
  }
  return parts;
}

quillix::Mat4d ToMatrix(const MATH::CTransformation& transform) {
  const MATH::CMatrix4 matrix = transform.GetMatrix4();
  quillix::Mat4d out;
  for (short r = 0; r < 4; ++r) {
    for (short c = 0; c < 4; ++c) out.m[r][c] = matrix.GetValue(r, c);
  }
  return out;
}

// Where an object's features are read: its frame and construction mode.
struct Sampling {
  double frame;
  LONG mode;
};

Geometry GeometryOf(const X3DObject& object, const Sampling& at) {
  return object.GetActivePrimitive().GetGeometry(at.frame, siConstructionMode(at.mode));
}

// Point and triangle counts; 0 and 0 for an object without geometry.
void ReadCounts(const Geometry& geometry, ObjectFeatures& features) {
  if (!geometry.IsValid()) return;
  features.pointCount = geometry.GetPoints().GetCount();
  features.triangleCount = geometry.GetTriangles().GetCount();
}

enum class FeatureFailure { None, BoundingBox, BoundingSphere };

// Reads the features that `needs` asks for, beyond the counts. Without geometry every
// geometric feature stays 0; a bounding box or sphere that the host cannot give is reported
// and left at 0.
FeatureFailure ReadFeatures(const X3DObject& object, const Geometry& geometry, const Sampling& at,
                            const quillix::FeatureNeeds& needs, ObjectFeatures& features) {
  FeatureFailure failure = FeatureFailure::None;
  const MATH::CTransformation identity;
  if (needs.boundingBox) {
    double cx, cy, cz, ex, ey, ez;
    if (geometry.IsValid() &&
        geometry.GetBoundingBox(cx, cy, cz, ex, ey, ez, identity) == CStatus::OK) {
      features.boxExtent = {ex, ey, ez};
    } else {
      failure = FeatureFailure::BoundingBox;
    }
  }
  if (needs.boundingSphere) {
    double cx, cy, cz, radius;
    if (geometry.IsValid() &&
        geometry.GetBoundingSphere(cx, cy, cz, radius, siVolumeCenterMethodBBoxCenter, identity) ==
            CStatus::OK) {
      features.sphereRadius = radius;
    } else if (failure == FeatureFailure::None) {
      failure = FeatureFailure::BoundingSphere;
    }
  }
  const Kinematics kinematics = object.GetKinematics();
  if (needs.localTransform) features.local = ToParts(kinematics.GetLocal().GetTransform(at.frame));
  quillix::Mat4d global = quillix::Mat4d::Identity();
  if (needs.globalTransform) {
    const MATH::CTransformation transform = kinematics.GetGlobal().GetTransform(at.frame);
    features.global = ToParts(transform);
    global = ToMatrix(transform);
  }
  if (geometry.IsValid() && (needs.triangles || needs.localNormals || needs.globalNormals)) {
    const CTriangleRefArray triangles = geometry.GetTriangles();
    if (needs.triangles) {
      const std::vector<quillix::Vec3d> corners = ToVectors(triangles.GetPositionArray());
      if (needs.localArea) features.localSurfaceArea = quillix::TriangleSurfaceArea(corners);
      if (needs.globalArea) {
        features.globalSurfaceArea = quillix::TransformedSurfaceArea(corners, global);
      }
      if (needs.vertexCenter) {
        features.globalVertexCenter = quillix::TransformedPointAverage(corners, global);
      }
    }
    if (needs.localNormals || needs.globalNormals) {
      const std::vector<quillix::Vec3d> normals = ToVectors(triangles.GetPolygonNodeNormalArray());
      if (needs.localNormals) features.localNormalAverage = quillix::Average(normals);
      if (needs.globalNormals) {
        features.globalNormalAverage = quillix::TransformedDirectionAverage(normals, global);
      }
    }
  }
  return failure;
}

// The input: the name as a full object name, or else the first object of that name anywhere
// under the scene root.
X3DObject FindInput(const Model& root, const CString& name) {
  CRef ref;
  if (ref.Set(name) == CStatus::OK) {
    X3DObject object(ref);
    if (object.IsValid()) return object;
  }
  return root.FindChild2(name, CString(), CStringArray(), true);
}

// Whether the candidate's "Visibility" says it is not shown; without the property or its
// "viewvis" parameter an object counts as shown.
bool IsHidden(const SceneItem& item, double frame) {
  const Property visibility = item.GetPropertyFromName(L"Visibility");
  if (!visibility.IsValid()) return false;
  const CValue viewvis = visibility.GetParameterValue(L"viewvis", frame);
  return !viewvis.IsEmpty() && !bool(viewvis);
}

void LogInput(const X3DObject& input, const ObjectFeatures& features) {
  LogLine(kLogInfo,
          L"input object " + Quoted(input.GetName()) + L" is of type " + Quoted(input.GetType()));
  LogLine(kLogInfo, L"    num points:    " + Number(features.pointCount));
  LogLine(kLogInfo, L"    num triangles: " + Number(features.triangleCount));
}

void LogCandidates(const CRefArray& candidates) {
  if (candidates.GetCount() == 0) {
    LogLine(kLogInfo, L"found 0 candidates.");
    return;
  }
  LogLine(kLogInfo, L"found " + Number(candidates.GetCount()) + L" candidate(s):");
  LogLine(kLogInfo, L"{");
  for (LONG i = 0; i < candidates.GetCount(); ++i) {
    LogLine(kLogInfo, L"    " + Quoted(SIObject(candidates[i]).GetName()));
  }
  LogLine(kLogInfo, L"}");
}

// The features of every candidate, in the order of `candidates`; an empty entry for one that
// the options skip (same parent, hidden) or that is not a 3D object. `names` are the
// candidates' names.
std::vector<std::optional<ObjectFeatures>> ReadCandidates(const CRefArray& candidates,
                                                          std::span<const std::string> names,
                                                          const X3DObject& input, const Options& o,
                                                          const quillix::FeatureNeeds& needs) {
  const Sampling at{quillix::EffectiveFrame(o.candidateFrame), o.candidateMode};
  const CRef inputParent = input.GetParent();
  std::vector<std::optional<ObjectFeatures>> features(names.size());
  for (std::size_t i = 0; i < names.size(); ++i) {
    const CRef& ref = candidates[LONG(i)];
    const SceneItem item(ref);
    if (o.skipSameParent && item.GetParent() == inputParent) continue;
    if (o.skipHidden && IsHidden(item, at.frame)) continue;
    const X3DObject candidate(ref);
    if (!candidate.IsValid()) {
      LogLine(kLogWarning, L"failed to set X3DObject for " + Quoted(item.GetName()));
      continue;
    }
    ObjectFeatures& f = features[i].emplace();
    f.name = names[i];
    const Geometry geometry = GeometryOf(candidate, at);
    ReadCounts(geometry, f);
    if (o.verbose) {
      LogLine(kLogInfo, L"processing candidate " + Quoted(candidate.GetName()) + L" (pnts: " +
                            Number(f.pointCount) + L",  tris: " + Number(f.triangleCount) + L").");
    }
    // A candidate's missing box or sphere counts as empty; only the input's stops the command.
    ReadFeatures(candidate, geometry, at, needs, f);
  }
  return features;
}

}  // namespace

QUILLIX_COMMAND_CALLBACK(Quillix__FindMatchingObjects_Init, XSI::CRef&, contextRef) {
  return quillix::commands::DefineCommand(contextRef, L"Find matching objects", kArguments);
}

QUILLIX_COMMAND_CALLBACK(Quillix__FindMatchingObjects_Execute, XSI::CRef&, contextRef) {
  Context context(contextRef);
  Options o = ReadOptions(CValueArray(context.GetAttribute(L"Arguments")));
  if (o.inputName.IsEmpty()) {
    LogLine(kLogWarning, L"No input object specified, aborting.");
    return CStatus::OK;
  }
  Application application;
  const Model root = application.GetActiveSceneRoot();
  const X3DObject input = FindInput(root, o.inputName);
  if (!input.IsValid()) {
    LogLine(kLogError, L"Unable to find " + Quoted(o.inputName) + L" in the scene.");
    return CStatus::Fail;
  }

  const Sampling inputAt{quillix::EffectiveFrame(o.inputFrame), o.inputMode};
  o.weights = quillix::ClampNegativeWeights(o.weights);
  ObjectFeatures inputFeatures;
  inputFeatures.name = input.GetName().GetAsciiString();
  const Geometry inputGeometry = GeometryOf(input, inputAt);
  ReadCounts(inputGeometry, inputFeatures);
  if (o.verbose) LogInput(input, inputFeatures);
  o.weights =
      quillix::WeightsForInput(o.weights, inputFeatures.pointCount, inputFeatures.triangleCount);
  if (!(quillix::TermSum(o.weights) > 0.0f)) {
    LogLine(kLogWarning, L"all weights are zero... nothing to do.");
    return CStatus::OK;
  }
  const quillix::FeatureNeeds needs = quillix::NeededFeatures(o.weights);
  switch (ReadFeatures(input, inputGeometry, inputAt, needs, inputFeatures)) {
    case FeatureFailure::BoundingBox:
      LogLine(kLogError, L"failed to get input object's (local) bounding box.");
      return CStatus::Fail;
    case FeatureFailure::BoundingSphere:
      LogLine(kLogError, L"failed to get input object's (local) bounding sphere.");
      return CStatus::Fail;
    case FeatureFailure::None:
      break;
  }

  CRefArray candidates = root.FindChildren2(CString(), input.GetType(), CStringArray(), true);
  candidates.Remove(input.GetRef());
  if (o.verbose) LogCandidates(candidates);
  std::vector<std::string> names(std::size_t(candidates.GetCount()));
  for (std::size_t i = 0; i < names.size(); ++i) {
    names[i] = SIObject(candidates[LONG(i)]).GetName().GetAsciiString();
  }
  const std::vector<quillix::RankedMatch> ranking = quillix::RankMatches(
      inputFeatures, ReadCandidates(candidates, names, input, o, needs), o.weights);

  std::vector<std::string> rankedNames;
  std::vector<double> rankedPercentages;
  for (const quillix::RankedMatch& match : ranking) {
    rankedNames.push_back(names[match.candidate]);
    rankedPercentages.push_back(match.percentage);
  }
  if (o.verbose) {
    LogLine(kLogInfo, L"the final matches:");
    LogLine(kLogInfo, L"{");
    for (std::size_t k = ranking.size(); k > 0; --k) {
      LogLine(kLogInfo, quillix::FinalMatchLine(rankedPercentages[k - 1], rankedNames[k - 1]));
    }
    LogLine(kLogInfo, L"}");
  }
  const std::size_t reported = quillix::ReportedCount(o.numOut, ranking.size());
  if (o.selectOut) {
    Selection selection = application.GetSelection();
    selection.Clear();
    for (std::size_t k = 0; k < reported; ++k) {
      selection.Add(candidates[LONG(ranking[k].candidate)]);
    }
  }
  const std::string list = quillix::MatchListText(rankedNames, rankedPercentages, reported);
  context.PutAttribute(L"ReturnValue", CValue(CString(list.c_str())));
  return CStatus::OK;
}
