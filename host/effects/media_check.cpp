#include "host/effects/media_check.h"

#include <algorithm>
#include <memory>
#include <unistd.h>

#include "aveffect/base_tools.h"
#include "host/media/source_request.h"
#include "host/settings/catalogue_lookup.h"
#include "host/support/error.h"
#include "host/support/error_record.h"
#include "mediabridge/video_frame.h"

namespace aveffect {
namespace {

constexpr unsigned kNoLimit = 0xFFFFFFFF; // of time

struct Release {
    void operator()(AVBased::IAVReader* reader) const { reader->Release(); }
};
using ReaderPtr = std::unique_ptr<AVBased::IAVReader, Release>;

/// Leaves the record clear for what is read. Throws Error (Input).
ReaderPtr OpenReader(AVBased::IAVManager& manager, const std::string& url) {
    GetBaseException()->Clear();
    ReaderPtr reader(manager.OpenSource(url.c_str(), "", nullptr, nullptr, nullptr, nullptr));
    if (!reader) ThrowRecorded(ErrorKind::Input, "");
    return reader;
}

/// The record's text, else that the file holds nothing of the kind. Call when reading has ended.
[[noreturn]] void ThrowNone(const std::string& url, const char* kind) {
    if (GetBaseException()->GetExceptionCode() != AVBased::kNoError) ThrowRecorded(ErrorKind::Input, "");
    throw Error(ErrorKind::Input, url + " holds no " + kind + " that can be decoded");
}

void RequireSound(AVBased::IAVManager& manager, const std::string& url) {
    const ReaderPtr reader = OpenReader(manager, url);
    AVBased::AVItem item{};
    if (!reader->ReadItem(&item, 0, kNoLimit)) ThrowNone(url, "sound");
}

/// The path that an effect's property is set to in the end. Throws Error (Usage) when there is none.
const std::string& RequirePath(const EffectSpec& effect, const AVBased::PropertyInfo& property,
                               const char* hint) {
    const auto set = std::ranges::find(effect.properties.rbegin(), effect.properties.rend(), property.name,
                                       &PropertySetting::name);
    if (set == effect.properties.rend() || set->value.empty())
        throw Error(ErrorKind::Usage, std::string(RequireEffect(effect.name).shortName) + " needs " +
                                          property.name + ", the path of a media file" + hint);
    return set->value;
}

} // namespace

Canvas RequirePicture(MediaManager& manager, const std::string& url) {
    constexpr int kItems = 30; // as many as a transition reads
    constexpr uint32_t kVideoItem = 1;
    const std::string path = ParseSourceUrl(url).path;
    if (path.find('?') != std::string::npos && access(path.c_str(), F_OK) == 0)
        throw Error(ErrorKind::Input, path + ": a '?' in a name would begin the choice of a stream; give the "
                                             "file another name");
    const ReaderPtr reader = OpenReader(manager, url);
    AVBased::AVItem item{};
    for (int index = 0; index < kItems; ++index) {
        if (!reader->ReadItem(&item, 1, kNoLimit)) ThrowNone(path, "picture");
        if (item.kind != kVideoItem || !item.object) continue;
        auto* frame = static_cast<AVBased::IRawVideoFrame*>(item.object);
        return CanvasOf(*static_cast<mediabridge::VideoFrame*>(frame)->Picture()); // the manager's are such
    }
    throw Error(ErrorKind::Input,
                path + " has no picture among its first " + std::to_string(kItems) + " items");
}

void RequirePictures(MediaManager& manager, const std::vector<EffectSpec>& effects) {
    for (const EffectSpec& effect : effects) {
        const AVBased::EffectInfo& info = RequireEffect(effect.name);
        if (info.kind != AVBased::EffectKind::Transition) continue;
        for (const AVBased::PropertyInfo& property : info.properties)
            if (property.kind == AVBased::ValueKind::Path)
                RequirePicture(manager, RequirePath(effect, property,
                                                    "; `aveffect transition` makes clips of two pictures"));
    }
}

void RequireSounds(AVBased::IAVManager& manager, const std::vector<EffectSpec>& effects) {
    for (const EffectSpec& effect : effects) {
        for (const AVBased::PropertyInfo& property : RequireEffect(effect.name).properties) {
            if (property.kind != AVBased::ValueKind::Path) continue;
            RequirePath(effect, property, "");
            for (const PropertySetting& setting : effect.properties) // each is opened when it is set
                if (setting.name == property.name) RequireSound(manager, setting.value);
        }
    }
}

} // namespace aveffect
