// Plain arrays returned by geometry queries: CLongArray, CFloatArray, CDoubleArray,
// CStringArray.
#pragma once

#include <vector>

#include <xsi_decl.h>
#include <xsi_string.h>

namespace XSI {

template <class T>
class CPlainArray {
 public:
  CPlainArray() = default;
  explicit CPlainArray(LONG size) : items_(size > 0 ? size : 0) {}
  LONG GetCount() const { return static_cast<LONG>(items_.size()); }
  void Resize(LONG size) { items_.resize(size > 0 ? size : 0); }
  void Add(const T& item) { items_.push_back(item); }
  void Clear() { items_.clear(); }
  const T* GetArray() const { return items_.data(); }
  T* GetArray() { return items_.data(); }
  const T& operator[](LONG index) const { return items_[index]; }
  T& operator[](LONG index) { return items_[index]; }

 private:
  std::vector<T> items_;
};

class CLongArray : public CPlainArray<LONG> {
 public:
  using CPlainArray::CPlainArray;
};
class CFloatArray : public CPlainArray<float> {
 public:
  using CPlainArray::CPlainArray;
};
class CDoubleArray : public CPlainArray<double> {
 public:
  using CPlainArray::CPlainArray;
};
class CStringArray : public CPlainArray<CString> {
 public:
  using CPlainArray::CPlainArray;
};

}  // namespace XSI
