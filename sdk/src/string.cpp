#include <xsi_string.h>
#include <xsi_value.h>

#include <cwctype>

namespace XSI {
namespace {

// Narrow text is read as 8-bit characters (Latin-1); each byte becomes one wide character.
std::wstring widen(const char* text) {
  std::wstring out;
  if (text == nullptr) return out;
  for (const char* p = text; *p != '\0'; ++p) out.push_back(static_cast<unsigned char>(*p));
  return out;
}

}  // namespace

CString::CString(const wchar_t* text) : text_(text ? text : L"") {}
CString::CString(const wchar_t* text, ULONG length) {
  if (text != nullptr) text_.assign(text, length);
}
CString::CString(const char* text) : text_(widen(text)) {}
CString::CString(const CValue& value) : CString(value.GetAsText()) {}

CString& CString::operator=(const wchar_t* text) {
  text_ = text ? text : L"";
  return *this;
}
CString& CString::operator=(const char* text) {
  text_ = widen(text);
  return *this;
}

CString CString::operator+(const CString& other) const {
  CString out(*this);
  out.text_ += other.text_;
  return out;
}
CString CString::operator+(const wchar_t* text) const { return *this + CString(text); }
CString CString::operator+(const char* text) const { return *this + CString(text); }
CString& CString::operator+=(const CString& other) {
  text_ += other.text_;
  return *this;
}
CString& CString::operator+=(const wchar_t* text) {
  if (text) text_ += text;
  return *this;
}
CString& CString::operator+=(const char* text) {
  text_ += widen(text);
  return *this;
}

CString& CString::Lower() {
  for (wchar_t& c : text_)
    if (c < 256) c = static_cast<wchar_t>(std::towlower(static_cast<wint_t>(c)));
  return *this;
}

ULONG CString::FindString(const CString& sub, ULONG start) const {
  const std::size_t at = text_.find(sub.text_, start);
  return at == std::wstring::npos ? 0xFFFFFFFFu : static_cast<ULONG>(at);
}

// Characters beyond the 8-bit range have no narrow form and become '?'.
const char* CString::GetAsciiString() const {
  ascii_.clear();
  ascii_.reserve(text_.size());
  for (wchar_t c : text_) ascii_.push_back(c < 256 ? static_cast<char>(c) : '?');
  return ascii_.c_str();
}

void CString::PutAsciiString(const char* text) { text_ = widen(text); }

CString operator+(const wchar_t* text, const CString& string) { return CString(text) + string; }

}  // namespace XSI
