// Typed one-dimensional ICE data arrays: one value per element.
//
//   CDataArrayLong value(context, kValuePort);   // input, possibly constant
//   CDataArrayLong result(context);              // output of the evaluated port
//   result[i] = value[i];                        // a constant input reads its one value
//
// A node that writes every element of its batch says so when it acquires the output,
//   CDataArrayLong result(context, OutputWrites::WholeBatch);
// and may then write through GetData() without the host checking each value.
#pragma once

#include <cassert>

#include <xsi_decl.h>
#include <xsi_icenodecontext.h>
#include <xsi_mathf.h>
#include <xsi_string.h>

namespace XSI {

// The data type bit of each element type: CDataTypeOf<T>::value.
template <class T>
struct CDataTypeOf;
template <siICENodeDataType kType>
struct CDataTypeIs {
  static constexpr siICENodeDataType value = kType;
};
template <>
struct CDataTypeOf<bool> : CDataTypeIs<siICENodeDataBool> {};
template <>
struct CDataTypeOf<LONG> : CDataTypeIs<siICENodeDataLong> {};
template <>
struct CDataTypeOf<float> : CDataTypeIs<siICENodeDataFloat> {};
template <>
struct CDataTypeOf<MATH::CVector2f> : CDataTypeIs<siICENodeDataVector2> {};
template <>
struct CDataTypeOf<MATH::CVector3f> : CDataTypeIs<siICENodeDataVector3> {};
template <>
struct CDataTypeOf<MATH::CVector4f> : CDataTypeIs<siICENodeDataVector4> {};
template <>
struct CDataTypeOf<MATH::CQuaternionf> : CDataTypeIs<siICENodeDataQuaternion> {};
template <>
struct CDataTypeOf<MATH::CMatrix3f> : CDataTypeIs<siICENodeDataMatrix33> {};
template <>
struct CDataTypeOf<MATH::CMatrix4f> : CDataTypeIs<siICENodeDataMatrix44> {};
template <>
struct CDataTypeOf<MATH::CColor4f> : CDataTypeIs<siICENodeDataColor4> {};
template <>
struct CDataTypeOf<MATH::CRotationf> : CDataTypeIs<siICENodeDataRotation> {};
template <>
struct CDataTypeOf<CShape> : CDataTypeIs<siICENodeDataShape> {};
template <>
struct CDataTypeOf<CString> : CDataTypeIs<siICENodeDataString> {};

// What one- and two-dimensional arrays share: the context they were acquired from (released when
// the array goes) and what the host told of the port's data.
class CDataArrayState {
 public:
  explicit CDataArrayState(siICENodeDataType type) : type_(type) {}
  CDataArrayState(const CDataArrayState&) = delete;
  CDataArrayState& operator=(const CDataArrayState&) = delete;

  ULONG GetCount() const { return count_; }
  bool IsConstant() const { return constant_; }
  siICENodeDataType GetDataType() const { return type_; }

 protected:
  friend class ICENodeContext;
  ICENodeContext* context_ = nullptr;
  siICENodeDataType type_;
  void* buffer_ = nullptr;  // host storage behind the array
  void* data_ = nullptr;    // contiguous values of a one-dimensional array (not for strings)
  ULONG count_ = 0;
  bool constant_ = false;
  bool output_ = false;
};

class CBaseDataArray : public CDataArrayState {
 public:
  using CDataArrayState::CDataArrayState;

 protected:
  friend class ICENodeContext;
  // Input `portID` (instance `instance` of a group port), or the output of the evaluated port.
  CBaseDataArray(siICENodeDataType type, ICENodeContext& context, ULONG portID, ULONG instance)
      : CDataArrayState(type) {
    context.AcquireInputDataArray(*this, portID, instance);
  }
  CBaseDataArray(siICENodeDataType type, ICENodeContext& context, OutputWrites writes)
      : CDataArrayState(type) {
    context.AcquireOutputDataArray(*this, writes);
  }
  ~CBaseDataArray() { Release(); }
  void Release() {
    if (context_ != nullptr) context_->ReleaseDataArray(*this);
  }
};

template <class T>
class CDataArray : public CBaseDataArray {
 public:
  CDataArray() : CBaseDataArray(CDataTypeOf<T>::value) {}
  CDataArray(ICENodeContext& context, ULONG portID, ULONG instance = 0)
      : CBaseDataArray(CDataTypeOf<T>::value, context, portID, instance) {}
  // Output of the evaluated port; `writes` as AcquireOutputDataArray takes it.
  explicit CDataArray(ICENodeContext& context, OutputWrites writes = OutputWrites::Some)
      : CBaseDataArray(CDataTypeOf<T>::value, context, writes) {}

  const T& operator[](ULONG index) const {
    assert(count_ > 0);
    return static_cast<const T*>(data_)[constant_ ? 0 : index];
  }
  T& operator[](ULONG index) {
    assert(count_ > 0);
    return static_cast<T*>(data_)[constant_ ? 0 : index];
  }
  // The values, indexed like operator[] (one value when constant); valid while GetCount() > 0.
  const T* GetData() const { return static_cast<const T*>(data_); }
  T* GetData() { return static_cast<T*>(data_); }
};

// Strings are held by the host and read or written whole, per element.
template <>
class CDataArray<CString> : public CBaseDataArray {
 public:
  CDataArray() : CBaseDataArray(siICENodeDataString) {}
  CDataArray(ICENodeContext& context, ULONG portID, ULONG instance = 0)
      : CBaseDataArray(siICENodeDataString, context, portID, instance) {}
  explicit CDataArray(ICENodeContext& context)
      : CBaseDataArray(siICENodeDataString, context, OutputWrites::Some) {}

  CString operator[](ULONG index) const {
    const wchar_t* text = nullptr;
    ULONG length = 0;
    GetData(index, &text, length);
    return text ? CString(text, length) : CString();
  }
  void GetData(ULONG index, const wchar_t** text, ULONG& length) const {
    *text = nullptr;
    length = 0;
    if (context_ != nullptr) context_->GetStringData(*this, index, *text, length);
  }
  void SetData(ULONG index, const wchar_t* text, ULONG length) {
    if (context_ != nullptr) context_->SetStringData(*this, index, text, length);
  }
  void SetData(ULONG index, const CString& text) {
    SetData(index, text.GetWideString(), text.Length());
  }
};

typedef CDataArray<bool> CDataArrayBool;
typedef CDataArray<LONG> CDataArrayLong;
typedef CDataArray<float> CDataArrayFloat;
typedef CDataArray<MATH::CVector3f> CDataArrayVector3f;
typedef CDataArray<CString> CDataArrayString;

}  // namespace XSI
