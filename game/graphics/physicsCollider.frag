#version 460

// The colour of physicsCollider.vert's push constant block.
layout(push_constant) uniform Push {
    layout(offset = 64) vec4 colour;
} push;

layout(location = 0) out vec4 colour;

void main() {
    colour = push.colour;
}
