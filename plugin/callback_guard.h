// Keeps exceptions on the plug-in's side of the host boundary.
//
// Every callback the host calls by name is defined through one of these macros, so that none
// can let an exception escape into the host:
//
//   QUILLIX_EVALUATE(Quillix_divi) { ... uses `context` ... }
//   QUILLIX_NODE_CALLBACK(Quillix_fpom_Init, XSI::CRef&, in) { ... }
//   QUILLIX_COMMAND_CALLBACK(Quillix__FindMatchingObjects_Execute, XSI::CRef&, in) { ... }
#pragma once

#include <xsi_status.h>

namespace quillix::plugin {

// Runs `body` and returns its status; when it throws, returns `fallback` instead. The only
// exception a callback can meet is a failed allocation (strings, work buffers); the elements
// written so far stay and the rest stay unwritten, as for any other degenerate input.
template <class Body>
XSI::CStatus CallGuarded(Body&& body, XSI::CStatus fallback) noexcept {
  try {
    return body();
  } catch (...) {
    return fallback;
  }
}

}  // namespace quillix::plugin

// Defines the exported callback `name(ParamType param)` around the body that follows, which
// runs under CallGuarded with `fallback` as the answer to an exception.
#define QUILLIX_GUARDED_CALLBACK(name, ParamType, param, fallback)                           \
  static XSI::CStatus name##Guarded(ParamType param);                                        \
  XSIPLUGINCALLBACK XSI::CStatus name(ParamType param) {                                     \
    return ::quillix::plugin::CallGuarded([&]() { return name##Guarded(param); }, fallback); \
  }                                                                                          \
  static XSI::CStatus name##Guarded(ParamType param)

// Node callbacks report success whatever happens: a node has no failure to report.
#define QUILLIX_NODE_CALLBACK(name, ParamType, param) \
  QUILLIX_GUARDED_CALLBACK(name, ParamType, param, XSI::CStatus::OK)
#define QUILLIX_EVALUATE(node) QUILLIX_NODE_CALLBACK(node##_Evaluate, XSI::ICENodeContext&, context)
// A command that meets an exception has failed, as the host's general failure.
#define QUILLIX_COMMAND_CALLBACK(name, ParamType, param) \
  QUILLIX_GUARDED_CALLBACK(name, ParamType, param, XSI::CStatus::Fail)
