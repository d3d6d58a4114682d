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

class CBaseDataArray2D {
 public:
  explicit CBaseDataArray2D(siICENodeDataType type) : m_type(type) {}
  CBaseDataArray2D(const CBaseDataArray2D&) = delete;
  CBaseDataArray2D& operator=(const CBaseDataArray2D&) = delete;

  ULONG GetCount() const { return m_count; }
  bool IsConstant() const { return m_constant; }
  siICENodeDataType GetDataType() const { return m_type; }

 protected:
  friend class ICENodeContext;
  ICENodeContext* m_context = nullptr;
  siICENodeDataType m_type;
  void* m_buffer = nullptr;
  ULONG m_count = 0;
  bool m_constant = false;
  bool m_output = false;
};

template <class T>
class CDataArray2D : public CBaseDataArray2D {
 public:
  class Accessor {
   public:
    Accessor() = default;
    Accessor(T* data, ULONG count) : m_data(data), m_count(count) {}
    ULONG GetCount() const { return m_count; }
    const T& operator[](ULONG index) const {
      assert(index < m_count);
      return m_data[index];
    }
    T& operator[](ULONG index) {
      assert(index < m_count);
      return m_data[index];
    }
    const T* GetData() const { return m_data; }
    T* GetData() { return m_data; }

   private:
    T* m_data = nullptr;
    ULONG m_count = 0;
  };

  CDataArray2D() : CBaseDataArray2D(CDataTypeOf<T>::value) {}
  CDataArray2D(ICENodeContext& context, ULONG portID, ULONG instance = 0)
      : CBaseDataArray2D(CDataTypeOf<T>::value) {
    context.AcquireInputDataArray2D(*this, portID, instance);
  }
  explicit CDataArray2D(ICENodeContext& context) : CBaseDataArray2D(CDataTypeOf<T>::value) {
    context.AcquireOutputDataArray2D(*this);
  }
  ~CDataArray2D() {
    if (m_context != nullptr) m_context->ReleaseDataArray(*this);
  }
  CStatus CopyFrom(ICENodeContext& context, ULONG portID, ULONG instance = 0) {
    if (m_context != nullptr) m_context->ReleaseDataArray(*this);
    return context.CopyFromInputDataArray2D(*this, portID, instance);
  }

  // Element `index`'s array (the shared one when the input is constant).
  Accessor operator[](ULONG index) const {
    const void* data = nullptr;
    ULONG count = 0;
    if (m_context != nullptr) m_context->GetSubArray(*this, index, data, count);
    return Accessor(static_cast<T*>(const_cast<void*>(data)), count);
  }
  // Sizes element `index`'s output array to `count` entries and gives access to them.
  Accessor Resize(ULONG index, ULONG count) {
    void* data = nullptr;
    ULONG size = 0;
    if (m_context != nullptr) m_context->ResizeSubArray(*this, index, count, data, size);
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
        : m_owner(owner), m_index(index), m_count(count) {}
    ULONG GetCount() const { return m_count; }
    CString operator[](ULONG subIndex) const {
      const wchar_t* text = nullptr;
      ULONG length = 0;
      GetData(subIndex, &text, length);
      return text ? CString(text, length) : CString();
    }
    void GetData(ULONG subIndex, const wchar_t** text, ULONG& length) const {
      *text = nullptr;
      length = 0;
      if (m_owner && m_owner->m_context && subIndex < m_count)
        m_owner->m_context->GetStringData2D(*m_owner, m_index, subIndex, *text, length);
    }
    void SetData(ULONG subIndex, const wchar_t* text, ULONG length) {
      if (m_owner && m_owner->m_context && subIndex < m_count)
        m_owner->m_context->SetStringData2D(const_cast<CDataArray2D&>(*m_owner), m_index,
                                            subIndex, text, length);
    }
    void SetData(ULONG subIndex, const CString& text) {
      SetData(subIndex, text.GetWideString(), text.Length());
    }

   private:
    const CDataArray2D* m_owner = nullptr;
    ULONG m_index = 0;
    ULONG m_count = 0;
  };

  CDataArray2D() : CBaseDataArray2D(siICENodeDataString) {}
  CDataArray2D(ICENodeContext& context, ULONG portID, ULONG instance = 0)
      : CBaseDataArray2D(siICENodeDataString) {
    context.AcquireInputDataArray2D(*this, portID, instance);
  }
  explicit CDataArray2D(ICENodeContext& context) : CBaseDataArray2D(siICENodeDataString) {
    context.AcquireOutputDataArray2D(*this);
  }
  ~CDataArray2D() {
    if (m_context != nullptr) m_context->ReleaseDataArray(*this);
  }

  Accessor operator[](ULONG index) const {
    const void* data = nullptr;
    ULONG count = 0;
    if (m_context != nullptr) m_context->GetSubArray(*this, index, data, count);
    return Accessor(this, index, count);
  }
  Accessor Resize(ULONG index, ULONG count) {
    void* data = nullptr;
    ULONG size = 0;
    if (m_context != nullptr) m_context->ResizeSubArray(*this, index, count, data, size);
    return Accessor(this, index, size);
  }
};

typedef CDataArray2D<bool> CDataArray2DBool;
typedef CDataArray2D<LONG> CDataArray2DLong;
typedef CDataArray2D<float> CDataArray2DFloat;
typedef CDataArray2D<MATH::CVector2f> CDataArray2DVector2f;
typedef CDataArray2D<MATH::CVector3f> CDataArray2DVector3f;
typedef CDataArray2D<MATH::CVector4f> CDataArray2DVector4f;
typedef CDataArray2D<MATH::CQuaternionf> CDataArray2DQuaternionf;
typedef CDataArray2D<MATH::CMatrix3f> CDataArray2DMatrix3f;
typedef CDataArray2D<MATH::CMatrix4f> CDataArray2DMatrix4f;
typedef CDataArray2D<MATH::CColor4f> CDataArray2DColor4f;
typedef CDataArray2D<MATH::CRotationf> CDataArray2DRotationf;
typedef CDataArray2D<CShape> CDataArray2DShape;
typedef CDataArray2D<CString> CDataArray2DString;

}  // namespace XSI
