#pragma once

#include "zq3dbase/zq3dbase_export.h"
#include "zqbase/zqcolorrgba.h"
#include "zqbase/zqobjectreference.h"

#include <memory>

// A geometry shown for debugging: a triangulation or polyline, shared with its owner, together with
// the colour, draw method and shading to show it with. Draw method and shading are the renderer's
// numbers and are kept as they are given.
//
//     auto mesh = std::make_shared<ZqTriangulationDynamic>(10000);
//     ZqDebugGeometry view(mesh, ZqColorRGBA::Chocolate, 17, 0);
//     view.GetGeometry<ZqTriangulationDynamic>()      // mesh
//
// A ZqDependencySerializer writes the geometry with the debug geometry and restores the sharing
// when it reads it back.
class ZQ3DBASE_API ZqDebugGeometry
{
public:
    ZqDebugGeometry() = default;
    ZqDebugGeometry(ZqObjectReference geometry, const ZqColorRGBA& color, unsigned int drawMethod,
                    unsigned int shading)
        : m_geometry(std::move(geometry)), m_color(color), m_drawMethod(drawMethod), m_shading(shading)
    {
    }

    const ZqObjectReference& GetGeometry() const { return m_geometry; }
    // The geometry when it is a T, else null.
    template <class T> std::shared_ptr<T> GetGeometry() const { return m_geometry.As<T>(); }
    void SetGeometry(ZqObjectReference geometry) { m_geometry = std::move(geometry); }

    const ZqColorRGBA& GetColor() const { return m_color; }
    void SetColor(const ZqColorRGBA& color) { m_color = color; }
    unsigned int GetDrawMethod() const { return m_drawMethod; }
    void SetDrawMethod(unsigned int drawMethod) { m_drawMethod = drawMethod; }
    unsigned int GetShading() const { return m_shading; }
    void SetShading(unsigned int shading) { m_shading = shading; }

private:
    ZqObjectReference m_geometry;
    ZqColorRGBA m_color = ZqColorRGBA::White;
    unsigned int m_drawMethod = 0;
    unsigned int m_shading = 0;
};
