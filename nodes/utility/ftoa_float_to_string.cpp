// Quillix_ftoa: each element's float, or array of floats, as text in "%g" form: "0.5",
// "1e+020", an array as "<0.25,inf>", an empty one as "0".
#include "nodes/utility/to_string_evaluation.h"

using namespace XSI;
using namespace quillix::plugin;
using namespace quillix::utility;

QUILLIX_LIST_TEXT_NODE(ftoa, float, siICENodeDataFloat, DefaultFloat(0.0f), InputInstances::First,
                       BatchEnd::AllElements)
