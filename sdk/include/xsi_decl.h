// Basic declarations of the offline SDK: integer types, enumerations, export macro.
#pragma once

#include <cstdint>

namespace XSI {

typedef std::uint32_t ULONG;
typedef std::int32_t LONG;

// Log severities.
enum siSeverityType {
  siFatalMsg = 1,
  siErrorMsg = 2,
  siWarningMsg = 4,
  siInfoMsg = 8,
  siVerboseMsg = 16,
  siCommentMsg = 32,
};

// Data type bits of ICE ports.
enum siICENodeDataType {
  siICENodeDataBool = 1,
  siICENodeDataLong = 2,
  siICENodeDataFloat = 4,
  siICENodeDataVector2 = 8,
  siICENodeDataVector3 = 16,
  siICENodeDataVector4 = 32,
  siICENodeDataQuaternion = 64,
  siICENodeDataMatrix33 = 128,
  siICENodeDataMatrix44 = 256,
  siICENodeDataColor4 = 512,
  siICENodeDataGeometry = 1024,
  siICENodeDataLocation = 2048,
  siICENodeDataExecute = 4096,
  siICENodeDataReference = 8192,
  siICENodeDataRotation = 16384,
  siICENodeDataShape = 32768,
  siICENodeDataCustomType = 65536,
  siICENodeDataString = 131072,
  // Every value type, strings included (the generic array nodes accept this set).
  siICENodeDataValue = 0x2C3FF,
  siICENodeDataAny = 0x3FFFF,
};

enum siICENodeStructureType {
  siICENodeStructureSingle = 1,
  siICENodeStructureArray = 2,
  siICENodeStructureAny = 3,
};

enum siICENodeContextType {
  siICENodeContextSingleton = 1,
  siICENodeContextComponent0D = 2,
  siICENodeContextComponent1D = 4,
  siICENodeContextComponent2D = 8,
  siICENodeContextComponent0D2D = 16,
  siICENodeContextElementGenerator = 32,
  siICENodeContextSingletonOrComponent0D = 3,
  siICENodeContextAny = 63,
};

enum siICENodeThreadingModel {
  siICENodeSingleThreading = 1,
  siICENodeMultiThreading = 2,
};

// Port states reported by CICEPortState.
enum siICEPortState {
  siDataDirtyState = 1,
  siTypeDirtyState = 2,
  siStructureDirtyState = 4,
  siAnyDirtyState = 7,
};

// Command flags.
enum siCommandCapabilities {
  siNoLogging = 0x800000,
  siSupportsKeyAssignment = 0x2,
  siCannotBeUsedInBatch = 0x10,
};

}  // namespace XSI

// Callbacks the host finds by name: C linkage, exported from the plug-in.
#define XSIPLUGINCALLBACK extern "C" __attribute__((visibility("default")))
