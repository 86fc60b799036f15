#include "adapters/frei0r/module.h"

#include <limits>
#include <memory>

#include "adapters/frei0r/instance.h"
#include "adapters/frei0r/notices.h"
#include "adapters/support/bytes_alike.h"

namespace aveffect::frei0r::module {
namespace {

/// What the host's call gives; the failure value without memory.
template <typename Result, typename Body>
Result Served(Result failure, Body body) noexcept {
    try {
        return body();
    } catch (const std::exception& reason) {
        SayOnce("a host's call failed", reason.what());
    }
    return failure;
}

template <typename Body>
void Served(Body body) noexcept {
    Served(0, [&] {
        body();
        return 0;
    });
}

Instance* From(f0r_instance_t instance) { return static_cast<Instance*>(instance); }

} // namespace

void Describe(const char* effect, f0r_plugin_info_t* info) noexcept {
    *info = {};
    Served([&] {
        const Face& face = FaceOf(effect);
        info->name = face.name.c_str();
        info->author = "AVEffect";
        info->plugin_type = IsTransition(face.effect) ? F0R_PLUGIN_TYPE_MIXER2 : F0R_PLUGIN_TYPE_FILTER;
        // Those that do the same to all bytes get them in the order that is the host's.
        info->color_model = adapters::TreatsBytesAlike(face.effect.shortName) ? F0R_COLOR_MODEL_PACKED32
                                                                              : F0R_COLOR_MODEL_BGRA8888;
        info->frei0r_version = FREI0R_MAJOR_VERSION;
        info->major_version = AVEFFECT_VERSION_MAJOR;
        info->minor_version = AVEFFECT_VERSION_MINOR;
        info->num_params = static_cast<int>(face.parameters.size());
        info->explanation = face.explanation.c_str();
    });
}

void DescribeParameter(const char* effect, f0r_param_info_t* info, int index) noexcept {
    Served([&] {
        const auto& parameters = FaceOf(effect).parameters;
        if (index < 0 || static_cast<size_t>(index) >= parameters.size()) return;
        const Parameter& parameter = parameters[static_cast<size_t>(index)];
        *info = {parameter.name.c_str(), parameter.type, parameter.help.c_str()};
    });
}

f0r_instance_t Construct(const char* effect, unsigned width, unsigned height) noexcept {
    constexpr uint64_t kPixelBytes = 4,
                       kMostBytes = std::numeric_limits<uint32_t>::max(); // a frame counts in 32 bits
    if (width > kMostBytes / kPixelBytes || uint64_t{width} * kPixelBytes * height > kMostBytes)
        return nullptr;
    return Served<f0r_instance_t>(
        nullptr, [&] { return std::make_unique<Instance>(FaceOf(effect), width, height).release(); });
}

void Destruct(f0r_instance_t instance) noexcept { delete From(instance); }

void SetParameter(f0r_instance_t instance, f0r_param_t value, int index) noexcept {
    if (instance) Served([&] { From(instance)->SetParameter(value, index); });
}

void GetParameter(f0r_instance_t instance, f0r_param_t value, int index) noexcept {
    if (instance) From(instance)->GetParameter(value, index);
}

void Update(f0r_instance_t instance, const uint32_t* first, const uint32_t* second, uint32_t* out) noexcept {
    if (instance) From(instance)->Update(first, second, out);
}

} // namespace aveffect::frei0r::module
