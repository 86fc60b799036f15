#include "studio/output_choices.h"

#include <array>

extern "C" {
#include <libavcodec/avcodec.h>
}

namespace aveffect {

namespace {

struct Choice {
    const char *extension, *title, *kind;
    std::array<const char*, 4> codecs; ///< the usual one first
};

constexpr Choice kChoices[] = {
    {"mp4", "MP4: plays everywhere", "clip", {"libx264", "libx265", "libsvtav1", "mpeg4"}},
    {"webm", "WebM: for web pages", "clip", {"libvpx-vp9", "libsvtav1", "libvpx", nullptr}},
    {"mov", "QuickTime: for editors", "clip", {"libx264", "prores_ks", "dnxhd", "qtrle"}},
    {"mkv", "Matroska: holds anything", "clip", {"libx264", "libx265", "ffv1", "libsvtav1"}},
    {"gif", "GIF: small and silent", "clip", {"gif", nullptr, nullptr, nullptr}},
    {"png", "PNG: a picture, or one each", "picture", {"png", nullptr, nullptr, nullptr}},
    {"jpg", "JPEG: a photo", "picture", {"mjpeg", nullptr, nullptr, nullptr}},
    {"webp", "WebP: a picture", "picture", {"libwebp", nullptr, nullptr, nullptr}},
    {"wav", "WAV: sound as it is", "sound", {"pcm_s16le", "pcm_s24le", nullptr, nullptr}},
    {"flac", "FLAC: sound, smaller", "sound", {"flac", nullptr, nullptr, nullptr}},
    {"mp3", "MP3: sound, small", "sound", {"libmp3lame", nullptr, nullptr, nullptr}},
};

} // namespace

nlohmann::json OutputChoices() {
    nlohmann::json choices = nlohmann::json::array();
    for (const Choice& choice : kChoices) {
        nlohmann::json codecs = nlohmann::json::array();
        for (const char* const codec : choice.codecs)
            if (codec && avcodec_find_encoder_by_name(codec)) codecs.push_back(codec);
        if (codecs.empty()) continue;
        choices.push_back({{"extension", choice.extension},
                           {"title", choice.title},
                           {"kind", choice.kind},
                           {"codecs", codecs}});
    }
    return choices;
}

} // namespace aveffect
