// Reading a `quillix eval` request document at the speed of memory.
//
// The bulk of a large request is the inline "values" lists of its inputs: a million points are
// three million numbers. Parsing them into a JSON tree costs tens of bytes and an allocation per
// number, so this reader decodes each input's "values" straight into the typed buffer of its
// port as the text streams by (in blocks: the text is never held whole), and parses only the
// rest of the document (node names, ports, options, small inputs) as JSON, with the decoded
// lists left out as null.
//
// It decodes a "values" list when the input object names its "type" (and, if not single,
// its "structure") before it, the list holds numbers or booleans written plainly, and every
// value is one the plain reader would accept. Anything else — a syntax error, a value out of
// range, a float written as its bits, keys repeated or written after "values" — makes it give
// up, and the caller reads the document the plain way, which yields the same data and the
// exact message for whatever is wrong. So the two readers never disagree: this one only ever
// takes documents the plain reader takes, and decodes them to the same bits (a float is the
// number read as a double, then rounded to float; "-0" is an integer and reads as +0).
#pragma once

#include <string_view>
#include <unordered_map>

#include <xsihost/port_values.h>
#include <nlohmann/json.hpp>

namespace quillix::tool {

// The "values" this reader decoded, by the input object they belong to (the object in the
// parsed document, whose own "values" is null).
class DecodedValues {
 public:
  // The values decoded for `input`, or null when its "values" are in the document. The caller
  // may move them out.
  xsihost::PortValues* Find(const nlohmann::json& input);
  void Add(const nlohmann::json& input, xsihost::PortValues values);

 private:
  std::unordered_map<const nlohmann::json*, xsihost::PortValues> byInput_;
};

// Reads the document from the open file `fd` (read to its end, in blocks) into `document` and
// `decoded`. Returns false when the document must be read the plain way (see above); `fd` is
// then read to an unknown point, so this suits regular files, which can be read again.
bool ReadRequestDocument(int fd, nlohmann::json& document, DecodedValues& decoded);

// The same for a document held in memory.
bool ReadRequestDocument(std::string_view text, nlohmann::json& document, DecodedValues& decoded);

}  // namespace quillix::tool
