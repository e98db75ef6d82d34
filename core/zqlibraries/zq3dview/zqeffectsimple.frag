#version 450 core

// Unlit drawing: every fragment in the surface colour, whatever the lights and the normal.

uniform vec4 uSurfaceColor;

out vec4 outColor;

void main()
{
    outColor = uSurfaceColor;
}
