#include "kernel/status.h"

#include <cstdio>
#include <cstring>

namespace quillix {
namespace {

// Messages by code. Gaps (codes 3 and 4) have no text of their own and read as unknown.
// Spelling and spacing are part of the contract: "UPD" in 134 and 135, two blanks in 10,
// no full stop after the closing quotation mark of 37.
constexpr const char* kMessages[181] = {
    /*   0 */ "no error.",
    /*   1 */ "operation has been aborted.",
    /*   2 */ "canceled by user.",
    /*   3 */ nullptr,
    /*   4 */ nullptr,
    /*   5 */ "class is in an invalid state.",
    /*   6 */ "illegal parameter value.",
    /*   7 */ "illegal combination of parameters.",
    /*   8 */ "empty parameter array.",
    /*   9 */ "unable to (re)allocate memory.",
    /*  10 */ "unable to (re)allocate  memory, reached memory limit.",
    /*  11 */ "creating a class via new failed.",
    /*  12 */ "illegal data type.",
    /*  13 */ "unknown data type.",
    /*  14 */ "call of a deprecated function.",
    /*  15 */ "unsupported data type.",
    /*  16 */ "not yet implemented.",
    /*  17 */ "multithreading not yet implemented.",
    /*  18 */ "threading mismatch.",
    /*  19 */ "a pointer is equal NULL.",
    /*  20 */ "an ID is out of range.",
    /*  21 */ "illegal ID.",
    /*  22 */ "ULONG overflow.",
    /*  23 */ "channel not found.",
    /*  24 */ "index not found.",
    /*  25 */ "name not found.",
    /*  26 */ "item not found.",
    /*  27 */ "path not found.",
    /*  28 */ "Linux not supported.",
    /*  29 */ "failed to open video stream.",
    /*  30 */ "unable to get first frame.",
    /*  31 */ "unable to get number of frames (or number of frames less than 2).",
    /*  32 */ "no video stream open.",
    /*  33 */ "unable to prepare video stream for decompression.",
    /*  34 */ "illegal frame index.",
    /*  35 */ "failed to get frame's rgb data.",
    /*  36 */ "failed to init QRVImage.",
    /*  37 */ "this function does not support \"in place\"",
    /*  38 */ "corrupt/unknown filepath or fileformat.",
    /*  39 */ "unable to find or open file.",
    /*  40 */ "read error.",
    /*  41 */ "write error.",
    /*  42 */ "unknown file format.",
    /*  43 */ "unknown file extension.",
    /*  44 */ "unsupported file format.",
    /*  45 */ "file format not yet implemented.",
    /*  46 */ "unsupported bit depth.",
    /*  47 */ "failed to change bit depth.",
    /*  48 */ "Open EXR is not supported in this version.",
    /*  49 */ "image is not valid and therefore cannot be saved.",
    /*  50 */ "error while saving .sgi file: preparing the image failed.",
    /*  51 */ "error while saving .sgi file: cannot open file.",
    /*  52 */ "error while saving .sgi file: memory problem.",
    /*  53 */ "error while saving .sgi file: write error (disk full?).",
    /*  54 */ "error while saving .tga file: preparing the image failed.",
    /*  55 */ "error while saving .tga file: cannot open file.",
    /*  56 */ "error while saving .tga file: memory problem.",
    /*  57 */ "error while saving .tga file: write error (disk full?).",
    /*  58 */ "error while saving .pic file: preparing the image failed.",
    /*  59 */ "error while saving .pic file: cannot open file.",
    /*  60 */ "error while saving .pic file: memory problem.",
    /*  61 */ "error while saving .pic file: write error (disk full?).",
    /*  62 */ "error while saving .exr file: preparing the image failed.",
    /*  63 */ "error while saving .exr file: cannot open file.",
    /*  64 */ "error while saving .exr file: memory problem.",
    /*  65 */ "error while saving .exr file: write error (disk full?).",
    /*  66 */ "error while saving .exr file: unknown error.",
    /*  67 */ "the resolutions don't match.",
    /*  68 */ "the resolutions in x don't match.",
    /*  69 */ "the resolutions in y don't match.",
    /*  70 */ "the resolutions in z don't match.",
    /*  71 */ "the resolutions in x and y don't match.",
    /*  72 */ "the bit depths don't match.",
    /*  73 */ "the obstacle's bit depth is not equal 16 bit half float.",
    /*  74 */ "the resolution is not okay.",
    /*  75 */ "the resolution in x is not okay.",
    /*  76 */ "the resolution in y is not okay.",
    /*  77 */ "the resolution in z is not okay.",
    /*  78 */ "a dynamic geometry function failed.",
    /*  79 */ "count mismatch in geometry.",
    /*  80 */ "node count mismatch in geometry.",
    /*  81 */ "error while loading geometry: cannot open file.",
    /*  82 */ "error while loading geometry: memory problem.",
    /*  83 */ "error while loading geometry: read error.",
    /*  84 */ "error while loading geometry: seek error.",
    /*  85 */
    "error while loading geometry: amount of user data (vertex colors / motion vectors / normal "
    "vectors) doesn't match number of vertices.",
    /*  86 */ "geometry is not valid and therefore cannot be saved.",
    /*  87 */ "error while saving geometry: cannot open file.",
    /*  88 */ "error while saving geometry: memory problem.",
    /*  89 */ "error while saving geometry: write error (disk full?).",
    /*  90 */ "error while saving geometry: geometry is unsupported for caching.",
    /*  91 */ "geometry has illegal polygons.",
    /*  92 */ "corrupt polygon description (does not match with vertices).",
    /*  93 */ "concave polygons not supported.",
    /*  94 */ "only triangles and quads are supported, not 5+ polys.",
    /*  95 */ "unsupported particle shape.",
    /*  96 */ "particle shape reference (instance): pointer at QRVGeometry is NULL.",
    /*  97 */ "particle shape reference (instance): QRVGeometry is invalid.",
    /*  98 */ "too many points.",
    /*  99 */ "too many vertices.",
    /* 100 */ "too many triangles (more than 1073741824).",
    /* 101 */ "a polygon has more than 255 vertices.",
    /* 102 */ "curve class is in an invalid state.",
    /* 103 */ "curve has too few control points.",
    /* 104 */ "empty user data name.",
    /* 105 */ "unknown user data type.",
    /* 106 */ "user data name conflict (name already in use?).",
    /* 107 */ "user data name is too long.",
    /* 108 */ "user data name not found.",
    /* 109 */ "illegal parameter value: cell size <= 0.",
    /* 110 */ "cell sizes don't match.",
    /* 111 */ "grid-mismatch (different cell sizes).",
    /* 112 */ "grid-mismatch (different resolutions).",
    /* 113 */ "grid-mismatch (different bit depths).",
    /* 114 */ "grid-mismatch (different Bis values).",
    /* 115 */ "_baFluidData::_blob is full.",
    /* 116 */ "_baFluidData::_blob.saveToFile() failed.",
    /* 117 */ "_baFluidData::_blob_withData::loadFromFile() failed.",
    /* 118 */ "cannot find gridname in file or data.",
    /* 119 */ "syntax error in gridname.",
    /* 120 */ "OpenVDB support is not yet available under Linux.",
    /* 121 */ "unable to open vdb file (file not found or wrong format).",
    /* 122 */ "unable to read data from vdb file.",
    /* 123 */ "unable to write data to vdb file.",
    /* 124 */ "vdb file has a grid with non-uniform voxels.",
    /* 125 */ "vdb file has grids with different voxel sizes.",
    /* 126 */ "vdb file: grid has unsupported value type.",
    /* 127 */ "vdb file: failed to get value in metadata.",
    /* 128 */ "net is not initialized (QRVNet::QRVNet() failed).",
    /* 129 */ "tcp is not yet implemented.",
    /* 130 */ "failed to create the socket.",
    /* 131 */ "failed to close the socket.",
    /* 132 */ "socket error (bind() failed?).",
    /* 133 */ "no open socket (nothing is running).",
    /* 134 */ "SendTo() is only allowed with UPD.",
    /* 135 */ "ReceiveFrom() is only allowed with UPD.",
    /* 136 */ "invalid ip representation.",
    /* 137 */ "SendTo() failed to send the data.",
    /* 138 */ "SendTo() didn't send the entire data.",
    /* 139 */ "ReceiveFrom() failed to receive any data.",
    /* 140 */ "failed to make a socket non-blocking.",
    /* 141 */ "octree is invalid.",
    /* 142 */ "Clear() failed.",
    /* 143 */ "unable to evaluate items (invalid image class).",
    /* 144 */ "there's a dependency cycle.",
    /* 145 */ "illegal item ID.",
    /* 146 */ "menu item string is empty.",
    /* 147 */ "menu item string is illegal.",
    /* 148 */ "combo item string is empty.",
    /* 149 */ "combo item string is illegal.",
    /* 150 */ "item ID already in use.",
    /* 151 */ "illegal item Index.",
    /* 152 */ "illegal item parent ID.",
    /* 153 */ "illegal item parent Index.",
    /* 154 */ "illegal or unknown item type.",
    /* 155 */ "unable to draw items (invalid image class).",
    /* 156 */ "unable to draw items (items not evaluated).",
    /* 157 */ "not all items are evaluated.",
    /* 158 */ "more than one mouse button is down (not supported!).",
    /* 159 */ "unable to get operator.",
    /* 160 */ "illegal or unsupported compound version.",
    /* 161 */ "unknown parameter type.",
    /* 162 */ "parameter does not support the type 'number'.",
    /* 163 */ "parameter does not support the type 'array of numbers'.",
    /* 164 */ "parameter does not support the type 'string'.",
    /* 165 */ "parameter does not support the type 'control'.",
    /* 166 */ "parameter type mismatch.",
    /* 167 */ "parameter array size mismatch.",
    /* 168 */ "the Softimage XSI SDK is not available.",
    /* 169 */ "X3DObject is in an invalid state.",
    /* 170 */ "failed to get the geometry.",
    /* 171 */ "failed to get geometry accessor.",
    /* 172 */ "failed to get vertex positions.",
    /* 173 */ "failed to get polygons.",
    /* 174 */ "failed to get triangle indices.",
    /* 175 */ "failed to get some ICE data.",
    /* 176 */ "FindChild2() failed (unable to find object).",
    /* 177 */ "some ICE data could not be found (or is unaccessible).",
    /* 178 */
    "some ICE Data has the wrong context. Only per object, per point and per polygon node are "
    "supported.",
    /* 179 */ "some ICE Data has the wrong data type.",
    /* 180 */ "unknown error.",
};

constexpr const char* kUnknown = "unknown error.";

}  // namespace

const char* StatusText(QRVStatus code) {
  if (code >= 180 || kMessages[code] == nullptr) return kUnknown;
  return kMessages[code];
}

char* StatusMessage(QRVStatus code, char* buffer, bool withCode, const char* prefix) {
  if (buffer == nullptr) return nullptr;
  // The code prints as a signed 32-bit number, so the top half of the range shows negative.
  const long signedCode = static_cast<long>(static_cast<std::int32_t>(code));
  if (prefix == nullptr) {
    if (withCode) {
      std::snprintf(buffer, kStatusMessageBufferSize, "error %ld: ", signedCode);
    } else {
      buffer[0] = '\0';
    }
  } else {
    const std::size_t prefixLength = std::strlen(prefix);
    if (withCode) {
      std::snprintf(buffer, prefixLength + kStatusMessageBufferSize, "%serror %ld: ", prefix,
                    signedCode);
    } else {
      std::memcpy(buffer, prefix, prefixLength + 1);
    }
  }
  std::strcat(buffer, StatusText(code));
  return buffer;
}

}  // namespace quillix
