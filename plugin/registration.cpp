#include "plugin/registration.h"

#include <xsi_application.h>
#include <xsi_factory.h>
#include <xsi_icenodedef.h>
#include <xsi_value.h>

namespace quillix::plugin {

namespace {

XSI::CValue ToValue(const DefaultValue& d) {
  switch (d.kind) {
    case DefaultValue::Kind::Bool:
      return XSI::CValue(d.number != 0.0);
    case DefaultValue::Kind::Int:
      return XSI::CValue(static_cast<XSI::LONG>(d.number));
    case DefaultValue::Kind::Float:
      return XSI::CValue(static_cast<float>(d.number));
    case DefaultValue::Kind::Double:
      return XSI::CValue(d.number);
    case DefaultValue::Kind::String:
      return XSI::CValue(XSI::CString(d.text));
    case DefaultValue::Kind::Vector3Zero:
      return XSI::CValue(XSI::MATH::CVector3f(0.0f, 0.0f, 0.0f));
    case DefaultValue::Kind::Matrix44Zero: {
      XSI::MATH::CMatrix4f zero;
      for (short r = 0; r < 4; ++r)
        for (short c = 0; c < 4; ++c) zero.SetValue(r, c, 0.0f);
      return XSI::CValue(zero);
    }
    case DefaultValue::Kind::None:
      break;
  }
  return XSI::CValue();
}

}  // namespace

XSI::CStatus RegisterNode(XSI::PluginRegistrar& registrar, const NodeDef& node) {
  XSI::Factory factory = XSI::Application().GetFactory();
  XSI::ICENodeDef definition = factory.CreateICENodeDef(node.name, L"");

  definition.PutThreadingModel(static_cast<XSI::siICENodeThreadingModel>(node.threadingModel))
      .AssertSucceeded();
  definition.AddPortGroup(kGroupInputs, node.groupMin, node.groupMax, L"Inputs").AssertSucceeded();
  for (const PortDef& p : node.ports) {
    if (p.direction != PortDirection::In) continue;
    definition
        .AddInputPort(p.id, kGroupInputs, p.dataTypes, p.structures, p.contexts, p.displayName,
                      p.scriptName, ToValue(p.defaultValue), p.typeLink, p.structureLink,
                      p.contextLink)
        .AssertSucceeded();
  }
  for (const PortDef& p : node.ports) {
    if (p.direction != PortDirection::Out) continue;
    definition
        .AddOutputPort(p.id, p.dataTypes, p.structures, p.contexts, p.displayName, p.scriptName,
                       p.typeLink, p.structureLink, p.contextLink)
        .AssertSucceeded();
  }
  // Whatever the registrar answers, one node's failure must not stop the others.
  registrar.RegisterICENode(definition);
  return XSI::CStatus::OK;
}

}  // namespace quillix::plugin
