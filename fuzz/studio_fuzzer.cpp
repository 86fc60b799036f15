// What a page may send: bodies of requests, read as each of the requests, and the words of the command line
// that are made of them.
#include <cstdlib>
#include <filesystem>
#include <string>

#include "host/settings/effect_settings.h"
#include "host/support/error.h"
#include "studio/requests.h"
#include "studio/roots.h"
#include "studio/scaled_effects.h"
#include "studio/words.h"

namespace {

using namespace aveffect;

template <typename Work>
void Try(Work work) {
    try {
        work();
    } catch (const Error& error) {
        if (*error.what() == '\0') std::abort();
    }
}

// What is parsed can be scaled, and its text comes back from its parts.
void Look(const StudioChain& chain) {
    for (const StudioEffect& effect : chain.effects) {
        const std::string again = SplitEffect(effect.text).Text();
        Try([&] {
            ScaleEffects({ParseEffect(effect.text, false)}, 0.25);
            if (SplitEffect(again).Text() != again) std::abort();
            try {
                ParseEffect(again, false);
            } catch (const Error&) {
                std::abort();
            }
        });
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const Roots roots({std::filesystem::temp_directory_path().string()}, {});
    const std::string body(reinterpret_cast<const char*>(data), size);
    Try([&] {
        const nlohmann::json parsed = ParseBody(body);
        Try([&] { Look(ReadFrameWish(parsed).chain); });
        Try([&] { ReadSoundWish(parsed); });
        Try([&] { roots.File(ReadPath(parsed)); });
        Try([&] { roots.List(ReadPath(parsed)); });
        Try([&] {
            const OutputWish wish = ReadOutputWish(parsed);
            ShellText("render", RenderWordsOf(wish.clip, wish.output, wish.chain, wish.options));
            roots.Output(wish.output);
        });
    });
    return 0;
}
