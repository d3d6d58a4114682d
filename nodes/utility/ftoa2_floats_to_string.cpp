// Quillix_ftoa2: the floats of every "Input" instance of an element as text in "%g" form, the
// instances' renderings joined with ",".
#include "nodes/utility/to_string_evaluation.h"

using namespace XSI;
using namespace quillix::plugin;
using namespace quillix::utility;

QUILLIX_LIST_TEXT_NODE(ftoa2, float, siICENodeDataFloat, DefaultFloat(0.0f), InputInstances::All,
                       BatchEnd::AllElements)
