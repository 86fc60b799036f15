// Any audio effect with any property texts on sound of any format, layout, rate and size: a line with the
// effect's name, the level, the file of audio_replace, then for each frame its settings (their number, lines
// "property index, text"), shape, time and samples. Buffers are as large as they say, whatever else the sound
// says of itself.
#include <memory>

#include "aveffect/catalogue.h"
#include "aveffect/plugin.h"
#include "fuzz/input_bytes.h"
#include "fuzz/processor_level.h"
#include "fuzz/tame_values.h"
#include "tests/support/contract_stops.h"
#include "tests/support/host_manager.h"
#include "tests/support/host_sound.h"

namespace {

using namespace AVBased;
using test::HostSound;

// Rates that there are, and now and then one that nothing can play.
unsigned TakeRate(fuzz::InputBytes& input) {
    const unsigned choice = input.Take<uint8_t>();
    if (choice % 16 == 0) return input.Take<uint32_t>() | 0x80000000;
    return input.TakeWithin(0, 0xFFFF) * (1 + choice % 3);
}

size_t SampleBytes(const HostSound& sound) {
    return test::IsSampleFormat(sound.shape.format) ? test::SampleBytesOf(sound.shape.format) : 4;
}

std::unique_ptr<HostSound> TakeSound(fuzz::InputBytes& input) {
    const auto flags = input.Take<uint8_t>();
    auto sound = std::make_unique<HostSound>(test::SoundShape{});
    sound->shape.format = static_cast<int>(input.TakeWithin(0, 11));
    sound->shape.rate = TakeRate(input);
    sound->shape.channels = static_cast<int>(input.TakeWithin(0, 9)) + (flags & 1 ? 58 : -1);
    sound->shape.interleaved = flags & 2;
    sound->shape.littleEndian = flags & 4;
    // Not much longer than a quarter of a second: lower rates would make many samples of few.
    sound->shape.samples = input.TakeWithin(0, std::min(3000u, sound->shape.rate / 4 + 1));
    sound->time = input.Take<uint32_t>();

    // The buffers that these make, or others.
    const auto channels = static_cast<size_t>(std::max(0, sound->shape.channels));
    const size_t together = sound->shape.interleaved ? channels : 1;
    size_t bytes = sound->shape.samples * together * SampleBytes(*sound);
    if (flags & 8) bytes -= std::min<size_t>(bytes, input.Take<uint8_t>());
    if (flags & 16) bytes += input.TakeWithin(0, 999);
    sound->buffers.assign(sound->shape.interleaved ? 1 : channels, test::GuardedBytes(bytes));
    if (flags & 32) sound->buffers.resize(input.Take<uint8_t>());
    for (auto& buffer : sound->buffers) input.Spread(buffer.data(), buffer.size());
    return sound;
}

using Sounds = std::vector<std::unique_ptr<HostSound>>; // null: an item without an object

// A file of a few sounds, whatever its path.
test::Source TakeFile(fuzz::InputBytes& input) {
    const unsigned duration = input.Take<uint16_t>();
    const auto sounds = std::make_shared<Sounds>();
    for (unsigned items = input.Take<uint8_t>() % 5; items; --items)
        sounds->push_back(input.Take<uint8_t>() % 8 ? TakeSound(input) : nullptr);
    return {.make =
                [=](AVItem& item, size_t number) {
                    if (number >= sounds->size()) return false;
                    item.kind = 2;
                    item.object = static_cast<IRawAudioFrame*>((*sounds)[number].get());
                    return true;
                },
            .duration = duration};
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::InputBytes input(data, size);
    const EffectInfo* const named = FindEffect(input.TakeLine());
    if (!named || named->kind != EffectKind::Audio) return -1; // nothing to keep for the corpus
    const EffectInfo& effect = *named;
    fuzz::UseLevel(input.Take<uint8_t>());
    test::HostManager manager;
    manager.sources[""] = TakeFile(input);
    IRawAudioFrame* last = nullptr; // left to the host when the processor goes
    {
        const std::unique_ptr<IAudioProc, void (*)(IAudioProc*)> proc(CreateAudioProc(&manager, effect.name),
                                                                      [](IAudioProc* p) { p->Free(); });
        for (int frames = 0; frames < 4; ++frames) {
            for (unsigned settings = input.Take<uint8_t>() % 6; settings; --settings)
                fuzz::SetAny(*proc, effect, input);
            const auto how = input.Take<uint8_t>();
            if (how & 2) proc->Seek(input.Take<int64_t>());
            const std::unique_ptr<HostSound> sound = TakeSound(input);
            if (test::StopsByContract(effect, *proc, *sound)) continue;
            if (how & 1)
                proc->ProcFrameInPlace(sound.get());
            else
                last = proc->ProcFrame(sound.get());
        }
    }
    if (last) last->Release();
    return 0;
}
