// Quillix_nan: whether each single float is NaN, positive infinity or negative infinity, as
// booleans, in the singleton or per-point context. A NaN answers true on "Positive INF" as well
// as on "IsNaN", as this node has always done.
#include "nodes/utility/float_class_evaluation.h"

using namespace XSI;
using quillix::FloatTest;

QUILLIX_FLOAT_CLASS_NODE(nan, bool, FloatTest::PositiveInfinityOrNaN, siICENodeStructureSingle,
                         siICENodeContextSingletonOrComponent0D)
