// Quillix_nan2: whether each float, single or in an array, is NaN, positive infinity or
// negative infinity, as integers 1 or 0 in any context. A NaN is reported on "IsNaN" only, so
// that a count of broken values counts it once.
#include "nodes/utility/float_class_evaluation.h"

using namespace XSI;
using quillix::FloatTest;

QUILLIX_FLOAT_CLASS_NODE(nan2, LONG, FloatTest::PositiveInfinity, siICENodeStructureAny,
                         siICENodeContextAny)
