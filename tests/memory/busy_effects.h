#pragma once
/// Every effect at work, on a host's picture.
#include <string_view>
#include <utility>
#include <vector>

#include "avbase/avbase_srcutils/avbase_crawvideoframe.h"
#include "aveffect/catalogue.h"
#include "tests/memory/allocation_count.h"
#include "tests/support/picture_manager.h"
#include "tests/support/plugin.h"

namespace test {

/// A host's frame whose clones are recycled in this program. The host has the memory for a clone: a frame
/// that can't be cloned ends the program by contract.
class ClonableFrame final : public AVBased::CRawVideoFrame {
public:
    using CRawVideoFrame::CRawVideoFrame;
    AVBased::IRawVideoFrame* Clone() override {
        const WithoutLimit enough;
        return CRawVideoFrame::Clone();
    }
};

class Picture {
public:
    explicit Picture(unsigned format, unsigned width = 96, unsigned height = 64)
        : m_Frame(false, format, width, height, true)
        , m_Pixels(m_Frame.GetRequireSize()) {
        unsigned char* place = m_Pixels.data();
        for (unsigned i = 0; i < m_Frame.GetBufferCount(); ++i) {
            auto* buffer = m_Frame.GetBuffer(i);
            buffer->pitch = buffer->widthBytes;
            buffer->data = place;
            place += size_t{buffer->pitch} * buffer->rows;
        }
        Fill();
    }
    void Fill() {
        for (size_t i = 0; i < m_Pixels.size(); ++i) m_Pixels[i] = static_cast<unsigned char>(i * i / 7);
    }
    AVBased::CRawVideoFrame& Frame() { return m_Frame; }
    const std::vector<unsigned char>& Pixels() const { return m_Pixels; }

private:
    ClonableFrame m_Frame;
    std::vector<unsigned char> m_Pixels;
};

/// What makes effects work that do nothing with their defaults.
inline constexpr std::pair<std::string_view, const char*> kBusyValues[] = {
    {"duration", "100"},
    {"brightness", "10"},
    {"saturation", "20"},
    {"mosaic_x2", "90"},
    {"mosaic_y2", "60"},
    {"mosaic_step", "3"},
    {"emboss_level", "2"},
    {"transparency_scale", "50"},
    {"filter_scope", "60"},
    {"spherize_r", "20"},
    {"spherize_x", "40"},
    {"spherize_y", "30"},
    {"spherize_scale", "0.7"},
    {"rotate_r", "20"},
    {"rotate_x", "40"},
    {"rotate_y", "30"},
    {"rotate_scale", "3"},
    {"magnifier_r", "20"},
    {"magnifier_x", "40"},
    {"magnifier_y", "30"},
    {"magnifier_scale", "2.7"},
    {"tensile_vertical", "1"},
    {"tensile_vertical_y1", "20"},
    {"tensile_vertical_y2", "50"},
    {"tensile_vertical_scale", "1.3"},
    {"tensile_horizontal", "1"},
    {"tensile_horizontal_x1", "20"},
    {"tensile_horizontal_x2", "50"},
    {"tensile_horizontal_scale", "1.3"},
    {"atomize_ishorizontal", "1"},
    {"atomize_isvertical", "1"},
    {"atomize_level", "9"},
    {"tilereflect_size", "20"},
    {"spotlight_x", "40"},
    {"spotlight_y", "30"},
    {"spotlight_r", "25"},
    {"radiate_x", "40"},
    {"radiate_y", "30"},
    {"EffectPropSourceDur", "100"},
    {"EffectPropVFPath1", "first"},
    {"EffectPropVFPath2", "second"},
    {"mirror", "1"},
    {"vertical", "1"},
    {"Rotate90XDerection", "1"}};

/// The pictures that transitions read: one of the frames' size, one that is fitted.
inline AVBased::IAVManager* Manager() {
    struct Sources {
        Picture first{AVBased::BGRA}, second{AVBased::YUV420P, 40, 50};
        PictureManager manager;

        Sources() { manager.sources = {{"first", {&first.Frame()}}, {"second", {&second.Frame()}}}; }
    };
    thread_local Sources sources;
    sources.manager.opened.clear();
    return &sources.manager;
}

/// What a processor may refuse for want of memory is left out.
inline void SetBusy(AVBased::IVideoProc& proc, const AVBased::EffectInfo& effect) {
    proc.SetProperty("duration", "100");
    for (const AVBased::PropertyInfo& property : effect.properties)
        for (const auto& [name, value] : kBusyValues)
            if (name == property.name) proc.SetProperty(property.name, value);
}

inline VideoProc MakeBusy(const AVBased::EffectInfo& effect) {
    VideoProc proc = MakeVideo(effect.name, {}, Manager());
    SetBusy(*proc, effect);
    return proc;
}

} // namespace test
