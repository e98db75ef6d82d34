#pragma once

#include "basepool/cbvector3.h"
#include "zqinteraction/tools/csceneobject.h"

namespace Tools
{
// The viewer of the interactive scene: where the eye is and where it looks. Part of the
// application state that a recorded session keeps with every change, so a replay sees the scene
// from where the user saw it. Used on the dispatcher's thread only.
class ZQINTERACTION_API CCamera : public CSceneObject
{
public:
    CCamera();

    void SetView(const CbVector3f& eye, const CbVector3f& target);
    const CbVector3f& GetEye() const { return m_eye; }
    const CbVector3f& GetTarget() const { return m_target; }

private:
    CbVector3f m_eye{0.0f, 0.0f, 1.0f};
    CbVector3f m_target{0.0f, 0.0f, 0.0f};
};
} // namespace Tools
