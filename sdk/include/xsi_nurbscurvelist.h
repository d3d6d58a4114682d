// NurbsCurveList: a geometry of one or more NURBS curves.
#pragma once

#include <xsi_geometry.h>
#include <xsi_nurbscurve.h>

namespace XSI {

/// The sub-curves of a curve list; each entry binds as a NurbsCurve.
class CNurbsCurveRefArray : public CRefArray {
 public:
  CNurbsCurveRefArray() = default;
};

class NurbsCurveList : public Geometry {
 public:
  NurbsCurveList() = default;
  /// Binds to `ref` when it refers to a curve list; otherwise the list is invalid.
  explicit NurbsCurveList(const CRef& ref);

  CNurbsCurveRefArray GetCurves() const;
};

}  // namespace XSI
