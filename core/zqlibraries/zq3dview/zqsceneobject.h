#pragma once

#include "basepool/cbrefcounted.h"
#include "basepool/cbsmartpointer.h"
#include "basepool/cstring.h"
#include "zq3dview/zq3dview_export.h"
#include "zq3dview/zqboundingbox3f.h"

struct ZqDrawContext;
class ZqGroupObject;

// A node of a scene graph: something with a name that may have bounds, draw itself and hold device
// resources. Objects are shared through CbSmartPointer; a group owns its children. Objects carry
// no transform of their own: their coordinates are world coordinates.
class ZQ3DVIEW_API ZqSceneObject : public virtual CbRefCounted
{
public:
    explicit ZqSceneObject(const CString& name = CString());
    ~ZqSceneObject() override;

    const CString& GetName() const { return m_name; }
    void SetName(const CString& name) { m_name = name; }
    // The group this object was appended to, or null.
    ZqGroupObject* GetParent() const { return m_parent; }

    // Extends box by what this object (and what it holds) draws; nothing by default.
    virtual void ExtendBounds(ZqBoundingBox3f& box) const;
    // Draws this object (and what it holds) into the current frame; nothing by default.
    virtual void Draw(const ZqDrawContext& context);
    // Gives back every device resource; the next Draw makes them again.
    virtual void ReleaseDeviceResources();

    // Children, for groups; none by default.
    virtual unsigned int GetChildCount() const;
    virtual ZqSceneObject* GetChild(unsigned int index) const;

    // This object or the first object of that name below it, depth first; null when none.
    ZqSceneObject* Find(const CString& name);

private:
    friend class ZqGroupObject;

    CString m_name;
    ZqGroupObject* m_parent = nullptr;
};
