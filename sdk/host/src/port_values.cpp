#include <xsihost/port_values.h>

#include <bit>
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

// Four independent multiply-rotate lanes over 8-byte words, so that hashing runs near memory
// speed; lengths are mixed in so that moving bytes between items changes the hash.
class Hasher {
 public:
  void Add(const void* data, std::size_t bytes) {
    const auto* p = static_cast<const unsigned char*>(data);
    for (; bytes >= 32; p += 32, bytes -= 32) {
      for (int k = 0; k < 4; ++k) lanes_[k] = Round(lanes_[k], Word(p + 8 * k));
    }
    for (; bytes >= 8; p += 8, bytes -= 8) lanes_[0] = Round(lanes_[0], Word(p));
    std::uint64_t tail = 0;
    if (bytes != 0) std::memcpy(&tail, p, bytes);  // an empty vector's data() may be null
    lanes_[1] = Round(lanes_[1], tail ^ (std::uint64_t(bytes) << 56));
  }
  void AddWord(std::uint64_t word) { lanes_[2] = Round(lanes_[2], word); }
  std::uint64_t Finish() const {
    std::uint64_t h = std::rotl(lanes_[0], 1) + std::rotl(lanes_[1], 7) + std::rotl(lanes_[2], 12) +
                      std::rotl(lanes_[3], 18);
    h ^= h >> 33;
    h *= 0xFF51AFD7ED558CCDull;
    h ^= h >> 33;
    h *= 0xC4CEB9FE1A85EC53ull;
    return h ^ (h >> 33);
  }

 private:
  static constexpr std::uint64_t kPrime1 = 0x9E3779B185EBCA87ull;
  static constexpr std::uint64_t kPrime2 = 0xC2B2AE3D27D4EB4Full;
  static std::uint64_t Word(const unsigned char* p) {
    std::uint64_t w;
    std::memcpy(&w, p, sizeof w);
    return w;
  }
  static std::uint64_t Round(std::uint64_t lane, std::uint64_t word) {
    return std::rotl(lane + word * kPrime2, 31) * kPrime1;
  }
  std::uint64_t lanes_[4] = {kPrime1 + kPrime2, kPrime2, 0, 0 - kPrime1};
};

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

std::uint64_t PortValues::ContentHash() const {
  Hasher h;
  h.AddWord(type);
  h.AddWord((array ? 1u : 0u) | (constant ? 2u : 0u));
  h.AddWord(count);
  h.Add(flat.data(), flat.size());
  for (const auto& item : arrays) {
    h.AddWord(item.size());
    h.Add(item.data(), item.size());
  }
  for (const std::wstring& text : strings) {
    h.AddWord(text.size());
    h.Add(text.data(), text.size() * sizeof(wchar_t));
  }
  for (const auto& list : stringArrays) {
    h.AddWord(list.size());
    for (const std::wstring& text : list) {
      h.AddWord(text.size());
      h.Add(text.data(), text.size() * sizeof(wchar_t));
    }
  }
  return h.Finish();
}

}  // namespace xsihost
