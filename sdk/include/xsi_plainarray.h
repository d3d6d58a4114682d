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
  explicit CPlainArray(LONG size) : m_items(size > 0 ? size : 0) {}
  LONG GetCount() const { return static_cast<LONG>(m_items.size()); }
  void Resize(LONG size) { m_items.resize(size > 0 ? size : 0); }
  void Add(const T& item) { m_items.push_back(item); }
  void Clear() { m_items.clear(); }
  const T* GetArray() const { return m_items.data(); }
  T* GetArray() { return m_items.data(); }
  const T& operator[](LONG index) const { return m_items[index]; }
  T& operator[](LONG index) { return m_items[index]; }
  bool operator==(const CPlainArray& other) const { return m_items == other.m_items; }

 private:
  std::vector<T> m_items;
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
