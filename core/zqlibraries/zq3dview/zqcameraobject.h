#pragma once

#include "zq3dview/zqmatrix4f.h"
#include "zq3dview/zqsceneobject.h"

// A perspective camera: where it is, which way it looks, which way is up, its vertical field of
// view and its clip planes. ZqD3DScene::LookAt places it; the scene draws through the active one.
class ZQ3DVIEW_API ZqCameraObject : public ZqSceneObject
{
public:
    // 30 degrees: long enough a lens that objects keep their proportions, short enough that the
    // depth of a framed object still shows.
    static constexpr float kDefaultFieldOfView = 0.5235987755982988f;

    explicit ZqCameraObject(const CString& name = CString());

    const CbVector3f& GetPosition() const { return m_position; }
    const CbVector3f& GetDirection() const { return m_direction; }
    const CbVector3f& GetUpVector() const { return m_up; }
    void SetPosition(const CbVector3f& position) { m_position = position; }
    // Unit vectors; LookAt makes up orthogonal to the direction.
    void SetDirection(const CbVector3f& direction) { m_direction = direction; }
    void SetUpVector(const CbVector3f& up) { m_up = up; }

    float GetFieldOfView() const { return m_fieldOfView; }
    void SetFieldOfView(float radians) { m_fieldOfView = radians; }
    float GetNearPlane() const { return m_near; }
    float GetFarPlane() const { return m_far; }
    void SetClipPlanes(float nearPlane, float farPlane);

    ZqMatrix4f GetViewMatrix() const;
    ZqMatrix4f GetProjectionMatrix(float aspect) const;

private:
    CbVector3f m_position{0, 0, 0};
    CbVector3f m_direction{0, 0, -1};
    CbVector3f m_up{0, 1, 0};
    float m_fieldOfView = kDefaultFieldOfView;
    float m_near = 0.1f;
    float m_far = 1000.0f;
};
