// The glTF mesh loader on the renderer's Vulkan device (lavapipe where there is no GPU), validation on: files that
// the tests craft, one rule or one fault at a time, and files that exporters we did not write make from an OBJ.

#include "game/graphics/Mesh.h"

#include "engine/renderer/QuorlRenderer.h"
#include "engine/vk/Buffer.h"
#include "tests/support/GameRendererFixture.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <numeric>
#include <stdexcept>
#include <string>
#include <vector>

using game::graphics::Mesh;
using nlohmann::json;

namespace {

/// The size of mesh.bin, the binary file of the crafted meshes: every byte its own offset, so that a copy that starts
/// or ends in the wrong place shows.
constexpr uint64_t kByteLength = 188;

/// One indexed triangle with every optional stream in a view of its own, at these byte offsets of mesh.bin:
/// positions 0, indices 36, normals 44, 8-bit colours 80, texture coordinates 92 and 116, float colours 140 (unused
/// until a test makes COLOR_0 point there); 188 bytes in all.
json Triangle() {
    return json::parse(R"({
        "buffers": [{"uri": "mesh.bin", "byteLength": 188}],
        "bufferViews": [{"buffer": 0}, {"buffer": 0, "byteOffset": 36}, {"buffer": 0, "byteOffset": 44},
            {"buffer": 0, "byteOffset": 80}, {"buffer": 0, "byteOffset": 92}, {"buffer": 0, "byteOffset": 116},
            {"buffer": 0, "byteOffset": 140}],
        "accessors": [
            {"bufferView": 0, "componentType": 5126, "count": 3, "type": "VEC3"},
            {"bufferView": 1, "componentType": 5123, "count": 3, "type": "SCALAR"},
            {"bufferView": 2, "componentType": 5126, "count": 3, "type": "VEC3"},
            {"bufferView": 3, "componentType": 5121, "count": 3, "type": "VEC4"},
            {"bufferView": 4, "componentType": 5126, "count": 3, "type": "VEC2"},
            {"bufferView": 5, "componentType": 5126, "count": 3, "type": "VEC2"},
            {"bufferView": 6, "componentType": 5126, "count": 3, "type": "VEC4"}],
        "materials": [{"name": "Paint"}],
        "meshes": [{"primitives": [{"indices": 1, "material": 0,
            "attributes": {"POSITION": 0, "NORMAL": 2, "COLOR_0": 3, "TEXCOORD_0": 4, "TEXCOORD_1": 5}}]}],
        "nodes": [{"name": "Hull", "mesh": 0}]
    })");
}

json& Primitive(json& document) {
    return document["meshes"][0]["primitives"][0];
}

/// What a load threw, tagged with the kind of exception: "out_of_range: ", "runtime_error: " or "other: ".
std::string Thrown(std::function<void()> const& load) {
    try {
        load();
    } catch (std::out_of_range const& error) {
        return std::string("out_of_range: ") + error.what();
    } catch (std::runtime_error const& error) {
        return std::string("runtime_error: ") + error.what();
    } catch (std::exception const& error) {
        return std::string("other: ") + error.what();
    }
    return "nothing";
}

class MeshTest : public GameWithRendererTest {
protected:
    void SetUp() override {
        GameWithRendererTest::SetUp();
        std::string bytes(kByteLength, '\0');
        std::iota(bytes.begin(), bytes.end(), '\0');
        WriteFile(directory.File("mesh.bin"), bytes);
    }

    std::shared_ptr<Mesh const> Load(json const& document) const {
        WriteFile(path, document.dump());
        return std::make_shared<Mesh const>(path);
    }

    /// The one primitive of the node "Hull".
    static Mesh::Geometry const& Hull(Mesh const& mesh) {
        EXPECT_EQ(mesh.nodes.at("Hull").size(), 1u);
        return *mesh.nodes.at("Hull").front();
    }

    std::string const path = directory.File("mesh.gltf");
};

}

// ---- The format as read --------------------------------------------------------------------------------------------

TEST_F(MeshTest, EveryStreamPointsIntoThePositionsBufferAtItsViewAndAccessorOffsets) {
    json document = Triangle();
    // The normals' offset is split between view and accessor, and their view names a second buffer: the address
    // still lies in the positions' buffer, which is the one the format allows a primitive.
    document["bufferViews"][2] = {{"buffer", 1}, {"byteOffset", 40}};
    document["accessors"][2]["byteOffset"] = 4;
    document["buffers"].push_back({{"uri", "mesh.bin"}, {"byteLength", kByteLength}});
    auto const mesh = Load(document);

    ASSERT_EQ(mesh->buffers.size(), 2u);
    Mesh::Geometry const& geometry = Hull(*mesh);
    uint64_t const base = mesh->buffers[0]->address;
    ASSERT_NE(base, 0u) << "the renderer's device gives buffers no addresses";
    EXPECT_EQ(geometry.buffer, mesh->buffers[0]);

    game::graphics::RenderableInstance::GeometryInterface const& stream = geometry;
    EXPECT_EQ(stream.GetPrimitivesAddr(), base);
    EXPECT_EQ(stream.GetPrimitiveStride(), 12u);
    EXPECT_EQ(stream.GetPrimitiveCount(), 3u);
    EXPECT_EQ(stream.normals, base + 44);
    EXPECT_EQ(stream.texCoords0, base + 92);
    EXPECT_EQ(stream.texCoords1, base + 116);
    EXPECT_EQ(stream.monitorTexture, quorl::renderer::QuorlRenderer::kDefaultTextureIndex);
}

TEST_F(MeshTest, ComponentTypesPickTheIndexLayoutAndTheColourSlot) {
    struct Indices {
        int componentType;  // 0: the primitive has no indices
        uint32_t type;
        uint64_t stride;
        uint32_t count;
    };
    for (Indices const row : {Indices{5123, Mesh::Geometry::kTriangles16, 2, 3},
             Indices{5125, Mesh::Geometry::kTriangles32, 4, 3}, Indices{5121, Mesh::Geometry::kTriangles, 0, 3},
             Indices{0, Mesh::Geometry::kTriangles, 0, 0}}) {
        SCOPED_TRACE(row.componentType);
        json document = Triangle();
        document["accessors"][1]["componentType"] = row.componentType;
        if (row.componentType == 0) {
            Primitive(document).erase("indices");
        }
        auto const mesh = Load(document);
        EXPECT_EQ(Hull(*mesh).type, row.type);
        EXPECT_EQ(Hull(*mesh).indexStride, row.stride);
        EXPECT_EQ(Hull(*mesh).indexCount, row.count);
        EXPECT_EQ(Hull(*mesh).indices, row.count ? mesh->buffers[0]->address + 36 : 0u);
    }

    struct Colours {
        int accessor;
        int componentType;
        uint64_t colors8;
        uint64_t colorsFloat;
    };
    for (Colours const row : {Colours{3, 5121, 80, 0}, Colours{6, 5126, 0, 140}, Colours{3, 5123, 0, 0}}) {
        SCOPED_TRACE(row.componentType);
        json document = Triangle();
        Primitive(document)["attributes"]["COLOR_0"] = row.accessor;
        document["accessors"][row.accessor]["componentType"] = row.componentType;
        auto const mesh = Load(document);
        uint64_t const base = mesh->buffers[0]->address;
        EXPECT_EQ(Hull(*mesh).colors8, row.colors8 ? base + row.colors8 : 0u);
        EXPECT_EQ(Hull(*mesh).colorsFloat, row.colorsFloat ? base + row.colorsFloat : 0u);
    }
}

TEST_F(MeshTest, MaterialFactorsTakeTheirDefaultsWhereTheFileHasNone) {
    struct Row {
        char const* material;  // null: the primitive names no material
        glm::vec4 color;
        float metallic;
        float roughness;
        glm::vec3 emission;
    };
    for (Row const& row : {
             Row{nullptr, glm::vec4(1.0f), 0.0f, 1.0f, glm::vec3(0.0f)},
             Row{R"({"name": "Bare"})", glm::vec4(1.0f), 0.0f, 1.0f, glm::vec3(0.0f)},
             Row{R"({"name": "Tinted", "pbrMetallicRoughness": {"baseColorFactor": [0.5, 0.5, 1, 0.25]}})",
                 {0.5f, 0.5f, 1.0f, 0.25f}, 0.0f, 1.0f, glm::vec3(0.0f)},
             Row{R"({"name": "Chrome", "pbrMetallicRoughness": {"metallicFactor": 1, "roughnessFactor": 0.125},
                     "emissiveFactor": [0, 0, 2]})",
                 glm::vec4(1.0f), 1.0f, 0.125f, {0.0f, 0.0f, 2.0f}},
         }) {
        SCOPED_TRACE(row.material ? row.material : "none");
        json document = Triangle();
        if (row.material) {
            document["materials"][0] = json::parse(row.material);
        } else {
            Primitive(document).erase("material");
        }
        auto const mesh = Load(document);
        Mesh::Geometry const& geometry = Hull(*mesh);
        EXPECT_EQ(geometry.material, row.material ? document["materials"][0]["name"] : "");
        EXPECT_EQ(geometry.color, row.color);
        EXPECT_EQ(geometry.metallic, row.metallic);
        EXPECT_EQ(geometry.roughness, row.roughness);
        EXPECT_EQ(geometry.emission, row.emission);
    }
}

TEST_F(MeshTest, NodesWithoutMeshAreSkippedAndNodesOfOneNamePoolTheirPrimitives) {
    json document = Triangle();
    json bare = Primitive(document);
    bare.erase("material");
    document["meshes"].push_back({{"primitives", {bare, bare}}});
    document["nodes"] = json::parse(R"([{"name": "Light"}, {"name": "Hull", "mesh": 0}, {"name": "Mast", "mesh": 1},
        {"name": "Hull", "mesh": 1}])");
    auto const mesh = Load(document);

    ASSERT_EQ(mesh->nodes.size(), 2u);
    EXPECT_FALSE(mesh->nodes.contains("Light"));
    EXPECT_EQ(mesh->nodes.at("Mast").size(), 2u);
    auto const& hull = mesh->nodes.at("Hull");
    ASSERT_EQ(hull.size(), 3u);
    EXPECT_EQ(hull[0]->material, "Paint");
    EXPECT_EQ(hull[2]->material, "");
}

TEST_F(MeshTest, AShortOrMissingBinaryFileIsNoError) {
    json document = Triangle();
    document["buffers"][0]["byteLength"] = 4096;
    auto const mesh = Load(document);
    ASSERT_EQ(mesh->buffers[0]->size, 4096u);
    EXPECT_EQ(std::string(static_cast<char const*>(mesh->buffers[0]->Map()), kByteLength),
        ReadFile(directory.File("mesh.bin")));

    document["buffers"][0]["uri"] = "absent.bin";
    EXPECT_EQ(Load(document)->nodes.at("Hull").size(), 1u);
}

// ---- Failures ------------------------------------------------------------------------------------------------------

TEST_F(MeshTest, MalformedFilesFailWithTheLibrariesOwnErrors) {
    struct Row {
        char const* fault;
        std::function<void(json&)> change;
        std::string thrown;
    };
    std::string const keyNotFound = "other: [json.exception.out_of_range.403] key ";
    std::string const indexOutOfRange = "other: [json.exception.out_of_range.401] array index ";
    std::vector<Row> const rows{
        {"no POSITION", [](json& d) { Primitive(d)["attributes"].erase("POSITION"); },
            keyNotFound + "'POSITION' not found"},
        {"a node without name", [](json& d) { d["nodes"][0].erase("name"); }, keyNotFound + "'name' not found"},
        {"a node name that is a number", [](json& d) { d["nodes"][0]["name"] = 7; },
            "other: [json.exception.type_error.302] type must be string, but is number"},
        {"a mesh past the end", [](json& d) { d["nodes"][0]["mesh"] = 1; }, indexOutOfRange + "1 is out of range"},
        {"an accessor past the end", [](json& d) { Primitive(d)["attributes"]["NORMAL"] = 7; },
            indexOutOfRange + "7 is out of range"},
        {"a buffer view past the end", [](json& d) { d["accessors"][0]["bufferView"] = 7; },
            indexOutOfRange + "7 is out of range"},
        {"a material past the end", [](json& d) { Primitive(d)["material"] = 1; },
            indexOutOfRange + "1 is out of range"},
        // No conversion can make a negative index into one inside the array.
        {"a negative mesh", [](json& d) { d["nodes"][0]["mesh"] = -1; },
            indexOutOfRange + "18446744073709551615 is out of range"},
        {"a buffer past the loaded ones", [](json& d) { d["bufferViews"][0]["buffer"] = 1; },
            "out_of_range: vector::_M_range_check: __n (which is 1) >= this->size() (which is 1)"},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.fault);
        json document = Triangle();
        row.change(document);
        EXPECT_EQ(Thrown([&] { Load(document); }), row.thrown);
    }

    WriteFile(path, "{");
    EXPECT_EQ(Thrown([&] { Mesh mesh(path); }),
        "other: [json.exception.parse_error.101] parse error at line 1, column 2: syntax error while parsing object "
        "key - unexpected end of input; expected string literal");
    EXPECT_EQ(Thrown([&] { Mesh mesh(directory.File("absent.gltf")); }),
        "runtime_error: " + directory.File("absent.gltf") + ": cannot open the mesh file");
}

// A rendering module reads these addresses on the GPU, so nothing of a file may point it past a buffer.
TEST_F(MeshTest, StreamsAndBuffersThatCantBeBoundedAreRefusedBeforeAnAddressIsKept) {
    struct Row {
        char const* fault;
        std::function<void(json&)> change;
        /// The kind of exception and its subject, which its message starts with after the file's path.
        std::string thrown;
    };
    std::string const bufferDirectory = directory.Path().string();
    std::vector<Row> const rows{
        {"positions past the end", [](json& d) { d["accessors"][0]["count"] = 16; }, "out_of_range: accessor 0"},
        {"a view offset moving positions past the end", [](json& d) { d["bufferViews"][0]["byteOffset"] = 160; },
            "out_of_range: accessor 0"},
        {"an accessor offset moving indices past the end", [](json& d) { d["accessors"][1]["byteOffset"] = 150; },
            "out_of_range: accessor 1"},
        {"a negative count", [](json& d) { d["accessors"][1]["count"] = -1; }, "out_of_range: accessor 1"},
        {"a fractional count", [](json& d) { d["accessors"][0]["count"] = 2.5; }, "out_of_range: accessor 0"},
        {"a negative accessor offset", [](json& d) { d["accessors"][2]["byteOffset"] = -4; },
            "out_of_range: accessor 2"},
        // 12 times this count is 2^64 + 8: a product that wraps would pass for 8 bytes.
        {"a count whose bytes wrap", [](json& d) { d["accessors"][0]["count"] = 1537228672809129302ull; },
            "out_of_range: accessor 0"},
        // Two floats a vertex end exactly at the buffer's end; three don't.
        {"texture coordinates of three floats at the end",
            [](json& d) {
                d["bufferViews"][4]["byteOffset"] = 164;
                d["accessors"][4]["type"] = "VEC3";
            },
            "out_of_range: accessor 4"},
        {"fewer normals than vertices", [](json& d) { d["accessors"][2]["count"] = 2; }, "out_of_range: accessor 2"},
        {"indices of an unknown component type", [](json& d) { d["accessors"][1]["componentType"] = 7; },
            "out_of_range: accessor 1"},
        {"an empty buffer", [](json& d) { d["buffers"][0]["byteLength"] = 0; }, "out_of_range: buffer 0"},
        {"a fractional byteLength", [](json& d) { d["buffers"][0]["byteLength"] = 187.5; }, "out_of_range: buffer 0"},
        {"a byteLength beyond the device", [](json& d) { d["buffers"][0]["byteLength"] = 1e15; },
            "runtime_error: buffer 0"},
        {"a data URI", [](json& d) { d["buffers"][0]["uri"] = "data:application/octet-stream;base64,AAAA"; },
            "runtime_error: buffer 0"},
        {"an absolute path", [&](json& d) { d["buffers"][0]["uri"] = bufferDirectory + "/mesh.bin"; },
            "runtime_error: buffer 0"},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.fault);
        json document = Triangle();
        row.change(document);
        std::string const thrown = Thrown([&] { Load(document); });
        std::string const kind = row.thrown.substr(0, row.thrown.find(' ') + 1);
        std::string const subject = kind + path + ": " + row.thrown.substr(kind.size());
        EXPECT_TRUE(thrown.starts_with(subject + " ") || thrown.starts_with(subject + "'")) << thrown;
    }
}

// ---- A file of another exporter ------------------------------------------------------------------------------------

namespace {

using Vec3 = std::array<float, 3>;
using Triangle3 = std::array<Vec3, 3>;

/// Each triangle from its smallest corner on, keeping its winding, and the triangles in order: the same for any
/// exporter that reorders vertices or triangles.
std::vector<Triangle3> Canonical(std::vector<Triangle3> triangles) {
    for (auto& triangle : triangles) {
        std::rotate(triangle.begin(), std::min_element(triangle.begin(), triangle.end()), triangle.end());
    }
    std::sort(triangles.begin(), triangles.end());
    return triangles;
}

/// The triangles of `attribute` (positions, normals, colours' first three channels) that a geometry's 32-bit indices
/// lead to, read through the buffer's mapping; none where a stream is missing or an index lies past the vertices.
std::vector<Triangle3> TrianglesOf(Mesh::Geometry const& geometry, uint64_t attribute, uint64_t stride) {
    auto const* mapped = static_cast<char const*>(geometry.buffer->Map());
    auto const read = [&](auto& value, uint64_t address) {
        std::memcpy(&value, mapped + (address - geometry.buffer->address), sizeof value);
    };
    std::vector<Triangle3> triangles(attribute && geometry.indices ? geometry.indexCount / 3 : 0);
    for (uint64_t i = 0; i < triangles.size() * 3; ++i) {
        uint32_t index = 0;
        read(index, geometry.indices + i * 4);
        if (index >= geometry.primitiveCount) {
            return {};
        }
        read(triangles[i / 3][i % 3], attribute + index * stride);
    }
    return Canonical(triangles);
}

/// A hull quad in two triangles with a colour per vertex, and a plain mast triangle, each with one normal.
constexpr char const* kShipObj = R"(mtllib ship.mtl
o Hull
v 0 0 0 1 0 0
v 1 0 0 0 1 0
v 1 1 0 0 0 1
v 0 1 0 1 1 1
vn 0 0 1
usemtl Paint
f 1//1 2//1 3//1
f 1//1 3//1 4//1
o Mast
v 0 0 1 1 0 0
v 0 0 2 1 0 0
v 1 0 2 1 0 0
vn 0 -1 0
usemtl Glass
f 5//2 6//2 7//2
)";

}

TEST_F(MeshTest, AnObjExportedByAssimpLoadsWithItsCountsLayoutAndMaterials) {
    std::string const folder = directory.Path().string();
    WriteFile(folder + "/ship.obj", kShipObj);
    WriteFile(folder + "/ship.mtl", "newmtl Paint\nKd 0.5 0.25 0.125\nnewmtl Glass\nKd 0.1 0.2 0.3\nKe 1 0.5 0\n");
    ASSERT_EQ(std::system(("cd '" + folder + "' && assimp export ship.obj ship.gltf -f gltf2 > tool.log 2>&1").c_str()),
        0) << "assimp (Debian package assimp-utils, which scripts/setup installs): " << ReadFile(folder + "/tool.log");
    auto const mesh = std::make_shared<Mesh const>(folder + "/ship.gltf");

    struct Row {
        char const* node;
        char const* material;
        uint32_t vertices;
        std::vector<Triangle3> positions;
        Vec3 normal;
        std::vector<Triangle3> colours;
    };
    std::vector<Row> const rows{
        {"Hull", "Paint", 4, {{{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}}}, {{{0, 0, 0}, {1, 1, 0}, {0, 1, 0}}}}, {0, 0, 1},
            {{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}}, {{{1, 0, 0}, {0, 0, 1}, {1, 1, 1}}}}},
        {"Mast", "Glass", 3, {{{{0, 0, 1}, {0, 0, 2}, {1, 0, 2}}}}, {0, -1, 0}, {{{{1, 0, 0}, {1, 0, 0}, {1, 0, 0}}}}},
    };
    ASSERT_EQ(mesh->nodes.size(), rows.size());
    for (Row const& row : rows) {
        SCOPED_TRACE(row.node);
        ASSERT_EQ(mesh->nodes.at(row.node).size(), 1u);
        Mesh::Geometry const& geometry = *mesh->nodes.at(row.node).front();
        EXPECT_EQ(geometry.material, row.material);
        EXPECT_EQ(geometry.GetPrimitiveCount(), row.vertices);
        EXPECT_EQ(geometry.GetPrimitiveStride(), 12u);
        EXPECT_EQ(geometry.type, Mesh::Geometry::kTriangles32);
        EXPECT_EQ(geometry.GetIndexStride(), 4u);
        EXPECT_EQ(TrianglesOf(geometry, geometry.positions, 12), Canonical(row.positions));
        EXPECT_EQ(TrianglesOf(geometry, geometry.colorsFloat, 16), Canonical(row.colours));
        Triangle3 const flat{row.normal, row.normal, row.normal};
        EXPECT_EQ(TrianglesOf(geometry, geometry.normals, 12), std::vector<Triangle3>(row.positions.size(), flat));
    }
    EXPECT_EQ(mesh->nodes.at("Hull").front()->color, glm::vec4(0.5f, 0.25f, 0.125f, 1.0f));
    EXPECT_EQ(mesh->nodes.at("Mast").front()->emission, glm::vec3(1.0f, 0.5f, 0.0f));
}
