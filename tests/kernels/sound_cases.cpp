// References of the sound kernels. A plane's rows are ranges of samples here, each with a parameter of its
// own.
#include <cstring>
#include <limits>

#include "kernels/sound.h"
#include "tests/kernels/case_makers.h"
#include "tests/support/host_sound.h"
#include "tests/support/plain_sound.h"

namespace test {

namespace {

using namespace AVBased;

template <class Parameter, size_t Count, class Range>
PlaneFunction ForRanges(const Parameter (&parameters)[Count], Range range) {
    return [&parameters, range](const auto& planes) {
        for (size_t y = 0; y < planes[0].rows; ++y)
            range(planes[0].Row(y), planes[0].width, parameters[(y + planes[0].width) % Count]);
    };
}

// Gains of a fade, products just below whole numbers, and values that only a caller of its own asks for.
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kScales[] = {0.1,        0.0,     0.5,    1.0,       0.9999999999999999,
                              0.005 * 67, 1.0 / 3, 1.7,    65537,     70000.5,
                              3e9,        -0.75,   -1e300, kInfinity, -0.0};

KernelCase Scaling(const char* name, int format, unsigned features, bool swapped) {
    const auto& kernels = kernels::SelectKernels<AVBased::kernels::SoundKernels>(features);
    const auto kernel = swapped ? kernels.scaleSwapped[format] : kernels.scale[format];
    const size_t unit = SampleBytesOf(format);
    return {std::string("scaleSamples ") + name + (swapped ? ", bytes swapped" : ""), 1, unit,
            ForRanges(kScales,
                      [=](uint8_t* row, size_t bytes, double scale) { kernel(row, bytes / unit, scale); }),
            ForRanges(kScales, [=](uint8_t* row, size_t bytes, double scale) {
                for (size_t at = 0; at < bytes; at += unit) PlainScale(format, row + at, swapped, scale);
            })};
}

} // namespace

void AddSoundCases(std::vector<KernelCase>& cases, unsigned features) {
    static constexpr int16_t kGains[] = {127, 128, 383,   384,    -128, -129, 512,
                                         0,   256, 32767, -32768, -1,   3000};
    const auto amplify = kernels::SelectKernels<AVBased::kernels::SoundKernels>(features).amplify16;
    cases.push_back(
        {"amplify16", 1, 2,
         ForRanges(kGains, [=](uint8_t* row, size_t bytes, int16_t gain) { amplify(row, bytes / 2, gain); }),
         ForRanges(kGains, [](uint8_t* row, size_t bytes, int16_t gain) {
             for (int16_t sample; bytes; bytes -= 2, row += 2) {
                 std::memcpy(&sample, row, 2);
                 sample =
                     static_cast<int16_t>(std::clamp(FloorDivide256(long{sample} * gain), -32768L, 32767L));
                 std::memcpy(row, &sample, 2);
             }
         })});
    constexpr std::pair<const char*, int> kFormats[] = {
        {"signed 16", sfSigned16},   {"signed 8", sfSigned8},
        {"unsigned 8", sfUnsigned8}, {"unsigned 16", sfUnsigned16},
        {"signed 32", sfSigned32},   {"unsigned 32", sfUnsigned32},
        {"float", sfFloat},          {"double", sfDouble}};
    for (const auto& [name, format] : kFormats)
        for (const bool swapped : {false, true})
            if (!swapped || SampleBytesOf(format) > 1)
                cases.push_back(Scaling(name, format, features, swapped));
}

} // namespace test
