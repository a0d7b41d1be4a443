#version 460

// The crosshair is one point at the centre of the screen; the fragment shader draws the cross inside it.
const float SizePixels = 24.0;

void main() {
    gl_Position = vec4(0.0, 0.0, 0.0, 1.0);
    gl_PointSize = SizePixels;
}
