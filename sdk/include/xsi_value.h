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
  CValue(int v) : type_(siInt4), int_(v) {}
  CValue(long v) : type_(siInt8), int_(v) {}
  CValue(unsigned long v) : type_(siUInt4), int_(static_cast<std::int64_t>(v)) {}
  CValue(unsigned int v) : type_(siUInt4), int_(v) {}
  CValue(long long v) : type_(siInt8), int_(v) {}
  CValue(bool v) : type_(siBool), int_(v ? 1 : 0) {}
  CValue(float v) : type_(siFloat), double_(v) {}
  CValue(double v) : type_(siDouble), double_(v) {}
  CValue(const wchar_t* v) : type_(siString), string_(v) {}
  // Narrow text is a string too; without this it would silently become a bool.
  CValue(const char* v) : type_(siString), string_(v) {}
  CValue(const CString& v) : type_(siString), string_(v) {}
  CValue(const MATH::CVector3f& v) : type_(siVector3f), vector_(v) {}
  CValue(const MATH::CMatrix4f& v) : type_(siMatrix4f), matrix_(v) {}
  CValue(siPtrType v) : type_(siPtr), ptr_(v) {}
  CValue(const CValueArray& v);

  DataType GetType() const { return type_; }
  bool IsEmpty() const { return type_ == siEmpty; }

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
  MATH::CVector3f GetVector3f() const { return vector_; }
  MATH::CMatrix4f GetMatrix4f() const { return matrix_; }

  CString GetAsText() const;
  bool operator==(const CValue& other) const;
  bool operator!=(const CValue& other) const { return !(*this == other); }

 private:
  DataType type_ = siEmpty;
  std::int64_t int_ = 0;
  double double_ = 0.0;
  CString string_;
  MATH::CVector3f vector_;
  MATH::CMatrix4f matrix_;
  siPtrType ptr_ = nullptr;
  // Never changed once made, so copies of the value share it.
  std::shared_ptr<const CValueArray> array_;
};

class CValueArray {
 public:
  CValueArray() = default;
  explicit CValueArray(LONG size) : items_(size > 0 ? size : 0) {}
  LONG GetCount() const { return static_cast<LONG>(items_.size()); }
  void Add(const CValue& value) { items_.push_back(value); }
  CValue& operator[](LONG index) { return items_[index]; }
  const CValue& operator[](LONG index) const { return items_[index]; }
  bool operator==(const CValueArray& o) const { return items_ == o.items_; }

 private:
  std::vector<CValue> items_;
};

}  // namespace XSI
