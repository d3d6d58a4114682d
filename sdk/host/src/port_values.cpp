#include <xsihost/port_values.h>

#include <cstring>

namespace xsihost {

namespace {

struct TypeEntry {
  ULONG type;
  std::size_t size;
  const char* name;
};

constexpr TypeEntry kTypes[] = {
    {XSI::siICENodeDataBool, sizeof(bool), "bool"},
    {XSI::siICENodeDataLong, sizeof(XSI::LONG), "int"},
    {XSI::siICENodeDataFloat, sizeof(float), "float"},
    {XSI::siICENodeDataVector2, sizeof(XSI::MATH::CVector2f), "vector2"},
    {XSI::siICENodeDataVector3, sizeof(XSI::MATH::CVector3f), "vector3"},
    {XSI::siICENodeDataVector4, sizeof(XSI::MATH::CVector4f), "vector4"},
    {XSI::siICENodeDataQuaternion, sizeof(XSI::MATH::CQuaternionf), "quaternion"},
    {XSI::siICENodeDataMatrix33, sizeof(XSI::MATH::CMatrix3f), "matrix33"},
    {XSI::siICENodeDataMatrix44, sizeof(XSI::MATH::CMatrix4f), "matrix44"},
    {XSI::siICENodeDataColor4, sizeof(XSI::MATH::CColor4f), "color4"},
    {XSI::siICENodeDataRotation, sizeof(XSI::MATH::CRotationf), "rotation"},
    {XSI::siICENodeDataShape, sizeof(XSI::CShape), "shape"},
    {XSI::siICENodeDataString, 0, "string"},
};

const TypeEntry* FindType(ULONG type) {
  for (const TypeEntry& e : kTypes)
    if (e.type == type) return &e;
  return nullptr;
}

}  // namespace

std::size_t ValueSize(ULONG type) {
  const TypeEntry* e = FindType(type);
  return e ? e->size : 0;
}

bool IsValueType(ULONG type) { return FindType(type) != nullptr; }

const char* TypeName(ULONG type) {
  const TypeEntry* e = FindType(type);
  return e ? e->name : "";
}

ULONG TypeFromName(const std::string& name) {
  for (const TypeEntry& e : kTypes)
    if (name == e.name) return e.type;
  return 0;
}

void PortValues::Resize(ULONG items) {
  count = items;
  flat.clear();
  arrays.clear();
  strings.clear();
  stringArrays.clear();
  if (IsString()) {
    if (array)
      stringArrays.assign(items, {});
    else
      strings.assign(items, {});
  } else if (array) {
    arrays.assign(items, {});
  } else {
    flat.assign(std::size_t(items) * ValueSize(type), std::byte{0});
  }
}

ULONG PortValues::ArrayLength(ULONG i) const {
  if (!array) return 1;
  if (IsString()) return static_cast<ULONG>(stringArrays[i].size());
  return static_cast<ULONG>(arrays[i].size() / ValueSize(type));
}

PortValues PortValues::Strings1D(const std::vector<std::wstring>& values) {
  PortValues p;
  p.type = XSI::siICENodeDataString;
  p.Resize(static_cast<ULONG>(values.size()));
  p.strings = values;
  return p;
}

PortValues PortValues::Strings2D(const std::vector<std::vector<std::wstring>>& values) {
  PortValues p;
  p.type = XSI::siICENodeDataString;
  p.array = true;
  p.Resize(static_cast<ULONG>(values.size()));
  p.stringArrays = values;
  return p;
}

bool PortValues::SameData(const PortValues& o) const {
  return type == o.type && array == o.array && constant == o.constant && count == o.count &&
         flat == o.flat && arrays == o.arrays && strings == o.strings &&
         stringArrays == o.stringArrays;
}

}  // namespace xsihost
