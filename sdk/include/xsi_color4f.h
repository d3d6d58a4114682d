#pragma once
#include <xsi_mathf.h>
