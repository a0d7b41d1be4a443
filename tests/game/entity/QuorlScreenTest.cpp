#include "game/entity/QuorlScreen.h"

#include "engine/graphics/FontRenderer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

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

using Picture = std::vector<std::string>;

/// The screen as rows of characters: '.' for 0, '#' for white, 'r' for red, '?' for anything else.
Picture PictureOf(QuorlScreen const& screen) {
    Picture rows(screen.height, std::string(screen.width, '.'));
    for (uint32_t y = 0; y < screen.height; ++y)
        for (uint32_t x = 0; x < screen.width; ++x) {
            uint32_t const pixel = screen.GetPixel(static_cast<int>(x), static_cast<int>(y));
            rows[y][x] = pixel == 0 ? '.' : pixel == kWhite ? '#' : pixel == kRed ? 'r' : '?';
        }
    return rows;
}

/// `draw` on a fresh screen of the picture's size gives the picture, and sets `dirty` only where it goes through
/// Blank, Draw or WriteLine.
struct ShapeCase {
    char const* name;
    std::function<void(QuorlScreen&)> draw;
    Picture expected;
    bool dirty = false;
};

void ExpectPictures(std::vector<ShapeCase> const& cases) {
    for (auto const& [name, draw, expected, dirty] : cases) {
        QuorlScreen screen(static_cast<uint32_t>(expected[0].size()), static_cast<uint32_t>(expected.size()));
        draw(screen);
        EXPECT_EQ(PictureOf(screen), expected) << name;
        EXPECT_EQ(screen.dirty, dirty) << name;
    }
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

TEST(QuorlScreenTest, LinesLeaveOutTheirEndPointAndRefuseAbsurdLengths) {
    auto line = [](int x1, int y1, int x2, int y2) {
        return [=](QuorlScreen& screen) { screen.DrawLine(x1, y1, x2, y2, kWhite); };
    };
    ExpectPictures({
        {"right", line(0, 0, 3, 0), {"###..", ".....", "....."}},
        {"left", line(3, 0, 0, 0), {".###.", ".....", "....."}},
        {"up", line(0, 2, 0, 0), {".....", "#....", "#...."}},
        {"steep", line(0, 0, 4, 2), {"#....", ".##..", "...#."}},
        {"no length", line(2, 1, 2, 1), {".....", ".....", "....."}},
        {"across the screen", line(-3, 1, 9, 1), {".....", "#####", "....."}},
        {"eight times width + height", line(0, 0, 64, 0), {"#####", ".....", "....."}},
        {"longer than that", line(0, 0, 65, 0), {".....", ".....", "....."}},
        {"wild", line(INT_MIN, INT_MIN, INT_MAX, INT_MAX), {".....", ".....", "....."}},
    });
}

TEST(QuorlScreenTest, RectanglesKeepTheirShortenedEdges) {
    auto rect = [](int x1, int y1, int x2, int y2, uint32_t outline, uint32_t fill) {
        return [=](QuorlScreen& screen) { screen.DrawRect(x1, y1, x2, y2, outline, fill); };
    };
    Picture const hollow = {"###.#.", "#...#.", "#...#.", ".##...", "......"};
    ExpectPictures({
        {"hollow", rect(0, 0, 5, 4, kWhite, 0), hollow},
        {"hollow, corners swapped", rect(5, 4, 0, 0, kWhite, 0), hollow},
        {"filled", rect(0, 0, 5, 4, kWhite, kRed), {"###.#.", "#rrr#.", "#rrr#.", ".##...", "......"}, true},
        {"outline as fill", rect(0, 0, 5, 4, kWhite, kWhite), {"#####.", "#####.", "#####.", "#####.", "......"},
         true},
        {"no outline", rect(0, 0, 5, 4, 0, kRed), {"......", "......", "......", "......", "......"}},
    });
}

TEST(QuorlScreenTest, TrianglesFillByTheTopLeftRuleInEitherWinding) {
    auto triangle = [](int x1, int y1, int x2, int y2, int x3, int y3, uint32_t outline, uint32_t fill) {
        return [=](QuorlScreen& screen) { screen.DrawTriangle(x1, y1, x2, y2, x3, y3, outline, fill); };
    };
    Picture const filled = {"####.", "###..", "##...", "#....", "....."};
    ExpectPictures({
        {"filled", triangle(0, 0, 4, 0, 0, 4, kWhite, kWhite), filled},
        {"other winding", triangle(0, 0, 0, 4, 4, 0, kWhite, kWhite), filled},
        {"edges only", triangle(0, 0, 4, 0, 0, 4, kWhite, 0), {"#####", "#..#.", "#.#..", "##...", "#...."}},
        {"edges over fill", triangle(0, 0, 4, 0, 0, 4, kWhite, kRed), {"#####", "#rr#.", "#r#..", "##...", "#...."}},
        {"no outline", triangle(0, 0, 4, 0, 0, 4, 0, kRed), {".....", ".....", ".....", ".....", "....."}},
        {"degenerate", triangle(0, 0, 2, 2, 4, 4, kWhite, kWhite), {"#....", ".#...", "..#..", "...#.", "....#"}},
        {"one point", triangle(1, 1, 1, 1, 1, 1, kWhite, kWhite), {".....", ".#...", ".....", ".....", "....."}},
        {"wild, covering the screen", triangle(INT_MIN, INT_MIN, INT_MAX, 0, 0, INT_MAX, kWhite, kWhite),
         {"#####", "#####", "#####", "#####", "#####"}},
        {"wild and degenerate", triangle(INT_MIN, INT_MIN, INT_MAX, INT_MAX, 0, 0, kWhite, kWhite),
         {"#....", ".#...", "..#..", "...#.", "....#"}},
    });
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

TEST(QuorlScreenTest, CirclesRingTheOutlineAroundTheFill) {
    auto circle = [](int x, int y, int radius, uint32_t outline, uint32_t fill) {
        return [=](QuorlScreen& screen) { screen.DrawCircle(x, y, radius, outline, fill); };
    };
    Picture const empty(3, "...");
    ExpectPictures({
        {"radius 4",
         circle(4, 4, 4, kWhite, kRed),
         {".........", "..#####..", ".#rrrrr#.", ".#rrrrr#.", ".#rrrrr#.", ".#rrrrr#.", ".#rrrrr#.", "..#####..",
          "........."}},
        {"hollow, cut by the corner", circle(0, 0, 4, kWhite, 0), {"...#.", "...#.", "...#.", "###..", "....."}},
        {"radius 1", circle(1, 1, 1, kWhite, kRed), {"...", ".#.", "..."}},
        {"radius 0", circle(1, 1, 0, kWhite, kRed), empty},
        {"negative radius", circle(1, 1, -2, kWhite, kRed), empty},
        {"no outline", circle(1, 1, 1, 0, kRed), empty},
        {"wild radius", circle(0, 0, INT_MAX, kWhite, kRed), {"rrr", "rrr", "rrr"}},
    });
}

TEST(QuorlScreenTest, BlocksClipAtEveryBorder) {
    auto block = [](int x, int y, int w, int h) {
        return [=](QuorlScreen& screen) { screen.Draw(x, y, kWhite, w, h); };
    };
    ExpectPictures({
        {"top left", block(-2, -2, 4, 4), {"##...", "##...", ".....", "....."}, true},
        {"bottom right", block(3, 2, 10, 10), {".....", ".....", "...##", "...##"}, true},
        {"left and right", block(-5, 1, 20, 2), {".....", "#####", "#####", "....."}, true},
        {"left of the screen, clamped onto column 0", block(-5, 1, 3, 2), {".....", "#....", "#....", "....."}, true},
        {"zero width", block(0, 0, 0, 3), {".....", ".....", ".....", "....."}, true},
        {"negative height", block(0, 0, 3, -1), {".....", ".....", ".....", "....."}, true},
    });
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

TEST(QuorlScreenTest, DefaultTextCellIsTheAtlasCell) {
    auto const metrics = nlohmann::json::parse(std::ifstream("game/graphics/ui/textures/monospace_font_atlas.json"));
    QuorlScreen const screen;
    EXPECT_EQ(screen.charWidth, metrics.at("advance").get<uint32_t>());
    EXPECT_EQ(screen.charHeight, metrics.at("cell_height").get<uint32_t>());
}

TEST(QuorlScreenTest, TextSitsOnTheCellsLastRowAndScalesPixelBySquare) {
    quorl::graphics::FontRenderer const font;
    auto const& a = *font["A"].front();
    QuorlScreen plain(40, 20);
    plain.WriteLine(0, 0, kWhite, "Ag");
    EXPECT_TRUE(plain.dirty);
    std::set<uint32_t> inkRows;
    for (uint32_t y = 0; y < plain.height; ++y)
        for (int x = 0; x < 8; ++x)
            if (plain.GetPixel(x, static_cast<int>(y)) != 0)
                inkRows.insert(y);
    EXPECT_EQ(*inkRows.rbegin(), 14u) << "the capital ends above the baseline row, charHeight - 1";
    EXPECT_EQ(*inkRows.begin(), 15u - a.verticalBearing);

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

TEST(QuorlScreenTest, ScaledTextIsCutByItsUnscaledRowNumber) {
    // With the baseline on the cell's only row, the glyph lies above y; the cut lets through font rows while
    // y + row < height, so at the last screen row just font row 0 remains, the bar of the T, 2 pixels high.
    quorl::graphics::FontRenderer const font;
    auto const& tee = *font["T"].front();
    QuorlScreen screen(16, 40);
    screen.charHeight = 1;
    screen.textSize = 2;
    screen.WriteLine(0, 39, kWhite, "T");
    std::set<int> inkRows;
    for (int y = 0; y < 40; ++y)
        for (int x = 0; x < 16; ++x)
            if (screen.GetPixel(x, y) != 0)
                inkRows.insert(y);
    int const top = 39 - 2 * tee.verticalBearing;
    EXPECT_EQ(inkRows, (std::set<int>{top, top + 1}));
}

TEST(QuorlScreenTest, LinesAreCutAt1024Bytes) {
    QuorlScreen screen(2000 * 8, 16);
    screen.Write(0, 0, kWhite, std::string(2000, 'x'));
    auto inkIn = [&](int firstColumn, int lastColumn) {
        for (int y = 0; y < 16; ++y)
            for (int x = firstColumn; x <= lastColumn; ++x)
                if (screen.GetPixel(x, y) != 0)
                    return true;
        return false;
    };
    EXPECT_TRUE(inkIn(1023 * 8, 1024 * 8 - 1));
    EXPECT_FALSE(inkIn(1024 * 8, 2000 * 8 - 1));
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
