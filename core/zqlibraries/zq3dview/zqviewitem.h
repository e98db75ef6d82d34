#pragma once

#include "basepool/cbrefcounted.h"

namespace Graphics
{
class IDevice;
}

// Something a scene prepares on its device besides the objects it draws, effects above all. The
// scene initialises every view item that is not initialised before it draws a frame, and releases
// them all with the scene graph's device resources; Init after Release builds the same resources
// again.
class ZqViewItem : public virtual CbRefCounted
{
public:
    virtual void Init(Graphics::IDevice& device) = 0;
    virtual void Release() = 0;
    virtual bool IsInitialized() const = 0;

protected:
    ~ZqViewItem() override = default;
};
