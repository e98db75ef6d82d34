#pragma once

#include "basepool/cbsmartpointer.h"
#include "basepool/inoncopyable.h"
#include "zqinteraction/tools/ccamera.h"
#include "zqinteraction/zqinteraction_export.h"

#include <string>
#include <vector>

namespace Tools
{
// The interactive scene the tools work on: a camera and the scene objects, found by name. Slots
// receive it with every change. Used on the dispatcher's thread only.
class ZQINTERACTION_API CScene : private INonCopyable
{
public:
    CScene();
    ~CScene();

    CCamera& GetCamera() { return *m_camera; }
    const CCamera& GetCamera() const { return *m_camera; }

    // Adds object; throws CbExceptionPreconditionViolation when the name is taken (by the camera, too).
    void AddObject(CbSmartPointer<CSceneObject> object);
    // The object of that name (the camera is "Camera"), or null.
    CSceneObject* FindObject(const std::string& name) const;
    unsigned int GetObjectCount() const { return static_cast<unsigned int>(m_objects.size()); }

private:
    CbSmartPointer<CCamera> m_camera;
    std::vector<CbSmartPointer<CSceneObject>> m_objects;
};
} // namespace Tools
