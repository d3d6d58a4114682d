// What `quillix eval` answers, and its text.
//
// A result tree holds the output port values by reference: building a JSON tree of a million
// points costs more than evaluating them. The values are written out from the port buffers
// only when the tree is printed, floats as the shortest text that reads back as the same float
// (AppendFloatText), everything else as nlohmann::json::dump writes it.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include <xsihost/port_values.h>
#include <nlohmann/json.hpp>

namespace quillix::tool {

class ResultDocument {
 public:
  // {"results", "shutdownLog"}, then what the caller adds; output values stand in as Hold made
  // them.
  nlohmann::json tree;

  // A stand-in for the output values `values` (one entry per element, null where the node did
  // not write), to place in `tree`.
  nlohmann::json Hold(xsihost::PortValues values);

  // A copy of `subtree` (of `tree`) with the values written out as JSON, for readers of results
  // as JSON such as the pictures.
  nlohmann::json Inline(const nlohmann::json& subtree) const;

  // Writes `tree` to `out` as dump(indent) would, with `indent` < 0 for one line; invalid UTF-8
  // in strings is replaced when `replaceInvalidUtf8`, else throws nlohmann::json::type_error.
  void Write(std::ostream& out, int indent, bool replaceInvalidUtf8 = false) const;

 private:
  std::vector<xsihost::PortValues> held_;
};

// Port values as JSON, one entry per item: the value, or null where an output item was not
// written (when `outputsOnly`). Floats are the numbers their text reads as.
nlohmann::json WritePortValues(const xsihost::PortValues& values, bool outputsOnly);

// Appends the shortest decimal text that reads back as `f` when read as a double and rounded to
// float, as the request reader and JSON readers elsewhere read numbers (nine significant digits
// where the shortest text would not survive that double rounding), with ".0" after an integer
// so that it still reads as a float. NaN and infinities, which JSON numbers cannot write, are
// their bits as a string: "0x7FC00000".
void AppendFloatText(float f, std::string& out);

}  // namespace quillix::tool
