#include <xsi_value.h>

#include <cstdio>
#include <cwchar>

namespace XSI {

CValue::CValue(const CValueArray& v) : m_type(siArray), m_array(std::make_unique<CValueArray>(v)) {}

CValue::CValue(const CValue& other)
    : m_type(other.m_type),
      m_int(other.m_int),
      m_double(other.m_double),
      m_string(other.m_string),
      m_vector(other.m_vector),
      m_matrix(other.m_matrix),
      m_ptr(other.m_ptr),
      m_array(other.m_array ? std::make_unique<CValueArray>(*other.m_array) : nullptr) {}

CValue& CValue::operator=(const CValue& other) {
  if (this != &other) {
    m_type = other.m_type;
    m_int = other.m_int;
    m_double = other.m_double;
    m_string = other.m_string;
    m_vector = other.m_vector;
    m_matrix = other.m_matrix;
    m_ptr = other.m_ptr;
    m_array = other.m_array ? std::make_unique<CValueArray>(*other.m_array) : nullptr;
  }
  return *this;
}

CValue::~CValue() = default;

namespace {
bool isInteger(CValue::DataType t) {
  return t == CValue::siInt2 || t == CValue::siInt4 || t == CValue::siUInt4 || t == CValue::siInt8 ||
         t == CValue::siBool;
}
bool isReal(CValue::DataType t) { return t == CValue::siFloat || t == CValue::siDouble; }
}  // namespace

CValue::operator std::int64_t() const {
  if (isInteger(m_type)) return m_int;
  if (isReal(m_type)) return static_cast<std::int64_t>(m_double);
  if (m_type == siString) return static_cast<std::int64_t>(std::wcstoll(m_string.GetWideString(), nullptr, 10));
  return 0;
}
CValue::operator LONG() const { return static_cast<LONG>(static_cast<std::int64_t>(*this)); }
CValue::operator ULONG() const { return static_cast<ULONG>(static_cast<std::int64_t>(*this)); }
CValue::operator double() const {
  if (isReal(m_type)) return m_double;
  if (isInteger(m_type)) return static_cast<double>(m_int);
  if (m_type == siString) return std::wcstod(m_string.GetWideString(), nullptr);
  return 0.0;
}
CValue::operator float() const { return static_cast<float>(static_cast<double>(*this)); }
CValue::operator bool() const {
  if (isInteger(m_type)) return m_int != 0;
  if (isReal(m_type)) return m_double != 0.0;
  if (m_type == siString) return m_string == CString(L"true") || m_string == CString(L"1");
  if (m_type == siPtr) return m_ptr != nullptr;
  return false;
}
CValue::operator siPtrType() const { return m_type == siPtr ? m_ptr : nullptr; }
CValue::operator CValueArray() const { return m_array ? *m_array : CValueArray(); }

CString CValue::GetAsText() const {
  char buffer[64];
  switch (m_type) {
    case siEmpty: return CString();
    case siBool: return CString(m_int ? L"true" : L"false");
    case siInt2:
    case siInt4:
    case siUInt4:
    case siInt8: std::snprintf(buffer, sizeof buffer, "%lld", static_cast<long long>(m_int)); return CString(buffer);
    case siFloat:
    case siDouble: std::snprintf(buffer, sizeof buffer, "%.17g", m_double); return CString(buffer);
    case siString: return m_string;
    default: return CString();
  }
}

bool CValue::operator==(const CValue& other) const {
  if (m_type != other.m_type) return false;
  switch (m_type) {
    case siEmpty: return true;
    case siFloat:
    case siDouble: return m_double == other.m_double;
    case siString: return m_string == other.m_string;
    case siVector3f: return m_vector == other.m_vector;
    case siMatrix4f: return m_matrix == other.m_matrix;
    case siPtr: return m_ptr == other.m_ptr;
    case siArray: return m_array && other.m_array && *m_array == *other.m_array;
    default: return m_int == other.m_int;
  }
}

}  // namespace XSI
