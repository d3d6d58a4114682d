#include "tools/quillix/json_place.h"

#include <vector>

#include <xsihost/scene_file.h>

namespace quillix::tool {

std::string JsonPlace::Pointer() const {
  if (!parent_) return "/";
  std::vector<const JsonPlace*> chain;
  for (const JsonPlace* p = this; p->parent_; p = p->parent_) chain.push_back(p);
  std::string text;
  for (auto it = chain.rbegin(); it != chain.rend(); ++it) {
    text += '/';
    text +=
        (*it)->isIndex_ ? std::to_string((*it)->index_) : xsihost::JsonPointerToken((*it)->key_);
  }
  return text;
}

}  // namespace quillix::tool
