// Bakes the monospace font atlas of in-game screens: printable ASCII of a TrueType font, one fixed cell per character
// code, 8-bit coverage in the alpha channel, and the glyph metrics beside it. The format is docs/font_atlas.md.
//
//   MakeFontAtlas <font.ttf> <atlas.png> <metrics.json>

#include <nlohmann/json.hpp>
#include <stb_image_write.h>
#include <stb_truetype.h>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

constexpr int kVersion = 1;
constexpr int kFirstCode = 32;
constexpr int kLastCode = 126;
constexpr int kColumns = 16;
// Codes 0 to 127: the cell of character code c is column c % 16, row c / 16, and cells without a glyph stay empty.
constexpr int kRows = 8;
// DejaVu Sans Mono's advance is 1233 font units of its 2048 per em: this em size makes it exactly 8 pixels.
constexpr int kAdvance = 8;
constexpr int kCellWidth = 9;
constexpr int kCellHeight = 16;
// Rows from the top of a cell down to the baseline; the 4 rows below it hold the descenders.
constexpr int kAscent = 12;

std::vector<unsigned char> ReadFile(std::string const& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw std::runtime_error("cannot open font \"" + path + "\"");
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

struct Atlas {
    std::vector<unsigned char> coverage = std::vector<unsigned char>(kColumns * kCellWidth * kRows * kCellHeight);
    nlohmann::json metrics;
};

/// Rasterises each glyph with its pen at the left edge of its cell and its baseline kAscent rows down.
Atlas Bake(stbtt_fontinfo const& font) {
    // Every glyph of a monospace font has the same advance.
    int advanceUnits = 0, leftBearing = 0;
    stbtt_GetCodepointHMetrics(&font, 'M', &advanceUnits, &leftBearing);
    float const scale = static_cast<float>(kAdvance) / static_cast<float>(advanceUnits);
    int const stride = kColumns * kCellWidth;

    Atlas atlas;
    atlas.metrics = {{"version", kVersion},
                     {"em_pixels", std::round(scale / stbtt_ScaleForMappingEmToPixels(&font, 1.0f) * 1000.0) / 1000.0},
                     {"columns", kColumns},
                     {"cell_width", kCellWidth},
                     {"cell_height", kCellHeight},
                     {"advance", kAdvance},
                     {"ascent", kAscent},
                     {"glyphs", nlohmann::json::array()}};
    for (int code = kFirstCode; code <= kLastCode; ++code) {
        int x0 = 0, y0 = 0, x1 = 0, y1 = 0;
        stbtt_GetCodepointBitmapBox(&font, code, scale, scale, &x0, &y0, &x1, &y1);
        // Space has no box at all.
        bool const blank = x1 <= x0 || y1 <= y0;
        int const width = blank ? 0 : x1 - x0, height = blank ? 0 : y1 - y0;
        int const bearingX = blank ? 0 : x0, bearingY = blank ? 0 : -y0;
        int const left = bearingX, top = blank ? 0 : kAscent - bearingY;
        if (left < 0 || top < 0 || left + width > kCellWidth || top + height > kCellHeight)
            throw std::runtime_error("glyph " + std::to_string(code) + " does not fit its cell");
        if (!blank) {
            int const cellX = code % kColumns * kCellWidth, cellY = code / kColumns * kCellHeight;
            stbtt_MakeCodepointBitmap(&font, &atlas.coverage[(cellY + top) * stride + cellX + left], width, height,
                                      stride, scale, scale, code);
        }
        atlas.metrics["glyphs"].push_back({{"code", code},
                                           {"width", width},
                                           {"height", height},
                                           {"bearing_x", bearingX},
                                           {"bearing_y", bearingY},
                                           {"x", left},
                                           {"y", top}});
    }
    return atlas;
}

}

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fprintf(stderr, "usage: %s <font.ttf> <atlas.png> <metrics.json>\n", argv[0]);
        return 2;
    }
    try {
        auto const ttf = ReadFile(argv[1]);
        stbtt_fontinfo font;
        if (!stbtt_InitFont(&font, ttf.data(), stbtt_GetFontOffsetForIndex(ttf.data(), 0)))
            throw std::runtime_error(std::string("not a TrueType font: \"") + argv[1] + "\"");
        auto const atlas = Bake(font);

        // White ink whose alpha is the coverage, so that a text shader only multiplies by its colour.
        std::vector<unsigned char> rgba(atlas.coverage.size() * 4, 255);
        for (size_t i = 0; i < atlas.coverage.size(); ++i)
            rgba[i * 4 + 3] = atlas.coverage[i];
        int const width = kColumns * kCellWidth, height = kRows * kCellHeight;
        if (!stbi_write_png(argv[2], width, height, 4, rgba.data(), width * 4))
            throw std::runtime_error(std::string("cannot write \"") + argv[2] + "\"");
        std::ofstream metrics(argv[3], std::ios::trunc);
        metrics << atlas.metrics.dump(1) << '\n';
        if (!metrics.flush())
            throw std::runtime_error(std::string("cannot write \"") + argv[3] + "\"");
    } catch (std::exception const& error) {
        std::fprintf(stderr, "MakeFontAtlas: %s\n", error.what());
        return 1;
    }
    return 0;
}
