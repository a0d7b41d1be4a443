#include "engine/graphics/FontRenderer.h"

#include "engine/filesystem/TextFile.h"

#include <nlohmann/json.hpp>
#include <stb_image.h>

#include <memory>
#include <stdexcept>
#include <string>

namespace quorl::graphics {

namespace {

constexpr char kAtlasPath[] = "game/graphics/ui/textures/monospace_font_atlas.png";
constexpr char kMetricsPath[] = "game/graphics/ui/textures/monospace_font_atlas.json";
constexpr int kVersion = 1;
// The atlas has a cell for each of the codes 0 to 127, whether or not it holds a glyph.
constexpr int kCodes = 128;
// Coverage from which a font pixel counts as ink. Lower than half, so that thin strokes lying across two pixel rows,
// such as the underscore's, keep one of them.
constexpr unsigned char kInkThreshold = 96;

[[noreturn]] void Fail(std::string const& path, std::string const& what) {
    throw std::runtime_error("font atlas \"" + path + "\": " + what);
}

std::string ReadFile(std::string const& path) {
    auto content = filesystem::ReadTextFile(path);
    if (!content)
        Fail(path, "no such file");
    return std::move(*content);
}

struct Image {
    std::unique_ptr<unsigned char, void (*)(void*)> rgba{nullptr, stbi_image_free};
    int width = 0;
    int height = 0;
};

Image LoadImage(std::string const& path) {
    auto const bytes = ReadFile(path);
    Image image;
    int channels = 0;
    image.rgba.reset(stbi_load_from_memory(reinterpret_cast<unsigned char const*>(bytes.data()),
                                           static_cast<int>(bytes.size()), &image.width, &image.height, &channels, 4));
    if (!image.rgba)
        Fail(path, std::string("not a readable image: ") + stbi_failure_reason());
    return image;
}

}

FontRenderer::FontRenderer() {
    nlohmann::json metrics;
    try {
        metrics = nlohmann::json::parse(ReadFile(kMetricsPath));
    } catch (nlohmann::json::exception const& error) {
        Fail(kMetricsPath, error.what());
    }
    auto const image = LoadImage(kAtlasPath);
    try {
        if (auto version = metrics.at("version").get<int>(); version != kVersion)
            Fail(kMetricsPath, "version " + std::to_string(version) + " is not " + std::to_string(kVersion));
        auto const columns = metrics.at("columns").get<int>();
        auto const cellWidth = metrics.at("cell_width").get<int>();
        auto const cellHeight = metrics.at("cell_height").get<int>();
        if (columns <= 0 || cellWidth <= 0 || cellHeight <= 0 || image.width != columns * cellWidth ||
            image.height != (kCodes + columns - 1) / columns * cellHeight)
            Fail(kAtlasPath, "its size " + std::to_string(image.width) + "x" + std::to_string(image.height) +
                                 " is not that of the cells in \"" + kMetricsPath + "\"");

        std::array<bool, kGlyphCount> found{};
        for (auto const& entry : metrics.at("glyphs")) {
            auto const code = entry.at("code").get<int>();
            if (code < kFirstCode || code > kLastCode)
                continue;
            Glyph& glyph = _glyphs[code - kFirstCode];
            glyph.width = entry.at("width").get<int>();
            glyph.height = entry.at("height").get<int>();
            glyph.horizontalBearing = entry.at("bearing_x").get<int>();
            glyph.verticalBearing = entry.at("bearing_y").get<int>();
            auto const left = entry.at("x").get<int>(), top = entry.at("y").get<int>();
            if (glyph.width < 0 || glyph.height < 0 || left < 0 || top < 0 || left + glyph.width > cellWidth ||
                top + glyph.height > cellHeight)
                Fail(kMetricsPath, "the box of glyph " + std::to_string(code) + " lies outside its cell");
            int const cellX = code % columns * cellWidth + left, cellY = code / columns * cellHeight + top;
            glyph.bitmap.resize(static_cast<size_t>(glyph.width) * glyph.height);
            for (int row = 0; row < glyph.height; ++row)
                for (int column = 0; column < glyph.width; ++column) {
                    size_t const pixel = static_cast<size_t>(cellY + row) * image.width + cellX + column;
                    glyph.bitmap[row * glyph.width + column] = image.rgba.get()[pixel * 4 + 3] >= kInkThreshold;
                }
            found[code - kFirstCode] = true;
        }
        for (size_t i = 0; i < found.size(); ++i)
            if (!found[i])
                Fail(kMetricsPath, "no glyph for code " + std::to_string(kFirstCode + i));
    } catch (nlohmann::json::exception const& error) {
        Fail(kMetricsPath, error.what());
    }
}

FontRenderer::~FontRenderer() = default;

std::vector<FontRenderer::Glyph const*> FontRenderer::operator[](std::string_view const& text) const {
    std::vector<Glyph const*> glyphs;
    glyphs.reserve(text.size());
    for (char const byte : text) {
        // Every character beyond ASCII gets '?', so a multi-byte character needs no decoding beyond its lead byte.
        if ((static_cast<unsigned char>(byte) & 0xC0) == 0x80)
            continue;
        char const code = byte >= kFirstCode && byte <= kLastCode ? byte : '?';
        glyphs.push_back(&_glyphs[code - kFirstCode]);
    }
    return glyphs;
}

}
