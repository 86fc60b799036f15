// Any video effect with any property texts on frames of any shape: effect, number of settings, lines
// "property index, text", then shapes, times and pixels.
#include <vector>

#include "aveffect/catalogue.h"
#include "aveffect/plugin.h"
#include "fuzz/input_bytes.h"
#include "fuzz/tame_values.h"
#include "tests/support/host_frame.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace AVBased;
    fuzz::InputBytes input(data, size);
    const EffectInfo& effect = kVideoEffects[input.Take<uint8_t>() % kVideoEffects.size()];
    const std::unique_ptr<IVideoProc, void (*)(IVideoProc*)> proc(CreateVideoProc(nullptr, effect.name),
                                                                  [](IVideoProc* p) { p->Free(); });
    static const unsigned kFormats[] = {BGRA,     YUV420P,  YUV422P,  YUV410P, YUV411P, YUVJ420P,
                                        YUVJ422P, YUVA420P, YUVA444P, YUV444P, RGB24};
    for (int frames = 0; frames < 3; ++frames) {
        for (unsigned settings = input.Take<uint8_t>() % 8; settings; --settings) {
            const unsigned index = input.Take<uint8_t>();
            const PropertyInfo& property =
                index < effect.properties.size() ? effect.properties[index] : kDurationProperty;
            proc->SetProperty(property.name, fuzz::Tame(property.name, input.TakeLine()).c_str());
        }
        test::Shape shape;
        shape.format = kFormats[input.Take<uint8_t>() % std::size(kFormats)];
        shape.width = input.TakeWithin(1, 80);
        shape.height = input.TakeWithin(1, 50);
        shape.extraPitch = input.Take<uint8_t>() % 8;
        shape.offset = input.Take<uint8_t>() % 4;
        shape.roundUp = shape.offset % 2;
        if (fuzz::StopsByContract(*proc, shape.format)) continue;
        const int time = input.Take<int32_t>();
        const test::FramePtr frame(new test::HostFrame(shape));
        for (auto& plane : frame->planes) input.Spread(plane.bytes.data(), plane.bytes.size());
        ImagePostion position{};
        if (time & 1)
            proc->ProcFrameInPlace(&position, time, frame.get());
        else
            proc->ProcFrame(&position, time, frame.get());
    }
    return 0;
}
