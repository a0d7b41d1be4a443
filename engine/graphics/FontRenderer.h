#pragma once

#include "engine/Export.h"

#include <array>
#include <cstddef>
#include <string_view>
#include <vector>

namespace quorl::graphics {

/// The monospace font of in-game screens, read from the game tree's atlas "game/graphics/ui/textures/
/// monospace_font_atlas.png" and its metrics "monospace_font_atlas.json" beside it (docs/font_atlas.md), relative to
/// the working directory. Its glyphs are thresholded to ink or no ink, for crisp pixel text. Immutable once made, so
/// any number of threads may read it.
class QUORL_EXPORT FontRenderer {
public:
    /// One character's bitmap and where it sits against the pen and the baseline, in font pixels.
    struct Glyph {
        /// width * height bytes, row by row from the top; non-zero is ink. Empty for a blank glyph such as space.
        std::vector<unsigned char> bitmap;
        int width = 0;
        int height = 0;
        /// Rows from the baseline up to the bitmap's top row.
        int verticalBearing = 0;
        /// Columns from the pen to the bitmap's left column.
        int horizontalBearing = 0;
    };

    /// Throws std::runtime_error naming the file and what is wrong with it when the atlas or its metrics cannot be
    /// read.
    FontRenderer();
    ~FontRenderer();

    /// One glyph per UTF-8 character of `text`, that is per byte that is no continuation byte. Characters outside
    /// printable ASCII get the glyph of '?'. The pointers stay valid as long as the renderer.
    std::vector<Glyph const*> operator[](std::string_view const& text) const;

private:
    static constexpr char kFirstCode = ' ';
    static constexpr char kLastCode = '~';
    static constexpr size_t kGlyphCount = kLastCode - kFirstCode + 1;

    std::array<Glyph, kGlyphCount> _glyphs;
};

}
