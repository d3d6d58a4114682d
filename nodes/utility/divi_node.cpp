// Quillix_divi: integer division giving quotient (2010) and remainder (2020), element-wise
// over single values and arrays.
#include <xsi_icenodecontext.h>
#include <xsi_pluginregistrar.h>

#include "core/math/int_divide.h"
#include "plugin/broadcast.h"
#include "plugin/registration.h"

namespace {

using namespace quillix::plugin;

constexpr ULONG kValue = 1010;
constexpr ULONG kDivideBy = 1020;
constexpr ULONG kResult = 2010;
constexpr ULONG kRemainder = 2020;

constexpr PortDef kPorts[] = {
    {kValue, PortDirection::In, XSI::siICENodeDataLong, XSI::siICENodeStructureAny,
     XSI::siICENodeContextAny, L"Value", L"Value", DefaultInt(0), kNoLink, kLinkStructure, kLinkContext},
    {kDivideBy, PortDirection::In, XSI::siICENodeDataLong, XSI::siICENodeStructureAny,
     XSI::siICENodeContextAny, L"DivideBy", L"Divide By", DefaultInt(1), kNoLink, kLinkStructure, kLinkContext},
    {kResult, PortDirection::Out, XSI::siICENodeDataLong, XSI::siICENodeStructureAny,
     XSI::siICENodeContextAny, L"Result", L"Result", NoDefault(), kNoLink, kLinkStructure, kLinkContext},
    {kRemainder, PortDirection::Out, XSI::siICENodeDataLong, XSI::siICENodeStructureAny,
     XSI::siICENodeContextAny, L"Remainder", L"Remainder", NoDefault(), kNoLink, kLinkStructure, kLinkContext},
};

constexpr NodeDef kNode{L"Quillix_divi", XSI::siICENodeMultiThreading, 1, 1, kPorts};

}  // namespace

XSIPLUGINCALLBACK XSI::CStatus Quillix_divi_Evaluate(XSI::ICENodeContext& context) {
  const ULONG port = context.GetEvaluatedOutputPortID();
  if (port != kResult && port != kRemainder) return XSI::CStatus::OK;
  const bool quotient = port == kResult;
  EvaluateElementwise<XSI::LONG, XSI::LONG, XSI::LONG>(
      context, kValue, kDivideBy, [quotient](XSI::LONG value, XSI::LONG divisor) {
        const quillix::QuotientRemainder r = quillix::divideInt(value, divisor);
        return quotient ? r.quotient : r.remainder;
      });
  return XSI::CStatus::OK;
}

XSI::CStatus Quillix_divi_Register(XSI::PluginRegistrar& registrar) {
  return RegisterNode(registrar, kNode);
}
