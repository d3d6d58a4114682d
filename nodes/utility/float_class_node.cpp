// Quillix_nan and Quillix_nan2: NaN and infinity tests on floats. Quillix_nan answers with
// booleans on single values; Quillix_nan2 with integers 0 or 1 on single values or arrays.
#include <optional>

#include <xsi_dataarray.h>
#include <xsi_dataarray2D.h>
#include <xsi_icenodecontext.h>
#include <xsi_indexset.h>
#include <xsi_pluginregistrar.h>
#include <xsi_status.h>

#include "core/math/float_class.h"
#include "plugin/evaluation.h"
#include "plugin/registration.h"

using namespace XSI;
using namespace quillix::plugin;
using quillix::FloatTest;

namespace {

constexpr ULONG kInputPort = 1010;
constexpr ULONG kIsNaNPort = 2010;
constexpr ULONG kPositiveInfPort = 2020;
constexpr ULONG kNegativeInfPort = 2030;

constexpr PortDef kBooleanPorts[] = {
    {kInputPort, PortDirection::In, siICENodeDataFloat, siICENodeStructureSingle,
     siICENodeContextSingletonOrComponent0D, L"Input", L"Input", DefaultFloat(0.0f), kNoLink,
     kLinkStructure, kLinkContext},
    {kIsNaNPort, PortDirection::Out, siICENodeDataBool, siICENodeStructureSingle,
     siICENodeContextSingletonOrComponent0D, L"IsNaN", L"IsNaN", NoDefault(), kNoLink,
     kLinkStructure, kLinkContext},
    {kPositiveInfPort, PortDirection::Out, siICENodeDataBool, siICENodeStructureSingle,
     siICENodeContextSingletonOrComponent0D, L"IsINFpos", L"Positive INF", NoDefault(), kNoLink,
     kLinkStructure, kLinkContext},
    {kNegativeInfPort, PortDirection::Out, siICENodeDataBool, siICENodeStructureSingle,
     siICENodeContextSingletonOrComponent0D, L"IsINFneg", L"Negative INF", NoDefault(), kNoLink,
     kLinkStructure, kLinkContext},
};

constexpr PortDef kIntegerPorts[] = {
    {kInputPort, PortDirection::In, siICENodeDataFloat, siICENodeStructureAny, siICENodeContextAny,
     L"Input", L"Input", DefaultFloat(0.0f), kNoLink, kLinkStructure, kLinkContext},
    {kIsNaNPort, PortDirection::Out, siICENodeDataLong, siICENodeStructureAny, siICENodeContextAny,
     L"IsNaN", L"IsNaN", NoDefault(), kNoLink, kLinkStructure, kLinkContext},
    {kPositiveInfPort, PortDirection::Out, siICENodeDataLong, siICENodeStructureAny,
     siICENodeContextAny, L"IsINFpos", L"Positive INF", NoDefault(), kNoLink, kLinkStructure,
     kLinkContext},
    {kNegativeInfPort, PortDirection::Out, siICENodeDataLong, siICENodeStructureAny,
     siICENodeContextAny, L"IsINFneg", L"Negative INF", NoDefault(), kNoLink, kLinkStructure,
     kLinkContext},
};

// The test of an output port. On "Positive INF" the boolean node lets NaN through as it always
// has; the integer node answers 0 for NaN there, so that exactly one output flags a NaN.
std::optional<FloatTest> testForPort(ULONG port, FloatTest positiveTest) {
  switch (port) {
    case kIsNaNPort:
      return FloatTest::NaN;
    case kPositiveInfPort:
      return positiveTest;
    case kNegativeInfPort:
      return FloatTest::NegativeInfinity;
    default:
      return std::nullopt;
  }
}

}  // namespace

XSIPLUGINCALLBACK CStatus Quillix_nan_Evaluate(ICENodeContext& context) {
  const std::optional<FloatTest> test =
      testForPort(context.GetEvaluatedOutputPortID(), FloatTest::PositiveInfinityOrNaN);
  if (!test) return CStatus::OK;
  const CDataArrayFloat input(context, kInputPort);
  CDataArrayBool result(context);
  if (input.GetCount() == 0 || result.GetCount() == 0) return CStatus::OK;
  CIndexSet indexSet(context);
  for (CIndexSet::Iterator it = indexSet.Begin(); it.HasNext(); it.Next()) {
    result[it] = quillix::classifyFloat(input[it], *test);
  }
  return CStatus::OK;
}

XSIPLUGINCALLBACK CStatus Quillix_nan2_Evaluate(ICENodeContext& context) {
  const std::optional<FloatTest> test =
      testForPort(context.GetEvaluatedOutputPortID(), FloatTest::PositiveInfinity);
  if (!test) return CStatus::OK;
  const std::optional<PortInfo> info = QueryPortInfo(context, kInputPort);
  if (!info) return CStatus::OK;
  CIndexSet indexSet(context);
  if (info->IsArray()) {
    const CDataArray2DFloat input(context, kInputPort);
    CDataArray2DLong result(context);
    for (CIndexSet::Iterator it = indexSet.Begin(); it.HasNext(); it.Next()) {
      const CDataArray2DFloat::Accessor values = input[it];
      CDataArray2DLong::Accessor out = result.Resize(it, values.GetCount());
      quillix::classifyFloats({values.GetData(), values.GetCount()}, *test,
                              {out.GetData(), out.GetCount()});
    }
    return CStatus::OK;
  }
  const CDataArrayFloat input(context, kInputPort);
  CDataArrayLong result(context);
  if (input.GetCount() == 0 || result.GetCount() == 0) return CStatus::OK;
  for (CIndexSet::Iterator it = indexSet.Begin(); it.HasNext(); it.Next()) {
    result[it] = quillix::classifyFloat(input[it], *test) ? 1 : 0;
  }
  return CStatus::OK;
}

CStatus Quillix_nan_Register(PluginRegistrar& registrar) {
  return RegisterNode(registrar, {L"Quillix_nan", siICENodeMultiThreading, 1, 1, kBooleanPorts});
}

CStatus Quillix_nan2_Register(PluginRegistrar& registrar) {
  return RegisterNode(registrar, {L"Quillix_nan2", siICENodeMultiThreading, 1, 1, kIntegerPorts});
}
