// Each transition against a plain drawing, step by step as it is defined, on pictures of the frame's size.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "tests/ledger/confirm.h"
#include "tests/support/converted.h"
#include "tests/support/effect_cases.h"
#include "tests/support/host_manager.h"

namespace {

using namespace AVBased;
using test::HostFrame;

// A BGRA picture; every other one begins at a protected page, the others end at one.
HostFrame Picture(unsigned width, unsigned height, unsigned padding, unsigned seed) {
    HostFrame picture(
        {BGRA, width, height, padding, 0, false, seed % 2 ? test::Flush::Start : test::Flush::End});
    picture.Randomise(seed);
    return picture;
}

// What a plain drawing works on.
struct Drawing {
    test::GuardedBytes out, first, second;
    long width, height, pitch, pitch1, pitch2; // of out, first and second
    int s, d, t;

    double Progress() const { return d <= s ? 1 : static_cast<double>(t - s) / (d - s); }
    const test::GuardedBytes& From(int which) const { return which == 1 ? first : second; }
    long PitchOf(int which) const { return which == 1 ? pitch1 : pitch2; }

    // Bytes of a picture's row, by offsets. With different pitches only the pictures count.
    void Run(long y, long to, int which, long from, long bytes) { Run(y, to, which, y, from, bytes); }
    void Run(long y, long to, int which, long fromRow, long from, long bytes) {
        const long pitchFrom = PitchOf(which);
        for (long end = to + bytes; to < end; ++to, ++from) {
            if (pitch != pitchFrom && (to >= width * 4 || from % pitchFrom >= width * 4)) continue;
            const auto at = static_cast<size_t>(fromRow * pitchFrom + from);
            if (at < From(which).size()) out[static_cast<size_t>(y * pitch + to)] = From(which)[at];
        }
    }
    void Whole(int which) {
        for (long y = 0; y < height; ++y) Run(y, 0, which, 0, pitch);
    }
    void Pixels(long y, long to, int which, long from, long count) {
        Run(y, to * 4, which, from * 4, std::min(count, width - to) * 4);
    }
    uint8_t& Out(long x, long y, long i) { return out[static_cast<size_t>(y * pitch + x * 4 + i)]; }
};

uint8_t Limited(double value) { return value >= 256 ? 255 : value < 1 ? 0 : static_cast<uint8_t>(value); }

void Fade(Drawing& on) {
    const double p = on.Progress();
    for (long y = 0; y < on.height; ++y)
        for (long x = 0; x < on.width; ++x)
            for (long i = 0; i < 3; ++i) {
                const int a = on.first[static_cast<size_t>(y * on.pitch1 + x * 4 + i)];
                const int b = on.second[static_cast<size_t>(y * on.pitch2 + x * 4 + i)];
                on.Out(x, y, i) = Limited(a * (1 - p) + b * p);
            }
}

void LeftRightMove(Drawing& on) {
    long shift = std::min(static_cast<long>(static_cast<double>(on.width) * on.Progress()), on.width);
    if (on.width - shift < 21) shift = on.width;
    for (long y = 0; y < on.height; ++y) {
        on.Pixels(y, 0, 1, shift, on.width - shift);
        on.Pixels(y, on.width - shift, 2, 0, shift);
    }
}

void Turn(Drawing& on) {
    double angle = on.Progress() * 3.14159265;
    const int shown = angle <= 1.570796325 ? 1 : 2;
    if (shown == 2) angle = 1.570796325 - (angle - 1.570796325);
    std::fill(on.out.begin(), on.out.end(), uint8_t{0});
    const long half = on.height / 2;
    const long top = half - static_cast<long>(std::cos(angle) * static_cast<double>(half));
    for (long r = 0; top + r < on.height - top; ++r) {
        const auto row =
            static_cast<long>(static_cast<double>(r * on.height) / static_cast<double>(on.height - 2 * top));
        on.Run(top + r, 0, shown, row, 0, on.pitch);
    }
}

void Roll(Drawing& on) {
    const long band = on.width / 10 & ~1L, half = on.width / 20;
    const auto way = static_cast<double>(on.width - band);
    const auto shift =
        static_cast<long>(on.d <= on.s ? way : (std::min(on.t, on.d) - on.s) * way / (on.d - on.s));
    for (long y = 0; y < on.height; ++y) {
        on.Pixels(y, 0, 2, 0, shift);
        on.Pixels(y, shift, 1, shift, on.width - shift);
        for (long k = 0; k <= half && half > 0; ++k) {
            const double f =
                2 * std::sin(static_cast<double>(k) / static_cast<double>(band) * 3.14159265) + 1.0;
            const long left = shift + k, right = shift + 2 * half - k;
            if (right >= on.width) continue;
            for (long i = 0; i < 3; ++i) {
                const uint8_t a = Limited(on.Out(left, y, i) * f), b = Limited(on.Out(right, y, i) * f);
                on.Out(left, y, i) = b;
                on.Out(right, y, i) = a;
            }
        }
    }
}

void Shutter(Drawing& on) {
    on.Whole(1);
    const long w = on.width, m = w / 20;
    const bool narrowDone = m == 0 && 2 * (on.t - on.s) >= on.d - on.s;
    if (on.t >= on.d || narrowDone) {
        for (long y = 0; y < on.height; ++y) on.Pixels(y, 0, 2, 0, w);
        return;
    }
    if (m == 0) return;
    const auto place = static_cast<long>((on.t - on.s) * (2.0 * static_cast<double>(w) / (on.d - on.s)));
    const long q = place - place % (2 * m);
    for (long y = 0; y < on.height; ++y) {
        if (q < w) {
            for (long k = 0; q - 2 * m * k >= 0; ++k) {
                const long x = q - 2 * m * k;
                on.Run(y, x * 4, 2, on.pitch2 - 8 * m * k, std::min(m, w - x) * 4);
            }
            continue;
        }
        const long e = q - w, j = w - e + 1;
        on.Pixels(y, w - e, 2, w - e, e);
        for (long k = 0; j - 2 * m * k >= 0; ++k) on.Pixels(y, j - 2 * m * k, 2, j - 2 * m * k, m);
    }
}

bool Near(double a, double b) { return std::fabs(a - b) <= 0.0001; }

void Clock(Drawing& on) {
    const double a = on.Progress() * 3.14159265 * 2;
    const long hh = on.height / 2, w = on.width;
    if (!(a >= 0 && a < 6.2831853)) return;
    on.Whole(1);
    const long halfWidth = w / 2, halfPitch = on.pitch / 2;
    const auto rightHalf = [&](long y) { on.Run(y, on.pitch / 2, 2, on.pitch2 / 2, on.pitch / 2); };
    if (a < 1.570796325) {
        for (long i = 0; i < hh; ++i) {
            const double n = 4.0 * static_cast<double>(hh - i) * std::tan(a);
            on.Run(i, 2 * w, 2, 2 * w, static_cast<long>(std::min(n, static_cast<double>(halfPitch))));
        }
    } else if (a < 4.712388975) {
        const double b = a - 1.570796325;
        for (long j = 0; hh + j < on.height && !Near(b, 0) && !Near(b, 1.570796325); ++j) {
            const double x = std::trunc(static_cast<double>(j) / std::tan(b));
            const auto c = static_cast<long>(
                std::clamp(x, -static_cast<double>(halfWidth), static_cast<double>(halfWidth)));
            on.Pixels(hh + j, w / 2 + c, 2, w / 2 + c, w / 2 - c);
        }
        for (long i = 0; i < (Near(a, 3.14159265) ? on.height : hh); ++i) rightHalf(i);
    } else {
        for (long i = 0; i < hh; ++i) rightHalf(i);
        for (long i = hh; i < on.height; ++i) on.Run(i, 0, 2, 0, on.pitch);
        const double c = a - 4.712388975;
        if (Near(c, 0)) return;
        if (Near(c, 1.570796325)) return on.Whole(2);
        for (long i = 0; i < hh; ++i) {
            const double n = static_cast<double>(halfWidth) - static_cast<double>(hh - i) / std::tan(c);
            on.Pixels(i, 0, 2, 0, static_cast<long>(std::max(0.0, n)));
        }
    }
}

void CloseDoor(Drawing& on) {
    const double f = Near(std::min(on.t, on.d), on.d) ? 1.0 : on.Progress();
    const auto w = static_cast<double>(on.width);
    const auto n = std::max(0L, static_cast<long>(w - w * f));
    const long off = ((on.width - n) * 2) & ~3L;
    on.Whole(2);
    for (long y = 0; y < on.height; ++y) on.Run(y, off, 1, off, n * 4);
}

void BrokenBox(Drawing& on) {
    const double c = std::cos(on.Progress() * 1.570796325);
    const long quarterWidth = on.width / 4, quarterHeight = on.height / 4;
    const auto bw = static_cast<long>(static_cast<double>(quarterWidth) * c);
    const auto bh = static_cast<long>(static_cast<double>(quarterHeight) * c);
    if (bw < 10 || bh <= 9) return on.Whole(2);
    on.Whole(1);
    for (long n = 0; 2 * bh * n < on.height; ++n)
        for (long x = n % 2 * bw; x < on.width; x += 2 * bw)
            for (long y = 2 * bh * n; y < std::min(2 * bh * n + bh, on.height); ++y)
                on.Pixels(y, x, 2, x, bw);
}

struct Transition {
    const char* effect;
    void (*draw)(Drawing&);
};
constexpr Transition kTransitions[] = {
    {"EffectNameMkFade", Fade},           {"EffectNameMkLeftRightMove", LeftRightMove},
    {"EffectNameMkTurn", Turn},           {"EffectNameMkRoll", Roll},
    {"EffectNameMkShutter", Shutter},     {"EffectNameMkClock", Clock},
    {"EffectNameMkCloseDoor", CloseDoor}, {"EffectNameMkBrokenBox", BrokenBox}};

struct Size {
    unsigned width, height;
};
struct Paddings {
    unsigned out, first, second;
};

// Draws at times around and within the span from s to d.
void ExpectDrawn(const Transition& transition, Size size, Paddings paddings, int s, int d) {
    HostFrame first = Picture(size.width, size.height, paddings.first, 2);
    HostFrame second = Picture(size.width, size.height, paddings.second, 3);
    test::HostManager manager;
    manager.sources = {{"first", {&first}}, {"second", {&second}}};
    static size_t turn = 0; // each level in turns
    const test::FeatureMask hidden(test::kLevelMasks[turn++ % std::size(test::kLevelMasks)]);
    const test::VideoProc proc = test::MakeVideo(
        transition.effect, {{"EffectPropVFPath1", "first"}, {"EffectPropVFPath2", "second"}}, &manager);
    proc->SetProperty("EffectPropStartTime", std::to_string(s).c_str());
    proc->SetProperty("EffectPropSourceDur", std::to_string(d).c_str());
    const int n = d - s;
    for (const int t : {s - 1000,
                        s - 1,
                        s,
                        s + 1,
                        s + n / 100,
                        s + n / 12,
                        s + n / 7,
                        s + n / 4,
                        s + n / 3,
                        s + 2 * n / 5,
                        s + n / 2,
                        s + n / 2 + 1,
                        s + 3 * n / 5,
                        s + 3 * n / 4,
                        s + 4 * n / 5,
                        s + 11 * n / 12,
                        s + 98 * n / 100,
                        d - 1,
                        d,
                        d + 1,
                        d + n / 3,
                        d + 3 * n}) {
        HostFrame out = Picture(size.width, size.height, paddings.out, static_cast<unsigned>(t) % 7 + 5);
        const unsigned pitch = out.planes[0].pitch;
        Drawing drawing = {out.planes[0].bytes,
                           first.planes[0].bytes,
                           second.planes[0].bytes,
                           size.width,
                           size.height,
                           pitch,
                           first.planes[0].pitch,
                           second.planes[0].pitch,
                           s,
                           d,
                           t};
        if (t < s)
            drawing.Whole(1);
        else
            transition.draw(drawing);
        test::Run(*proc, out, t);
        const test::GuardedBytes& drawn = out.planes[0].bytes;
        const auto [is, should] = std::mismatch(drawn.begin(), drawn.end(), drawing.out.begin());
        ASSERT_TRUE(is == drawn.end())
            << transition.effect << " " << size.width << "x" << size.height << ", paddings " << paddings.out
            << " " << paddings.first << " " << paddings.second << ", " << s << " to " << d << " at " << t
            << ": byte " << (is - drawn.begin()) % pitch << " of row " << (is - drawn.begin()) / pitch
            << " is " << int{*is} << ", not " << int{*should};
    }
}

TEST(Transitions, DrawWhatIsDefined) {
    for (const Transition& transition : kTransitions)
        for (const Size size : {Size{1, 1},
                                {2, 3},
                                {19, 7},
                                {20, 1},
                                {39, 6},
                                {41, 45},
                                {59, 40},
                                {64, 48},
                                {130, 87},
                                {223, 11},
                                {400, 41}})
            for (const Paddings paddings : {Paddings{0, 0, 0},
                                            {8, 8, 8},
                                            {3, 3, 3},
                                            {12, 0, 0},
                                            {0, 20, 4},
                                            {16, 16, 0},
                                            {16, 0, 16}}) {
                ASSERT_NO_FATAL_FAILURE(ExpectDrawn(transition, size, paddings, 40, 2040));
                ASSERT_NO_FATAL_FAILURE(ExpectDrawn(transition, size, paddings, -100, 1));
            }
}

// A picture's whole memory.
std::pair<unsigned char*, size_t> MemoryOf(IRawVideoFrame& frame, unsigned& pitch) {
    unsigned width = 0, rows = 0;
    unsigned char* const data = frame.GetBuffer(0, &width, &pitch, &rows);
    return {data, size_t{pitch} * rows};
}

void DrawPixels(void (*draw)(Drawing&), const ledger::PictureCase& of, IRawVideoFrame& out,
                IRawVideoFrame& first, IRawVideoFrame& second) {
    unsigned pitches[3] = {};
    const auto bytes = [&](IRawVideoFrame& frame, unsigned& pitch) {
        const auto [data, size] = MemoryOf(frame, pitch);
        test::GuardedBytes copy(size);
        std::copy_n(data, size, copy.data());
        return copy;
    };
    Drawing drawing = {bytes(out, pitches[0]),
                       bytes(first, pitches[1]),
                       bytes(second, pitches[2]),
                       of.width,
                       of.height,
                       0,
                       0,
                       0,
                       0,
                       ledger::kSpanMs,
                       of.time};
    drawing.pitch = pitches[0];
    drawing.pitch1 = pitches[1];
    drawing.pitch2 = pitches[2];
    draw(drawing);
    std::copy(drawing.out.begin(), drawing.out.end(), MemoryOf(out, pitches[0]).first);
}

// Planes are drawn as pixels, between two conversions by what hosts bring.
TEST(Transitions, AreAsInTheLedger) {
    for (const Transition& transition : kTransitions)
        ledger::ExpectInLedger(transition.effect, [&](const auto& of, HostFrame& frame) {
            const auto second = ledger::MakePicture(of.format, of.width, of.height, 2);
            HostFrame first = frame;
            if (of.format == BGRA) return DrawPixels(transition.draw, of, frame, first, *second);
            const auto out = test::Converted(frame, BGRA);
            DrawPixels(transition.draw, of, *out, *test::Converted(first, BGRA, of.width, of.height),
                       *test::Converted(*second, BGRA, of.width, of.height));
            test::CopyPicture(frame, *test::Converted(*out, of.format));
        });
}

TEST(Transitions, SpansWithoutLengthAreCuts) {
    for (const Transition& transition : kTransitions)
        for (const int d : {50, 49, -50})
            ASSERT_NO_FATAL_FAILURE(ExpectDrawn(transition, {45, 44}, {8, 0, 8}, 50, d));
}

// The roll's gains as sixteen bits: every width's at once would show here.
TEST(Transitions, RollsOfAnyWidthShineAlike) {
    for (unsigned width = 20; width < 2500; width += 61)
        ASSERT_NO_FATAL_FAILURE(ExpectDrawn(kTransitions[3], {width, 6}, {0, 0, 0}, 0, 1000));
}

// Times whose differences do not fit in 32 bits, and numbers far beyond the span.
TEST(Transitions, AnyTimesDoNoHarm) {
    for (const Transition& transition : kTransitions)
        for (const auto& [s, d] : {std::pair{"-2147483648", "2147483647"},
                                   {"-2000000000", "2000000000"},
                                   {"2147483647", "0"},
                                   {"0", "1"},
                                   {"0", "4294967295"}}) {
            HostFrame picture = Picture(45, 44, 8, 2);
            test::HostManager manager;
            manager.sources = {{"picture", {&picture}}};
            const test::VideoProc proc = test::MakeVideo(transition.effect,
                                                         {{"EffectPropVFPath1", "picture"},
                                                          {"EffectPropVFPath2", "picture"},
                                                          {"EffectPropStartTime", s},
                                                          {"EffectPropSourceDur", d}},
                                                         &manager);
            for (const int t : {-2147483647, -2000000001, -1, 0, 7, 2000000001, 2147483647})
                test::Run(*proc, *test::MakeFrame({BGRA, 45, 44, 4}), t);
        }
}

} // namespace
