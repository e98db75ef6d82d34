#pragma once

#include "basepool/cbarray.h"
#include "basepool/inoncopyable.h"
#include "zq3dview/zqcameraobject.h"
#include "zq3dview/zqgroupobject.h"
#include "zq3dview/zqviewitem.h"

struct ZqDrawContext;

// What a scene shows: a root group holding every object, the active camera (one of the cameras in
// the graph) and the view items (effects) the scene prepares for drawing.
class ZQ3DVIEW_API ZqSceneGraph : private INonCopyable
{
public:
    ZqSceneGraph();
    ~ZqSceneGraph();

    ZqGroupObject& GetRoot() const { return *m_root; }

    // Appends object to parent, the root when parent is null.
    void AppendItem(const CbSmartPointer<ZqSceneObject>& object, ZqGroupObject* parent = nullptr);
    // Appends an item the scene initialises on its device before drawing (not null).
    void AppendViewItem(const CbSmartPointer<ZqViewItem>& item);
    unsigned int GetViewItemCount() const { return m_viewItems.GetCount(); }
    ZqViewItem* GetViewItem(unsigned int index) const { return m_viewItems[index].Get(); }

    // The camera the scene draws through; null until one is set.
    ZqCameraObject* GetActiveCamera() const { return m_activeCamera.Get(); }
    void SetActiveCamera(const CbSmartPointer<ZqCameraObject>& camera) { m_activeCamera = camera; }

    // The first object of that name, depth first from the root; null when none.
    ZqSceneObject* Find(const CString& name) const { return m_root->Find(name); }

    // Initialises the view items that are not initialised.
    void InitViewItems(Graphics::IDevice& device);
    // Gives back the device resources of every object and view item.
    void ReleaseDeviceResources();
    // Enters the enabled lights of the graph (at most ZqDrawContext::kMaxLights, depth first) into
    // context, transformed into view space with context.view.
    void CollectLights(ZqDrawContext& context) const;

private:
    CbSmartPointer<ZqGroupObject> m_root;
    CbSmartPointer<ZqCameraObject> m_activeCamera;
    CbArray<CbSmartPointer<ZqViewItem>> m_viewItems;
};
