// Data arrays of ICE attributes: a copy of an attribute's values, one per element.
#pragma once

#include <vector>

#include <xsi_dataarray.h>
#include <xsi_decl.h>
#include <xsi_mathf.h>

namespace XSI {

class ICEAttribute;

class CBaseICEAttributeDataArray {
 public:
  virtual ~CBaseICEAttributeDataArray() = default;
  ULONG GetCount() const { return count_; }
  siICENodeDataType GetDataType() const { return type_; }

 protected:
  explicit CBaseICEAttributeDataArray(siICENodeDataType type) : type_(type) {}
  siICENodeDataType type_;
  ULONG count_ = 0;
  bool constant_ = false;
  friend class ICEAttribute;
};

template <class T>
class CICEAttributeDataArray : public CBaseICEAttributeDataArray {
 public:
  CICEAttributeDataArray() : CBaseICEAttributeDataArray(CDataTypeOf<T>::value) {}
  /// Value of element `index`; a constant array answers its one value for every index.
  const T& operator[](ULONG index) const { return values_[constant_ ? 0 : index]; }

 private:
  std::vector<T> values_;
  friend class ICEAttribute;
};

// std::vector<bool> hands out no references: booleans are kept one per byte.
template <>
class CICEAttributeDataArray<bool> : public CBaseICEAttributeDataArray {
 public:
  CICEAttributeDataArray() : CBaseICEAttributeDataArray(siICENodeDataBool) {}
  const bool& operator[](ULONG index) const { return values_[constant_ ? 0 : index].value; }

 private:
  struct Item {
    bool value;
  };
  std::vector<Item> values_;
  friend class ICEAttribute;
};

typedef CICEAttributeDataArray<bool> CICEAttributeDataArrayBool;
typedef CICEAttributeDataArray<float> CICEAttributeDataArrayFloat;

}  // namespace XSI
