#include "manual/scene.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <fstream>
#include <stdexcept>

namespace aveffect::manual {

namespace {

constexpr int kSamples = 3; // a side, of each pixel

struct Colour {
    double red, green, blue; ///< 0 to 255
};

Colour Mix(const Colour& from, const Colour& to, double share) {
    const double s = std::clamp(share, 0.0, 1.0);
    return {from.red + (to.red - from.red) * s, from.green + (to.green - from.green) * s,
            from.blue + (to.blue - from.blue) * s};
}

Colour Scaled(const Colour& colour, double factor) {
    return {colour.red * factor, colour.green * factor, colour.blue * factor};
}

/// From 0 to 1, the same for the same cell.
double Random(int column, int row) {
    uint32_t bits = static_cast<uint32_t>(column) * 374761393u + static_cast<uint32_t>(row) * 668265263u;
    bits = (bits ^ (bits >> 13)) * 1274126177u;
    return ((bits ^ (bits >> 16)) & 0xffff) / 65535.0;
}

bool InEllipse(double x, double y, double centreX, double centreY, double radiusX, double radiusY) {
    return std::hypot((x - centreX) / radiusX, (y - centreY) / radiusY) < 1;
}

Colour Sky(double x, double y) {
    const Colour sky = Mix({38, 104, 200}, {250, 214, 170}, y / 190);
    const double sun = std::hypot(x - 76, y - 70);
    return sun < 26 ? Colour{255, 244, 190} : Mix({255, 236, 170}, sky, std::min(1.0, 0.35 + sun / 110));
}

Colour Hills(double x, double y, const Colour& behind) {
    const double ridge = 168 + 16 * std::sin(x / 58) + 7 * std::sin(x / 21);
    const double meadow = 214 + 14 * std::sin(x / 80 + 2) + 4 * std::sin(x / 17);
    if (y > meadow) {
        const double blade = Random(static_cast<int>(x / 1.5), static_cast<int>(y / 4));
        const bool flower = Random(static_cast<int>(x / 6), static_cast<int>(y / 6) + 900) > 0.93 &&
                            std::hypot(std::fmod(x, 6.0) - 3, std::fmod(y, 6.0) - 3) < 2.4;
        return flower ? Colour{232, 36, 60} : Mix({34, 110, 34}, {96, 176, 52}, blade);
    }
    return y > ridge ? Mix({88, 132, 116}, {150, 172, 128}, (y - ridge) / 50) : behind;
}

/// A balloon in slices of strong colours, on the right.
Colour Balloon(double x, double y, const Colour& behind) {
    constexpr std::array<Colour, 5> kSlices{
        {{228, 26, 28}, {255, 196, 0}, {0, 150, 64}, {0, 110, 220}, {160, 32, 170}}};
    const double dx = x - 352, dy = y - 74;
    if (std::abs(dx) < 8 && dy > 64 && dy < 76) return {120, 72, 30};
    if (std::abs(std::abs(dx) - 7 - (64 - dy) / 4) < 0.7 && dy > 40 && dy < 64) return {60, 40, 30};
    if (!InEllipse(dx, dy, 0, 0, 42, 50)) return behind;
    const double turn = std::asin(std::clamp(dx / (42 * std::sqrt(1 - dy * dy / 2500)), -1.0, 1.0));
    const auto slice = static_cast<size_t>(std::clamp((turn / 3.1416 + 0.5) * 5, 0.0, 4.99));
    return Scaled(kSlices[slice], 1.05 - 0.4 * std::hypot(dx + 14, dy + 16) / 60);
}

Colour Shirt(double x, double y) {
    const bool column = std::fmod(x + 400, 16.0) < 8, row = std::fmod(y, 16.0) < 8;
    const Colour check = column && row   ? Colour{190, 20, 36}
                         : column || row ? Colour{226, 110, 110}
                                         : Colour{244, 236, 226};
    return Scaled(check, 1 - std::abs(x - 210) / 260);
}

bool IsHair(double x, double y) {
    return InEllipse(x, y, 208, 134, 64, 78) && (y < 120 || std::abs(x - 208) > 38);
}

Colour Face(double x, double y) {
    Colour skin = Mix({250, 206, 170}, {186, 118, 84}, std::hypot(x - 190, y - 130) / 92);
    if (InEllipse(x, y, 178, 166, 13, 9) || InEllipse(x, y, 238, 166, 13, 9))
        skin = Mix(skin, {240, 110, 100}, 0.35);
    for (const double eye : {186.0, 230.0}) {
        if (InEllipse(x, y, eye, 141, 9.5, 6)) skin = {250, 250, 248};
        if (InEllipse(x, y, eye, 141, 5, 5.4)) skin = {40, 110, 130};
        if (InEllipse(x, y, eye, 141, 2.4, 2.6)) skin = {10, 14, 20};
        if (InEllipse(x, y, eye - 1.6, 139, 1.3, 1.3)) skin = {255, 255, 255};
        if (std::abs(y - 129 - std::pow((x - eye) / 9, 2)) < 1.7 && std::abs(x - eye) < 12)
            skin = {84, 44, 22};
    }
    if (std::abs(x - 211 - (y - 150) / 6) < 1.1 && y > 142 && y < 160) skin = Scaled(skin, 0.8);
    if (InEllipse(x, y, 209, 162, 7, 2.2)) skin = Scaled(skin, 0.78);
    const double smile = y - 184 + std::pow((x - 208) / 15, 2) * 5;
    if (std::abs(x - 208) < 20 && smile > -3 && smile < 5 - std::abs(x - 208) / 5)
        skin = smile > -1 && smile < 1.6 ? Colour{252, 248, 240} : Colour{196, 48, 60};
    return skin;
}

/// Whether the person is there, and in which colour.
bool Person(double x, double y, Colour& colour) {
    if (InEllipse(x, y, 208, 96, 94, 13) || (InEllipse(x, y, 208, 92, 50, 58) && y < 94)) {
        const bool band = y > 74 && y < 88 && std::abs(x - 208) < 50;
        const double weave = 0.86 + 0.22 * Random(static_cast<int>(x / 2), static_cast<int>(y / 2));
        colour = band ? Colour{30, 60, 150} : Scaled({228, 190, 110}, weave - std::abs(x - 180) / 500);
        return true;
    }
    if (InEllipse(x, y, 208, 148, 47, 58)) return colour = Face(x, y), true;
    if (IsHair(x, y)) {
        const double strand = Random(static_cast<int>((x + 6 * std::sin(y / 14)) / 1.6), 3);
        return colour = Mix({62, 30, 12}, {170, 92, 36}, strand), true;
    }
    if (std::abs(x - 208) < 19 && y > 190 && y < 232) return colour = Scaled({206, 144, 106}, 0.92), true;
    if (InEllipse(x, y, 208, 300, 112, 84)) return colour = Shirt(x, y), true;
    return false;
}

Colour Day(double x, double y, double parallax) {
    Colour person{};
    if (Person(x - parallax, y, person)) return person;
    const Colour back = Balloon(x - parallax / 2, y, Sky(x, y));
    return Hills(x - parallax / 4, y, back);
}

Colour Windows(double x, double y, int house) {
    const int column = static_cast<int>(x / 9), row = static_cast<int>(y / 11);
    const bool glass = std::fmod(x, 9.0) > 3 && std::fmod(y, 11.0) > 4;
    const double light = Random(column + 40 * house, row);
    if (!glass) return {16, 18, 34};
    if (light < 0.45) return {26, 34, 58};
    return Mix({255, 190, 70}, {255, 240, 190}, light);
}

Colour Town(double x, double y) {
    const int house = static_cast<int>(x / 48);
    const double top = 60 + 110 * Random(house, 7);
    if (y > top) return Windows(x, y, house);
    if (std::hypot(x - 300, y - 52) < 24) return {250, 244, 220};
    const bool star = Random(static_cast<int>(x / 3), static_cast<int>(y / 3)) > 0.993;
    const Colour sky = Mix({10, 12, 48}, {96, 44, 110}, y / 200);
    return star ? Colour{240, 240, 255} : Mix({200, 200, 230}, sky, std::hypot(x - 300, y - 52) / 90);
}

Colour Night(double x, double y) {
    constexpr double kShore = 206;
    if (y < kShore) return Town(x, y);
    const double wave = 5 * std::sin(y * 0.9 + 3 * Random(static_cast<int>(x / 40), static_cast<int>(y / 3)));
    return Mix(Town(x + wave, 2 * kShore - y), {10, 30, 70}, 0.25 + (y - kShore) / 150);
}

template <typename ColourAt>
Drawing Draw(ColourAt colourAt) {
    Drawing drawing;
    drawing.reserve(size_t{kSceneWidth} * kSceneHeight * 3);
    constexpr double kStep = 1.0 / kSamples, kCount = kSamples * kSamples;
    for (int row = 0; row < kSceneHeight; ++row)
        for (int column = 0; column < kSceneWidth; ++column) {
            Colour sum{0, 0, 0};
            for (int sample = 0; sample < kSamples * kSamples; ++sample) {
                const int across = sample % kSamples, down = sample / kSamples;
                const Colour colour = colourAt(column + (across + 0.5) * kStep, row + (down + 0.5) * kStep);
                sum = {sum.red + colour.red, sum.green + colour.green, sum.blue + colour.blue};
            }
            for (const double value : {sum.red, sum.green, sum.blue})
                drawing.push_back(static_cast<uint8_t>(std::clamp(value / kCount, 0.0, 255.0)));
        }
    return drawing;
}

} // namespace

Drawing DrawDay(double parallax) {
    return Draw([parallax](double x, double y) { return Day(x, y, parallax); });
}

Drawing DrawNight() { return Draw(Night); }

// As PPM, which every program reads.
void WritePicture(const std::filesystem::path& file, const Drawing& drawing) {
    std::ofstream out(file, std::ios::binary);
    out << "P6\n" << kSceneWidth << ' ' << kSceneHeight << "\n255\n";
    out.write(reinterpret_cast<const char*>(drawing.data()), static_cast<std::streamsize>(drawing.size()));
    if (!out.flush()) throw std::runtime_error("can't write '" + file.string() + "'");
}

} // namespace aveffect::manual
