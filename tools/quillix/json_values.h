// Conversion between JSON and the host's port data, for `quillix eval`.
//
// Values: booleans, integers, floats as JSON numbers or as "0x7FC00000"-style strings of
// their bits (the only way to write NaN and infinities); vectors, quaternions (w, x, y, z),
// colours (r, g, b, a) and rotations (as a quaternion) as lists; matrices as lists of rows or
// one flat row-major list; shapes as [type, p0, p1, p2]; strings as UTF-8 text.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include <xsihost/port_values.h>
#include <xsihost/session.h>
#include <nlohmann/json.hpp>

#include "tools/quillix/json_place.h"

namespace quillix::tool {

// A fault in the user's input, with the place it was found ("/requests/0/inputs/1010"); the
// place's text is made here, once a fault is found.
class InputError : public std::runtime_error {
 public:
  InputError(const JsonPlace& place, const std::string& message)
      : std::runtime_error(place.Pointer() + ": " + message) {}
};

// Reads `values` (one entry per item) of data type `type` into a PortValues of `items`
// items, single-valued or arrays per item. Throws InputError naming `place`.
xsihost::PortValues ReadPortValues(const nlohmann::json& values, XSI::ULONG type, bool array,
                                   const JsonPlace& place);

// The rows a value of `type` is written in: 3 or 4 for matrices (a list of rows, or one flat
// row-major list), 1 for everything else.
std::size_t MatrixRows(XSI::ULONG type);

// Log lines as [[severity, "text"], ...].
nlohmann::json LogJson(const std::vector<xsihost::LogLine>& lines);

std::wstring Utf8ToWide(const std::string& text);
std::string WideToUtf8(const std::wstring& text);

}  // namespace quillix::tool
