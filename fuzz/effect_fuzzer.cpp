// Any video effect with any property texts on frames of any shape: a line with the effect's name, the level,
// the files of transitions, then for each frame its settings (their number, lines "property index, text"),
// shape, time and pixels.
#include <memory>

#include "aveffect/catalogue.h"
#include "aveffect/plugin.h"
#include "fuzz/any_picture.h"
#include "fuzz/processor_level.h"
#include "fuzz/tame_values.h"
#include "tests/support/contract_stops.h"
#include "tests/support/host_manager.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace AVBased;
    fuzz::InputBytes input(data, size);
    const EffectInfo* const named = FindEffect(input.TakeLine());
    if (!named || named->kind == EffectKind::Audio) return -1; // nothing to keep for the corpus
    const EffectInfo& effect = *named;
    fuzz::UseLevel(input.Take<uint8_t>());
    const bool readsFiles = effect.kind == EffectKind::Transition;

    test::HostManager manager;
    std::vector<std::unique_ptr<fuzz::AnyPicture>> files;
    for (const char* name : {"a", "b"}) {
        if (!readsFiles) break;
        files.push_back(std::make_unique<fuzz::AnyPicture>(input));
        manager.sources[name] = {.picture = &files.back()->Frame(),
                                 .soundsBefore = input.Take<uint8_t>() % 40};
    }
    manager.sources["sound"] = {};
    manager.sources["broken"] = {.throwsOnRead = true};

    const std::unique_ptr<IVideoProc, void (*)(IVideoProc*)> proc(CreateVideoProc(&manager, effect.name),
                                                                  [](IVideoProc* p) { p->Free(); });
    if (readsFiles && input.Take<uint8_t>() % 8) {
        proc->SetProperty("EffectPropVFPath1", "a");
        proc->SetProperty("EffectPropVFPath2", "b");
    }
    for (int frames = 0; frames < 3; ++frames) {
        for (unsigned settings = input.Take<uint8_t>() % 8; settings; --settings)
            fuzz::SetAny(*proc, effect, input);
        const int time = input.Take<int32_t>();
        fuzz::AnyPicture picture(input);
        if (effect.kind == EffectKind::Stereo && input.Take<uint8_t>() % 2)
            picture.Frame().CopySubsetFrame(&fuzz::AnyPicture(input).Frame());
        if (test::StopsByContract(effect, *proc, picture.Frame())) continue;
        ImagePostion position{};
        if (time & 1)
            proc->ProcFrameInPlace(&position, time, &picture.Frame());
        else
            proc->ProcFrame(&position, time, &picture.Frame());
    }
    return 0;
}
