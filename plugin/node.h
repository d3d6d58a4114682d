// What every node binding starts from: the host's node context, data arrays, index sets,
// registrar and status, and the frame's guarded callbacks, port tables and port queries. A
// binding includes this one header and then only what is particular to it.
#pragma once

#include <xsi_dataarray.h>
#include <xsi_dataarray2D.h>
#include <xsi_icenodecontext.h>
#include <xsi_indexset.h>
#include <xsi_pluginregistrar.h>
#include <xsi_status.h>

#include "plugin/callback_guard.h"
#include "plugin/evaluation.h"
#include "plugin/registration.h"
