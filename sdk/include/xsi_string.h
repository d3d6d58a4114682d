// CString: the host's owned wide-character string.
#pragma once

#include <string>

#include <xsi_decl.h>

namespace XSI {

class CValue;

class CString {
 public:
  CString() = default;
  CString(const wchar_t* text);
  CString(const wchar_t* text, ULONG length);
  CString(const char* text);
  explicit CString(const CValue& value);

  CString& operator=(const wchar_t* text);
  CString& operator=(const char* text);

  CString operator+(const CString& other) const;
  CString operator+(const wchar_t* text) const;
  CString operator+(const char* text) const;
  CString& operator+=(const CString& other);
  CString& operator+=(const wchar_t* text);
  CString& operator+=(const char* text);

  bool operator==(const CString& other) const { return text_ == other.text_; }
  bool operator!=(const CString& other) const { return text_ != other.text_; }

  bool IsEmpty() const { return text_.empty(); }
  ULONG Length() const { return static_cast<ULONG>(text_.size()); }
  // Lower-cases the string in place (characters of the 8-bit range).
  CString& Lower();
  // Position of `sub` at or after `start`, or ULONG_MAX (all ones) when absent.
  ULONG FindString(const CString& sub, ULONG start = 0) const;

  const wchar_t* GetWideString() const { return text_.c_str(); }
  // Narrow copy: characters beyond the 8-bit range become '?'. The pointer stays valid
  // until the string changes or GetAsciiString is called again.
  const char* GetAsciiString() const;
  void PutAsciiString(const char* text);

  const std::wstring& Wide() const { return text_; }

 private:
  std::wstring text_;
  mutable std::string ascii_;
};

CString operator+(const wchar_t* text, const CString& string);

}  // namespace XSI
