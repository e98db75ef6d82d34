#include "zq3dview/zqsceneobject.h"

ZqSceneObject::ZqSceneObject(const CString& name) : m_name(name) {}

ZqSceneObject::~ZqSceneObject() = default;

void ZqSceneObject::ExtendBounds(ZqBoundingBox3f&) const {}

void ZqSceneObject::Draw(const ZqDrawContext&) {}

void ZqSceneObject::ReleaseDeviceResources() {}

unsigned int ZqSceneObject::GetChildCount() const
{
    return 0;
}

ZqSceneObject* ZqSceneObject::GetChild(unsigned int) const
{
    return nullptr;
}

ZqSceneObject* ZqSceneObject::Find(const CString& name)
{
    if (m_name == name)
        return this;
    for (unsigned int i = 0; i < GetChildCount(); ++i)
        if (ZqSceneObject* found = GetChild(i)->Find(name))
            return found;
    return nullptr;
}
