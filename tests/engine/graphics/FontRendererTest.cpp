#include "engine/graphics/FontRenderer.h"

#include "tests/support/Capture.h"
#include "tests/support/TempDirectory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <optional>

using quorl::graphics::FontRenderer;
using testing::HasSubstr;

namespace {

constexpr char kTextures[] = "game/graphics/ui/textures";

bool HasInk(FontRenderer::Glyph const& glyph) {
    return std::any_of(glyph.bitmap.begin(), glyph.bitmap.end(), [](unsigned char pixel) { return pixel != 0; });
}

/// Runs the test from another directory, as a game started elsewhere would, and comes back at the end.
class InDirectory {
public:
    explicit InDirectory(std::filesystem::path const& path) : _previous(std::filesystem::current_path()) {
        std::filesystem::current_path(path);
    }
    ~InDirectory() { std::filesystem::current_path(_previous); }

private:
    std::filesystem::path _previous;
};

}

TEST(FontRendererTest, GivesOneGlyphPerCharacterWithInkAboveAndBelowTheBaselineAndQuestionMarksForTheRest) {
    FontRenderer const font;
    auto const& a = *font["A"].front();
    auto const& g = *font["g"].front();
    // Where a glyph sits on the baseline of its cell is QuorlScreenTest's, which draws them.
    EXPECT_EQ(a.bitmap.size(), static_cast<size_t>(a.width * a.height));
    EXPECT_GT(a.verticalBearing, 8);
    EXPECT_LE(a.horizontalBearing + a.width, 9);
    EXPECT_GT(g.height, g.verticalBearing) << "g descends below the baseline";
    EXPECT_LT(g.verticalBearing, a.verticalBearing);
    EXPECT_TRUE(font[" "].front()->bitmap.empty());
    for (char code = '!'; code <= '~'; ++code)
        EXPECT_TRUE(HasInk(*font[std::string_view(&code, 1)].front())) << code;

    auto const question = font["?"].front();
    // Control characters, a stray continuation byte (skipped), a cut sequence, DEL and a four-byte character.
    auto const glyphs = font[std::string_view("\t\n\x80\xE2\x82" "a\x7F\xF0\x9F\x98\x80", 11)];
    ASSERT_EQ(glyphs.size(), 6u);
    EXPECT_EQ(glyphs[4], question);
    EXPECT_EQ(glyphs[3], font["a"].front());
    EXPECT_EQ(std::count(glyphs.begin(), glyphs.end(), question), 5);
    EXPECT_TRUE(font[""].empty());
}

TEST(FontRendererTest, AMissingBrokenOrMismatchedFileIsNamedInTheError) {
    auto const source = std::filesystem::current_path() / kTextures;
    auto const metrics = ReadFile((source / "monospace_font_atlas.json").string());
    auto const atlas = ReadFile((source / "monospace_font_atlas.png").string());
    TempDirectory directory;
    auto const textures = directory.Path() / kTextures;
    std::filesystem::create_directories(textures);
    auto const json = (textures / "monospace_font_atlas.json").string();
    auto const png = (textures / "monospace_font_atlas.png").string();
    InDirectory inside(directory.Path());

    auto replaced = [&](std::string const& from, std::string const& to) {
        auto changed = metrics;
        changed.replace(changed.find(from), from.size(), to);
        return changed;
    };
    struct Case {
        std::optional<std::string> metrics;
        std::optional<std::string> atlas;
        std::string error;
    };
    Case const cases[] = {
        {{}, {}, "game/graphics/ui/textures/monospace_font_atlas.json\": no such file"},
        {"{\"version\": 1,", {}, "monospace_font_atlas.json\": [json.exception.parse_error"},
        {"{\"version\": 2}", {}, "monospace_font_atlas.png\": no such file"},
        {"{\"version\": 2}", "not a png", "monospace_font_atlas.png\": not a readable image"},
        {metrics, atlas, "no exception"},
        {replaced("\"version\": 1", "\"version\": 2"), atlas, "json\": version 2 is not 1"},
        {replaced("\"cell_width\": 9", "\"cell_width\": 10"), atlas,
            "png\": its size 144x128 is not that of the cells"},
        {replaced("\"code\": 65", "\"code\": 200"), atlas, "json\": no glyph for code 65"},
        {replaced("\"width\": 0", "\"width\": 10"), atlas, "json\": the box of glyph 32 lies outside its cell"},
        {replaced("\"columns\": 16", "\"columns\": \"16\""), atlas, "json\": [json.exception.type_error"},
    };
    for (auto const& c : cases) {
        std::filesystem::remove(json);
        std::filesystem::remove(png);
        if (c.metrics)
            WriteFile(json, *c.metrics);
        if (c.atlas)
            WriteFile(png, *c.atlas);
        EXPECT_THAT(ErrorOf([] { FontRenderer font; }), HasSubstr(c.error)) << c.error;
    }
}
