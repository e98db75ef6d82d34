#version 450 core

// Unlit drawing, vertex stage: positions only.

layout(location = 0) in vec3 inPosition;

uniform mat4 uModelView;
uniform mat4 uProjection;

void main()
{
    gl_Position = uProjection * (uModelView * vec4(inPosition, 1.0));
}
