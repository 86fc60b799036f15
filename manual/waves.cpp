#include "manual/waves.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <fstream>
#include <iterator>
#include <numbers>
#include <stdexcept>

namespace aveffect::manual {

namespace {

constexpr int kRate = 8000, kSeconds = 6, kParts = 180;
constexpr double kFull = 32767;

void Put(std::string& bytes, uint32_t number, int count) {
    for (int i = 0; i < count; ++i) bytes += static_cast<char>(number >> (8 * i));
}

/// One channel of 16 bits; the envelope says how loud it is at a second, 0 to 1.
template <typename Envelope>
void WriteTone(const std::filesystem::path& wav, double hertz, Envelope envelope) {
    std::string samples;
    for (int i = 0; i < kRate * kSeconds; ++i) {
        const double second = static_cast<double>(i) / kRate;
        const double value = envelope(second) * std::sin(2 * std::numbers::pi * hertz * second);
        Put(samples, static_cast<uint32_t>(std::lround(value * kFull)), 2);
    }
    const auto length = static_cast<uint32_t>(samples.size());
    std::string head = "RIFF";
    Put(head, 36 + length, 4);
    head += "WAVEfmt ";
    Put(head, 16, 4);
    Put(head, 1, 2); // PCM
    Put(head, 1, 2); // channels
    Put(head, kRate, 4);
    Put(head, 2 * kRate, 4);
    Put(head, 2, 2);
    Put(head, 16, 2);
    head += "data";
    Put(head, length, 4);
    std::ofstream out(wav, std::ios::binary);
    if (!(out << head << samples).flush()) throw std::runtime_error("can't write '" + wav.string() + "'");
}

} // namespace

void WriteWords(const std::filesystem::path& wav) {
    WriteTone(wav, 220, [](double second) {
        const double word = std::sin(std::numbers::pi * std::fmod(second, 1.0));
        return 0.55 * word * word * (0.7 + 0.3 * std::sin(2.3 * second + 1));
    });
}

void WriteSwell(const std::filesystem::path& wav) {
    WriteTone(wav, 330, [](double second) { return 0.1 + 0.12 * second; });
}

Loudness LoudnessOf(const std::filesystem::path& wav) {
    std::ifstream in(wav, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(in), {}};
    const size_t data = bytes.find("data");
    if (data == std::string::npos) throw std::runtime_error("'" + wav.string() + "' is no WAV file");
    const size_t begin = data + 8, count = (bytes.size() - std::min(begin, bytes.size())) / 2;
    Loudness loudness(kParts, 0);
    for (size_t i = 0; i < count; ++i) {
        int16_t sample;
        std::memcpy(&sample, bytes.data() + begin + 2 * i, sizeof sample);
        double& part = loudness[i * kParts / count];
        part = std::max(part, std::min(1.0, std::abs(sample / kFull)));
    }
    return loudness;
}

std::string DrawWave(const Loudness& loudness, const std::string& label) {
    constexpr int kHalf = 40, kStep = 2;
    std::string there, back;
    for (size_t i = 0; i < loudness.size(); ++i) {
        const std::string x = std::to_string(i * kStep);
        const int height = static_cast<int>(std::lround(loudness[i] * kHalf));
        there += x + "," + std::to_string(kHalf - height) + " ";
        back.insert(0, x + "," + std::to_string(kHalf + height) + " ");
    }
    return "<svg class=\"wave\" role=\"img\" aria-label=\"" + label + "\" viewBox=\"0 0 " +
           std::to_string(kParts * kStep) + " " + std::to_string(2 * kHalf) + "\"><polygon points=\"" +
           there + back + "\"/></svg>";
}

} // namespace aveffect::manual
