// Quillix_fchk: whether the file named by a path can be opened for reading. Single-threaded,
// since it touches the file system; singleton context, element 0 only.
#include "core/file/file_probe.h"
#include "plugin/node.h"

using namespace XSI;
using namespace quillix::plugin;

namespace {

constexpr ULONG kFilepathPort = 1010;
constexpr ULONG kFileExistsPort = 2010;

// clang-format off
constexpr PortDef kPorts[] = {
    {.id = kFilepathPort, .direction = kIn, .dataTypes = siICENodeDataString,
     .structures = siICENodeStructureSingle, .contexts = siICENodeContextSingleton,
     .scriptName = L"Filepath", .displayName = L"Filepath", .defaultValue = DefaultString(L"")},
    {.id = kFileExistsPort, .direction = kOut, .dataTypes = siICENodeDataBool,
     .structures = siICENodeStructureSingle, .contexts = siICENodeContextSingleton,
     .scriptName = L"FileExists", .displayName = L"File exists"},
};
// clang-format on

}  // namespace

QUILLIX_EVALUATE(Quillix_fchk) {
  if (context.GetEvaluatedOutputPortID() != kFileExistsPort) return CStatus::OK;
  const CDataArrayString filepath(context, kFilepathPort);
  CDataArrayBool result(context);
  if (result.GetCount() == 0) return CStatus::OK;
  // The host's narrow conversion loses characters beyond 8 bits; such a path may then answer
  // false although the file exists.
  result[0] = quillix::CanOpenForReading(filepath[0].GetAsciiString());
  return CStatus::OK;
}

QUILLIX_REGISTER_NODE(fchk, siICENodeSingleThreading, kPorts)
