// Quillix_itoa2: the integers of every "Input" instance of an element as text, the instances'
// renderings joined with "," ("<1,2>,-3").
#include "nodes/utility/to_string_evaluation.h"

using namespace XSI;
using namespace quillix::plugin;
using namespace quillix::utility;

QUILLIX_LIST_TEXT_NODE(itoa2, LONG, siICENodeDataLong, DefaultInt(0), InputInstances::All,
                       BatchEnd::AllElements)
