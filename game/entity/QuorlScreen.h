#pragma once

#include "game/Export.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace game::entity {

/// The software frame buffer of an in-game display. Device logic draws on it on the processor; its owner uploads
/// `pixels` as a texture while `dirty` is set, then clears `dirty`. Every operation clips to the buffer, checks each
/// index against `pixels.size()` and never fails. A colour is alpha in the top byte and three colour bytes below it;
/// a colour of 0 draws nothing, except in Blank. No locks: one thread draws at a time.
class MERIDON_EXPORT QuorlScreen {
public:
    /// Width of a text cell in font pixels. Default: the monospace atlas's advance.
    uint32_t charWidth = 8;
    /// Height of a text cell in font pixels, and the line height of Write. Default: the monospace atlas's cell height.
    uint32_t charHeight = 16;
    uint32_t width = 0;
    uint32_t height = 0;
    /// Screen pixels per font pixel, per side. Default 1.
    uint32_t textSize = 1;
    /// Alignment flags of Write: 1 left, 2 right, 4 top, 8 bottom, 16 centre on every axis that no other flag
    /// takes. Default 0: text starts at the given point.
    uint32_t textAlign = 0;
    /// Row-major: the pixel x, y is at x + y * width.
    std::vector<uint32_t> pixels;
    /// Set by Blank, Draw, WriteLine and what goes through them; the shapes drawn point by point leave it alone.
    bool dirty = false;

    QuorlScreen() = default;
    /// A screen of `width` by `height` pixels, all 0.
    QuorlScreen(uint32_t width, uint32_t height);

    /// Every pixel becomes `colour`, unblended.
    void Blank(uint32_t colour);
    /// One line of text with its top-left cell at x, y; only the first 1024 bytes of `text` are drawn.
    void WriteLine(int x, int y, uint32_t colour, std::string_view text);
    /// Lines split at newlines and at the two characters backslash and 'n', placed by `textAlign`.
    void Write(int x, int y, uint32_t colour, std::string_view text);
    /// Fills the w by h block at x, y. Coordinates left of or above the screen are clamped to 0 one by one, so a
    /// translucent block sticking out blends column 0 and row 0 once per coordinate clamped onto them.
    void Draw(int x, int y, uint32_t colour, int w, int h);
    /// The value at index x + y * width, so x past a row's end reads the next row; 0 past the end of `pixels`.
    uint32_t GetPixel(int x, int y) const;
    void DrawPoint(int x, int y, uint32_t colour);
    /// Plots from x1, y1 towards x2, y2, leaving out the end point. Lines longer than 8 * (width + height) are
    /// refused.
    void DrawLine(int x1, int y1, int x2, int y2, uint32_t colour);
    /// A rectangle between the two corners, in any order. Outline 0 draws nothing; fill 0 leaves it hollow.
    void DrawRect(int x1, int y1, int x2, int y2, uint32_t outline, uint32_t fill);
    /// Outline 0 draws nothing; fill 0 draws the edges only. Triangles sharing an edge paint it once.
    void DrawTriangle(int x1, int y1, int x2, int y2, int x3, int y3, uint32_t outline, uint32_t fill);
    /// The ring of points whose squared distance lies in [(radius - 1)², radius²) takes the outline, those inside
    /// it the fill. Outline 0 or a negative radius draws nothing.
    void DrawCircle(int x, int y, int radius, uint32_t outline, uint32_t fill);

private:
    void FillTriangle(int x1, int y1, int x2, int y2, int x3, int y3, uint32_t colour);
    /// Blends `colour` once into every pixel of [left, right) x [top, bottom) that lies on the screen.
    void FillBlock(int64_t left, int64_t top, int64_t right, int64_t bottom, uint32_t colour);
};

}
