#pragma once
/// Every effect at work, on a host's picture.
#include <vector>

#include "aveffect/catalogue.h"
#include "tests/memory/allocation_count.h"
#include "tests/support/busy_settings.h"
#include "tests/support/host_manager.h"
#include "tests/support/plugin.h"
#include "tests/support/recycled_frame.h"

namespace test {

/// The host has the memory for a clone: a frame that can't be cloned ends the program by contract.
class ClonableFrame final : public RecycledFrame {
public:
    using RecycledFrame::RecycledFrame;
    AVBased::IRawVideoFrame* Clone() override {
        const WithoutLimit enough;
        return RecycledFrame::Clone();
    }
};

class Picture final : public InOneBlock<ClonableFrame> {
public:
    explicit Picture(unsigned format, unsigned width = 96, unsigned height = 64)
        : InOneBlock(format, width, height) {
        Fill();
    }
    void Fill() {
        for (size_t i = 0; i < Pixels().size(); ++i) Pixels()[i] = static_cast<unsigned char>(i * i / 7);
    }
};

/// The pictures that transitions read: one of the frames' size, one that is fitted.
inline AVBased::IAVManager* Manager() {
    struct Sources {
        Picture first{AVBased::BGRA}, second{AVBased::YUV420P, 40, 50};
        HostManager manager;

        Sources() { manager.sources = {{"first", {&first.Frame()}}, {"second", {&second.Frame()}}}; }
    };
    thread_local Sources sources;
    sources.manager.opened.clear();
    return &sources.manager;
}

inline VideoProc MakeBusy(const AVBased::EffectInfo& effect) {
    VideoProc proc = MakeVideo(effect.name, {}, Manager());
    SetBusy(*proc, effect);
    return proc;
}

} // namespace test
