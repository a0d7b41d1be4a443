// The glTF writer. Every stream gets a view of its own, padded to 4 bytes so that the next one starts aligned; nodes
// carry their place in the entity as well, so that any glTF viewer shows the parts put together. The game itself
// places them from the entity's file and reads no transforms.

#include "content/meshes/Gltf.h"

#include <glm/gtc/quaternion.hpp>
#include <nlohmann/json.hpp>

#include <bit>
#include <cmath>
#include <fstream>
#include <map>
#include <stdexcept>

namespace content::meshes {

namespace {

using Json = nlohmann::ordered_json;

constexpr int kFloat = 5126;
constexpr int kUnsignedShort = 5123;
constexpr int kArrayBuffer = 34962;
constexpr int kElementArrayBuffer = 34963;
constexpr int kTriangles = 4;

static_assert(sizeof(glm::vec3) == 12, "positions and normals are tightly packed float triples");
static_assert(std::endian::native == std::endian::little, "glTF buffers are little-endian, as they are written");

/// The binary buffer, with the views and accessors that point into it.
class Buffer {
public:
    int Vectors(std::vector<glm::vec3> const& vectors, bool withBounds) {
        Json accessor = {{"bufferView", View(vectors.data(), vectors.size() * sizeof(glm::vec3), kArrayBuffer)},
                         {"componentType", kFloat},
                         {"count", vectors.size()},
                         {"type", "VEC3"}};
        if (withBounds) {
            glm::vec3 low = vectors.front(), high = vectors.front();
            for (glm::vec3 const& v : vectors) {
                low = glm::min(low, v);
                high = glm::max(high, v);
            }
            accessor["min"] = {low.x, low.y, low.z};
            accessor["max"] = {high.x, high.y, high.z};
        }
        return Add(accessor);
    }

    int Indices(std::vector<uint16_t> const& indices) {
        return Add({{"bufferView", View(indices.data(), indices.size() * sizeof(uint16_t), kElementArrayBuffer)},
                    {"componentType", kUnsignedShort},
                    {"count", indices.size()},
                    {"type", "SCALAR"}});
    }

    Json accessors = Json::array();
    Json views = Json::array();
    std::vector<char> bytes;

private:
    int View(void const* data, size_t size, int target) {
        views.push_back({{"buffer", 0}, {"byteOffset", bytes.size()}, {"byteLength", size}, {"target", target}});
        auto const* begin = static_cast<char const*>(data);
        bytes.insert(bytes.end(), begin, begin + size);
        bytes.resize((bytes.size() + 3) / 4 * 4, 0);
        return static_cast<int>(views.size() - 1);
    }

    int Add(Json accessor) {
        accessors.push_back(std::move(accessor));
        return static_cast<int>(accessors.size() - 1);
    }
};

Json MaterialJson(Material const& material) {
    glm::dvec4 const& c = material.color;
    Json json = {{"name", material.name},
                 {"pbrMetallicRoughness",
                  {{"baseColorFactor", {c.r, c.g, c.b, c.a}},
                   {"metallicFactor", material.metallic},
                   {"roughnessFactor", material.roughness}}}};
    if (material.emission != glm::dvec3(0.0))
        json["emissiveFactor"] = {material.emission.r, material.emission.g, material.emission.b};
    if (c.a < 1.0)
        json["alphaMode"] = "BLEND";
    return json;
}

/// The node's place as glTF's translation and rotation, each left out where it does nothing. The transforms come
/// from single precision: a micrometre is all they can tell at these sizes.
void PlaceNode(Json& node, glm::dmat4 const& transform) {
    glm::dvec3 translation(transform[3]);
    for (int axis = 0; axis < 3; ++axis)
        translation[axis] = std::round(translation[axis] * 1e6) / 1e6 + 0.0;
    if (translation != glm::dvec3(0.0))
        node["translation"] = {translation.x, translation.y, translation.z};
    glm::dquat const rotation = glm::normalize(glm::quat_cast(glm::dmat3(transform)));
    if (std::abs(rotation.w) < 1.0 - 1e-12)
        node["rotation"] = {rotation.x, rotation.y, rotation.z, rotation.w};
}

void WriteFile(std::filesystem::path const& path, char const* data, size_t size) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(data, static_cast<std::streamsize>(size));
    file.close();
    if (!file)
        throw std::runtime_error("cannot write \"" + path.string() + "\"");
}

}

void WriteGltf(std::filesystem::path const& gltf, std::vector<MeshNode> const& nodes) {
    Buffer buffer;
    Json meshes = Json::array(), jsonNodes = Json::array(), materials = Json::array(), scene = Json::array();
    std::map<Material const*, int> materialIndex;
    for (MeshNode const& node : nodes) {
        Json primitives = Json::array();
        for (Primitive const& primitive : node.primitives) {
            auto [entry, added] = materialIndex.try_emplace(primitive.material, static_cast<int>(materials.size()));
            if (added)
                materials.push_back(MaterialJson(*primitive.material));
            Surface const& surface = primitive.surface;
            primitives.push_back({{"attributes",
                                   {{"POSITION", buffer.Vectors(surface.positions, true)},
                                    {"NORMAL", buffer.Vectors(surface.normals, false)}}},
                                  {"indices", buffer.Indices(surface.indices)},
                                  {"material", entry->second},
                                  {"mode", kTriangles}});
        }
        Json jsonNode = {{"name", node.name}, {"mesh", meshes.size()}};
        PlaceNode(jsonNode, node.transform);
        scene.push_back(jsonNodes.size());
        jsonNodes.push_back(std::move(jsonNode));
        meshes.push_back({{"name", node.name}, {"primitives", std::move(primitives)}});
    }

    std::filesystem::path bin = gltf;
    bin.replace_extension(".bin");
    Json const json = {{"asset", {{"version", "2.0"}, {"generator", "Meridon MakeEntityMeshes"}}},
                       {"scene", 0},
                       {"scenes", {{{"nodes", scene}}}},
                       {"nodes", jsonNodes},
                       {"meshes", meshes},
                       {"materials", materials},
                       {"accessors", buffer.accessors},
                       {"bufferViews", buffer.views},
                       {"buffers", {{{"byteLength", buffer.bytes.size()}, {"uri", bin.filename().string()}}}}};
    // The buffer first: a .gltf on disk always finds its buffer complete.
    WriteFile(bin, buffer.bytes.data(), buffer.bytes.size());
    std::string const text = json.dump(1, '\t') + "\n";
    WriteFile(gltf, text.data(), text.size());
}

}
