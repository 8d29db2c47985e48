#ifndef IMGTUNE_IMGTUNE_H
#define IMGTUNE_IMGTUNE_H

#include <imgtune/awb_gain.h>
#include <imgtune/camera_state.h>
#include <imgtune/ccm.h>
#include <imgtune/ccm_types.h>
#include <imgtune/color.h>
#include <imgtune/color_types.h>
#include <imgtune/export.h>
#include <imgtune/matrix.h>

#endif
