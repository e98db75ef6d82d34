#pragma once

#include "basepool/cbsmartpointer.h"
#include "zq3dview/zqlight.h"
#include "zq3dview/zqsceneobject.h"

// The scene-graph node of a light: it owns a ZqLight and draws nothing; the scene collects the
// lights of its graph before each frame.
class ZQ3DVIEW_API ZqLightObject : public ZqSceneObject
{
public:
    ZqLightObject(const CString& name, const CbSmartPointer<ZqLight>& light)
        : ZqSceneObject(name), m_light(light)
    {
    }

    ZqLight* GetLight() const { return m_light.Get(); }
    void SetLight(const CbSmartPointer<ZqLight>& light) { m_light = light; }

private:
    CbSmartPointer<ZqLight> m_light;
};
