#version 460
// Depth only: the shadow map keeps the nearest depth and nothing else.
void main() {}
