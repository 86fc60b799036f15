// References of the sound kernels. A plane's rows are ranges of samples here, each with a parameter of its
// own.
#include <bit>
#include <cstring>
#include <limits>

#include "AVEffect/kernels/sound.h"
#include "aveffect/audio_frame.h"
#include "tests/kernels/case_makers.h"

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

template <class Sample, class Change>
void ForEachSample(uint8_t* row, size_t bytes, bool swapped, Change change) {
    for (size_t at = 0; at < bytes; at += sizeof(Sample)) {
        Sample sample;
        if (swapped) std::reverse(row + at, row + at + sizeof(Sample));
        std::memcpy(&sample, row + at, sizeof sample);
        sample = change(sample);
        std::memcpy(row + at, &sample, sizeof sample);
        if (swapped) std::reverse(row + at, row + at + sizeof(Sample));
    }
}

// Gains of a fade, products just below whole numbers, and values that only a caller of its own asks for.
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kScales[] = {0.1,        0.0,     0.5,    1.0,       0.9999999999999999,
                              0.005 * 67, 1.0 / 3, 1.7,    65537,     70000.5,
                              3e9,        -0.75,   -1e300, kInfinity, -0.0};

// Read is the type that a sample is taken for, which for unsigned 32 bits is not its own.
template <class Sample, class Read = Sample>
KernelCase Scaling(const char* name, int format, unsigned features, bool swapped) {
    const auto& kernels = kernels::SelectSoundKernels(features);
    const auto kernel = swapped ? kernels.scaleSwapped[format] : kernels.scale[format];
    const auto limited = [](Sample sample, double scale) {
        constexpr bool kFloating = std::is_floating_point_v<Sample>;
        const double lowest = kFloating ? -1.0 : static_cast<double>(std::numeric_limits<Sample>::min());
        const double highest = kFloating ? 1.0 : static_cast<double>(std::numeric_limits<Sample>::max());
        const double v = static_cast<double>(std::bit_cast<Read>(sample)) * scale;
        if (!kFloating && v != v) return Sample{}; // infinity times 0
        return v > highest  ? static_cast<Sample>(highest)
               : v < lowest ? static_cast<Sample>(lowest)
                            : static_cast<Sample>(v);
    };
    return {std::string("scaleSamples ") + name + (swapped ? ", bytes swapped" : ""), 1, sizeof(Sample),
            ForRanges(kScales, [=](uint8_t* row, size_t bytes,
                                   double scale) { kernel(row, bytes / sizeof(Sample), scale); }),
            ForRanges(kScales, [=](uint8_t* row, size_t bytes, double scale) {
                ForEachSample<Sample>(row, bytes, swapped,
                                      [=](Sample sample) { return limited(sample, scale); });
            })};
}

} // namespace

void AddSoundCases(std::vector<KernelCase>& cases, unsigned features) {
    static constexpr int16_t kGains[] = {128, 512, 0, 256, 255, 32767, -32768, -1, 3000};
    const auto amplify = kernels::SelectSoundKernels(features).amplify16;
    cases.push_back(
        {"amplify16", 1, 2,
         ForRanges(kGains, [=](uint8_t* row, size_t bytes, int16_t gain) { amplify(row, bytes / 2, gain); }),
         ForRanges(kGains, [](uint8_t* row, size_t bytes, int16_t gain) {
             ForEachSample<int16_t>(row, bytes, false, [=](int16_t sample) {
                 return static_cast<int16_t>(
                     std::clamp(FloorDivide256(long{sample} * gain), -32768L, 32767L));
             });
         })});
    for (const bool swapped : {false, true}) {
        cases.push_back(Scaling<int16_t>("signed 16", sfSigned16, features, swapped));
        cases.push_back(Scaling<int8_t>("signed 8", sfSigned8, features, swapped));
        cases.push_back(Scaling<uint8_t>("unsigned 8", sfUnsigned8, features, swapped));
        cases.push_back(Scaling<uint16_t>("unsigned 16", sfUnsigned16, features, swapped));
        cases.push_back(Scaling<int32_t>("signed 32", sfSigned32, features, swapped));
        cases.push_back(Scaling<uint32_t, int32_t>("unsigned 32", sfUnsigned32, features, swapped));
        cases.push_back(Scaling<float>("float", sfFloat, features, swapped));
        cases.push_back(Scaling<double>("double", sfDouble, features, swapped));
    }
}

} // namespace test
