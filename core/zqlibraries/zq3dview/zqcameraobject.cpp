#include "zq3dview/zqcameraobject.h"

#include "basepool/cbexception.h"

ZqCameraObject::ZqCameraObject(const CString& name) : ZqSceneObject(name) {}

void ZqCameraObject::SetClipPlanes(float nearPlane, float farPlane)
{
    if (!(nearPlane > 0.0f && farPlane > nearPlane))
        CB_THROW(CbExceptionPreconditionViolation, "ZqCameraObject::SetClipPlanes",
                 "need 0 < near < far, got " + std::to_string(nearPlane) + " and " +
                     std::to_string(farPlane));
    m_near = nearPlane;
    m_far = farPlane;
}

ZqMatrix4f ZqCameraObject::GetViewMatrix() const
{
    return ZqMatrix4f::LookAlong(m_position, m_direction, m_up);
}

ZqMatrix4f ZqCameraObject::GetProjectionMatrix(float aspect) const
{
    return ZqMatrix4f::Perspective(m_fieldOfView, aspect, m_near, m_far);
}
