// CStatus: the result of every SDK call.
#pragma once

#include <xsi_decl.h>
#include <xsi_string.h>

namespace XSI {

class CStatus {
 public:
  enum Code : ULONG {
    OK = 0,
    False = 1,
    Fail = 0x80004005u,
    NotImpl = 0x80004001u,
    InvalidArgument = 0x80070057u,
    MemoryOverflow = 0x8007000Eu,
    AccessDenied = 0x80070005u,
    Unexpected = 0x8000FFFFu,
  };

  CStatus(ULONG code = OK) : code_(code) {}

  ULONG GetCode() const { return code_; }
  bool Succeeded() const { return code_ == OK || code_ == False; }

  bool operator==(const CStatus& other) const { return code_ == other.code_; }
  bool operator!=(const CStatus& other) const { return code_ != other.code_; }
  bool operator==(Code code) const { return code_ == ULONG(code); }
  bool operator!=(Code code) const { return code_ != ULONG(code); }

  // A failed status here is a programming error: the host reports it (the offline host logs
  // it at error severity and counts it) and the caller carries on.
  void AssertSucceeded(const CString& message = CString()) const;

 private:
  ULONG code_;
};

}  // namespace XSI
