// Model: an X3DObject that groups others and scopes their names; the scene root is one.
#pragma once

#include <xsi_x3dobject.h>

namespace XSI {

class Model : public X3DObject {
 public:
  Model() = default;
  /// Binds to `ref` when it refers to a model; otherwise the model is invalid.
  explicit Model(const CRef& ref);
};

}  // namespace XSI
