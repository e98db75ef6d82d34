#include "zqinteraction/tools/cscene.h"

#include "basepool/cbexception.h"

namespace Tools
{
CSceneObject::CSceneObject(std::string name) : m_name(std::move(name)) {}
CSceneObject::~CSceneObject() = default;

CCamera::CCamera() : CSceneObject("Camera") {}

void CCamera::SetView(const CbVector3f& eye, const CbVector3f& target)
{
    m_eye = eye;
    m_target = target;
}

CScene::CScene() : m_camera(CbMakeSmart<CCamera>())
{
    m_objects.push_back(m_camera);
}

CScene::~CScene() = default;

void CScene::AddObject(CbSmartPointer<CSceneObject> object)
{
    if (!object || FindObject(object->GetName()))
        CB_THROW(CbExceptionPreconditionViolation, "Tools::CScene::AddObject",
                 object ? "a scene object named '" + object->GetName() + "' exists already" : "no object");
    m_objects.push_back(std::move(object));
}

CSceneObject* CScene::FindObject(const std::string& name) const
{
    for (const auto& object : m_objects)
        if (object->GetName() == name)
            return object.Get();
    return nullptr;
}
} // namespace Tools
