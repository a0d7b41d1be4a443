#include "game/entity/QuorlScreen.h"

#include "engine/graphics/FontRenderer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <array>
#include <climits>
#include <fstream>
#include <functional>
#include <set>
#include <string>
#include <vector>

using game::entity::QuorlScreen;
using testing::Each;

namespace {

constexpr uint32_t kWhite = 0xFFFFFFFF;
constexpr uint32_t kRed = 0xFFFF0000;
constexpr uint32_t kGhost = 0x80FFFFFF;

/// The screen as its rows, separated by spaces: '.' for 0, '#' for white, 'r' for red, '?' for anything else.
std::string PictureOf(QuorlScreen const& screen) {
    std::string picture;
    for (uint32_t y = 0; y < screen.height; ++y) {
        if (y > 0)
            picture += ' ';
        for (uint32_t x = 0; x < screen.width; ++x) {
            uint32_t const pixel = screen.GetPixel(static_cast<int>(x), static_cast<int>(y));
            picture += pixel == 0 ? '.' : pixel == kWhite ? '#' : pixel == kRed ? 'r' : '?';
        }
    }
    return picture;
}

/// The rows with ink between two columns, both included.
std::set<int> InkRows(QuorlScreen const& screen, int firstColumn, int lastColumn) {
    std::set<int> rows;
    for (int y = 0; y < static_cast<int>(screen.height); ++y)
        for (int x = firstColumn; x <= lastColumn; ++x)
            if (screen.GetPixel(x, y) != 0)
                rows.insert(y);
    return rows;
}

}

TEST(QuorlScreenTest, BlankFillsUnblendedAndGetPixelReadsByPlainIndex) {
    QuorlScreen screen(3, 2);
    screen.Blank(0x12345678);
    EXPECT_TRUE(screen.dirty);
    EXPECT_THAT(screen.pixels, Each(0x12345678u));
    screen.Blank(0);
    EXPECT_THAT(screen.pixels, Each(0u));

    screen.pixels = {10, 11, 12, 13, 14, 15};
    EXPECT_EQ(screen.GetPixel(3, 0), 13u) << "past a row's end reads the next row";
    EXPECT_EQ(screen.GetPixel(-1, 1), 12u);
    EXPECT_EQ(screen.GetPixel(0, 2), 0u);
    EXPECT_EQ(screen.GetPixel(-1, 0), 0u);
}

TEST(QuorlScreenTest, PointsBlendByTheAlphaOfTheirColourAndStayInside) {
    struct Case {
        uint32_t under, colour, expected;
    } const cases[] = {
        {0xC8102030, 0x80FF0000, 0xFF870F17}, // alpha 128 over 200 gives 255; (d * 127 + c * 128) / 255
        {0x14FFFFFF, 0x0A000000, 0x1EF5F5F5}, // alphas add up
        {0x12345678, 0xFF010203, 0xFF010203}, // opaque replaces
        {0x12345678, 0x00FFFFFF, 0x12345678}, // no alpha, no change
        {0x12345678, 0x00000000, 0x12345678}, // colour 0 draws nothing
    };
    for (auto const& [under, colour, expected] : cases) {
        QuorlScreen screen(1, 1);
        screen.pixels[0] = under;
        screen.DrawPoint(0, 0, colour);
        EXPECT_EQ(screen.pixels[0], expected) << std::hex << colour << " over " << under;
        EXPECT_FALSE(screen.dirty);
    }
    QuorlScreen screen(2, 2);
    for (auto [x, y] : {std::pair{-1, 0}, {2, 0}, {0, -1}, {0, 2}})
        screen.DrawPoint(x, y, kWhite);
    EXPECT_THAT(screen.pixels, Each(0u));
}

TEST(QuorlScreenTest, ShapesKeepTheirShortenedEdgesAndClipToTheScreen) {
    // Each drawing on a fresh screen of its picture's size. Lines leave out their end point and refuse lengths past
    // 8 * (width + height), and rectangles keep the shortened edges; triangles fill by the top-left rule (either
    // winding is TrianglesSharingEdgesPaintThemOnce's); circles ring the outline around the fill; blocks clamp what
    // lies left of or above the screen onto its first column or row. Only what goes through Blank, Draw or WriteLine
    // sets dirty.
    auto triangle = [](std::array<int, 6> c, uint32_t outline, uint32_t fill) {
        return [=](QuorlScreen& s) { s.DrawTriangle(c[0], c[1], c[2], c[3], c[4], c[5], outline, fill); };
    };
    struct Case {
        char const* name;
        std::function<void(QuorlScreen&)> draw;
        std::string picture;
        bool dirty = false;
    } const cases[] = {
        {"line right", [](auto& s) { s.DrawLine(0, 0, 3, 0, kWhite); }, "###.. ..... ....."},
        {"line left", [](auto& s) { s.DrawLine(3, 0, 0, 0, kWhite); }, ".###. ..... ....."},
        {"line steep", [](auto& s) { s.DrawLine(0, 0, 4, 2, kWhite); }, "#.... .##.. ...#."},
        {"line of no length", [](auto& s) { s.DrawLine(2, 1, 2, 1, kWhite); }, "..... ..... ....."},
        {"line across the screen", [](auto& s) { s.DrawLine(-3, 1, 9, 1, kWhite); }, "..... ##### ....."},
        {"line of 8 * (width + height)", [](auto& s) { s.DrawLine(0, 0, 64, 0, kWhite); }, "##### ..... ....."},
        {"line longer than that", [](auto& s) { s.DrawLine(0, 0, 65, 0, kWhite); }, "..... ..... ....."},
        {"wild line", [](auto& s) { s.DrawLine(INT_MIN, INT_MIN, INT_MAX, INT_MAX, kWhite); }, "..... ..... ....."},

        {"hollow rectangle", [](auto& s) { s.DrawRect(0, 0, 5, 4, kWhite, 0); }, "###.#. #...#. #...#. .##... ......"},
        {"corners swapped", [](auto& s) { s.DrawRect(5, 4, 0, 0, kWhite, 0); }, "###.#. #...#. #...#. .##... ......"},
        {"filled rectangle", [](auto& s) { s.DrawRect(0, 0, 5, 4, kWhite, kRed); },
         "###.#. #rrr#. #rrr#. .##... ......", true},
        {"outline as fill", [](auto& s) { s.DrawRect(0, 0, 5, 4, kWhite, kWhite); },
         "#####. #####. #####. #####. ......", true},
        {"rectangle without outline", [](auto& s) { s.DrawRect(0, 0, 5, 4, 0, kRed); },
         "...... ...... ...... ...... ......"},

        {"filled triangle", triangle({0, 0, 4, 0, 0, 4}, kWhite, kWhite), "####. ###.. ##... #.... ....."},
        {"triangle edges", triangle({0, 0, 4, 0, 0, 4}, kWhite, 0), "##### #..#. #.#.. ##... #...."},
        {"edges over fill", triangle({0, 0, 4, 0, 0, 4}, kWhite, kRed), "##### #rr#. #r#.. ##... #...."},
        {"triangle without outline", triangle({0, 0, 4, 0, 0, 4}, 0, kRed), "..... ..... ..... ..... ....."},
        {"degenerate triangle", triangle({0, 0, 2, 2, 4, 4}, kWhite, kWhite), "#.... .#... ..#.. ...#. ....#"},
        {"wild triangle covering the screen", triangle({INT_MIN, INT_MIN, INT_MAX, 0, 0, INT_MAX}, kWhite, kWhite),
         "##### ##### ##### ##### #####"},
        {"wild and degenerate triangle", triangle({INT_MIN, INT_MIN, INT_MAX, INT_MAX, 0, 0}, kWhite, kWhite),
         "#.... .#... ..#.. ...#. ....#"},

        {"circle of radius 4", [](auto& s) { s.DrawCircle(4, 4, 4, kWhite, kRed); },
         "......... ..#####.. .#rrrrr#. .#rrrrr#. .#rrrrr#. .#rrrrr#. .#rrrrr#. ..#####.. ........."},
        {"hollow circle cut by the corner", [](auto& s) { s.DrawCircle(0, 0, 4, kWhite, 0); },
         "...#. ...#. ...#. ###.. ....."},
        {"circle of radius 1", [](auto& s) { s.DrawCircle(1, 1, 1, kWhite, kRed); }, "... .#. ..."},
        {"circle of radius 0", [](auto& s) { s.DrawCircle(1, 1, 0, kWhite, kRed); }, "... ... ..."},
        {"negative radius", [](auto& s) { s.DrawCircle(1, 1, -2, kWhite, kRed); }, "... ... ..."},
        {"circle without outline", [](auto& s) { s.DrawCircle(1, 1, 1, 0, kRed); }, "... ... ..."},
        {"wild radius", [](auto& s) { s.DrawCircle(0, 0, INT_MAX, kWhite, kRed); }, "rrr rrr rrr"},

        {"block at the top left", [](auto& s) { s.Draw(-2, -2, kWhite, 4, 4); }, "##... ##... ..... .....", true},
        {"block at the bottom right", [](auto& s) { s.Draw(3, 2, kWhite, 10, 10); }, "..... ..... ...## ...##", true},
        {"block past left and right", [](auto& s) { s.Draw(-5, 1, kWhite, 20, 2); }, "..... ##### ##### .....", true},
        {"block left of the screen, clamped onto column 0", [](auto& s) { s.Draw(-5, 1, kWhite, 3, 2); },
         "..... #.... #.... .....", true},
        {"block of zero width", [](auto& s) { s.Draw(0, 0, kWhite, 0, 3); }, "..... ..... ..... .....", true},
        {"block of negative height", [](auto& s) { s.Draw(0, 0, kWhite, 3, -1); }, "..... ..... ..... .....", true},
    };
    for (auto const& [name, draw, picture, dirty] : cases) {
        auto const width = picture.find(' ');
        QuorlScreen screen(static_cast<uint32_t>(width), static_cast<uint32_t>(picture.size() / (width + 1) + 1));
        draw(screen);
        EXPECT_EQ(PictureOf(screen), picture) << name;
        EXPECT_EQ(screen.dirty, dirty) << name;
    }
}

TEST(QuorlScreenTest, TrianglesSharingEdgesPaintThemOnce) {
    // A 4 by 4 square cut into triangles along its diagonals, in both windings: a translucent colour shows any pixel
    // blended twice, and the union is the square without its right and bottom edges.
    using Triangle = std::array<int, 6>;
    std::vector<std::vector<Triangle>> const tilings = {
        {{0, 0, 4, 0, 4, 4}, {0, 0, 4, 4, 0, 4}},
        {{0, 0, 4, 0, 4, 4}, {4, 4, 0, 0, 0, 4}},
        {{4, 0, 4, 4, 0, 4}, {0, 0, 4, 0, 0, 4}},
        {{0, 0, 4, 0, 2, 2}, {4, 0, 4, 4, 2, 2}, {2, 2, 4, 4, 0, 4}, {0, 0, 2, 2, 0, 4}},
    };
    for (auto const& tiling : tilings) {
        QuorlScreen screen(6, 6);
        for (auto [x1, y1, x2, y2, x3, y3] : tiling)
            screen.DrawTriangle(x1, y1, x2, y2, x3, y3, kGhost, kGhost);
        for (int y = 0; y < 6; ++y)
            for (int x = 0; x < 6; ++x)
                EXPECT_EQ(screen.GetPixel(x, y), x < 4 && y < 4 ? 0x80808080u : 0u) << x << "," << y;
    }
}

TEST(QuorlScreenTest, TranslucentBlocksBlendTheFirstRowAndColumnOncePerCoordinateClampedOntoThem) {
    uint32_t const colour = 0x40FF8000;
    QuorlScreen screen(3, 3), expected(3, 3);
    screen.Draw(-2, -1, colour, 4, 3);
    // Rows -1 and 0 land on row 0, columns -2, -1 and 0 on column 0.
    int const times[3][3] = {{6, 2, 0}, {3, 1, 0}, {0, 0, 0}};
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 3; ++x)
            for (int i = 0; i < times[y][x]; ++i)
                expected.DrawPoint(x, y, colour);
    EXPECT_EQ(screen.pixels, expected.pixels);

    QuorlScreen wild(2, 2), settled(2, 2);
    wild.Draw(INT_MIN, INT_MIN, colour, INT_MAX, INT_MAX);
    for (int i = 0; i < 1000; ++i)
        settled.DrawPoint(0, 0, colour);
    EXPECT_EQ(wild.pixels, settled.pixels) << "billions of blends end where blending stops changing the pixel";
}

TEST(QuorlScreenTest, AScreenSmallerThanItsSizeIsNeverWrittenPastItsPixels) {
    QuorlScreen screen(4, 4);
    screen.pixels = std::vector<uint32_t>(6);
    for (uint32_t colour : {kWhite, kGhost}) {
        screen.Draw(-1, -1, colour, 9, 9);
        screen.DrawLine(0, 3, 4, 3, colour);
        screen.DrawRect(0, 0, 4, 4, colour, kRed);
        screen.DrawTriangle(0, 0, 9, 0, 0, 9, colour, colour);
        screen.DrawCircle(2, 2, 3, colour, kRed);
        screen.textSize = 3;
        for (uint32_t align : {0, 2, 8, 16}) {
            screen.textAlign = align;
            screen.Write(-4, -30, colour, "WWWW\nWWWW");
        }
    }
    EXPECT_EQ(screen.pixels.size(), 6u);
    EXPECT_NE(screen.pixels[5], 0u);
}

TEST(QuorlScreenTest, TextSitsOnTheLastRowOfTheAtlasCellAndScalesPixelBySquare) {
    auto const metrics = nlohmann::json::parse(std::ifstream("game/graphics/ui/textures/monospace_font_atlas.json"));
    quorl::graphics::FontRenderer const font;
    auto const& a = *font["A"].front();
    QuorlScreen plain(40, 20);
    EXPECT_EQ(plain.charWidth, metrics.at("advance").get<uint32_t>());
    EXPECT_EQ(plain.charHeight, metrics.at("cell_height").get<uint32_t>());
    plain.WriteLine(0, 0, kWhite, "Ag");
    auto const inkRows = InkRows(plain, 0, 7);
    int const baseline = static_cast<int>(plain.charHeight) - 1;
    EXPECT_EQ(*inkRows.rbegin(), baseline - 1) << "the capital ends above the baseline row";
    EXPECT_EQ(*inkRows.begin(), baseline - a.verticalBearing);

    for (uint32_t scale : {2u, 3u}) {
        QuorlScreen scaled(40 * scale, 20 * scale);
        scaled.textSize = scale;
        scaled.WriteLine(0, 0, kWhite, "Ag");
        for (uint32_t y = 0; y < scaled.height; ++y)
            for (uint32_t x = 0; x < scaled.width; ++x)
                ASSERT_EQ(scaled.GetPixel(static_cast<int>(x), static_cast<int>(y)),
                          plain.GetPixel(static_cast<int>(x / scale), static_cast<int>(y / scale)))
                    << "scale " << scale << " at " << x << "," << y;
    }
}

TEST(QuorlScreenTest, TextBlendsUnlessOpaqueAndColourZeroDrawsNothing) {
    QuorlScreen opaque(16, 16), ghost(16, 16);
    ghost.Blank(0xFF000000);
    opaque.WriteLine(0, 0, kWhite, "#");
    ghost.WriteLine(0, 0, kGhost, "#");
    for (size_t i = 0; i < opaque.pixels.size(); ++i)
        EXPECT_EQ(ghost.pixels[i], opaque.pixels[i] ? 0xFF808080u : 0xFF000000u);

    QuorlScreen screen(16, 16);
    screen.Write(0, 0, 0, "#");
    EXPECT_FALSE(screen.dirty);
    screen.WriteLine(0, 0, 0, "#");
    EXPECT_TRUE(screen.dirty);
    EXPECT_THAT(screen.pixels, Each(0u));
}

TEST(QuorlScreenTest, LinesAreCutAt1024BytesAndScaledTextByItsUnscaledRowNumber) {
    QuorlScreen wide(2000 * 8, 16);
    wide.Write(0, 0, kWhite, std::string(2000, 'x'));
    EXPECT_FALSE(InkRows(wide, 1023 * 8, 1024 * 8 - 1).empty());
    EXPECT_TRUE(InkRows(wide, 1024 * 8, 2000 * 8 - 1).empty());

    // With the baseline on the cell's only row, the glyph lies above y; the cut lets through font rows while
    // y + row < height, so at the last screen row just font row 0 remains, the bar of the T, 2 pixels high.
    quorl::graphics::FontRenderer const font;
    auto const& tee = *font["T"].front();
    QuorlScreen screen(16, 40);
    screen.charHeight = 1;
    screen.textSize = 2;
    screen.WriteLine(0, 39, kWhite, "T");
    int const top = 39 - 2 * tee.verticalBearing;
    EXPECT_EQ(InkRows(screen, 0, 15), (std::set<int>{top, top + 1}));
}

TEST(QuorlScreenTest, WriteSplitsLinesAndAlignsThem) {
    struct Line {
        int x, y;
        std::string text;
    };
    struct Case {
        uint32_t textSize, textAlign;
        std::string text;
        std::vector<Line> lines;
    } const cases[] = {
        {1, 0, "ab", {{3, 4, "ab"}}},
        {1, 1, "ab", {{4, 4, "ab"}}},
        {1, 2, "ab", {{51, 4, "ab"}}},
        {1, 4, "ab", {{3, 5, "ab"}}},
        {1, 8, "ab", {{3, 36, "ab"}}},
        {1, 16, "ab", {{27, 20, "ab"}}},
        {1, 16 | 1, "ab", {{4, 20, "ab"}}},
        {1, 16 | 8, "ab", {{27, 36, "ab"}}},
        {1, 2, "\xC3\xA9" "b", {{51, 4, "\xC3\xA9" "b"}}},
        {1, 16, std::string(20, 'w'), {{4, 20, std::string(20, 'w')}}},
        {2, 2 | 4, "ab", {{36, 5, "ab"}}},
        {2, 16, "ab", {{19, 12, "ab"}}},
        {1, 8, "a\nb", {{3, 20, "a"}, {3, 36, "b"}}},
        {1, 0, "a\\nb", {{3, 4, "a"}, {3, 20, "b"}}},
        {1, 8, "ab\n", {{3, 36, "ab"}}},
        {1, 8, "a\n\nb", {{3, 4, "a"}, {3, 36, "b"}}},
        {1, 0, "\n", {{3, 4, "\n"}}},
    };
    for (auto const& [textSize, textAlign, text, lines] : cases) {
        QuorlScreen written(64, 48), expected(64, 48);
        written.textSize = expected.textSize = textSize;
        written.textAlign = textAlign;
        written.Write(3, 4, kWhite, text);
        for (auto const& line : lines)
            expected.WriteLine(line.x, line.y, kWhite, line.text);
        EXPECT_EQ(written.pixels, expected.pixels) << "align " << textAlign << ", size " << textSize << ": " << text;
    }
}
