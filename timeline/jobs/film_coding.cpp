#include "timeline/jobs/film_coding.h"

#include <sstream>

#include "host/effects/random_seed.h"

namespace aveffect {

namespace {

std::ostream& operator<<(std::ostream& text, const AVRational& ratio) {
    return text << ratio.num << '/' << ratio.den;
}

std::ostream& operator<<(std::ostream& text, const std::optional<Extent>& extent) {
    if (!extent) return text << '-';
    return text << extent->value << (extent->percent ? "%" : "");
}

template <typename Number>
std::string Text(const std::optional<Number>& number) {
    return number ? std::to_string(*number) : "-";
}

} // namespace

std::string CodingText(const FilmRenderOptions& options, const OutputPlan& plan, const PlayoutSetup& setup,
                       const AVFrame& look) {
    constexpr int kAllDigits = 17;
    const Canvas& canvas = setup.canvas;
    const Framing& framing = options.framing;
    std::ostringstream text;
    text.precision(kAllDigits);
    text << "aveffect " AVEFFECT_VERSION "\n"
         << avcodec_version() << ' ' << plan.encoder.codec->name << ' ' << plan.Kind() << '\n'
         << options.preset << '\n'
         << options.outputFormat << '\n'
         << Text(options.crf) << ' ' << Text(options.quality) << ' ' << Text(options.bitRate) << '\n';
    for (const auto& [name, value] : options.encoderSettings) text << name << '=' << value << '\n';
    text << setup.rate << ' ' << canvas.width << 'x' << canvas.height << ' ' << canvas.pixelAspect << ' '
         << canvas.matrix << ' ' << canvas.primaries << ' ' << canvas.transfer << ' ' << look.format << ' '
         << look.color_range << ' ' << options.sdr << '\n'
         << framing.width << ' ' << framing.height << ' ' << framing.afterEffects << ' '
         << static_cast<int>(framing.fit.value_or(Framing::Fit::Contain)) << '\n'
         << framing.background.value_or("") << '\n'
         << g_randomSeed << '\n';
    if (const auto& crop = framing.crop)
        text << std::optional(crop->width) << ' ' << std::optional(crop->height) << ' ' << crop->x << ' '
             << crop->y << '\n';
    return text.str();
}

} // namespace aveffect
