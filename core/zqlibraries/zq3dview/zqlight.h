#pragma once

#include "basepool/cbrefcounted.h"
#include "basepool/cbvector3.h"
#include "zqbase/zqcolorrgba.h"

// A light source: its kind, its direction (the way the light travels) and position, its colours
// and flags. Held by a ZqLightObject in the scene graph; the effects read it through the scene's
// draw context.
//
// With eLF_CameraFrame the direction and position are given in the camera's frame, x to the right,
// y up and z forward into the picture, so the light moves with the camera: direction (0, 0, 1) is
// a headlight that shines from the eye into the scene whatever the view. Without it they are world
// coordinates.
class ZqLight : public virtual CbRefCounted
{
public:
    enum EKind
    {
        eK_Directional = 0, // parallel light along the direction; the position is not used
    };
    enum EFlags : unsigned int
    {
        eLF_Enabled = 1,
        eLF_CameraFrame = 2,
    };

    EKind kind = eK_Directional;
    unsigned int flags = eLF_Enabled;
    CbVector3f direction{0, 0, 1};
    CbVector3f position{0, 0, 0};
    ZqColorRGBA ambient = ZqColorRGBA::White;
    ZqColorRGBA diffuse = ZqColorRGBA::White;
    ZqColorRGBA specular = ZqColorRGBA::White;

    bool IsEnabled() const { return (flags & eLF_Enabled) != 0; }
};
