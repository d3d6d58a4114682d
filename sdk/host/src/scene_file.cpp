// Scene files: JSON objects with transforms, parameters, meshes, curves and keys.
#include "xsihost/scene_file.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <tuple>

#include <nlohmann/json.hpp>

namespace xsihost {
namespace {

using nlohmann::json;
using XSI::MATH::CMatrix4;
using XSI::MATH::CVector3;

// A failure at a JSON path; turned into the one-line message at the reader's boundary.
struct SceneError {
  std::string path;
  std::string message;
};

std::wstring widen(const std::string& s) {
  // Scene files are UTF-8; names in this system are plain text, so a byte-wise widening of
  // ASCII is exact and anything else is kept byte for byte.
  std::wstring out;
  out.reserve(s.size());
  for (unsigned char c : s) out.push_back(static_cast<wchar_t>(c));
  return out;
}

std::string child(const std::string& path, const std::string& key) {
  return path + "/" + JsonPointerToken(key);
}
std::string child(const std::string& path, std::size_t index) {
  return path + "/" + std::to_string(index);
}

[[noreturn]] void fail(const std::string& path, const std::string& message) {
  throw SceneError{path, message};
}

double number(const json& j, const std::string& path) {
  if (!j.is_number()) fail(path, "expected a number");
  const double v = j.get<double>();
  if (!std::isfinite(v)) fail(path, "expected a finite number");
  return v;
}

bool boolean(const json& j, const std::string& path) {
  if (!j.is_boolean()) fail(path, "expected true or false");
  return j.get<bool>();
}

std::string text(const json& j, const std::string& path) {
  if (!j.is_string()) fail(path, "expected a string");
  return j.get<std::string>();
}

CVector3 vector3(const json& j, const std::string& path) {
  if (!j.is_array() || j.size() != 3) fail(path, "expected a list of 3 numbers");
  return CVector3(number(j[0], child(path, 0)), number(j[1], child(path, 1)),
                  number(j[2], child(path, 2)));
}

const json* member(const json& object, const char* key) {
  const auto it = object.find(key);
  return it == object.end() ? nullptr : &*it;
}

// Sets `out` to what `read` makes of the member `key` of `object`, when there is one.
template <class T, class Read>
void readMember(const json& object, const std::string& path, const char* key, T& out, Read read) {
  if (const json* m = member(object, key)) out = read(*m, child(path, key));
}

// The entry of `table` called `name`; an unknown name fails at `path`, listing `choices`.
template <class T>
T choice(const std::string& name, const std::string& path, const std::map<std::string, T>& table,
         const std::string& what, const std::string& choices) {
  const auto it = table.find(name);
  if (it == table.end()) fail(path, "unknown " + what + " \"" + name + "\" (" + choices + ")");
  return it->second;
}

void onlyKeys(const json& object, const std::string& path,
              std::initializer_list<const char*> keys) {
  for (const auto& [key, value] : object.items()) {
    bool known = false;
    for (const char* k : keys) known |= key == k;
    if (!known) fail(child(path, key), "unknown key \"" + key + "\"");
  }
}

CMatrix4 matrix(const json& j, const std::string& path) {
  double v[16];
  if (j.is_array() && j.size() == 4 && j[0].is_array()) {
    for (std::size_t r = 0; r < 4; ++r) {
      const std::string rowPath = child(path, r);
      if (!j[r].is_array() || j[r].size() != 4) fail(rowPath, "expected a row of 4 numbers");
      for (std::size_t c = 0; c < 4; ++c) v[r * 4 + c] = number(j[r][c], child(rowPath, c));
    }
  } else if (j.is_array() && j.size() == 16) {
    for (std::size_t k = 0; k < 16; ++k) v[k] = number(j[k], child(path, k));
  } else {
    fail(path, "expected 4 rows of 4 numbers (or 16 numbers, row by row)");
  }
  if (v[3] != 0.0 || v[7] != 0.0 || v[11] != 0.0 || v[15] != 1.0)
    fail(path,
         "the last column must be (0, 0, 0, 1): rows 0 to 2 are the axes, row 3 the translation");
  return CMatrix4(v[0], v[1], v[2], v[3], v[4], v[5], v[6], v[7], v[8], v[9], v[10], v[11], v[12],
                  v[13], v[14], v[15]);
}

// Keys: a list of [time, value] pairs with strictly increasing times.
template <class T, class ReadValue>
std::vector<std::pair<double, T>> keys(const json& j, const std::string& path, ReadValue read) {
  if (!j.is_array() || j.empty()) fail(path, "expected a non-empty list of [time, value] pairs");
  std::vector<std::pair<double, T>> out;
  for (std::size_t i = 0; i < j.size(); ++i) {
    const std::string p = child(path, i);
    if (!j[i].is_array() || j[i].size() != 2) fail(p, "expected a [time, value] pair");
    const double time = number(j[i][0], child(p, 0));
    if (!out.empty() && !(time > out.back().first))
      fail(child(p, 0), "key times must increase strictly");
    out.emplace_back(time, read(j[i][1], child(p, 1)));
  }
  return out;
}

XSI::siRotationOrder rotationOrder(const json& j, const std::string& path) {
  static const std::map<std::string, XSI::siRotationOrder> kOrders = {
      {"xyz", XSI::siXYZ}, {"xzy", XSI::siXZY}, {"yxz", XSI::siYXZ},
      {"yzx", XSI::siYZX}, {"zxy", XSI::siZXY}, {"zyx", XSI::siZYX}};
  return choice(text(j, path), path, kOrders, "rotation order", "xyz, xzy, yxz, yzx, zxy or zyx");
}

// Default primitive parameters by type; a file's "parameters" add to or replace them.
void defaultParameters(SceneObject& object) {
  auto set = [&](const wchar_t* name, double value) {
    ParameterData p;
    p.number.value = value;
    object.parameters_[name] = p;
  };
  const std::wstring& t = object.type_;
  if (t == L"cube") set(L"length", 1.0);
  if (t == L"sphere") set(L"radius", 1.0);
  if (t == L"null" || t == L"root" || t == L"eff" || t == L"bone") set(L"size", 1.0);
  if (t == L"bone") set(L"length", 1.0);
}

void readTransform(const json& j, const std::string& path, SceneObject& object) {
  if (!j.is_object()) fail(path, "expected an object");
  if (const json* m = member(j, "matrix")) {
    onlyKeys(j, path, {"matrix"});
    object.matrix_ = matrix(*m, child(path, "matrix"));
    return;
  }
  onlyKeys(j, path, {"scaling", "rotation", "rotationOrder", "translation"});
  readMember(j, path, "scaling", object.scaling_.value, vector3);
  readMember(j, path, "rotation", object.rotation_.value, vector3);
  readMember(j, path, "rotationOrder", object.rotationOrder_, rotationOrder);
  readMember(j, path, "translation", object.translation_.value, vector3);
}

ParameterData parameter(const json& j, const std::string& path) {
  ParameterData p;
  if (j.is_string()) {
    p.isText = true;
    p.text = widen(j.get<std::string>());
  } else if (j.is_boolean()) {
    p.isBool = true;
    p.number.value = j.get<bool>() ? 1.0 : 0.0;
  } else {
    p.number.value = number(j, path);
  }
  return p;
}

void readKeys(const json& j, const std::string& path, SceneObject& object) {
  if (!j.is_object()) fail(path, "expected an object");
  onlyKeys(j, path, {"scaling", "rotation", "translation", "visible", "parameters"});
  const bool hasTransformKeys =
      member(j, "scaling") || member(j, "rotation") || member(j, "translation");
  if (hasTransformKeys && object.matrix_)
    fail(path,
         "a transform given as a matrix cannot be keyed; give scaling, rotation and translation");
  auto vectorKeys = [](const json& k, const std::string& p) {
    return keys<CVector3>(k, p, vector3);
  };
  readMember(j, path, "scaling", object.scaling_.keys, vectorKeys);
  readMember(j, path, "rotation", object.rotation_.keys, vectorKeys);
  readMember(j, path, "translation", object.translation_.keys, vectorKeys);
  readMember(j, path, "visible", object.visible_.keys,
             [](const json& k, const std::string& p) { return keys<bool>(k, p, boolean); });
  if (const json* params = member(j, "parameters")) {
    const std::string pp = child(path, "parameters");
    if (!params->is_object()) fail(pp, "expected an object of parameter names");
    for (const auto& [name, list] : params->items()) {
      ParameterData& p = object.parameters_[widen(name)];
      if (p.isText) fail(child(pp, name), "a text parameter cannot be keyed");
      p.number.keys =
          keys<double>(list, child(pp, name), [&](const json& v, const std::string& vp) {
            if (v.is_boolean()) {
              p.isBool = true;
              return v.get<bool>() ? 1.0 : 0.0;
            }
            return number(v, vp);
          });
    }
  }
}

void readAttributes(const json& j, const std::string& path, MeshData& mesh,
                    const MeshDerived& derived) {
  using Type = AttributeData::Type;
  using Context = AttributeData::Context;
  static const std::map<std::string, Type> kTypes = {{"bool", Type::Bool},
                                                     {"long", Type::Long},
                                                     {"float", Type::Float},
                                                     {"vector3", Type::Vector3}};
  // Each context with the number of values it takes.
  const std::map<std::string, std::pair<Context, std::size_t>> contexts = {
      {"singleton", {Context::Singleton, 1}},
      {"point", {Context::Point, mesh.points.size()}},
      {"polygon", {Context::Polygon, mesh.polygons.size()}},
      {"node", {Context::PolygonNode, derived.nodeNormals.size()}}};
  if (!j.is_object()) fail(path, "expected an object of attribute names");
  for (const auto& [name, entry] : j.items()) {
    const std::string ap = child(path, name);
    if (!entry.is_object()) fail(ap, "expected an object with type, context and values");
    onlyKeys(entry, ap, {"type", "context", "values"});
    AttributeData a;
    const json* type = member(entry, "type");
    const json* context = member(entry, "context");
    const json* values = member(entry, "values");
    if (!type) fail(ap, "missing \"type\"");
    if (!values) fail(ap, "missing \"values\"");
    a.type = choice(text(*type, child(ap, "type")), child(ap, "type"), kTypes, "attribute type",
                    "bool, long, float or vector3");
    const std::string c = context ? text(*context, child(ap, "context")) : "point";
    std::size_t expected;
    std::tie(a.context, expected) =
        choice(c, child(ap, "context"), contexts, "context", "singleton, point, polygon or node");
    const std::string vp = child(ap, "values");
    if (!values->is_array() || values->size() != expected)
      fail(vp, "expected " + std::to_string(expected) + " values, one per " + c);
    for (std::size_t i = 0; i < values->size(); ++i) {
      const json& v = (*values)[i];
      switch (a.type) {
        case Type::Bool:
          a.values.push_back(boolean(v, child(vp, i)) ? 1.0 : 0.0);
          break;
        case Type::Long: {
          if (!v.is_number_integer()) fail(child(vp, i), "expected an integer");
          const auto n = v.get<std::int64_t>();
          if (n < INT32_MIN || n > INT32_MAX) fail(child(vp, i), "integer out of the 32-bit range");
          a.values.push_back(static_cast<double>(n));
          break;
        }
        case Type::Float:
          a.values.push_back(number(v, child(vp, i)));
          break;
        case Type::Vector3: {
          const CVector3 x = vector3(v, child(vp, i));
          a.values.insert(a.values.end(), {x.GetX(), x.GetY(), x.GetZ()});
          break;
        }
      }
    }
    mesh.attributes[widen(name)] = std::move(a);
  }
}

void checkPolygons(const MeshData& mesh, const std::string& where) {
  for (std::size_t p = 0; p < mesh.polygons.size(); ++p) {
    const auto& poly = mesh.polygons[p];
    if (poly.size() < 3)
      fail(where, "polygon " + std::to_string(p) + " has " + std::to_string(poly.size()) +
                      " vertices; a polygon needs at least 3");
    for (std::int32_t v : poly) {
      if (v < 0 || static_cast<std::size_t>(v) >= mesh.points.size())
        fail(where, "polygon " + std::to_string(p) + " uses vertex " + std::to_string(v) +
                        ", but the mesh has " + std::to_string(mesh.points.size()) + " points");
    }
  }
}

void readMesh(const json& j, const std::string& path, const std::string& baseDirectory,
              SceneObject& object) {
  if (!j.is_object())
    fail(path, "expected an object with \"file\", or \"points\" and \"polygons\"");
  auto mesh = std::make_shared<MeshData>();
  if (const json* file = member(j, "file")) {
    onlyKeys(j, path, {"file", "attributes"});
    std::filesystem::path p = text(*file, child(path, "file"));
    if (p.is_relative()) p = std::filesystem::path(baseDirectory) / p;
    std::string error;
    if (!LoadMeshFile(p.string(), *mesh, error)) fail(child(path, "file"), error);
  } else {
    onlyKeys(j, path, {"points", "polygons", "attributes"});
    const json* points = member(j, "points");
    const json* polygons = member(j, "polygons");
    if (!points || !polygons) fail(path, "expected \"file\", or both \"points\" and \"polygons\"");
    const std::string pp = child(path, "points");
    if (!points->is_array()) fail(pp, "expected a list of [x, y, z] points");
    for (std::size_t i = 0; i < points->size(); ++i) {
      const CVector3 v = vector3((*points)[i], child(pp, i));
      mesh->points.push_back({v.GetX(), v.GetY(), v.GetZ()});
    }
    const std::string gp = child(path, "polygons");
    if (!polygons->is_array()) fail(gp, "expected a list of polygons (lists of vertex indices)");
    for (std::size_t i = 0; i < polygons->size(); ++i) {
      const json& poly = (*polygons)[i];
      const std::string ip = child(gp, i);
      if (!poly.is_array()) fail(ip, "expected a list of vertex indices");
      std::vector<std::int32_t> indices;
      for (std::size_t k = 0; k < poly.size(); ++k) {
        if (!poly[k].is_number_integer()) fail(child(ip, k), "expected a vertex index");
        const auto v = poly[k].get<std::int64_t>();
        if (v < 0 || static_cast<std::size_t>(v) >= mesh->points.size())
          fail(child(ip, k), "vertex " + std::to_string(v) + " does not exist (the mesh has " +
                                 std::to_string(mesh->points.size()) + " points)");
        indices.push_back(static_cast<std::int32_t>(v));
      }
      if (indices.size() < 3) fail(ip, "a polygon needs at least 3 vertices");
      mesh->polygons.push_back(std::move(indices));
    }
  }
  checkPolygons(*mesh, path);
  auto derived = std::make_shared<MeshDerived>(DeriveMesh(*mesh));
  if (const json* attributes = member(j, "attributes"))
    readAttributes(*attributes, child(path, "attributes"), *mesh, *derived);
  object.mesh_ = std::move(mesh);
  object.meshDerived_ = std::move(derived);
}

NurbsCurveData curve(const json& j, const std::string& path) {
  if (!j.is_object()) fail(path, "expected an object with degree, points and knots");
  onlyKeys(j, path, {"degree", "points", "knots", "closed"});
  NurbsCurveData c;
  if (const json* d = member(j, "degree")) {
    if (!d->is_number_integer()) fail(child(path, "degree"), "expected an integer degree");
    const auto degree = d->get<std::int64_t>();
    if (degree < 1 || degree > 32) fail(child(path, "degree"), "degree must lie in 1 to 32");
    c.degree = static_cast<int>(degree);
  }
  readMember(j, path, "closed", c.closed, boolean);
  const json* points = member(j, "points");
  const std::string pp = child(path, "points");
  if (!points || !points->is_array())
    fail(pp, "expected a list of [x, y, z] or [x, y, z, w] points");
  for (std::size_t i = 0; i < points->size(); ++i) {
    const json& p = (*points)[i];
    const std::string ip = child(pp, i);
    if (!p.is_array() || (p.size() != 3 && p.size() != 4))
      fail(ip, "expected [x, y, z] or [x, y, z, w]");
    std::array<double, 4> cp{0, 0, 0, 1};
    for (std::size_t k = 0; k < p.size(); ++k) cp[k] = number(p[k], child(ip, k));
    c.points.push_back(cp);
  }
  const std::size_t n = c.points.size();
  const std::size_t degree = static_cast<std::size_t>(c.degree);
  if (const json* k = member(j, "knots")) {
    const std::string kp = child(path, "knots");
    if (!k->is_array()) fail(kp, "expected a list of knots");
    for (std::size_t i = 0; i < k->size(); ++i) c.knots.push_back(number((*k)[i], child(kp, i)));
    // Knot vectors without the two outermost knots (points + degree − 1 values) are common;
    // the outermost knots never influence the curve, so repeat the end knots.
    if (!c.knots.empty() && c.knots.size() + 2 == n + degree + 1) {
      c.knots.insert(c.knots.begin(), c.knots.front());
      c.knots.push_back(c.knots.back());
    }
  } else if (n >= degree + 1 || (c.closed && n >= 2)) {
    if (c.closed) {
      // Periodic: wrap the first `degree` points and space the knots evenly; the parameter
      // then runs over [0, n], one unit per given point.
      for (std::size_t i = 0; i < degree; ++i) c.points.push_back(c.points[i % n]);
      const std::size_t m = c.points.size();
      for (std::size_t i = 0; i < m + degree + 1; ++i)
        c.knots.push_back(static_cast<double>(i) - static_cast<double>(degree));
    } else {
      // Clamped and uniform: the curve starts and ends on its end points.
      for (std::size_t i = 0; i <= degree; ++i) c.knots.push_back(0.0);
      for (std::size_t i = 1; i < n - degree; ++i) c.knots.push_back(static_cast<double>(i));
      for (std::size_t i = 0; i <= degree; ++i) c.knots.push_back(static_cast<double>(n - degree));
    }
  }
  const std::string problem = ValidateNurbsCurve(c);
  if (!problem.empty()) fail(path, problem);
  return c;
}

struct ObjectRecord {
  std::shared_ptr<SceneObject> object;
  std::string name;
  std::string parent;  // empty: the scene root
  std::string path;
};

std::shared_ptr<Scene> parse(const json& doc, const std::string& baseDirectory) {
  if (!doc.is_object()) fail("", "expected a JSON object with \"objects\"");
  onlyKeys(doc, "", {"frame", "objects"});
  auto scene = std::make_shared<Scene>();
  if (const json* frame = member(doc, "frame")) scene->SetCurrentFrame(number(*frame, "/frame"));
  const json* objects = member(doc, "objects");
  if (!objects || !objects->is_array()) fail("/objects", "expected a list of objects");

  std::vector<ObjectRecord> records;
  std::map<std::string, std::size_t> byName;
  for (std::size_t i = 0; i < objects->size(); ++i) {
    const json& j = (*objects)[i];
    const std::string path = child("/objects", i);
    if (!j.is_object()) fail(path, "expected an object");
    onlyKeys(
        j, path,
        {"name", "type", "parent", "transform", "visible", "parameters", "mesh", "curves", "keys"});
    auto object = std::make_shared<SceneObject>();
    const json* name = member(j, "name");
    if (!name) fail(path, "missing \"name\"");
    const std::string n = text(*name, child(path, "name"));
    if (n.empty() || n.find_first_of(". \t\r\n") != std::string::npos)
      fail(child(path, "name"), "a name must be non-empty, without dots or blanks");
    if (n == "Scene_Root") fail(child(path, "name"), "\"Scene_Root\" is the scene root's own name");
    if (const auto it = byName.find(n); it != byName.end())
      fail(child(path, "name"),
           "duplicate name \"" + n + "\" (also " + records[it->second].path + ")");
    object->name_ = widen(n);
    const json* type = member(j, "type");
    if (!type) fail(path, "missing \"type\"");
    const std::string t = text(*type, child(path, "type"));
    if (t.empty()) fail(child(path, "type"), "empty type");
    object->type_ = widen(t);
    defaultParameters(*object);
    if (const json* transform = member(j, "transform"))
      readTransform(*transform, child(path, "transform"), *object);
    readMember(j, path, "visible", object->visible_.value, boolean);
    if (const json* params = member(j, "parameters")) {
      const std::string pp = child(path, "parameters");
      if (!params->is_object()) fail(pp, "expected an object of parameter values");
      for (const auto& [pn, pv] : params->items())
        object->parameters_[widen(pn)] = parameter(pv, child(pp, pn));
    }
    const json* mesh = member(j, "mesh");
    const json* curves = member(j, "curves");
    if (mesh && t != "polymsh") fail(child(path, "mesh"), "only a \"polymsh\" object has a mesh");
    if (curves && t != "crvlist")
      fail(child(path, "curves"), "only a \"crvlist\" object has curves");
    if (t == "polymsh" && !mesh) fail(path, "a \"polymsh\" object needs a \"mesh\"");
    if (t == "crvlist" && !curves) fail(path, "a \"crvlist\" object needs \"curves\"");
    if (mesh) readMesh(*mesh, child(path, "mesh"), baseDirectory, *object);
    if (curves) {
      const std::string cp = child(path, "curves");
      if (!curves->is_array() || curves->empty()) fail(cp, "expected a non-empty list of curves");
      for (std::size_t c = 0; c < curves->size(); ++c)
        object->curves_.push_back(
            std::make_shared<NurbsCurveEvaluator>(curve((*curves)[c], child(cp, c))));
    }
    if (const json* k = member(j, "keys")) readKeys(*k, child(path, "keys"), *object);
    std::string parent;
    if (const json* p = member(j, "parent"); p && !p->is_null())
      parent = text(*p, child(path, "parent"));
    byName[n] = records.size();
    records.push_back({object, n, parent, path});
  }

  // Parents may come after their children in the file. Resolve every parent, refuse cycles,
  // and add each object after its parent, walking up with an explicit stack.
  constexpr std::size_t kRoot = SIZE_MAX;
  std::vector<std::size_t> parentOf(records.size(), kRoot);
  for (std::size_t i = 0; i < records.size(); ++i) {
    const std::string& p = records[i].parent;
    if (p.empty() || p == "Scene_Root") continue;
    const auto it = byName.find(p);
    if (it == byName.end()) fail(child(records[i].path, "parent"), "unknown parent \"" + p + "\"");
    parentOf[i] = it->second;
  }
  std::vector<int> state(records.size(), 0);  // 0 not added, 1 on the current chain, 2 added
  for (std::size_t start = 0; start < records.size(); ++start) {
    std::vector<std::size_t> chain;
    std::size_t i = start;
    while (i != kRoot && state[i] == 0) {
      state[i] = 1;
      chain.push_back(i);
      i = parentOf[i];
    }
    if (i != kRoot && state[i] == 1) {
      std::string cycle;
      for (auto it = std::find(chain.begin(), chain.end(), i); it != chain.end(); ++it)
        cycle += "\"" + records[*it].name + "\" -> ";
      fail(child(records[i].path, "parent"),
           "cycle of parents: " + cycle + "\"" + records[i].name + "\"");
    }
    for (auto it = chain.rbegin(); it != chain.rend(); ++it) {
      const std::size_t p = parentOf[*it];
      scene->Add(records[*it].object, p == kRoot ? nullptr : records[p].object);
      state[*it] = 2;
    }
  }
  return scene;
}

// "line:column" (from 1) of the byte at offset `byte` of `text`.
std::string lineAndColumn(const std::string& text, std::size_t byte) {
  const std::string_view before = std::string_view(text).substr(0, byte);
  const std::size_t lineStart = before.rfind('\n') + 1;  // 0 when there is no line break
  const auto breaks = std::count(before.begin(), before.end(), '\n');
  return std::to_string(breaks + 1) + ":" + std::to_string(before.size() - lineStart + 1);
}

// Keys and names come from the file and may hold control characters (a JSON "\n" in a key):
// they are written as escapes, so that the message stays one line.
std::string OneLine(const std::string& message) {
  std::string out;
  for (const unsigned char c : message) {
    if (c == '\n') {
      out += "\\n";
    } else if (c < 0x20 || c == 0x7F) {
      char escape[8];
      std::snprintf(escape, sizeof escape, "\\u%04x", unsigned(c));
      out += escape;
    } else {
      out.push_back(char(c));
    }
  }
  return out;
}

}  // namespace

std::string JsonPointerToken(std::string_view key) {
  std::string token;
  token.reserve(key.size());
  for (char c : key) {
    if (c == '~')
      token += "~0";
    else if (c == '/')
      token += "~1";
    else
      token += c;
  }
  return token;
}

std::shared_ptr<Scene> ParseSceneText(const std::string& text, const std::string& baseDirectory,
                                      const std::string& fileLabel, std::string& error) {
  json doc;
  try {
    doc = json::parse(text);
  } catch (const json::parse_error& e) {
    // The library's message carries its own position prefix; keep only the reason.
    std::string what = e.what();
    const auto colon = what.find(": ", what.find("column"));
    if (colon != std::string::npos) what = what.substr(colon + 2);
    error = fileLabel + ":" + lineAndColumn(text, e.byte == 0 ? 0 : e.byte - 1) +
            ": invalid JSON: " + what;
    return nullptr;
  } catch (const json::exception& e) {
    // Well-formed text the library still refuses, such as a number beyond a double (1E400).
    error = fileLabel + ": invalid JSON: " + e.what();
    return nullptr;
  }
  try {
    std::shared_ptr<Scene> scene = parse(doc, baseDirectory);
    scene->SetPath(fileLabel);
    return scene;
  } catch (const SceneError& e) {
    error =
        OneLine(fileLabel + ": " + (e.path.empty() ? std::string("/") : e.path) + ": " + e.message);
  } catch (const std::exception& e) {
    error = OneLine(fileLabel + ": " + e.what());
  }
  return nullptr;
}

std::shared_ptr<Scene> LoadSceneFile(const std::string& path, std::string& error) {
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    error = path + ": cannot open the scene file";
    return nullptr;
  }
  std::ostringstream content;
  content << in.rdbuf();
  if (in.bad()) {
    error = path + ": cannot read the scene file";
    return nullptr;
  }
  const std::string base = std::filesystem::path(path).parent_path().string();
  return ParseSceneText(content.str(), base.empty() ? "." : base, path, error);
}

}  // namespace xsihost
