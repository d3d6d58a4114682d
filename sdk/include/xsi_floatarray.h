#pragma once
#include <xsi_plainarray.h>
