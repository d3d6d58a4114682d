// ICENodeContext: the per-call evaluation context of a custom ICE node.
//
// Data arrays are indexed by absolute element index: the index set names the elements of the
// current batch, and GetCount of an input array is the element count of the whole evaluation
// (1 when the input is constant). The typed arrays of xsi_dataarray.h / xsi_dataarray2D.h
// are thin wrappers over the Acquire/Get/Set operations declared here.
#pragma once

#include <xsi_context.h>
#include <xsi_decl.h>
#include <xsi_status.h>
#include <xsi_string.h>
#include <xsi_time.h>

namespace XSI {

namespace host_detail {
struct EvalFrame;
}

class CDataArrayState;
class CBaseDataArray;
class CBaseDataArray2D;
class CIndexSet;

// What a node promises when it acquires the output of single values: to write some elements of
// the batch (the host reads the values back to tell which), or every one of them (the host then
// takes the whole batch as written without reading it).
enum class OutputWrites { Some, WholeBatch };

class ICENodeContext : public Context {
 public:
  ICENodeContext() = default;
  explicit ICENodeContext(const CRef& ref);

  ULONG GetEvaluatedOutputPortID() const;
  // Resolved data type, structure and context of a port (input or output). Fails when the
  // host cannot tell; the outputs are then left untouched.
  CStatus GetPortInfo(ULONG portID, siICENodeDataType& type, siICENodeStructureType& structure,
                      siICENodeContextType& context, ULONG instance = 0) const;
  CStatus GetGroupInstanceCount(ULONG groupID, ULONG& count) const;
  CTime GetTime() const;

  CStatus AcquireIndexSet(CIndexSet& indexSet) const;
  CStatus ReleaseIndexSet(CIndexSet& indexSet) const;

  CStatus AcquireInputDataArray(CBaseDataArray& array, ULONG portID, ULONG instance = 0);
  CStatus CopyFromInputDataArray(CBaseDataArray& array, ULONG portID, ULONG instance = 0);
  CStatus AcquireOutputDataArray(CBaseDataArray& array, OutputWrites writes = OutputWrites::Some);
  CStatus AcquireInputDataArray2D(CBaseDataArray2D& array, ULONG portID, ULONG instance = 0);
  CStatus CopyFromInputDataArray2D(CBaseDataArray2D& array, ULONG portID, ULONG instance = 0);
  CStatus AcquireOutputDataArray2D(CBaseDataArray2D& array);
  CStatus ReleaseDataArray(CDataArrayState& array);

  // Sub-array of element `index` of a 2D array (the shared one when constant).
  CStatus GetSubArray(const CBaseDataArray2D& array, ULONG index, const void*& data,
                      ULONG& count) const;
  // Sizes element `index` of a 2D output to `count` zero-filled entries.
  CStatus ResizeSubArray(CBaseDataArray2D& array, ULONG index, ULONG count, void*& data,
                         ULONG& outCount);
  CStatus GetStringData(const CBaseDataArray& array, ULONG index, const wchar_t*& text,
                        ULONG& length) const;
  CStatus SetStringData(CBaseDataArray& array, ULONG index, const wchar_t* text, ULONG length);
  CStatus GetStringData2D(const CBaseDataArray2D& array, ULONG index, ULONG subIndex,
                          const wchar_t*& text, ULONG& length) const;
  CStatus SetStringData2D(CBaseDataArray2D& array, ULONG index, ULONG subIndex, const wchar_t* text,
                          ULONG length);

  // Host side only.
  ICENodeContext(const CRef& ref, host_detail::EvalFrame* frame) : Context(ref), frame_(frame) {}
  host_detail::EvalFrame* GetFrame() const { return frame_; }

 private:
  // Binds `array` to the input when its type and structure (`twoDimensional`) match the port's.
  CStatus AcquireInput(CDataArrayState& array, ULONG portID, ULONG instance, bool twoDimensional);
  // The same over a private copy of the input that lives as long as the evaluation frame.
  CStatus CopyInput(CDataArrayState& array, ULONG portID, ULONG instance, bool twoDimensional);

  host_detail::EvalFrame* frame_ = nullptr;
};

}  // namespace XSI
