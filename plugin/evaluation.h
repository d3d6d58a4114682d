// Port queries shared by node evaluations: the resolved port info and a per-element view of
// an input that may be single-valued or an array.
#pragma once

#include <optional>
#include <span>

#include <xsi_dataarray.h>
#include <xsi_dataarray2D.h>
#include <xsi_icenodecontext.h>

namespace quillix::plugin {

using XSI::ULONG;

struct PortInfo {
  XSI::siICENodeDataType type = XSI::siICENodeDataLong;
  XSI::siICENodeStructureType structure = XSI::siICENodeStructureSingle;
  XSI::siICENodeContextType context = XSI::siICENodeContextSingleton;

  bool IsArray() const { return structure == XSI::siICENodeStructureArray; }
};

// Resolved type, structure and context of `port`; nullopt when the host cannot tell.
inline std::optional<PortInfo> QueryPortInfo(const XSI::ICENodeContext& context, ULONG port,
                                             ULONG instance = 0) {
  PortInfo info;
  if (context.GetPortInfo(port, info.type, info.structure, info.context, instance) !=
      XSI::CStatus::OK)
    return std::nullopt;
  return info;
}

// One input (instance `instance` of a group port) read as an array per element. A
// single-valued input reads as one entry that stands for every entry of the other operand (it
// "repeats"); a missing input reads as an empty array.
template <class T>
class ElementView {
 public:
  ElementView(XSI::ICENodeContext& context, ULONG port, bool array, ULONG instance = 0)
      : array_(array) {
    if (array)
      arrays_.emplace(context, port, instance);
    else
      singles_.emplace(context, port, instance);
  }

  bool Repeats() const { return !array_; }

  std::span<const T> At(ULONG element) const {
    if (array_) {
      const auto entries = (*arrays_)[element];
      return {entries.GetData(), entries.GetCount()};
    }
    if (singles_->GetCount() == 0) return {};
    return {&(*singles_)[element], 1};
  }

 private:
  bool array_;
  std::optional<XSI::CDataArray<T>> singles_;
  std::optional<XSI::CDataArray2D<T>> arrays_;
};

}  // namespace quillix::plugin
