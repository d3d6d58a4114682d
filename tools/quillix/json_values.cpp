#include "tools/quillix/json_values.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <vector>

namespace quillix::tool {

using nlohmann::json;
using XSI::ULONG;
using xsihost::PortValues;

std::wstring Utf8ToWide(const std::string& text) {
  std::wstring out;
  for (std::size_t i = 0; i < text.size();) {
    const unsigned char c = static_cast<unsigned char>(text[i]);
    int extra = c < 0x80 ? 0 : (c >> 5) == 6 ? 1 : (c >> 4) == 14 ? 2 : (c >> 3) == 30 ? 3 : -1;
    if (extra < 0 || i + extra >= text.size() + (extra == 0 ? 1 : 0)) {
      out.push_back(0xFFFD);
      ++i;
      continue;
    }
    std::uint32_t code = extra == 0 ? c : c & (0x3F >> extra);
    for (int k = 1; k <= extra; ++k)
      code = (code << 6) | (static_cast<unsigned char>(text[i + k]) & 0x3F);
    out.push_back(static_cast<wchar_t>(code));
    i += extra + 1;
  }
  return out;
}

std::string WideToUtf8(const std::wstring& text) {
  std::string out;
  for (wchar_t wc : text) {
    std::uint32_t c = static_cast<std::uint32_t>(wc);
    if (c > 0x10FFFF) c = 0xFFFD;
    if (c < 0x80) {
      out.push_back(static_cast<char>(c));
    } else if (c < 0x800) {
      out.push_back(static_cast<char>(0xC0 | (c >> 6)));
      out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    } else if (c < 0x10000) {
      out.push_back(static_cast<char>(0xE0 | (c >> 12)));
      out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
      out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    } else {
      out.push_back(static_cast<char>(0xF0 | (c >> 18)));
      out.push_back(static_cast<char>(0x80 | ((c >> 12) & 0x3F)));
      out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
      out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    }
  }
  return out;
}

namespace {

float ReadFloat(const json& j, const JsonPlace& place) {
  if (j.is_number()) {
    const double d = j.get<double>();
    if (std::isfinite(d) && std::fabs(d) > double(std::numeric_limits<float>::max()))
      throw InputError(place, "number out of the float range (write infinities as bit strings)");
    return static_cast<float>(d);
  }
  if (j.is_string()) {
    const std::string s = j.get<std::string>();
    if (s.size() == 10 && s[0] == '0' && (s[1] == 'x' || s[1] == 'X')) {
      char* end = nullptr;
      const unsigned long bits = std::strtoul(s.c_str() + 2, &end, 16);
      if (end && *end == '\0') return std::bit_cast<float>(static_cast<std::uint32_t>(bits));
    }
    throw InputError(place,
                     "expected a number or a float's bits as \"0x7FC00000\", got \"" + s + "\"");
  }
  throw InputError(place, "expected a number, got " + std::string(j.type_name()));
}

XSI::LONG ReadInt(const json& j, const JsonPlace& place) {
  if (j.is_number_integer()) {
    const std::int64_t v = j.get<std::int64_t>();
    if (v < std::numeric_limits<XSI::LONG>::min() || v > std::numeric_limits<XSI::LONG>::max())
      throw InputError(place, "integer out of the 32-bit range");
    return static_cast<XSI::LONG>(v);
  }
  if (j.is_number_unsigned()) {
    const std::uint64_t v = j.get<std::uint64_t>();
    if (v > std::uint64_t(std::numeric_limits<XSI::LONG>::max()))
      throw InputError(place, "integer out of the 32-bit range");
    return static_cast<XSI::LONG>(v);
  }
  throw InputError(place, "expected an integer, got " +
                              std::string(j.is_number() ? "a fraction" : j.type_name()));
}

// Reads `count` floats from a list, or, for matrices, from a list of rows.
std::vector<float> readFloats(const json& j, std::size_t count, std::size_t rows,
                              const JsonPlace& place) {
  if (!j.is_array())
    throw InputError(place, "expected a list of " + std::to_string(count) + " numbers");
  std::vector<float> out;
  if (rows > 1 && j.size() == rows && j[0].is_array()) {
    for (std::size_t r = 0; r < rows; ++r) {
      const json& row = j[r];
      if (!row.is_array() || row.size() != count / rows)
        throw InputError(JsonPlace(place, r),
                         "expected a row of " + std::to_string(count / rows) + " numbers");
      const JsonPlace rowPlace(place, r);
      for (std::size_t c = 0; c < row.size(); ++c)
        out.push_back(ReadFloat(row[c], JsonPlace(rowPlace, c)));
    }
    return out;
  }
  if (j.size() != count)
    throw InputError(
        place, "expected " + std::to_string(count) + " numbers, got " + std::to_string(j.size()));
  for (std::size_t i = 0; i < count; ++i) out.push_back(ReadFloat(j[i], JsonPlace(place, i)));
  return out;
}

// Appends the bytes of one value of `type` to `out`.
void ReadValue(const json& j, ULONG type, const JsonPlace& place, std::vector<std::byte>& out) {
  auto append = [&out](const void* data, std::size_t size) {
    const auto* b = static_cast<const std::byte*>(data);
    out.insert(out.end(), b, b + size);
  };
  switch (type) {
    case XSI::siICENodeDataBool: {
      if (!j.is_boolean())
        throw InputError(place, "expected true or false, got " + std::string(j.type_name()));
      const bool b = j.get<bool>();
      append(&b, sizeof b);
      return;
    }
    case XSI::siICENodeDataLong: {
      const XSI::LONG v = ReadInt(j, place);
      append(&v, sizeof v);
      return;
    }
    case XSI::siICENodeDataFloat: {
      const float f = ReadFloat(j, place);
      append(&f, sizeof f);
      return;
    }
    case XSI::siICENodeDataShape: {
      if (!j.is_array() || j.size() != 4)
        throw InputError(place, "expected a shape as [type, p0, p1, p2]");
      const std::int32_t shapeType = ReadInt(j[0], JsonPlace(place, std::size_t(0)));
      append(&shapeType, sizeof shapeType);
      for (int k = 1; k < 4; ++k) {
        const float f = ReadFloat(j[k], JsonPlace(place, std::size_t(k)));
        append(&f, sizeof f);
      }
      return;
    }
    default:
      break;
  }
  const std::size_t count = xsihost::ValueSize(type) / sizeof(float);
  const std::size_t rows = MatrixRows(type);
  const std::vector<float> floats = readFloats(j, count, rows, place);
  append(floats.data(), floats.size() * sizeof(float));
}

}  // namespace

PortValues ReadPortValues(const json& values, ULONG type, bool array, const JsonPlace& place) {
  if (!values.is_array()) throw InputError(place, "expected a list with one value per element");
  PortValues p;
  p.type = type;
  p.array = array;
  p.Resize(static_cast<ULONG>(values.size()));
  for (std::size_t i = 0; i < values.size(); ++i) {
    const JsonPlace at(place, i);
    const json& item = values[i];
    if (array && !item.is_array()) throw InputError(at, "expected a list (an array per element)");
    if (p.IsString()) {
      auto readString = [](const json& s, const JsonPlace& where) {
        if (!s.is_string())
          throw InputError(where, "expected a string, got " + std::string(s.type_name()));
        return Utf8ToWide(s.get<std::string>());
      };
      if (array) {
        for (std::size_t k = 0; k < item.size(); ++k)
          p.stringArrays[i].push_back(readString(item[k], JsonPlace(at, k)));
      } else {
        p.strings[i] = readString(item, at);
      }
    } else if (array) {
      for (std::size_t k = 0; k < item.size(); ++k)
        ReadValue(item[k], type, JsonPlace(at, k), p.arrays[i]);
    } else {
      std::vector<std::byte> bytes;
      ReadValue(item, type, at, bytes);
      std::memcpy(p.flat.data() + i * bytes.size(), bytes.data(), bytes.size());
    }
  }
  return p;
}

std::size_t MatrixRows(ULONG type) {
  return type == XSI::siICENodeDataMatrix33 ? 3 : type == XSI::siICENodeDataMatrix44 ? 4 : 1;
}

json LogJson(const std::vector<xsihost::LogLine>& lines) {
  json log = json::array();
  for (const auto& line : lines) log.push_back({line.severity, WideToUtf8(line.text)});
  return log;
}

}  // namespace quillix::tool
