#include <xsi_value.h>

#include <cstdio>
#include <cwchar>

namespace XSI {

CValue::CValue(const CValueArray& v) : type_(siArray), array_(std::make_shared<CValueArray>(v)) {}

namespace {
bool isInteger(CValue::DataType t) {
  return t == CValue::siInt2 || t == CValue::siInt4 || t == CValue::siUInt4 ||
         t == CValue::siInt8 || t == CValue::siBool;
}
bool isReal(CValue::DataType t) { return t == CValue::siFloat || t == CValue::siDouble; }
}  // namespace

CValue::operator std::int64_t() const {
  if (isInteger(type_)) return int_;
  if (isReal(type_)) return static_cast<std::int64_t>(double_);
  if (type_ == siString)
    return static_cast<std::int64_t>(std::wcstoll(string_.GetWideString(), nullptr, 10));
  return 0;
}
CValue::operator LONG() const { return static_cast<LONG>(static_cast<std::int64_t>(*this)); }
CValue::operator ULONG() const { return static_cast<ULONG>(static_cast<std::int64_t>(*this)); }
CValue::operator double() const {
  if (isReal(type_)) return double_;
  if (isInteger(type_)) return static_cast<double>(int_);
  if (type_ == siString) return std::wcstod(string_.GetWideString(), nullptr);
  return 0.0;
}
CValue::operator float() const { return static_cast<float>(static_cast<double>(*this)); }
CValue::operator bool() const {
  if (isInteger(type_)) return int_ != 0;
  if (isReal(type_)) return double_ != 0.0;
  if (type_ == siString) return string_ == CString(L"true") || string_ == CString(L"1");
  if (type_ == siPtr) return ptr_ != nullptr;
  return false;
}
CValue::operator siPtrType() const { return type_ == siPtr ? ptr_ : nullptr; }
CValue::operator CValueArray() const { return array_ ? *array_ : CValueArray(); }

CString CValue::GetAsText() const {
  char buffer[64];
  switch (type_) {
    case siEmpty:
      return CString();
    case siBool:
      return CString(int_ ? L"true" : L"false");
    case siInt2:
    case siInt4:
    case siUInt4:
    case siInt8:
      std::snprintf(buffer, sizeof buffer, "%lld", static_cast<long long>(int_));
      return CString(buffer);
    case siFloat:
    case siDouble:
      std::snprintf(buffer, sizeof buffer, "%.17g", double_);
      return CString(buffer);
    case siString:
      return string_;
    default:
      return CString();
  }
}

bool CValue::operator==(const CValue& other) const {
  if (type_ != other.type_) return false;
  switch (type_) {
    case siEmpty:
      return true;
    case siFloat:
    case siDouble:
      return double_ == other.double_;
    case siString:
      return string_ == other.string_;
    case siVector3f:
      return vector_ == other.vector_;
    case siMatrix4f:
      return matrix_ == other.matrix_;
    case siPtr:
      return ptr_ == other.ptr_;
    case siArray:
      return array_ && other.array_ && *array_ == *other.array_;
    default:
      return int_ == other.int_;
  }
}

}  // namespace XSI
