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

CString::CString(const wchar_t* text) : m_text(text ? text : L"") {}
CString::CString(const wchar_t* text, ULONG length) {
  if (text != nullptr) m_text.assign(text, length);
}
CString::CString(const char* text) : m_text(widen(text)) {}
CString::CString(const CValue& value) : CString(value.GetAsText()) {}

CString& CString::operator=(const wchar_t* text) {
  m_text = text ? text : L"";
  return *this;
}
CString& CString::operator=(const char* text) {
  m_text = widen(text);
  return *this;
}

CString CString::operator+(const CString& other) const {
  CString out(*this);
  out.m_text += other.m_text;
  return out;
}
CString CString::operator+(const wchar_t* text) const { return *this + CString(text); }
CString CString::operator+(const char* text) const { return *this + CString(text); }
CString& CString::operator+=(const CString& other) {
  m_text += other.m_text;
  return *this;
}
CString& CString::operator+=(const wchar_t* text) {
  if (text) m_text += text;
  return *this;
}
CString& CString::operator+=(const char* text) {
  m_text += widen(text);
  return *this;
}
CString& CString::operator+=(wchar_t c) {
  m_text.push_back(c);
  return *this;
}

CString& CString::Lower() {
  for (wchar_t& c : m_text)
    if (c < 256) c = static_cast<wchar_t>(std::towlower(static_cast<wint_t>(c)));
  return *this;
}

ULONG CString::FindString(const CString& sub, ULONG start) const {
  const std::size_t at = m_text.find(sub.m_text, start);
  return at == std::wstring::npos ? 0xFFFFFFFFu : static_cast<ULONG>(at);
}

CString CString::GetSubString(ULONG start, ULONG length) const {
  if (start >= m_text.size()) return CString();
  const std::wstring part = m_text.substr(start, length);
  return CString(part.c_str(), static_cast<ULONG>(part.size()));
}

// Characters beyond the 8-bit range have no narrow form and become '?'.
const char* CString::GetAsciiString() const {
  m_ascii.clear();
  m_ascii.reserve(m_text.size());
  for (wchar_t c : m_text) m_ascii.push_back(c < 256 ? static_cast<char>(c) : '?');
  return m_ascii.c_str();
}

void CString::PutAsciiString(const char* text) { m_text = widen(text); }

CString operator+(const wchar_t* text, const CString& string) { return CString(text) + string; }

}  // namespace XSI
