#pragma once

#include "basepool/cbvector3.h"
#include "zq3dview/graphics/idevice.h"
#include "zq3dview/zqmatrix4f.h"
#include "zqbase/zqcolorrgba.h"

// What a scene hands to every object it draws in one frame: the device, the camera's matrices and
// the enabled lights, already in view space (OpenGL's: eye at the origin looking along -z).
struct ZqDrawContext
{
    static constexpr unsigned int kMaxLights = 4;

    struct SLight
    {
        CbVector3f towardsLight; // unit direction from a surface to the light, view space
        ZqColorRGBA ambient;
        ZqColorRGBA diffuse;
        ZqColorRGBA specular;
    };

    Graphics::IDevice& device;
    ZqMatrix4f view;
    ZqMatrix4f projection;
    SLight lights[kMaxLights] = {};
    unsigned int lightCount = 0;
};
