// The look of the bundled entity types. A type's mesh has a node for each RENDERABLE section of its file, and each
// part below draws one collider of the type, so that a box changed in the file changes the picture at the next build.
// Regions are shares of the box from 0 to 1, so no part reaches beyond what collides.

#include "content/meshes/MeshTable.h"

#include <map>
#include <stdexcept>

namespace content::meshes {

namespace {

// Colours are linear. Modules find geometry by these names to recolour or light it, so they stay put once shipped.
Material const kMaterials[] = {
    {.name = "paint", .color = {0.80, 0.80, 0.76, 1.0}, .metallic = 0.0, .roughness = 0.5},
    {.name = "signal", .color = {0.80, 0.12, 0.04, 1.0}, .metallic = 0.0, .roughness = 0.45},
    {.name = "wood", .color = {0.45, 0.30, 0.16, 1.0}, .metallic = 0.0, .roughness = 0.85},
    {.name = "metal", .color = {0.60, 0.62, 0.64, 1.0}, .metallic = 1.0, .roughness = 0.35},
    {.name = "rubber", .color = {0.03, 0.03, 0.03, 1.0}, .metallic = 0.0, .roughness = 0.95},
    {.name = "glass", .color = {0.55, 0.70, 0.75, 0.35}, .metallic = 0.0, .roughness = 0.05},
    {.name = "lamp", .color = {1.0, 0.95, 0.85, 1.0}, .metallic = 0.0, .roughness = 0.3, .emission = {1.0, 0.9, 0.7}},
};

constexpr Region Share(float x0, float y0, float z0, float x1, float y1, float z1) {
    return {{x0, y0, z0}, {x1, y1, z1}};
}

// Wheels turn about the file's Y, which is the game's Z. The tyre is a little narrower than its box, so that the
// hub's faces show on both sides.
std::vector<Part> const kWheel = {
    {.renderable = "stub", .collider = "axle_housing", .shape = Shape::Cylinder, .toward = Toward::PlusZ,
     .material = "metal"},
    {.renderable = "tyre", .collider = "wheel", .shape = Shape::Cylinder, .toward = Toward::PlusZ,
     .material = "rubber", .region = Share(0, 0, 0.05f, 1, 1, 0.95f)},
    {.renderable = "tyre", .collider = "wheel", .shape = Shape::Cylinder, .toward = Toward::PlusZ,
     .material = "metal", .region = Share(0.3f, 0.3f, 0, 0.7f, 0.7f, 1)},
};

// The rover and the glider face +X.
std::map<std::string, std::vector<Part>> const kTypes = {
    {"crate", {{.renderable = "planks", .collider = "body", .shape = Shape::Box, .material = "wood"}}},
    {"door",
     {{.renderable = "frame", .collider = "frame_hinge_side", .shape = Shape::Box, .material = "paint"},
      {.renderable = "frame", .collider = "frame_latch_side", .shape = Shape::Box, .material = "paint"},
      {.renderable = "leaf_panel", .collider = "leaf", .shape = Shape::Box, .material = "wood"}}},
    // A metal housing with a glowing pane let into its underside.
    {"light_box",
     {{.renderable = "shade", .collider = "housing", .shape = Shape::Box, .material = "metal",
       .region = Share(0, 0.3f, 0, 1, 1, 1)},
      {.renderable = "shade", .collider = "housing", .shape = Shape::Box, .material = "lamp",
       .region = Share(0.05f, 0, 0.05f, 0.95f, 0.3f, 0.95f)}}},
    {"wheel_assembly", kWheel},
    {"wheel", kWheel},
    // Headlamps in the upper corners of the chassis's front, which stops short of the box by their depth.
    {"rover_body",
     {{.renderable = "hull", .collider = "chassis", .shape = Shape::Box, .material = "paint",
       .region = Share(0, 0, 0, 0.99f, 1, 1)},
      {.renderable = "hull", .collider = "chassis", .shape = Shape::Box, .material = "lamp",
       .region = Share(0.99f, 0.55f, 0.1f, 1, 0.8f, 0.25f)},
      {.renderable = "hull", .collider = "chassis", .shape = Shape::Box, .material = "lamp",
       .region = Share(0.99f, 0.55f, 0.75f, 1, 0.8f, 0.9f)},
      {.renderable = "canopy", .collider = "cab", .shape = Shape::Box, .material = "glass",
       .region = Share(0, 0, 0, 1, 0.85f, 1)},
      {.renderable = "canopy", .collider = "cab", .shape = Shape::Box, .material = "paint",
       .region = Share(0, 0.85f, 0, 1, 1, 1)}}},
    {"glider_wing",
     {{.renderable = "skin", .collider = "panel", .shape = Shape::Profile, .toward = Toward::PlusX,
       .material = "paint"},
      {.renderable = "aileron_skin", .collider = "aileron", .shape = Shape::Profile, .toward = Toward::PlusX,
       .material = "signal"}}},
    // White, with the tail in signal red to be seen against the sky.
    {"glider",
     {{.renderable = "hull", .collider = "fuselage", .shape = Shape::Cylinder, .toward = Toward::PlusX,
       .material = "paint"},
      {.renderable = "wing_left_skin", .collider = "wing_left", .shape = Shape::Profile, .toward = Toward::PlusX,
       .material = "paint"},
      {.renderable = "wing_right_skin", .collider = "wing_right", .shape = Shape::Profile, .toward = Toward::PlusX,
       .material = "paint"},
      {.renderable = "tail_skin", .collider = "tail_plane", .shape = Shape::Profile, .toward = Toward::PlusX,
       .material = "signal"},
      {.renderable = "fin_skin", .collider = "fin", .shape = Shape::Profile, .toward = Toward::PlusX,
       .material = "signal"}}},
    // An orange suit under a white helmet with a glass visor facing +X, the way the player looks.
    {"avatar",
     {{.renderable = "suit", .collider = "body", .shape = Shape::Cylinder, .toward = Toward::PlusY,
       .material = "signal", .region = Share(0.1f, 0, 0.1f, 0.9f, 0.8f, 0.9f)},
      {.renderable = "suit", .collider = "body", .shape = Shape::Box, .material = "paint",
       .region = Share(0.2f, 0.8f, 0.2f, 0.8f, 1, 0.8f)},
      {.renderable = "suit", .collider = "body", .shape = Shape::Box, .material = "glass",
       .region = Share(0.8f, 0.86f, 0.3f, 0.85f, 0.95f, 0.7f)}}},
    // A red float, a white cone over it and the lamp on the cone's tip, on a metal keel.
    {"buoy",
     {{.renderable = "hull", .collider = "float", .shape = Shape::Cylinder, .toward = Toward::PlusY,
       .material = "signal", .region = Share(0, 0, 0, 1, 0.55f, 1)},
      {.renderable = "hull", .collider = "float", .shape = Shape::Cone, .toward = Toward::PlusY,
       .material = "paint", .region = Share(0.1f, 0.55f, 0.1f, 0.9f, 0.95f, 0.9f)},
      {.renderable = "hull", .collider = "float", .shape = Shape::Cylinder, .toward = Toward::PlusY,
       .material = "lamp", .region = Share(0.42f, 0.88f, 0.42f, 0.58f, 1, 0.58f)},
      {.renderable = "ballast", .collider = "keel", .shape = Shape::Cylinder, .toward = Toward::PlusY,
       .material = "metal"}}},
};

}

std::vector<Part> const& PartsOf(std::string const& type) {
    auto parts = kTypes.find(type);
    if (parts == kTypes.end())
        throw std::out_of_range("no mesh parts for the entity type \"" + type + "\"");
    return parts->second;
}

Material const& MaterialNamed(std::string const& name) {
    for (Material const& material : kMaterials) {
        if (material.name == name)
            return material;
    }
    throw std::out_of_range("no material \"" + name + "\"");
}

}
