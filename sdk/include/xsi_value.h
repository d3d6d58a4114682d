// CValue: the host's variant; CValueArray: a list of variants.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include <xsi_decl.h>
#include <xsi_mathf.h>
#include <xsi_string.h>

namespace XSI {

class CValueArray;

class CValue {
 public:
  typedef void* siPtrType;

  enum DataType {
    siEmpty = 0,
    siInt2 = 2,
    siInt4 = 3,
    siFloat = 4,
    siDouble = 5,
    siString = 8,
    siBool = 11,
    siUInt4 = 19,
    siInt8 = 20,
    siPtr = 26,
    siArray = 8204,
    siVector3f = 30001,
    siMatrix4f = 30002,
  };

  CValue() = default;
  CValue(int v) : m_type(siInt4), m_int(v) {}
  CValue(long v) : m_type(siInt8), m_int(v) {}
  CValue(unsigned long v) : m_type(siUInt4), m_int(static_cast<std::int64_t>(v)) {}
  CValue(unsigned int v) : m_type(siUInt4), m_int(v) {}
  CValue(long long v) : m_type(siInt8), m_int(v) {}
  CValue(bool v) : m_type(siBool), m_int(v ? 1 : 0) {}
  CValue(float v) : m_type(siFloat), m_double(v) {}
  CValue(double v) : m_type(siDouble), m_double(v) {}
  CValue(const wchar_t* v) : m_type(siString), m_string(v) {}
  // Narrow text is a string too; without this it would silently become a bool.
  CValue(const char* v) : m_type(siString), m_string(v) {}
  CValue(const CString& v) : m_type(siString), m_string(v) {}
  CValue(const MATH::CVector3f& v) : m_type(siVector3f), m_vector(v) {}
  CValue(const MATH::CMatrix4f& v) : m_type(siMatrix4f), m_matrix(v) {}
  CValue(siPtrType v) : m_type(siPtr), m_ptr(v) {}
  CValue(const CValueArray& v);
  CValue(const CValue& other);
  CValue& operator=(const CValue& other);
  ~CValue();

  DataType GetType() const { return m_type; }
  bool IsEmpty() const { return m_type == siEmpty; }
  void Clear() { *this = CValue(); }

  // Conversions; a value that does not convert gives 0, false, empty.
  operator LONG() const;
  operator std::int64_t() const;
  operator ULONG() const;
  operator float() const;
  operator double() const;
  operator bool() const;
  operator siPtrType() const;
  operator CString() const { return GetAsText(); }
  operator CValueArray() const;
  MATH::CVector3f GetVector3f() const { return m_vector; }
  MATH::CMatrix4f GetMatrix4f() const { return m_matrix; }

  CString GetAsText() const;
  bool operator==(const CValue& other) const;
  bool operator!=(const CValue& other) const { return !(*this == other); }

 private:
  DataType m_type = siEmpty;
  std::int64_t m_int = 0;
  double m_double = 0.0;
  CString m_string;
  MATH::CVector3f m_vector;
  MATH::CMatrix4f m_matrix;
  siPtrType m_ptr = nullptr;
  std::unique_ptr<CValueArray> m_array;
};

class CValueArray {
 public:
  CValueArray() = default;
  explicit CValueArray(LONG size) : m_items(size > 0 ? size : 0) {}
  LONG GetCount() const { return static_cast<LONG>(m_items.size()); }
  void Add(const CValue& value) { m_items.push_back(value); }
  void Resize(LONG size) { m_items.resize(size > 0 ? size : 0); }
  void Clear() { m_items.clear(); }
  CValue& operator[](LONG index) { return m_items[index]; }
  const CValue& operator[](LONG index) const { return m_items[index]; }
  bool operator==(const CValueArray& o) const { return m_items == o.m_items; }

 private:
  std::vector<CValue> m_items;
};

}  // namespace XSI
