// pictures.cpp -- the report's images. The two icons are drawn as character
// grids (one character per pixel, mapped to a palette index); the logo is
// drawn from strokes, four by four samples per pixel, so that its edges are
// smooth.
#include "pictures.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <map>

namespace gifmake {

namespace {

struct Swatch {
    char key;
    Rgb colour;
};

// Fills picture.palette and picture.pixels from a grid of characters.
void PaintGrid(GifPicture &picture, const std::vector<Swatch> &swatches, const char *const *rows)
{
    std::map<char, int> index;
    picture.palette.clear();
    for (const Swatch &swatch : swatches) {
        index[swatch.key] = static_cast<int>(picture.palette.size());
        picture.palette.push_back(swatch.colour);
    }
    picture.pixels.clear();
    for (int y = 0; y < picture.height; ++y) {
        const char *row = rows[y];
        for (int x = 0; x < picture.width; ++x) {
            auto found = index.find(row[x]);
            if (row[x] == '\0' || found == index.end()) {
                fprintf(stderr, "bad grid at row %d column %d\n", y, x);
                exit(2);
            }
            picture.pixels.push_back(static_cast<uint8_t>(found->second));
        }
        if (row[picture.width] != '\0') {
            fprintf(stderr, "row %d is longer than %d\n", y, picture.width);
            exit(2);
        }
    }
}

}  // namespace

GifPicture HomePicture()
{
    GifPicture picture;
    picture.gif89a = true;
    picture.width = 19;
    picture.height = 20;
    picture.tableBits = 8;
    picture.transparent = 0;
    picture.minCodeSize = 5;
    // 21 colours; the rest of the 256-entry table stays black.
    const std::vector<Swatch> swatches = {
        {'.', {255, 255, 255}},  // transparent
        {'k', {64, 32, 16}},     // outline
        {'d', {140, 20, 20}},    // roof in shadow
        {'r', {200, 40, 30}},    // roof
        {'R', {235, 110, 90}},   // roof in light
        {'w', {250, 236, 200}},  // wall
        {'s', {214, 192, 148}},  // wall in shadow
        {'D', {134, 82, 40}},    // door
        {'g', {250, 210, 60}},   // door knob
        {'f', {120, 90, 60}},    // window frame
        {'b', {80, 140, 220}},   // glass
        {'B', {185, 218, 250}},  // glass in light
        {'c', {160, 70, 50}},    // chimney
        {'C', {100, 40, 30}},    // chimney cap
        {'G', {84, 170, 62}},    // grass
        {'h', {42, 120, 40}},    // grass in shadow
        {'S', {190, 190, 196}},  // smoke
        {'T', {225, 225, 230}},  // thin smoke
        {'p', {204, 182, 140}},  // path
        {'F', {150, 150, 150}},  // stone
        {'x', {90, 50, 25}},     // door frame
    };
    static const char *const rows[] = {
        "..............TT...",
        ".............SST...",
        ".........k..kCCk...",
        "........kRk.kcck...",
        ".......kRrrkkcck...",
        "......kRrrrrkcck...",
        ".....kRrrrrrrkck...",
        "....kRrrrrrrrrkk...",
        "...kRrrrrrrrrrrk...",
        "..kRrrrrrrrrrrrdk..",
        ".kRrrrrrrrrrrrrddk.",
        "kkkkkkkkkkkkkkkkkkk",
        "..kwwwwwwwwwwwwsk..",
        "..kwffffwwwxDDDsk..",
        "..kwfBbfwwwxDDDsk..",
        "..kwfbbfwwwxDDgsk..",
        "..kwffffwwwxDDDsk..",
        "..kwwwwwwwwxDDDsk..",
        "GGkkkkkkkkkkpppkkGG",
        "hGGGGGGGGGGGpppGGGh",
    };
    PaintGrid(picture, swatches, rows);
    return picture;
}

GifPicture HelpPicture()
{
    GifPicture picture;
    picture.gif89a = true;
    picture.width = 19;
    picture.height = 20;
    picture.tableBits = 3;
    picture.transparent = 0;
    picture.minCodeSize = 3;
    const std::vector<Swatch> swatches = {
        {'.', {255, 255, 255}},  // transparent
        {'o', {24, 62, 140}},    // rim
        {'b', {46, 108, 206}},   // disc
        {'l', {110, 160, 236}},  // disc in light
        {'w', {255, 255, 254}},  // the question mark
        {'e', {150, 176, 222}},  // rim against the background
    };
    static const char *const rows[] = {
        "......eoooooe......",
        "....eobbbbbbboe....",
        "...obllbbbbbbbbo...",
        "..oblllbbbbbbbbbo..",
        ".eblllbbbbbbbbbbbe.",
        ".obllbbbwwwwwbbbbo.",
        "eobllbbwwbbbwwbbboe",
        "obbbbbbwwbbbwwbbbbo",
        "obbbbbbbbbbbwwbbbbo",
        "obbbbbbbbbbwwbbbbbo",
        "obbbbbbbbbwwbbbbbbo",
        "obbbbbbbbwwbbbbbbbo",
        "obbbbbbbbwwbbbbbbbo",
        "eobbbbbbbbbbbbbbboe",
        ".obbbbbbbwwbbbbbbo.",
        ".ebbbbbbbwwbbbbbbe.",
        "..obbbbbbbbbbbbbo..",
        "...obbbbbbbbbbbo...",
        "....eobbbbbbboe....",
        "......eoooooe......",
    };
    PaintGrid(picture, swatches, rows);
    return picture;
}

namespace {

// A stroke of the logo: true when the point (x, y) lies on it.
struct Shape {
    enum Kind { Rect, Capsule, Arc } kind;
    double a, b, c, d;   // Rect: x0 y0 x1 y1; Capsule: x0 y0 x1 y1; Arc: cx cy radius -
    double halfWidth;    // Capsule, Arc
    double from, to;     // Arc: angles in degrees, counter-clockwise as seen

    bool Contains(double x, double y) const
    {
        switch (kind) {
        case Rect:
            return x >= a && x <= c && y >= b && y <= d;
        case Capsule: {
            double dx = c - a, dy = d - b;
            double t = ((x - a) * dx + (y - b) * dy) / (dx * dx + dy * dy);
            t = t < 0 ? 0 : (t > 1 ? 1 : t);
            double px = a + t * dx - x, py = b + t * dy - y;
            return px * px + py * py <= halfWidth * halfWidth;
        }
        case Arc: {
            double dx = x - a, dy = b - y;  // y up
            double r = std::sqrt(dx * dx + dy * dy);
            if (std::fabs(r - c) > halfWidth)
                return false;
            double angle = std::atan2(dy, dx) * 180.0 / M_PI;
            while (angle < from)
                angle += 360.0;
            return angle <= to;
        }
        }
        return false;
    }
};

Shape MakeRect(double x0, double y0, double x1, double y1)
{
    return Shape{Shape::Rect, x0, y0, x1, y1, 0, 0, 0};
}
Shape MakeCapsule(double x0, double y0, double x1, double y1, double halfWidth)
{
    return Shape{Shape::Capsule, x0, y0, x1, y1, halfWidth, 0, 0};
}
Shape MakeArc(double cx, double cy, double radius, double halfWidth, double from, double to)
{
    return Shape{Shape::Arc, cx, cy, radius, 0, halfWidth, from, to};
}

// Fraction (0..16 of 16) of a pixel's samples that fall on the shapes.
int Coverage(const std::vector<Shape> &shapes, int px, int py)
{
    int hits = 0;
    for (int sy = 0; sy < 4; ++sy) {
        for (int sx = 0; sx < 4; ++sx) {
            double x = px + (sx + 0.5) / 4.0, y = py + (sy + 0.5) / 4.0;
            for (const Shape &shape : shapes) {
                if (shape.Contains(x, y)) {
                    ++hits;
                    break;
                }
            }
        }
    }
    return hits;
}

Rgb Blend(Rgb ink, int sixteenths)
{
    auto mix = [&](uint8_t channel) {
        return static_cast<uint8_t>((255 * (16 - sixteenths) + channel * sixteenths + 8) / 16);
    };
    return Rgb{mix(ink.r), mix(ink.g), mix(ink.b)};
}

}  // namespace

GifPicture LogoPicture()
{
    GifPicture picture;
    picture.gif89a = false;
    picture.width = 66;
    picture.height = 45;
    picture.minCodeSize = 6;

    // Baseline at y 31, x-height from 17.3, capitals and ascenders from 9.
    const double stroke = 1.7;
    std::vector<Shape> letters = {
        // T
        MakeRect(1.5, 9.0, 16.5, 12.4),
        MakeRect(7.3, 9.0, 10.7, 31.0),
        // a: a bowl and a stem
        MakeArc(22.0, 24.4, 4.5, stroke, -180.0, 180.0),
        MakeRect(26.5, 17.3, 29.9, 31.0),
        // r: a stem and a shoulder
        MakeRect(32.6, 17.3, 36.0, 31.0),
        MakeArc(40.0, 23.8, 4.4, stroke, 55.0, 180.0),
        // s: two bowls meeting in the middle
        MakeArc(45.8, 21.6, 2.7, 1.6, 30.0, 270.0),
        MakeArc(45.8, 26.9, 2.7, 1.6, -150.0, 90.0),
        // k: a stem and two arms
        MakeRect(51.8, 9.0, 55.2, 31.0),
        MakeCapsule(55.0, 25.0, 61.6, 17.6, stroke),
        MakeCapsule(57.6, 22.6, 62.2, 30.0, stroke),
    };
    // The swoosh: a curve that is thickest in the middle.
    std::vector<Shape> swoosh;
    const int steps = 24;
    for (int i = 0; i < steps; ++i) {
        auto point = [](double t, double *x, double *y) {
            *x = 3.0 + 60.0 * t;
            *y = 40.5 - 7.0 * t + 4.5 * t * t;
        };
        double t0 = static_cast<double>(i) / steps, t1 = static_cast<double>(i + 1) / steps;
        double x0, y0, x1, y1;
        point(t0, &x0, &y0);
        point(t1, &x1, &y1);
        double mid = (t0 + t1) / 2;
        swoosh.push_back(MakeCapsule(x0, y0, x1, y1, 0.5 + 1.6 * std::sin(M_PI * mid)));
    }

    const Rgb ink = {26, 61, 143};
    const Rgb orange = {255, 153, 0};
    // Palette: white, 16 shades of ink, 16 shades of orange.
    picture.palette.push_back(Rgb{255, 255, 255});
    for (int level = 1; level <= 16; ++level)
        picture.palette.push_back(Blend(ink, level));
    for (int level = 1; level <= 16; ++level)
        picture.palette.push_back(Blend(orange, level));

    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            int text = Coverage(letters, x, y);
            int band = Coverage(swoosh, x, y);
            uint8_t index = 0;
            if (text > 0 && text >= band)
                index = static_cast<uint8_t>(text);
            else if (band > 0)
                index = static_cast<uint8_t>(16 + band);
            picture.pixels.push_back(index);
        }
    }
    return picture;
}

GifPicture SpacerPicture()
{
    GifPicture picture;
    picture.gif89a = true;
    picture.width = 1;
    picture.height = 1;
    picture.tableBits = 1;
    picture.transparent = 0;
    picture.minCodeSize = 2;
    picture.palette = {Rgb{0, 0, 0}, Rgb{255, 255, 255}};
    picture.pixels = {0};
    return picture;
}

}  // namespace gifmake
