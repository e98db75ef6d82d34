#include "zq3dview/zqgroupobject.h"

#include "basepool/cbexception.h"

ZqGroupObject::ZqGroupObject(const CString& name) : ZqSceneObject(name) {}

ZqGroupObject::~ZqGroupObject()
{
    for (const auto& child : m_children)
        child->m_parent = nullptr;
}

void ZqGroupObject::Append(const CbSmartPointer<ZqSceneObject>& child)
{
    if (!child)
        CB_THROW(CbExceptionPreconditionViolation, "ZqGroupObject::Append", "null object");
    if (child->m_parent)
        CB_THROW(CbExceptionPreconditionViolation, "ZqGroupObject::Append",
                 "object already in group " + CbWideToUtf8(child->m_parent->GetName().Std()));
    for (const ZqGroupObject* group = this; group; group = group->GetParent())
        if (group == child.Get())
            CB_THROW(CbExceptionPreconditionViolation, "ZqGroupObject::Append", "a group cannot hold itself");
    child->m_parent = this;
    m_children.Add(child);
}

void ZqGroupObject::ExtendBounds(ZqBoundingBox3f& box) const
{
    for (const auto& child : m_children)
        child->ExtendBounds(box);
}

void ZqGroupObject::Draw(const ZqDrawContext& context)
{
    for (const auto& child : m_children)
        child->Draw(context);
}

void ZqGroupObject::ReleaseDeviceResources()
{
    for (const auto& child : m_children)
        child->ReleaseDeviceResources();
}
