// Named status codes used by the geometry container and the vertex-path search.
// The codes and their messages come from kernel/status.h; these names only make call sites
// readable.
#pragma once

#include "kernel/status.h"

namespace quillix {

inline constexpr QRVStatus kStatusUnknownDataType = 13;  // "unknown data type."
inline constexpr QRVStatus kStatusNullPointer = 19;      // "a pointer is equal NULL."
inline constexpr QRVStatus kStatusIdOutOfRange = 20;     // "an ID is out of range."
inline constexpr QRVStatus kStatusPathNotFound = 27;     // "path not found."
inline constexpr QRVStatus kStatusDynamicGeometryFailed =
    78;                                                     // "a dynamic geometry function failed."
inline constexpr QRVStatus kStatusCountMismatch = 79;       // "count mismatch in geometry."
inline constexpr QRVStatus kStatusNodeCountMismatch = 80;   // "node count mismatch in geometry."
inline constexpr QRVStatus kStatusCorruptDescription = 92;  // "corrupt polygon description ..."
inline constexpr QRVStatus kStatusTooManyPoints = 98;       // "too many points."
inline constexpr QRVStatus kStatusPolygonTooLarge = 101;  // "a polygon has more than 255 vertices."
// Start vertex equal to end vertex: -2 stored as its two's complement; it has no message.
inline constexpr QRVStatus kStatusSameVertex = static_cast<QRVStatus>(-2);

}  // namespace quillix
