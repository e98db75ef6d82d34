#pragma once

#include "zq3dview/graphics/cprogram.h"
#include "zq3dview/graphics/cvertexarray.h"
#include "zq3dview/zq3dview_export.h"
#include "zq3dview/zqviewitem.h"

struct ZqDrawContext;
class ZqEffectProperties;

// A run of triangles of one mesh: its vertex array and the indices [firstIndex, firstIndex +
// indexCount) of its index buffer.
struct ZqMeshRange
{
    const Graphics::CVertexArray& vertexArray;
    unsigned int firstIndex;
    unsigned int indexCount;
};

// A shading effect: a GLSL 4.50 program that draws the triangles of a material. The scene makes it
// on its device (Init, as a view item) and gives it back (Release); a material names the effect
// as its shader and DrawShader draws with it.
//
// What every effect gets, set by DrawShader:
//   vertex inputs  location 0 "inPosition" (vec3), location 1 "inNormal" (vec3), world coordinates;
//   uniforms       mat4 uModelView, mat4 uProjection; int uLightCount and, per light i below 4,
//                  vec3 uLightTowards[i] (unit, view space), vec4 uLightAmbient[i], uLightDiffuse[i],
//                  uLightSpecular[i].
// A subclass adds its sources, looks up its own uniforms in initUniforms and sets them for each
// draw in setEffectConstants.
class ZQ3DVIEW_API ZqEffect : public ZqViewItem
{
public:
    static constexpr unsigned int kPositionLocation = 0;
    static constexpr unsigned int kNormalLocation = 1;

    // Builds the program (throws Graphics::CExceptionGraphics when it does not compile or link).
    void Init(Graphics::IDevice& device) override;
    void Release() override;
    bool IsInitialized() const override { return static_cast<bool>(m_program); }

    // Draws range with this effect and properties into the current frame. An effect that is not
    // initialised is a programming error (CbExceptionPreconditionViolation): append it to the scene
    // graph as a view item.
    void DrawShader(const ZqDrawContext& context, const ZqMeshRange& range,
                    const ZqEffectProperties& properties);

    // The effect's name in error messages, e.g. "ZqEffectPhong".
    virtual const char* GetEffectName() const = 0;

protected:
    ZqEffect();
    ~ZqEffect() override;

    virtual const char* getVertexShaderSource() const = 0;
    virtual const char* getFragmentShaderSource() const = 0;
    // Looks up the subclass's uniforms once the program is built; nothing by default.
    virtual void initUniforms(const Graphics::CProgram& program);
    // Sets the subclass's uniforms for one draw.
    virtual void setEffectConstants(const ZqDrawContext& context, const ZqEffectProperties& properties) = 0;

    const Graphics::CProgram& getProgram() const { return m_program; }

private:
    void setCommonConstants(const ZqDrawContext& context) const;

    Graphics::CProgram m_program;
    int m_modelView = -1;
    int m_projection = -1;
    int m_lightCount = -1;
    int m_lightTowards = -1;
    int m_lightAmbient = -1;
    int m_lightDiffuse = -1;
    int m_lightSpecular = -1;
};
