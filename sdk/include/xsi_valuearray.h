#pragma once
#include <xsi_value.h>
