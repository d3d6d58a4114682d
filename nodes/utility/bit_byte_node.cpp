// Quillix_ntob splits an integer into its four bytes; Quillix_tbit tests one bit of an integer.
#include <xsi_dataarray.h>
#include <xsi_dataarray2D.h>
#include <xsi_icenodecontext.h>
#include <xsi_indexset.h>
#include <xsi_pluginregistrar.h>
#include <xsi_status.h>

#include "core/math/int_bits.h"
#include "plugin/broadcast.h"
#include "plugin/registration.h"

using namespace XSI;
using namespace quillix::plugin;

namespace {

constexpr ULONG kInputPort = 1010;
constexpr ULONG kByte0Port = 2010;
constexpr ULONG kByte3Port = 2040;
constexpr ULONG kValuePort = 1010;
constexpr ULONG kBitPort = 1020;
constexpr ULONG kResultPort = 2010;

constexpr PortDef kBytePorts[] = {
    {kInputPort, PortDirection::In, siICENodeDataLong, siICENodeStructureSingle,
     siICENodeContextAny, L"Input", L"Input", DefaultInt(0), kNoLink, kLinkStructure, kLinkContext},
    {2010, PortDirection::Out, siICENodeDataLong, siICENodeStructureSingle, siICENodeContextAny,
     L"Byte0", L"Byte 0", NoDefault(), kNoLink, kNoLink, kLinkContext},
    {2020, PortDirection::Out, siICENodeDataLong, siICENodeStructureSingle, siICENodeContextAny,
     L"Byte1", L"Byte 1", NoDefault(), kNoLink, kNoLink, kLinkContext},
    {2030, PortDirection::Out, siICENodeDataLong, siICENodeStructureSingle, siICENodeContextAny,
     L"Byte2", L"Byte 2", NoDefault(), kNoLink, kNoLink, kLinkContext},
    {kByte3Port, PortDirection::Out, siICENodeDataLong, siICENodeStructureSingle,
     siICENodeContextAny, L"Byte3", L"Byte 3", NoDefault(), kNoLink, kNoLink, kLinkContext},
};

constexpr PortDef kBitPorts[] = {
    {kValuePort, PortDirection::In, siICENodeDataLong, siICENodeStructureAny, siICENodeContextAny,
     L"Value", L"Value", DefaultInt(0), kNoLink, kLinkStructure, kLinkContext},
    {kBitPort, PortDirection::In, siICENodeDataLong, siICENodeStructureAny, siICENodeContextAny,
     L"Bit", L"Bit", DefaultInt(0), kNoLink, kLinkStructure, kLinkContext},
    {kResultPort, PortDirection::Out, siICENodeDataLong, siICENodeStructureAny, siICENodeContextAny,
     L"Result", L"Result", NoDefault(), kNoLink, kLinkStructure, kLinkContext},
};

}  // namespace

XSIPLUGINCALLBACK CStatus Quillix_ntob_Evaluate(ICENodeContext& context) {
  const ULONG port = context.GetEvaluatedOutputPortID();
  if (port < kByte0Port || port > kByte3Port || port % 10 != 0) return CStatus::OK;
  // Byte 0 (port 2010) is the least significant byte, Byte 3 (port 2040) the most.
  const int byteIndex = static_cast<int>((port - kByte0Port) / 10);
  if (!QueryPortInfo(context, kInputPort)) return CStatus::OK;
  const CDataArrayLong input(context, kInputPort);
  CDataArrayLong result(context);
  if (input.GetCount() == 0 || result.GetCount() == 0) return CStatus::OK;
  CIndexSet indexSet(context);
  for (CIndexSet::Iterator it = indexSet.Begin(); it.HasNext(); it.Next()) {
    result[it] = quillix::byteOfInt(input[it], byteIndex);
  }
  return CStatus::OK;
}

// A single value against an array tests every entry; two arrays give the shorter length.
XSIPLUGINCALLBACK CStatus Quillix_tbit_Evaluate(ICENodeContext& context) {
  if (context.GetEvaluatedOutputPortID() != kResultPort) return CStatus::OK;
  EvaluateElementwise<LONG, LONG, LONG>(context, kValuePort, kBitPort, quillix::testBit);
  return CStatus::OK;
}

CStatus Quillix_ntob_Register(PluginRegistrar& registrar) {
  return RegisterNode(registrar, {L"Quillix_ntob", siICENodeMultiThreading, 1, 1, kBytePorts});
}

CStatus Quillix_tbit_Register(PluginRegistrar& registrar) {
  return RegisterNode(registrar, {L"Quillix_tbit", siICENodeMultiThreading, 1, 1, kBitPorts});
}
