// Views of the host's string storage, as the string-handling utility nodes read and write it.
#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include <xsi_string.h>

#include "plugin/node.h"

namespace quillix::utility {

// Element `element`'s string; empty when the host holds none there. The view lives as long as
// the data array.
inline std::wstring_view StringAt(const XSI::CDataArrayString& array, XSI::ULONG element) {
  const wchar_t* text = nullptr;
  XSI::ULONG length = 0;
  array.GetData(element, &text, length);
  return text != nullptr ? std::wstring_view(text, length) : std::wstring_view();
}

// The entries of one element of a string-array port, in order; an entry the host holds no text
// for reads as empty. The views live as long as the data array.
inline std::vector<std::wstring_view> StringEntries(
    const XSI::CDataArray2D<XSI::CString>::Accessor& strings) {
  std::vector<std::wstring_view> entries(strings.GetCount());
  for (XSI::ULONG i = 0; i < strings.GetCount(); ++i) {
    const wchar_t* text = nullptr;
    XSI::ULONG length = 0;
    strings.GetData(i, &text, length);
    if (text != nullptr) entries[i] = std::wstring_view(text, length);
  }
  return entries;
}

// The resolved information of `port`. When the host cannot tell, writes "GetPortInfo() failed"
// as element 0 of the string output `result` (the text these nodes have always shown) and
// returns nullopt.
inline std::optional<plugin::PortInfo> QueryPortInfoOrReport(XSI::ICENodeContext& context,
                                                             XSI::ULONG port,
                                                             XSI::CDataArrayString& result) {
  std::optional<plugin::PortInfo> info = plugin::QueryPortInfo(context, port);
  if (!info) result.SetData(0, XSI::CString(L"GetPortInfo() failed"));
  return info;
}

}  // namespace quillix::utility
