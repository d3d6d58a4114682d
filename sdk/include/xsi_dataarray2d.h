#pragma once
#include <xsi_dataarray2D.h>
