#pragma once
#include <xsi_geometry.h>
