// Quillix_btoa2: the booleans of every "Input" instance of an element as text, the instances'
// renderings joined with "," ("0,1,<1,1>").
#include "nodes/utility/to_string_evaluation.h"

using namespace XSI;
using namespace quillix::plugin;
using namespace quillix::utility;

QUILLIX_LIST_TEXT_NODE(btoa2, bool, siICENodeDataBool, DefaultBool(false), InputInstances::All,
                       BatchEnd::AllElements)
