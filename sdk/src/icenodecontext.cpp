// Context, ICENodeContext and CICEPortState over the host's evaluation frame.
#include <xsi_context.h>
#include <xsi_dataarray.h>
#include <xsi_dataarray2D.h>
#include <xsi_icenodecontext.h>
#include <xsi_iceportstate.h>
#include <xsi_indexset.h>

#include <xsihost/object.h>
#include "eval_frame.h"

namespace XSI {

using host_detail::EvalFrame;
using host_detail::ResolvedInput;
using xsihost::ContextObject;
using xsihost::PortValues;

namespace {

ContextObject* contextObject(const CRef& ref) {
  return dynamic_cast<ContextObject*>(ref.GetObjectHandle().get());
}

}  // namespace

CValue Context::GetUserData() const {
  ContextObject* c = contextObject(ref_);
  return c && c->userData ? *c->userData : CValue();
}
CStatus Context::PutUserData(const CValue& data) {
  ContextObject* c = contextObject(ref_);
  if (!c || !c->userData) return CStatus::Fail;
  *c->userData = data;
  return CStatus::OK;
}
CRef Context::GetSource() const {
  ContextObject* c = contextObject(ref_);
  return c ? c->source : CRef();
}
CValue Context::GetAttribute(const CString& name) const {
  ContextObject* c = contextObject(ref_);
  if (!c) return CValue();
  auto it = c->attributes.find(name.Wide());
  return it == c->attributes.end() ? CValue() : it->second;
}
CStatus Context::PutAttribute(const CString& name, const CValue& value) {
  ContextObject* c = contextObject(ref_);
  if (!c) return CStatus::Fail;
  c->attributes[name.Wide()] = value;
  return CStatus::OK;
}

ICENodeContext::ICENodeContext(const CRef& ref) : Context(ref) {}

ULONG ICENodeContext::GetEvaluatedOutputPortID() const { return frame_ ? frame_->outputPort : 0; }

CStatus ICENodeContext::GetPortInfo(ULONG portID, siICENodeDataType& type,
                                    siICENodeStructureType& structure,
                                    siICENodeContextType& context, ULONG instance) const {
  if (!frame_) return CStatus::Fail;
  const ResolvedInput* info = frame_->FindInput(portID, instance);
  if (info == nullptr && frame_->outputs) {
    auto it = frame_->outputs->find(portID);
    if (it != frame_->outputs->end()) info = &it->second;
  }
  if (info == nullptr || info->failsInfo) return CStatus::Fail;
  type = static_cast<siICENodeDataType>(info->type);
  structure = static_cast<siICENodeStructureType>(info->structure);
  context = static_cast<siICENodeContextType>(info->context);
  return CStatus::OK;
}

CStatus ICENodeContext::GetGroupInstanceCount(ULONG /*groupID*/, ULONG& count) const {
  if (!frame_) return CStatus::Fail;
  count = frame_->groupInstances;
  return CStatus::OK;
}

CTime ICENodeContext::GetTime() const { return CTime(frame_ ? frame_->time : 1.0); }

CStatus ICENodeContext::AcquireIndexSet(CIndexSet& indexSet) const {
  if (!frame_) return CStatus::Fail;
  indexSet.SetIndices(frame_->indices);
  return CStatus::OK;
}
CStatus ICENodeContext::ReleaseIndexSet(CIndexSet& indexSet) const {
  indexSet.SetIndices(nullptr);
  return CStatus::OK;
}

namespace {

// An input is served as a typed array only when its resolved type and structure match the
// array's; otherwise the array stays empty and the call fails.
const PortValues* matchingInput(const EvalFrame* frame, ULONG port, ULONG instance,
                                siICENodeDataType type, bool array) {
  if (!frame) return nullptr;
  const ResolvedInput* info = frame->FindInput(port, instance);
  if (!info || !info->values) return nullptr;
  if (info->values->type != ULONG(type) || info->values->array != array) return nullptr;
  return info->values;
}

bool matchingOutput(const EvalFrame* frame, siICENodeDataType type, bool array) {
  return frame && frame->output && frame->output->type == ULONG(type) &&
         frame->output->array == array;
}

}  // namespace

CStatus ICENodeContext::AcquireInput(CDataArrayState& a, ULONG portID, ULONG instance,
                                     bool twoDimensional) {
  a.context_ = this;
  a.output_ = false;
  const PortValues* values = matchingInput(frame_, portID, instance, a.type_, twoDimensional);
  if (!values) return CStatus::Fail;
  a.buffer_ = const_cast<PortValues*>(values);
  a.data_ = const_cast<std::byte*>(values->flat.data());
  a.count_ = values->count;
  a.constant_ = values->constant;
  return CStatus::OK;
}

CStatus ICENodeContext::CopyInput(CDataArrayState& a, ULONG portID, ULONG instance,
                                  bool twoDimensional) {
  const CStatus status = AcquireInput(a, portID, instance, twoDimensional);
  if (status != CStatus::OK) return status;
  // The copy lives as long as the evaluation frame, like the host's own buffers.
  frame_->copies.push_back(std::make_unique<PortValues>(*static_cast<PortValues*>(a.buffer_)));
  a.buffer_ = frame_->copies.back().get();
  a.data_ = frame_->copies.back()->flat.data();
  return CStatus::OK;
}

CStatus ICENodeContext::AcquireInputDataArray(CBaseDataArray& a, ULONG portID, ULONG instance) {
  return AcquireInput(a, portID, instance, false);
}

CStatus ICENodeContext::CopyFromInputDataArray(CBaseDataArray& a, ULONG portID, ULONG instance) {
  return CopyInput(a, portID, instance, false);
}

CStatus ICENodeContext::AcquireInputDataArray2D(CBaseDataArray2D& a, ULONG portID, ULONG instance) {
  return AcquireInput(a, portID, instance, true);
}

CStatus ICENodeContext::CopyFromInputDataArray2D(CBaseDataArray2D& a, ULONG portID,
                                                 ULONG instance) {
  return CopyInput(a, portID, instance, true);
}

CStatus ICENodeContext::AcquireOutputDataArray(CBaseDataArray& a, OutputWrites writes) {
  a.context_ = this;
  a.output_ = true;
  if (!matchingOutput(frame_, a.type_, false)) return CStatus::Fail;
  a.buffer_ = frame_->output;
  a.data_ = frame_->output->flat.data();
  a.count_ = frame_->output->count;
  // The batch's values are filled once, before the node's first write; a promise to write the
  // whole batch needs no fill and outlasts any later acquisition.
  if (!frame_->outputWrites && writes == OutputWrites::Some && frame_->fillUnwritten)
    frame_->fillUnwritten(frame_->output->flat.data(), *frame_->indices);
  if (frame_->outputWrites != OutputWrites::WholeBatch) frame_->outputWrites = writes;
  return CStatus::OK;
}

CStatus ICENodeContext::AcquireOutputDataArray2D(CBaseDataArray2D& a) {
  a.context_ = this;
  a.output_ = true;
  if (!matchingOutput(frame_, a.type_, true)) return CStatus::Fail;
  a.buffer_ = frame_->output;
  a.count_ = frame_->output->count;
  return CStatus::OK;
}

CStatus ICENodeContext::ReleaseDataArray(CDataArrayState& a) {
  a.context_ = nullptr;
  a.buffer_ = nullptr;
  a.data_ = nullptr;
  a.count_ = 0;
  return CStatus::OK;
}

namespace {

// Item index of element `index`: the one shared item of a constant array, else the element;
// out-of-range indices are refused.
bool itemIndex(const PortValues* values, ULONG index, ULONG& item) {
  if (!values || values->count == 0) return false;
  item = values->constant ? 0 : index;
  return item < values->count;
}

}  // namespace

CStatus ICENodeContext::GetSubArray(const CBaseDataArray2D& a, ULONG index, const void*& data,
                                    ULONG& count) const {
  data = nullptr;
  count = 0;
  const auto* values = static_cast<const PortValues*>(a.buffer_);
  ULONG item = 0;
  if (!itemIndex(values, index, item)) return CStatus::Fail;
  if (values->IsString()) {
    count = static_cast<ULONG>(values->stringArrays[item].size());
    return CStatus::OK;
  }
  const std::size_t size = xsihost::ValueSize(values->type);
  data = values->arrays[item].data();
  count = static_cast<ULONG>(values->arrays[item].size() / size);
  return CStatus::OK;
}

CStatus ICENodeContext::ResizeSubArray(CBaseDataArray2D& a, ULONG index, ULONG count, void*& data,
                                       ULONG& outCount) {
  data = nullptr;
  outCount = 0;
  auto* values = static_cast<PortValues*>(a.buffer_);
  if (!a.output_ || !values || index >= values->count) return CStatus::Fail;
  // A negative count arrives here as a huge unsigned value; the host refuses it and leaves
  // the element's array empty (and written).
  constexpr ULONG kMaxEntries = 1u << 28;
  values->written[index] = 1;
  if (values->IsString()) {
    values->stringArrays[index].assign(count <= kMaxEntries ? count : 0, std::wstring());
  } else {
    values->arrays[index].assign(
        count <= kMaxEntries ? count * xsihost::ValueSize(values->type) : 0, std::byte{0});
    data = values->arrays[index].data();
  }
  if (count > kMaxEntries) return CStatus::InvalidArgument;
  outCount = count;
  return CStatus::OK;
}

CStatus ICENodeContext::GetStringData(const CBaseDataArray& a, ULONG index, const wchar_t*& text,
                                      ULONG& length) const {
  text = nullptr;
  length = 0;
  const auto* values = static_cast<const PortValues*>(a.buffer_);
  ULONG item = 0;
  if (!itemIndex(values, index, item) || !values->IsString() || values->array) return CStatus::Fail;
  text = values->strings[item].c_str();
  length = static_cast<ULONG>(values->strings[item].size());
  return CStatus::OK;
}

CStatus ICENodeContext::SetStringData(CBaseDataArray& a, ULONG index, const wchar_t* text,
                                      ULONG length) {
  auto* values = static_cast<PortValues*>(a.buffer_);
  if (!a.output_ || !values || !values->IsString() || values->array || index >= values->count)
    return CStatus::Fail;
  values->strings[index].assign(text ? text : L"", text ? length : 0);
  values->written[index] = 1;
  return CStatus::OK;
}

CStatus ICENodeContext::GetStringData2D(const CBaseDataArray2D& a, ULONG index, ULONG subIndex,
                                        const wchar_t*& text, ULONG& length) const {
  text = nullptr;
  length = 0;
  const auto* values = static_cast<const PortValues*>(a.buffer_);
  ULONG item = 0;
  if (!itemIndex(values, index, item) || !values->IsString() || !values->array ||
      subIndex >= values->stringArrays[item].size())
    return CStatus::Fail;
  text = values->stringArrays[item][subIndex].c_str();
  length = static_cast<ULONG>(values->stringArrays[item][subIndex].size());
  return CStatus::OK;
}

CStatus ICENodeContext::SetStringData2D(CBaseDataArray2D& a, ULONG index, ULONG subIndex,
                                        const wchar_t* text, ULONG length) {
  auto* values = static_cast<PortValues*>(a.buffer_);
  if (!a.output_ || !values || !values->IsString() || !values->array || index >= values->count ||
      subIndex >= values->stringArrays[index].size())
    return CStatus::Fail;
  values->stringArrays[index][subIndex].assign(text ? text : L"", text ? length : 0);
  return CStatus::OK;
}

bool CICEPortState::IsDirty(int /*stateMask*/) const {
  EvalFrame* frame = context_->GetFrame();
  return frame && frame->instance ? frame->instance->IsDirty(portID_, instance_) : false;
}

CStatus CICEPortState::ClearState() {
  EvalFrame* frame = context_->GetFrame();
  if (!frame || !frame->instance) return CStatus::Fail;
  frame->instance->ClearState(portID_, instance_);
  return CStatus::OK;
}

}  // namespace XSI
