// A differential check of the request reader against the plain reader, for tests and fuzzing.
#pragma once

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "tools/quillix/json_values.h"
#include "tools/quillix/request_reader.h"

namespace quillix::tool {

// The input objects of every request of `document`, group instances included, in order.
inline std::vector<const nlohmann::json*> RequestInputObjects(const nlohmann::json& document) {
  std::vector<const nlohmann::json*> inputs;
  const nlohmann::json* requests = &document;
  if (document.is_object()) {
    const auto it = document.find("requests");
    if (it == document.end()) return inputs;
    requests = &*it;
  }
  if (!requests->is_array()) return inputs;
  for (const nlohmann::json& r : *requests) {
    if (!r.is_object()) continue;
    if (const auto in = r.find("inputs"); in != r.end() && in->is_object())
      for (const auto& [key, input] : in->items()) inputs.push_back(&input);
    if (const auto groups = r.find("instances"); groups != r.end() && groups->is_array())
      for (const nlohmann::json& group : *groups)
        if (group.is_object())
          for (const auto& [key, input] : group.items()) inputs.push_back(&input);
  }
  return inputs;
}

// Reads `text` with the request reader and with the plain reader (nlohmann's parser and
// ReadPortValues). Returns what differs — empty when the request reader gave up, or read the
// same document and decoded every list to the plain reader's bytes. `decoded` (optional) counts
// the lists it decoded.
inline std::string RequestReaderDisagreement(const std::string& text,
                                             std::size_t* decoded = nullptr) {
  nlohmann::json skeleton;
  DecodedValues values;
  if (!ReadRequestDocument(text, skeleton, values)) return {};
  const nlohmann::json plain = nlohmann::json::parse(text, nullptr, false);
  if (plain.is_discarded()) return "read a document that is not JSON";
  const auto fast = RequestInputObjects(skeleton), slow = RequestInputObjects(plain);
  if (fast.size() != slow.size()) return "the documents hold different inputs";
  std::size_t count = 0;
  for (std::size_t i = 0; i < fast.size(); ++i) {
    const xsihost::PortValues* own = values.Find(*fast[i]);
    if (!own) {
      if (*fast[i] != *slow[i]) return "input " + std::to_string(i) + " changed";
      continue;
    }
    ++count;
    try {
      const xsihost::PortValues expected =
          ReadPortValues((*slow[i])["values"], own->type, own->array, JsonPlace());
      if (!own->SameData(expected)) return "input " + std::to_string(i) + " decoded otherwise";
    } catch (const InputError& e) {
      return "input " + std::to_string(i) + " decoded where the plain reader says " + e.what();
    }
  }
  if (decoded) *decoded = count;
  return {};
}

}  // namespace quillix::tool
