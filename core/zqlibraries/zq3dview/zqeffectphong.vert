#version 450 core

// Phong shading, vertex stage: positions and normals into view space for the fragment stage.

layout(location = 0) in vec3 inPosition;
layout(location = 1) in vec3 inNormal;

uniform mat4 uModelView;
uniform mat4 uProjection;

out vec3 vPosition;
out vec3 vNormal;

void main()
{
    vec4 position = uModelView * vec4(inPosition, 1.0);
    vPosition = position.xyz;
    // The view is a rotation and a translation, so its 3 x 3 part is its own inverse transpose.
    vNormal = mat3(uModelView) * inNormal;
    gl_Position = uProjection * position;
}
