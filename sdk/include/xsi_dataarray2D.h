// Typed two-dimensional ICE data arrays: one array per element.
//
//   CDataArray2DLong values(context, kValuePort);
//   CDataArray2DLong::Accessor in = values[i];          // read element i's array
//   CDataArray2DLong result(context);
//   CDataArray2DLong::Accessor out = result.Resize(i, in.GetCount());
#pragma once

#include <cassert>

#include <xsi_dataarray.h>
#include <xsi_decl.h>
#include <xsi_icenodecontext.h>
#include <xsi_mathf.h>
#include <xsi_string.h>

namespace XSI {

class CBaseDataArray2D : public CDataArrayState {
 public:
  using CDataArrayState::CDataArrayState;

 protected:
  friend class ICENodeContext;
  // Input `portID` (instance `instance` of a group port), or the output of the evaluated port.
  CBaseDataArray2D(siICENodeDataType type, ICENodeContext& context, ULONG portID, ULONG instance)
      : CDataArrayState(type) {
    context.AcquireInputDataArray2D(*this, portID, instance);
  }
  CBaseDataArray2D(siICENodeDataType type, ICENodeContext& context) : CDataArrayState(type) {
    context.AcquireOutputDataArray2D(*this);
  }
  ~CBaseDataArray2D() { Release(); }
  void Release() {
    if (context_ != nullptr) context_->ReleaseDataArray(*this);
  }
};

template <class T>
class CDataArray2D : public CBaseDataArray2D {
 public:
  class Accessor {
   public:
    Accessor() = default;
    Accessor(T* data, ULONG count) : data_(data), count_(count) {}
    ULONG GetCount() const { return count_; }
    const T& operator[](ULONG index) const {
      assert(index < count_);
      return data_[index];
    }
    T& operator[](ULONG index) {
      assert(index < count_);
      return data_[index];
    }
    const T* GetData() const { return data_; }
    T* GetData() { return data_; }

   private:
    T* data_ = nullptr;
    ULONG count_ = 0;
  };

  CDataArray2D() : CBaseDataArray2D(CDataTypeOf<T>::value) {}
  CDataArray2D(ICENodeContext& context, ULONG portID, ULONG instance = 0)
      : CBaseDataArray2D(CDataTypeOf<T>::value, context, portID, instance) {}
  explicit CDataArray2D(ICENodeContext& context)
      : CBaseDataArray2D(CDataTypeOf<T>::value, context) {}

  // Element `index`'s array (the shared one when the input is constant).
  Accessor operator[](ULONG index) const {
    const void* data = nullptr;
    ULONG count = 0;
    if (context_ != nullptr) context_->GetSubArray(*this, index, data, count);
    return Accessor(static_cast<T*>(const_cast<void*>(data)), count);
  }
  // Sizes element `index`'s output array to `count` entries and gives access to them.
  Accessor Resize(ULONG index, ULONG count) {
    void* data = nullptr;
    ULONG size = 0;
    if (context_ != nullptr) context_->ResizeSubArray(*this, index, count, data, size);
    return Accessor(static_cast<T*>(data), size);
  }
};

template <>
class CDataArray2D<CString> : public CBaseDataArray2D {
 public:
  class Accessor {
   public:
    Accessor() = default;
    Accessor(const CDataArray2D* owner, ULONG index, ULONG count)
        : owner_(owner), index_(index), count_(count) {}
    ULONG GetCount() const { return count_; }
    CString operator[](ULONG subIndex) const {
      const wchar_t* text = nullptr;
      ULONG length = 0;
      GetData(subIndex, &text, length);
      return text ? CString(text, length) : CString();
    }
    void GetData(ULONG subIndex, const wchar_t** text, ULONG& length) const {
      *text = nullptr;
      length = 0;
      if (owner_ && owner_->context_ && subIndex < count_)
        owner_->context_->GetStringData2D(*owner_, index_, subIndex, *text, length);
    }
    void SetData(ULONG subIndex, const wchar_t* text, ULONG length) {
      if (owner_ && owner_->context_ && subIndex < count_)
        owner_->context_->SetStringData2D(const_cast<CDataArray2D&>(*owner_), index_, subIndex,
                                          text, length);
    }
    void SetData(ULONG subIndex, const CString& text) {
      SetData(subIndex, text.GetWideString(), text.Length());
    }

   private:
    const CDataArray2D* owner_ = nullptr;
    ULONG index_ = 0;
    ULONG count_ = 0;
  };

  CDataArray2D() : CBaseDataArray2D(siICENodeDataString) {}
  CDataArray2D(ICENodeContext& context, ULONG portID, ULONG instance = 0)
      : CBaseDataArray2D(siICENodeDataString, context, portID, instance) {}
  explicit CDataArray2D(ICENodeContext& context) : CBaseDataArray2D(siICENodeDataString, context) {}

  Accessor operator[](ULONG index) const {
    const void* data = nullptr;
    ULONG count = 0;
    if (context_ != nullptr) context_->GetSubArray(*this, index, data, count);
    return Accessor(this, index, count);
  }
  Accessor Resize(ULONG index, ULONG count) {
    void* data = nullptr;
    ULONG size = 0;
    if (context_ != nullptr) context_->ResizeSubArray(*this, index, count, data, size);
    return Accessor(this, index, size);
  }
};

typedef CDataArray2D<bool> CDataArray2DBool;
typedef CDataArray2D<LONG> CDataArray2DLong;
typedef CDataArray2D<float> CDataArray2DFloat;
typedef CDataArray2D<MATH::CVector3f> CDataArray2DVector3f;
typedef CDataArray2D<MATH::CMatrix4f> CDataArray2DMatrix4f;
typedef CDataArray2D<CString> CDataArray2DString;

}  // namespace XSI
