#include "host/picture_check.h"

#include <algorithm>
#include <memory>
#include <unistd.h>

#include "aveffect/base_tools.h"
#include "aveffect/video_frame.h"
#include "host/catalogue_lookup.h"
#include "host/error.h"

namespace aveffect {

PictureSize RequirePicture(AVBased::IAVManager& manager, const std::string& url) {
    constexpr int kItems = 30; // as many as a transition reads
    constexpr uint32_t kVideoItem = 1;
    constexpr unsigned kNoLimit = 0xFFFFFFFF;
    if (url.find('?') != std::string::npos && access(url.c_str(), F_OK) == 0)
        throw Error(ErrorKind::Input, url + ": a '?' in a name would begin the choice of a stream; give the "
                                            "file another name");
    struct Release {
        void operator()(AVBased::IAVReader* reader) const { reader->Release(); }
    };
    IBaseException* const record = GetBaseException();
    record->Clear();
    const std::unique_ptr<AVBased::IAVReader, Release> reader(
        manager.OpenSource(url.c_str(), "", nullptr, nullptr, nullptr, nullptr));
    if (!reader) throw Error(ErrorKind::Input, record->GetExceptionMsg());
    AVBased::AVItem item{};
    for (int index = 0; index < kItems; ++index) {
        if (!reader->ReadItem(&item, 1, kNoLimit)) {
            const bool failed = record->GetExceptionCode() != AVBased::kNoError;
            throw Error(ErrorKind::Input,
                        failed ? record->GetExceptionMsg() : url + " holds no picture that can be decoded");
        }
        if (item.kind != kVideoItem || !item.object) continue;
        unsigned width = 0, height = 0;
        static_cast<AVBased::IRawVideoFrame*>(item.object)->GetDimension(&width, &height);
        return {static_cast<int>(width), static_cast<int>(height)};
    }
    throw Error(ErrorKind::Input,
                url + " has no picture among its first " + std::to_string(kItems) + " items");
}

void RequirePictures(AVBased::IAVManager& manager, const std::vector<EffectSpec>& effects) {
    for (const EffectSpec& effect : effects) {
        const AVBased::EffectInfo& info = RequireEffect(effect.name);
        if (info.kind != AVBased::EffectKind::Transition) continue;
        for (const AVBased::PropertyInfo& property : info.properties) {
            if (property.kind != AVBased::ValueKind::Path) continue;
            const auto set = std::ranges::find(effect.properties.rbegin(), effect.properties.rend(),
                                               property.name, &PropertySetting::name);
            if (set == effect.properties.rend() || set->value.empty())
                throw Error(ErrorKind::Usage, effect.name + " needs " + property.name +
                                                  ", the path of a media file; `aveffect transition` makes "
                                                  "clips of two pictures");
            RequirePicture(manager, set->value);
        }
    }
}

} // namespace aveffect
