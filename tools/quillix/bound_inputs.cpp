#include "tools/quillix/bound_inputs.h"

#include <cstddef>
#include <cstring>
#include <limits>
#include <vector>

#include <xsi_decl.h>
#include <xsihost/evaluation.h>
#include <xsihost/scene_file.h>

#include "tools/quillix/json_values.h"
#include "tools/quillix/request_names.h"
#include "tools/quillix/result_document.h"

namespace quillix::tool {

using nlohmann::json;
using XSI::ULONG;
using xsihost::MeshData;
using xsihost::PortValues;
using xsihost::SceneObject;

namespace {

// Values of one bound input, as raw bytes of the port's data type.
class ValueBytes {
 public:
  template <class T>
  void Add(T value) {
    const std::size_t at = bytes_.size();
    bytes_.resize(at + sizeof(T));
    std::memcpy(bytes_.data() + at, &value, sizeof(T));
  }
  void AddVector(double x, double y, double z) {
    Add(static_cast<float>(x));
    Add(static_cast<float>(y));
    Add(static_cast<float>(z));
  }

  // One constant item: the whole list as one array, or the one single value.
  PortValues ToConstant(ULONG type, bool array) && {
    PortValues values;
    values.type = type;
    values.array = array;
    values.Resize(1);
    (array ? values.arrays.front() : values.flat) = std::move(bytes_);
    return values.AsConstant();
  }

 private:
  std::vector<std::byte> bytes_;
};

PortValues Points(const MeshData& mesh) {
  ValueBytes bytes;
  for (const xsihost::Vec3d& p : mesh.points) bytes.AddVector(p[0], p[1], p[2]);
  return std::move(bytes).ToConstant(XSI::siICENodeDataVector3, true);
}

// The host's polygonal description: each polygon's vertex indices, then -2.
PortValues Polygons(const MeshData& mesh, const JsonPlace& place) {
  std::size_t total = 0;
  for (const auto& polygon : mesh.polygons) total += polygon.size() + 1;
  if (total > static_cast<std::size_t>(std::numeric_limits<XSI::LONG>::max()))
    throw InputError(place, "the polygonal description would hold " + std::to_string(total) +
                                " indices, more than a port array holds");
  ValueBytes bytes;
  for (const auto& polygon : mesh.polygons) {
    for (const std::int32_t v : polygon) bytes.Add(static_cast<XSI::LONG>(v));
    bytes.Add(XSI::LONG{-2});
  }
  return std::move(bytes).ToConstant(XSI::siICENodeDataLong, true);
}

PortValues Attribute(const xsihost::AttributeData& attribute) {
  using Type = xsihost::AttributeData::Type;
  ValueBytes bytes;
  ULONG type = XSI::siICENodeDataFloat;
  const std::vector<double>& v = attribute.values;
  switch (attribute.type) {
    case Type::Bool:
      type = XSI::siICENodeDataBool;
      for (const double x : v) bytes.Add(x != 0.0);
      break;
    case Type::Long:
      type = XSI::siICENodeDataLong;
      for (const double x : v) bytes.Add(static_cast<XSI::LONG>(x));
      break;
    case Type::Float:
      for (const double x : v) bytes.Add(static_cast<float>(x));
      break;
    case Type::Vector3:
      type = XSI::siICENodeDataVector3;
      for (std::size_t i = 0; i + 2 < v.size(); i += 3) bytes.AddVector(v[i], v[i + 1], v[i + 2]);
      break;
  }
  const bool singleton = attribute.context == xsihost::AttributeData::Context::Singleton;
  return std::move(bytes).ToConstant(type, !singleton);
}

PortValues Transform(const XSI::MATH::CTransformation& transform) {
  const XSI::MATH::CMatrix4 m = transform.GetMatrix4();
  ValueBytes bytes;
  for (short r = 0; r < 4; ++r)
    for (short c = 0; c < 4; ++c) bytes.Add(static_cast<float>(m.GetValue(r, c)));
  return std::move(bytes).ToConstant(XSI::siICENodeDataMatrix44, false);
}

const json* Find(const json& object, const char* key) {
  const auto it = object.find(key);
  return it == object.end() ? nullptr : &*it;
}

std::string Text(const json& j, const JsonPlace& place, const char* what) {
  if (!j.is_string()) throw InputError(place, std::string("expected ") + what);
  return j.get<std::string>();
}

std::shared_ptr<const SceneObject> SceneObjectNamed(const std::string& name,
                                                    const JsonPlace& place) {
  const xsihost::Scene& scene = xsihost::ActiveScene();
  if (auto object = scene.Find(Utf8ToWide(name))) return object;
  const std::string where = scene.Path().empty()
                                ? "the scene is empty (give the request file a \"scene\")"
                                : "the scene " + scene.Path() + " has none";
  throw InputError(place, "no object \"" + name + "\": " + where);
}

std::size_t CurveIndex(const json* curve, std::size_t count, const JsonPlace& place) {
  if (!curve) return 0;
  if (!curve->is_number_integer() || curve->get<std::int64_t>() < 0 ||
      curve->get<std::uint64_t>() >= count)
    throw InputError(place, "expected a curve index from 0 to " + std::to_string(count - 1));
  return curve->get<std::size_t>();
}

PortValues ControlPoints(const SceneObject& object, const json* curve, const JsonPlace& place) {
  const std::size_t index = CurveIndex(curve, object.curves_.size(), place);
  ValueBytes bytes;
  for (const auto& p : object.curves_[index]->Data().points) bytes.AddVector(p[0], p[1], p[2]);
  return std::move(bytes).ToConstant(XSI::siICENodeDataVector3, true);
}

std::string ArticleAndType(const PortValues& values) {
  return std::string(values.array ? "an array of " : "a single ") + xsihost::TypeName(values.type);
}

// The data `name` (or the attribute) of the scene object that `from` names.
PortValues FromObject(const json& from, const std::string& name, double time,
                      const JsonPlace& place) {
  const JsonPlace dataPlace(place, "data");
  const JsonPlace objectPlace(place, "object");
  const std::string fullName =
      Text(from.at("object"), objectPlace, "the full name of a scene object");
  const auto object = SceneObjectNamed(fullName, objectPlace);
  const std::string quoted = "\"" + fullName + "\"";
  if (const json* attribute = Find(from, "attribute")) {
    const JsonPlace attributePlace(place, "attribute");
    const std::string attributeName = Text(*attribute, attributePlace, "an attribute name");
    if (object->mesh_) {
      const auto& attributes = object->mesh_->attributes;
      if (const auto found = attributes.find(Utf8ToWide(attributeName)); found != attributes.end())
        return Attribute(found->second);
    }
    throw InputError(attributePlace, quoted + " has no attribute \"" + attributeName + "\"");
  }
  if (name == "globalTransform") return Transform(object->GlobalAt(time));
  if (name == "localTransform") return Transform(object->LocalAt(time));
  if (name == "points" || name == "polygons") {
    if (!object->mesh_)
      throw InputError(dataPlace, quoted + " is a " + WideToUtf8(object->type_) +
                                      ", not a polygon mesh: it has no " + name);
    return name == "points" ? Points(*object->mesh_) : Polygons(*object->mesh_, dataPlace);
  }
  if (name == "controlPoints") {
    if (object->curves_.empty())
      throw InputError(dataPlace, quoted + " is a " + WideToUtf8(object->type_) +
                                      ", not a curve list: it has no control points");
    return ControlPoints(*object, Find(from, "curve"), JsonPlace(place, "curve"));
  }
  throw InputError(dataPlace, "unknown data \"" + name +
                                  "\" (points, polygons, controlPoints, globalTransform or "
                                  "localTransform)");
}

}  // namespace

bool BoundInputReader::IsBound(const json& input) {
  return input.is_object() && input.contains("from");
}

PortValues BoundInputReader::Read(const json& input, const xsihost::PortRecord& port, double time,
                                  const JsonPlace& place) {
  // A bound input takes its type and structure from its data.
  CheckKnownKeys(input, place, {"from"});
  const JsonPlace from(place, "from");
  PortValues values = Fetch(input.at("from"), time, from);
  const ULONG structure = values.array ? 2 : 1;
  if ((port.dataTypes & values.type) == 0 || (port.structures & structure) == 0)
    throw InputError(from, "port " + std::to_string(port.id) + " does not accept " +
                               ArticleAndType(values) + ", which this gives");
  return values;
}

PortValues BoundInputReader::Fetch(const json& from, double time, const JsonPlace& place) {
  if (!from.is_object())
    throw InputError(place, "expected an object with \"object\" or \"meshFile\"");
  CheckKnownKeys(from, place, {"object", "meshFile", "data", "attribute", "curve"});
  const json* objectName = Find(from, "object");
  const json* meshFile = Find(from, "meshFile");
  const json* data = Find(from, "data");
  const json* attribute = Find(from, "attribute");
  if (!objectName == !meshFile)
    throw InputError(place, "expected either \"object\" (a scene object) or \"meshFile\"");
  if (!data == !attribute) throw InputError(place, "expected either \"data\" or \"attribute\"");
  const JsonPlace dataPlace(place, "data");
  const std::string name = data ? Text(*data, dataPlace, "a data name") : std::string();
  if (Find(from, "curve") && name != "controlPoints")
    throw InputError(JsonPlace(place, "curve"), "only \"controlPoints\" choose a curve");

  if (meshFile) {
    if (attribute)
      throw InputError(JsonPlace(place, "attribute"),
                       "a mesh file has no attributes, only \"data\"");
    if (name != "points" && name != "polygons")
      throw InputError(dataPlace, "a mesh file gives \"points\" or \"polygons\"");
    const auto mesh = MeshFile(*meshFile, JsonPlace(place, "meshFile"));
    return name == "points" ? Points(*mesh) : Polygons(*mesh, dataPlace);
  }

  return FromObject(from, name, time, place);
}

std::shared_ptr<const MeshData> BoundInputReader::MeshFile(const json& path,
                                                           const JsonPlace& place) {
  std::filesystem::path file = Text(path, place, "the path of an OBJ, PLY or glTF file");
  if (file.is_relative()) file = requestDirectory_ / file;
  const std::string key = file.lexically_normal().string();
  if (const auto cached = meshFiles_.find(key); cached != meshFiles_.end()) return cached->second;
  auto mesh = std::make_shared<MeshData>();
  std::string error;
  if (!xsihost::LoadMeshFile(file.string(), *mesh, error)) throw InputError(place, error);
  return meshFiles_[key] = std::move(mesh);
}

json BoundInputReader::Inline(const json& request) {
  json copy = request;
  const auto inputs = copy.find("inputs");
  if (inputs == copy.end() || !inputs->is_object()) return copy;
  const double time = request.value("time", xsihost::EvaluationRequest().time);
  for (auto& [port, input] : inputs->items()) {
    if (!IsBound(input)) continue;
    const JsonPlace root, inputsPlace(root, "inputs"), portPlace(inputsPlace, port),
        fromPlace(portPlace, "from");
    const PortValues values = Fetch(input["from"], time, fromPlace);
    input = {{"type", xsihost::TypeName(values.type)},
             {"structure", values.array ? "array" : "single"},
             {"constant", true},
             {"values", WritePortValues(values, false)}};
  }
  return copy;
}

}  // namespace quillix::tool
