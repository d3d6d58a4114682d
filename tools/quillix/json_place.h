// Places in a JSON document, named as JSON Pointers ("/requests/2/inputs/1020/values/1").
//
// A place is a chain of links to its parent, each living on the stack of the reader that
// descends into the document: entering a member or an element costs two words and no
// allocation. The pointer text is built only when a fault is reported.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quillix::tool {

class JsonPlace {
 public:
  // The document as a whole.
  JsonPlace() = default;
  // Member `key` of the object at `parent`. Both must outlive this place: the key is not
  // copied (keys of a parsed document and string literals do).
  JsonPlace(const JsonPlace& parent, std::string_view key) : parent_(&parent), key_(key) {}
  // Element `index` of the list at `parent`, which must outlive this place.
  JsonPlace(const JsonPlace& parent, std::size_t index)
      : parent_(&parent), index_(index), isIndex_(true) {}

  // The RFC 6901 pointer, "~" written "~0" and "/" written "~1" in keys. The document as a
  // whole is written "/", as the scene-file reader writes it, so that a message never shows
  // an empty place.
  std::string Pointer() const;

 private:
  const JsonPlace* parent_ = nullptr;
  std::string_view key_;
  std::size_t index_ = 0;
  bool isIndex_ = false;
};

}  // namespace quillix::tool
