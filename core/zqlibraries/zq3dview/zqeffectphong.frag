#version 450 core

// Phong shading per fragment: ambient and diffuse light in the surface colour, a specular highlight
// in the highlight colour, summed over the scene's lights.

const int kMaxLights = 4;

in vec3 vPosition;
in vec3 vNormal;

uniform int uLightCount;
uniform vec3 uLightTowards[kMaxLights];
uniform vec4 uLightAmbient[kMaxLights];
uniform vec4 uLightDiffuse[kMaxLights];
uniform vec4 uLightSpecular[kMaxLights];

uniform vec4 uSurfaceColor;
uniform vec4 uHighlightColor;
uniform float uAmbient;
uniform float uShininess;

out vec4 outColor;

void main()
{
    vec3 normal = normalize(vNormal);
    // Two-sided lighting: a back face (seen through an opening, or on a mesh wound the other way)
    // is lit like a front face.
    if (!gl_FrontFacing)
        normal = -normal;
    vec3 towardsEye = normalize(-vPosition);
    vec3 color = vec3(0.0);
    for (int i = 0; i < uLightCount && i < kMaxLights; ++i)
    {
        vec3 towardsLight = uLightTowards[i];
        float diffuse = max(dot(normal, towardsLight), 0.0);
        float specular = 0.0;
        if (diffuse > 0.0)
            specular = pow(max(dot(reflect(-towardsLight, normal), towardsEye), 0.0), uShininess);
        color += uAmbient * uSurfaceColor.rgb * uLightAmbient[i].rgb +
                 diffuse * uSurfaceColor.rgb * uLightDiffuse[i].rgb +
                 specular * uHighlightColor.rgb * uLightSpecular[i].rgb;
    }
    outColor = vec4(min(color, vec3(1.0)), uSurfaceColor.a);
}
