// How sines, cosines, tangents and powers round, at the arguments that effects give them: ours beside the C
// library's and the nearest number (MPFR), and how often what an effect cuts from them is another whole
// number.
//   elementary_errors          a table
//   elementary_errors --bits   every result, for a comparison between processors
#include <algorithm>
#include <array>
#include <bit>
#include <chrono>
#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <functional>
#include <numbers>
#include <span>
#include <string>
#include <utility>
#include <vector>

#ifdef AVEFFECT_HAS_MPFR
#include <mpfr.h>
#endif

#include "aveffect/base_media.h"

namespace {

using Arguments = std::vector<double>;
constexpr double kHalfTurn = 3.14159265, kQuarterTurn = 1.570796325; // as the transitions have them

/// Of which the exponent is one for all.
struct Function {
    std::function<double(double)> ours, library;
#ifdef AVEFFECT_HAS_MPFR
    std::function<void(mpfr_t)> nearest; // in place
#endif
};

struct Use {
    std::string name;
    Function function;
    Arguments arguments;
    std::function<long long(double)> cut; // as the effect does, in 1920x1080
    bool single = false;                  // rounded to single precision before it is used
};

#ifdef AVEFFECT_HAS_MPFR
double Nearest(const Use& use, double argument, bool single) {
    mpfr_t number;
    mpfr_init2(number, single ? 24 : 53);
    mpfr_set_d(number, argument, MPFR_RNDN);
    use.function.nearest(number);
    const double result = mpfr_get_d(number, MPFR_RNDN);
    mpfr_clear(number);
    return result;
}
Function Of(std::function<double(double)> ours, std::function<double(double)> library,
            int (*exact)(mpfr_t, const mpfr_t, mpfr_rnd_t)) {
    return {std::move(ours), std::move(library),
            [exact](mpfr_t number) { exact(number, number, MPFR_RNDN); }};
}
#define NEAREST(function) , function
#else
Function Of(std::function<double(double)> ours, std::function<double(double)> library) {
    return {std::move(ours), std::move(library)};
}
#define NEAREST(function)
#endif

Function SineOf() {
    return Of(AVBasedSine, [](double x) { return std::sin(x); } NEAREST(mpfr_sin));
}
Function CosineOf() {
    return Of(AVBasedCosine, [](double x) { return std::cos(x); } NEAREST(mpfr_cos));
}
Function TangentOf() {
    return Of(AVBasedTangent, [](double x) { return std::tan(x); } NEAREST(mpfr_tan));
}

Function PowerTo(double exponent) {
    Function function;
    function.ours = [exponent](double x) { return AVBasedPower(x, exponent); };
    function.library = [exponent](double x) { return std::pow(x, exponent); };
#ifdef AVEFFECT_HAS_MPFR
    function.nearest = [exponent](mpfr_t number) {
        mpfr_t power;
        mpfr_init2(power, 53);
        mpfr_set_d(power, exponent, MPFR_RNDN);
        mpfr_pow(number, number, power, MPFR_RNDN);
        mpfr_clear(power);
    };
#endif
    return function;
}

/// In single precision, as a kernel turns places by them.
Function SingleOf(bool sine) {
    const auto ours = [sine](double x) {
        const float angles[2] = {static_cast<float>(x), static_cast<float>(x)}; // as vectors take them
        float sines[2] = {}, cosines[2] = {};
        AVBasedSinesAndCosines(angles, sines, cosines, 2);
        return double{sine ? sines[1] : cosines[1]};
    };
    const auto library = [sine](double x) {
        const auto angle = static_cast<float>(x);
        return double{sine ? std::sin(angle) : std::cos(angle)};
    };
    return Of(ours, library NEAREST(sine ? mpfr_sin : mpfr_cos));
}

/// Every moment of transitions of 1 to 600 pictures.
Arguments Moments(const std::function<double(double)>& angle) {
    Arguments all;
    for (int length = 1; length <= 600; ++length)
        for (int at = 0; at <= length; ++at) all.push_back(angle(double{1} * at / length));
    return all;
}

Arguments Degrees(int most, std::span<const double> offsets) {
    Arguments all;
    for (int degrees = -most; degrees <= most; ++degrees)
        for (const double offset : offsets) all.push_back(degrees * std::numbers::pi / 180 + offset);
    return all;
}

constexpr int kRadii[] = {1, 2, 3, 5, 8, 13, 16, 50, 64, 100, 128, 240, 256, 300, 540};

/// Distances of pixels from a circle's centre, as shares of its radius.
Arguments Shares() {
    Arguments all;
    for (const int radius : kRadii)
        for (int x = 0; x <= radius; ++x)
            for (int y = 0; y <= x && x * x + y * y <= radius * radius; ++y)
                all.push_back(std::sqrt(double{1} * (x * x + y * y)) / radius);
    return all;
}

Arguments Twists() {
    Arguments all;
    for (const double scale : {1., 3., 5., -2.})
        for (const double share : Shares())
            all.push_back(double{static_cast<float>(2 * ((1 - share) * scale * (share - 0.7)))});
    return all;
}

std::vector<Use> Uses() {
    using std::numbers::pi;
    const auto times = [](double factor) {
        return [=](double x) { return static_cast<long long>(x * factor); };
    };
    const auto rounded = [](double x) { return std::llround(x * 32768); };
    std::vector<Use> uses = {
        {"cosine, turn-over", CosineOf(), Moments([](double share) {
             const double angle = share * kHalfTurn;
             return angle <= kQuarterTurn ? angle : kQuarterTurn - (angle - kQuarterTurn);
         }),
         times(540)},
        {"cosine, broken-boxes", CosineOf(), Moments([](double share) { return share * kQuarterTurn; }),
         times(480)},
        {"tangent, clock", TangentOf(),
         Moments([](double share) { return std::fmod(2 * share * kHalfTurn, kQuarterTurn); }),
         [](double x) { return static_cast<long long>(std::min(4 * 540 * x, 3840.)); }},
        {"sine, roll", SineOf(), Moments([](double share) { return share / 2 * kHalfTurn; }),
         [](double x) { return static_cast<long long>(255 * (2 * x + 1)); }},
        {"cosine, relief", CosineOf(),
         Degrees(3600, std::to_array({0., pi / 4, pi / 2, 3 * pi / 4, pi, -pi / 4, -pi / 2, -3 * pi / 4})),
         times(256)},
        {"sine, tile-reflect", SineOf(), Degrees(180, std::to_array({0.})), rounded},
        {"tangent, tile-reflect", TangentOf(), Degrees(88, std::to_array({0.})), rounded},
        {"sine, rotate", SingleOf(true), Twists(), times(540), true},
        {"cosine, rotate", SingleOf(false), Twists(), times(540), true}};
    for (const double exponent : {0.1, 0.5, 0.75, 1.5, 2., 2.5, 3., 4., 8.}) {
        char name[40];
        std::snprintf(name, sizeof name, "power %g, spherize", exponent);
        uses.push_back({name, PowerTo(exponent), Shares(), times(256)});
    }
    return uses;
}

double Nanoseconds(const std::function<double(double)>& function, const Arguments& arguments) {
    double sum = 0;
    const auto start = std::chrono::steady_clock::now();
    for (const double argument : arguments) sum += function(argument);
    const std::chrono::duration<double, std::nano> taken = std::chrono::steady_clock::now() - start;
    return sum == 0.1 ? 0 : taken.count() / static_cast<double>(arguments.size());
}

void PrintRow(const Use& use) {
    size_t other = 0, cut = 0, unlike = 0, library = 0;
    double furthest = 0;
    for (const double argument : use.arguments) {
        const double ours = use.function.ours(argument), theirs = use.function.library(argument);
        other += ours != theirs;
        cut += use.cut(ours) != use.cut(theirs);
#ifdef AVEFFECT_HAS_MPFR
        const double nearest = Nearest(use, argument, use.single);
        unlike += ours != nearest;
        library += theirs != nearest;
        const double unit = std::ldexp(1, std::ilogb(nearest == 0 ? 1 : nearest) - (use.single ? 23 : 52));
        furthest = std::max(furthest, std::abs(ours - nearest) / unit);
#endif
    }
    std::printf("%-24s %9zu %9zu %9zu %9zu %9.0f %9zu %8.1f %8.1f\n", use.name.c_str(), use.arguments.size(),
                other, unlike, library, furthest, cut, Nanoseconds(use.function.ours, use.arguments),
                Nanoseconds(use.function.library, use.arguments));
}

} // namespace

int main(int argc, char** argv) {
    if (argc > 1 && std::strcmp(argv[1], "--bits") == 0) {
        for (const Use& use : Uses())
            for (const double argument : use.arguments)
                std::printf("%016" PRIx64 "\n", std::bit_cast<uint64_t>(use.function.ours(argument)));
        return 0;
    }
    std::printf("%-24s %9s %9s %9s %9s %9s %9s %8s %8s\n", "", "arguments", "not C's", "not near.", "C's not",
                "units off", "cut oth.", "ns", "C's ns");
    for (const Use& use : Uses()) PrintRow(use);
    return 0;
}
