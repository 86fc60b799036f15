// Every effect of the catalogue on several threads at once, with one manager: the bytes are those of one
// thread alone. This program runs under the thread sanitizer too.
#include <gtest/gtest.h>

#include <thread>

#include "aveffect/catalogue.h"
#include "tests/robustness/trial.h"
#include "tests/support/busy_settings.h"

namespace {

using namespace AVBased;
using namespace test;

constexpr size_t kThreads = 4;

struct Subject {
    const EffectInfo* effect;
    unsigned format = 0; // of pictures
    const char* mode = "0";
};

std::vector<Subject> Subjects() {
    std::vector<Subject> all;
    for (const EffectInfo& effect : kVideoEffects)
        for (const unsigned format : {BGRA, YUV420P, YUV422P}) {
            all.push_back({&effect, format});
            // Anaglyphs of other formats share a converter.
            if (effect.kind == EffectKind::Stereo) all.push_back({&effect, format, "1"});
        }
    for (const EffectInfo& effect : kAudioEffects) all.push_back({&effect});
    return all;
}

// What the processor makes of some frames; null where it fails.
template <class Media>
std::vector<std::unique_ptr<Media>> Render(const Subject& subject, const Media& original) {
    Held<Media> proc(Kind<Media>::Create(subject.effect->name));
    SetBusy(*proc.operator->(), *subject.effect);
    proc->SetProperty("render_3d_mode", subject.mode); // if it has one
    std::vector<std::unique_ptr<Media>> results;
    for (const int time : {0, 40, 60, 100})
        for (const bool inPlace : {true, false}) {
            const auto frame = std::make_unique<Media>(original);
            const Media* const result = proc.Process(*frame, time, inPlace);
            results.push_back(result ? std::make_unique<Media>(*result) : nullptr);
        }
    return results;
}

template <class Media>
bool RendersTheSame(const Subject& subject, const Media& original,
                    const std::vector<std::unique_ptr<Media>>& expected) {
    const auto results = Render(subject, original);
    return subject.effect->traits & kDrawsRandom || // the generator is the process's
           std::equal(results.begin(), results.end(), expected.begin(),
                      [](const auto& a, const auto& b) { return !a == !b && (!a || *a == *b); });
}

TEST(Threads, EveryEffectComputesTheSameOnManyAtOnce) {
    const std::vector<Subject> subjects = Subjects();
    const auto frameOf = [](const Subject& subject) { return *MakeFrame({subject.format, 96, 64}, 7); };
    const HostSound sound = MakeSound({.samples = 500});
    std::vector<std::vector<std::unique_ptr<HostFrame>>> pictures;
    std::vector<std::vector<std::unique_ptr<HostSound>>> sounds;
    for (const Subject& subject : subjects) {
        const bool audio = subject.effect->kind == EffectKind::Audio;
        pictures.push_back(audio ? decltype(pictures)::value_type{} : Render(subject, frameOf(subject)));
        sounds.push_back(audio ? Render(subject, sound) : decltype(sounds)::value_type{});
    }
    // Two threads each go through the catalogue side by side, and the others at another place.
    std::vector<std::jthread> threads;
    for (size_t thread = 0; thread < kThreads; ++thread)
        threads.emplace_back([&, start = thread / 2 * subjects.size() / 2] {
            for (size_t n = 0; n < subjects.size(); ++n) {
                const size_t at = (start + n) % subjects.size();
                const Subject& subject = subjects[at];
                const bool same = subject.effect->kind == EffectKind::Audio
                                      ? RendersTheSame(subject, sound, sounds[at])
                                      : RendersTheSame(subject, frameOf(subject), pictures[at]);
                EXPECT_TRUE(same) << subject.effect->name << ", format " << subject.format;
            }
        });
}

} // namespace
