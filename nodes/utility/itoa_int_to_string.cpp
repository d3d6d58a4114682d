// Quillix_itoa: each element's integer, or array of integers, as text: "-12", an array as
// "<3,-12>", an empty one as "0".
#include "nodes/utility/to_string_evaluation.h"

using namespace XSI;
using namespace quillix::plugin;
using namespace quillix::utility;

QUILLIX_LIST_TEXT_NODE(itoa, LONG, siICENodeDataLong, DefaultInt(0), InputInstances::First,
                       BatchEnd::AllElements)
