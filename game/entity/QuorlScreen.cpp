#include "game/entity/QuorlScreen.h"

#include "engine/graphics/FontRenderer.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <utility>

namespace game::entity {

namespace {

constexpr size_t kMaxLineBytes = 1024;

uint32_t Alpha(uint32_t colour) {
    return colour >> 24;
}

/// `colour` over `under`: each colour channel mixed by the alpha of `colour`, the alphas added up to 255.
uint32_t Blend(uint32_t colour, uint32_t under) {
    uint32_t const alpha = Alpha(colour);
    if (alpha == 255)
        return colour;
    uint32_t result = std::min(Alpha(under) + alpha, 255u) << 24;
    for (int shift = 0; shift < 24; shift += 8) {
        uint32_t const below = (under >> shift) & 0xFF, above = (colour >> shift) & 0xFF;
        result |= (below * (255 - alpha) + above * alpha) / 255 << shift;
    }
    return result;
}

/// Blending `colour` over `pixel` `times` times. Every channel moves monotonically towards a value that blending no
/// longer changes, reached within 256 rounds, so wild block sizes cost no more than that.
uint32_t BlendRepeatedly(uint32_t colour, uint32_t pixel, int64_t times) {
    for (int64_t i = 0; i < times; ++i) {
        uint32_t const next = Blend(colour, pixel);
        if (next == pixel)
            break;
        pixel = next;
    }
    return pixel;
}

/// How often Draw's loop lands on coordinate `at` when it clamps the coordinates start to start + count - 1 to 0.
int64_t TimesClampedTo(int64_t at, int64_t start, int64_t count) {
    return at == 0 && start < 0 ? std::min(count, 1 - start) : 1;
}

/// A line's point, truncated towards zero as the plotting wants; anything beyond int is off the screen anyway.
int Truncate(float coordinate) {
    if (coordinate <= -1.0f)
        return -1;
    if (coordinate >= 2147483648.0f)
        return INT_MAX;
    return static_cast<int>(coordinate);
}

int ClampToInt(int64_t value) {
    return static_cast<int>(std::clamp<int64_t>(value, INT_MIN, INT_MAX));
}

/// The lines of Write: ended by a newline or by backslash and 'n'. A final line ending adds no empty line, and a
/// text of fewer than 2 bytes is one line as it stands, a lone newline included.
std::vector<std::string_view> SplitLines(std::string_view text) {
    if (text.size() < 2)
        return {text};
    std::vector<std::string_view> lines;
    size_t start = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        size_t const ending = text[i] == '\n' ? 1 : text.substr(i, 2) == "\\n" ? 2 : 0;
        if (ending == 0)
            continue;
        lines.push_back(text.substr(start, i - start));
        i += ending - 1;
        start = i + 1;
    }
    if (start < text.size())
        lines.push_back(text.substr(start));
    return lines;
}

/// UTF-8 characters: the bytes that are no continuation byte.
int64_t CountCharacters(std::string_view text) {
    return std::count_if(text.begin(), text.end(),
                         [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0) != 0x80; });
}

quorl::graphics::FontRenderer const& Font() {
    static quorl::graphics::FontRenderer const font;
    return font;
}

}

QuorlScreen::QuorlScreen(uint32_t width, uint32_t height)
    : width(width), height(height), pixels(static_cast<size_t>(width) * height) {}

// ---- Blocks and points ---------------------------------------------------------------------------------------------

void QuorlScreen::Blank(uint32_t colour) {
    std::fill(pixels.begin(), pixels.end(), colour);
    dirty = true;
}

void QuorlScreen::FillBlock(int64_t left, int64_t top, int64_t right, int64_t bottom, uint32_t colour) {
    left = std::max<int64_t>(left, 0);
    top = std::max<int64_t>(top, 0);
    right = std::min<int64_t>(right, width);
    bottom = std::min<int64_t>(bottom, height);
    if (left >= right)
        return;
    for (int64_t y = top; y < bottom; ++y) {
        size_t const rowStart = static_cast<size_t>(y) * width;
        size_t const begin = rowStart + left, end = std::min(rowStart + right, pixels.size());
        if (begin >= end)
            return;
        if (Alpha(colour) == 255)
            std::fill(pixels.begin() + begin, pixels.begin() + end, colour);
        else
            for (size_t i = begin; i < end; ++i)
                pixels[i] = Blend(colour, pixels[i]);
    }
}

void QuorlScreen::Draw(int x, int y, uint32_t colour, int w, int h) {
    dirty = true;
    if (colour == 0 || w <= 0 || h <= 0)
        return;
    // The loop clamps each negative coordinate to 0 and draws there again: a block ending left of or above the
    // screen still lands on column or row 0, and a translucent block sticking out blends its first row and column
    // once per coordinate clamped onto them. That overdraw is kept on purpose, counted here instead of looped, so
    // that a wild size does not stall the device's tick.
    int64_t const right = std::max<int64_t>(int64_t{x} + w, 1), bottom = std::max<int64_t>(int64_t{y} + h, 1);
    if (Alpha(colour) == 255) {
        FillBlock(x, y, right, bottom, colour);
        return;
    }
    int64_t const top = std::max(y, 0), left = std::max(x, 0);
    int64_t const lastRow = std::min<int64_t>(bottom, height), lastColumn = std::min<int64_t>(right, width);
    for (int64_t row = top; row < lastRow; ++row)
        for (int64_t column = left; column < lastColumn; ++column) {
            size_t const index = static_cast<size_t>(column + row * width);
            if (index >= pixels.size())
                return;
            int64_t const times = TimesClampedTo(row, y, h) * TimesClampedTo(column, x, w);
            pixels[index] = BlendRepeatedly(colour, pixels[index], times);
        }
}

uint32_t QuorlScreen::GetPixel(int x, int y) const {
    int64_t const index = x + int64_t{y} * width;
    return index >= 0 && static_cast<size_t>(index) < pixels.size() ? pixels[index] : 0;
}

void QuorlScreen::DrawPoint(int x, int y, uint32_t colour) {
    if (colour == 0 || x < 0 || y < 0 || static_cast<uint32_t>(x) >= width || static_cast<uint32_t>(y) >= height)
        return;
    size_t const index = x + static_cast<size_t>(y) * width;
    if (index < pixels.size())
        pixels[index] = Blend(colour, pixels[index]);
}

// ---- Shapes --------------------------------------------------------------------------------------------------------

void QuorlScreen::DrawLine(int x1, int y1, int x2, int y2, uint32_t colour) {
    float const dx = static_cast<float>(int64_t{x2} - x1), dy = static_cast<float>(int64_t{y2} - y1);
    float const n = std::max(std::abs(dx), std::abs(dy));
    // Device logic may send wild coordinates at every tick: a line this long is not worth walking.
    if (colour == 0 || n == 0.0f || n / 8 > static_cast<float>(uint64_t{width} + height))
        return;
    float const stepX = dx / n, stepY = dy / n;
    float x = static_cast<float>(x1) + 0.5f, y = static_cast<float>(y1) + 0.5f;
    for (auto steps = static_cast<int64_t>(std::ceil(n)); steps > 0; --steps) {
        DrawPoint(Truncate(x), Truncate(y), colour);
        x += stepX;
        y += stepY;
    }
}

void QuorlScreen::DrawRect(int x1, int y1, int x2, int y2, uint32_t outline, uint32_t fill) {
    if (outline == 0)
        return;
    int64_t left = std::min(x1, x2), top = std::min(y1, y2), right = std::max(x1, x2), bottom = std::max(y1, y2);
    if (outline != fill) {
        // The edges stop short of the far corners, as DrawLine leaves out its end point; kept as the screens
        // of existing devices look.
        --bottom;
        DrawLine(ClampToInt(left + 1), ClampToInt(top), ClampToInt(right - 2), ClampToInt(top), outline);
        DrawLine(ClampToInt(left + 1), ClampToInt(bottom), ClampToInt(right - 2), ClampToInt(bottom), outline);
        DrawLine(ClampToInt(left), ClampToInt(top), ClampToInt(left), ClampToInt(bottom), outline);
        DrawLine(ClampToInt(right - 1), ClampToInt(top), ClampToInt(right - 1), ClampToInt(bottom), outline);
        if (fill == 0)
            return;
        ++left;
        ++top;
        --right;
    }
    Draw(ClampToInt(left), ClampToInt(top), fill, ClampToInt(right - left), ClampToInt(bottom - top));
}

void QuorlScreen::DrawTriangle(int x1, int y1, int x2, int y2, int x3, int y3, uint32_t outline, uint32_t fill) {
    if (outline == 0)
        return;
    if (fill != 0)
        FillTriangle(x1, y1, x2, y2, x3, y3, fill);
    if (outline != fill) {
        DrawLine(x1, y1, x2, y2, outline);
        DrawLine(x2, y2, x3, y3, outline);
        DrawLine(x3, y3, x1, y1, outline);
    }
}

void QuorlScreen::FillTriangle(int x1, int y1, int x2, int y2, int x3, int y3, uint32_t colour) {
    // Products of coordinate differences reach 2^64: the edge functions need wider integers than 64 bits.
    using Wide = __int128;
    struct Point {
        int64_t x, y;
    };
    Point a{x1, y1}, b{x2, y2}, c{x3, y3};
    // Positive when p lies on the inner side of the edge from `from` to `to` of a triangle wound like a, b, c below.
    auto edge = [](Point from, Point to, Point p) {
        return Wide{to.x - from.x} * (p.y - from.y) - Wide{to.y - from.y} * (p.x - from.x);
    };
    Wide const area = edge(a, b, c);
    // Either winding is drawn alike: turn the other one round.
    if (area < 0)
        std::swap(b, c);

    int64_t const left = std::max<int64_t>(std::min({a.x, b.x, c.x}), 0);
    int64_t const top = std::max<int64_t>(std::min({a.y, b.y, c.y}), 0);
    int64_t const right = std::min<int64_t>(std::max({a.x, b.x, c.x}), int64_t{width} - 1);
    int64_t const bottom = std::min<int64_t>(std::max({a.y, b.y, c.y}), int64_t{height} - 1);
    if (left > right || top > bottom)
        return;

    // Top-left rule: a point on an edge is inside only if the edge is a top edge (level, interior below) or a left
    // edge (going up, with y down). Of two triangles sharing an edge, each walks it the other way round, so exactly
    // one of them paints it. The bias makes "value + bias >= 0" read "value > 0, or 0 on such an edge".
    struct Edge {
        Wide rowStart;
        int64_t stepX, stepY;
        Wide bias;
    };
    auto makeEdge = [&](Point from, Point to) {
        bool const topLeft = to.y < from.y || (to.y == from.y && to.x > from.x);
        return Edge{edge(from, to, {left, top}), from.y - to.y, to.x - from.x, Wide{topLeft ? 0 : -1}};
    };
    Edge edges[3] = {makeEdge(b, c), makeEdge(c, a), makeEdge(a, b)};
    for (int64_t y = top; y <= bottom; ++y) {
        Wide w0 = edges[0].rowStart, w1 = edges[1].rowStart, w2 = edges[2].rowStart;
        for (int64_t x = left; x <= right; ++x) {
            // A triangle without area covers only the points on its line, where all three functions vanish.
            bool const inside = area == 0 ? w0 == 0 && w1 == 0 && w2 == 0
                                          : w0 + edges[0].bias >= 0 && w1 + edges[1].bias >= 0 &&
                                                w2 + edges[2].bias >= 0;
            if (inside)
                DrawPoint(static_cast<int>(x), static_cast<int>(y), colour);
            w0 += edges[0].stepX;
            w1 += edges[1].stepX;
            w2 += edges[2].stepX;
        }
        for (auto& e : edges)
            e.rowStart += e.stepY;
    }
}

void QuorlScreen::DrawCircle(int x, int y, int radius, uint32_t outline, uint32_t fill) {
    if (outline == 0 || radius < 0)
        return;
    int64_t const r = radius, outer = r * r, inner = (r - 1) * (r - 1);
    // Offsets whose points fall off the screen are skipped up front, which DrawPoint would do one by one.
    int64_t const firstJ = std::max(-r, -int64_t{y}), lastJ = std::min(r, int64_t{height} - 1 - y);
    int64_t const firstI = std::max(-r, -int64_t{x}), lastI = std::min(r, int64_t{width} - 1 - x);
    for (int64_t j = firstJ; j <= lastJ; ++j)
        for (int64_t i = firstI; i <= lastI; ++i) {
            int64_t const q = i * i + j * j;
            if (q >= outer)
                continue;
            if (q >= inner)
                DrawPoint(static_cast<int>(x + i), static_cast<int>(y + j), outline);
            else if (fill != 0)
                DrawPoint(static_cast<int>(x + i), static_cast<int>(y + j), fill);
        }
}

// ---- Text ----------------------------------------------------------------------------------------------------------

void QuorlScreen::WriteLine(int x, int y, uint32_t colour, std::string_view text) {
    dirty = true;
    if (colour == 0)
        return;
    auto const glyphs = Font()[text.substr(0, kMaxLineBytes)];
    int64_t const scale = textSize, advance = int64_t{charWidth} * scale;
    int64_t const baseline = y + (int64_t{charHeight} - 1) * scale;
    int64_t pen = x;
    for (auto const* glyph : glyphs) {
        // The pen only moves right: once past the screen no glyph after it draws anything.
        if (pen >= width)
            break;
        // The cut test compares unscaled rows and columns with the screen, which cuts a scaled glyph early; kept,
        // as screens of existing devices rely on where their text ends.
        for (int row = 0; row < glyph->height && y + row < int64_t{height}; ++row)
            for (int column = 0; column < glyph->width && pen + column < int64_t{width}; ++column) {
                if (!glyph->bitmap[row * glyph->width + column])
                    continue;
                int64_t const left = (glyph->horizontalBearing + column) * scale + pen;
                int64_t const top = baseline + (row - glyph->verticalBearing) * scale;
                FillBlock(left, top, left + scale, top + scale, colour);
            }
        pen += advance;
    }
}

void QuorlScreen::Write(int x, int y, uint32_t colour, std::string_view text) {
    if (colour == 0)
        return;
    auto const lines = SplitLines(text);
    int64_t const lineHeight = int64_t{charHeight} * textSize, cellWidth = int64_t{charWidth} * textSize;
    auto const count = static_cast<int64_t>(lines.size());
    int64_t top = y;
    if (textAlign & 4)
        top = y + 1;
    else if (textAlign & 8)
        top = y + int64_t{height} - lineHeight * count;
    else if (textAlign & 16)
        top = y + std::max<int64_t>(1, height / 2 - lineHeight * count / 2);
    for (auto const line : lines) {
        int64_t const characters = CountCharacters(line);
        int64_t left = x;
        if (textAlign & 1)
            left = x + 1;
        else if (textAlign & 2)
            left = x + int64_t{width} + textSize - 1 - characters * cellWidth;
        else if (textAlign & 16)
            left = x + std::max<int64_t>(1, width / 2 - characters * cellWidth / 2);
        if (!line.empty())
            WriteLine(ClampToInt(left), ClampToInt(top), colour, line);
        top += lineHeight;
    }
}

}
