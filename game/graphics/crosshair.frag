#version 460

// Sizes in pixels; they match the point size of crosshair.vert.
const float SizePixels = 24.0;
const float ArmLength = 10.0;
const float HalfThickness = 1.0;
const float Outline = 1.0;

layout(location = 0) out vec4 colour;

// Inside a cross of the given half-thickness and arm length, measured from the centre.
bool InCross(vec2 offset, float halfThickness, float armLength) {
    vec2 distance = abs(offset);
    return (distance.x <= halfThickness && distance.y <= armLength) ||
           (distance.y <= halfThickness && distance.x <= armLength);
}

void main() {
    vec2 offset = (gl_PointCoord - 0.5) * SizePixels;
    if (InCross(offset, HalfThickness, ArmLength)) {
        colour = vec4(1.0);
    } else if (InCross(offset, HalfThickness + Outline, ArmLength + Outline)) {
        // A dark rim keeps the cross visible over bright ground and sky.
        colour = vec4(0.0, 0.0, 0.0, 0.75);
    } else {
        discard;
    }
}
