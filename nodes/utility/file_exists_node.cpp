// Quillix_fchk: whether the file named by a path can be opened for reading. Single-threaded,
// since it touches the file system; singleton context, element 0 only.
#include <xsi_dataarray.h>
#include <xsi_icenodecontext.h>
#include <xsi_pluginregistrar.h>
#include <xsi_status.h>

#include "plugin/callback_guard.h"
#include "core/file/file_probe.h"
#include "plugin/registration.h"

using namespace XSI;
using namespace quillix::plugin;

namespace {

constexpr ULONG kFilepathPort = 1010;
constexpr ULONG kFileExistsPort = 2010;

constexpr PortDef kPorts[] = {
    {kFilepathPort, PortDirection::In, siICENodeDataString, siICENodeStructureSingle,
     siICENodeContextSingleton, L"Filepath", L"Filepath", DefaultString(L""), kNoLink, kNoLink,
     kNoLink},
    {kFileExistsPort, PortDirection::Out, siICENodeDataBool, siICENodeStructureSingle,
     siICENodeContextSingleton, L"FileExists", L"File exists", NoDefault(), kNoLink, kNoLink,
     kNoLink},
};

}  // namespace

XSIPLUGINCALLBACK CStatus Quillix_fchk_Evaluate(ICENodeContext& context) {
  if (context.GetEvaluatedOutputPortID() != kFileExistsPort) return CStatus::OK;
  return quillix::plugin::EvaluateGuarded([&] {
    const CDataArrayString filepath(context, kFilepathPort);
    CDataArrayBool result(context);
    if (result.GetCount() == 0) return;
    // The host's narrow conversion loses characters beyond 8 bits; such a path may then answer
    // false although the file exists.
    result[0] = quillix::canOpenForReading(filepath[0].GetAsciiString());
  });
}

CStatus Quillix_fchk_Register(PluginRegistrar& registrar) {
  return RegisterNode(registrar, {L"Quillix_fchk", siICENodeSingleThreading, 1, 1, kPorts});
}
