#pragma once

#include "basepool/cbarray.h"
#include "zq3dview/zqsceneobject.h"

// A scene object that holds others: bounds, drawing and releasing go to every child in order.
class ZQ3DVIEW_API ZqGroupObject : public ZqSceneObject
{
public:
    explicit ZqGroupObject(const CString& name = CString());
    ~ZqGroupObject() override;

    // Appends child (not null, not in another group: CbExceptionPreconditionViolation).
    void Append(const CbSmartPointer<ZqSceneObject>& child);

    void ExtendBounds(ZqBoundingBox3f& box) const override;
    void Draw(const ZqDrawContext& context) override;
    void ReleaseDeviceResources() override;
    unsigned int GetChildCount() const override { return m_children.GetCount(); }
    ZqSceneObject* GetChild(unsigned int index) const override { return m_children[index].Get(); }

private:
    CbArray<CbSmartPointer<ZqSceneObject>> m_children;
};
