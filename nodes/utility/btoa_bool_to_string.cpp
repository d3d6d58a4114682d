// Quillix_btoa: each element's boolean, or array of booleans, as text: "1" or "0", an array
// as "<1,0,1>", an empty one as "0". Its batch ends right after an element whose input has at
// most one entry, as this node has always done.
#include "nodes/utility/to_string_evaluation.h"

using namespace XSI;
using namespace quillix::plugin;
using namespace quillix::utility;

QUILLIX_LIST_TEXT_NODE(btoa, bool, siICENodeDataBool, DefaultBool(false), InputInstances::First,
                       BatchEnd::AfterShortInput)
