#pragma once
/// A host's media access whose sources are in memory, which counts what is asked of it, and which can be told
/// to go wrong. For all threads.
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <vector>

#include "aveffect/media.h"
#include "aveffect/video_frame.h"
#include "tests/support/host_frame.h"
#include "tests/support/host_sound.h"
#include "tests/support/trouble.h"

namespace test {

/// One source by its URL: some items of sound and then a picture, or whatever items are made for it.
struct Source {
    AVBased::IRawVideoFrame* picture = nullptr; ///< null: nothing but sound
    int soundsBefore = 0;                       ///< items that come before the picture
    int sounds = 1000;                          ///< items before the end, without a picture
    bool throwsOnRead = false;
    /// Instead of these: fills the item of that number since the beginning or the last seek; false at the
    /// end.
    std::function<bool(AVBased::AVItem& item, size_t number)> make = {};
    bool seekable = true;
    unsigned duration = 0;
};

/// Of sounds from first to last; null is an item without an object.
inline Source Playing(std::vector<std::unique_ptr<HostSound>> sounds, unsigned duration = 1000) {
    for (const auto& sound : sounds)
        if (sound) sound->fromSource = true;
    const auto all = std::make_shared<decltype(sounds)>(std::move(sounds));
    return {.make =
                [all](AVBased::AVItem& item, size_t number) {
                    if (number >= all->size()) return false;
                    item.kind = 2;
                    item.object = static_cast<AVBased::IRawAudioFrame*>((*all)[number].get());
                    return true;
                },
            .duration = duration};
}

class HostManager final : public AVBased::IAVManager {
public:
    std::map<std::string, Source> sources; ///< that of the empty URL stands for all others
    std::function<void()> onOpen;          ///< may throw
    std::vector<std::string> opened;       ///< URLs that were asked for
    std::vector<unsigned> sought;          ///< milliseconds
    std::atomic<int> reads = 0;
    std::atomic<int> readers = 0; ///< not yet released

    AVBased::IAVReader* OpenSource(const char* url, const char* options, unsigned* streams, unsigned* width,
                                   unsigned* height, unsigned* duration) override {
        {
            const std::scoped_lock lock(m_mutex);
            opened.emplace_back(url);
        }
        // Who wants pictures asks for everything, who wants sound for all but the duration.
        const bool fresh =
            streams && width && height && (options ? !*options && !duration : duration != nullptr);
        if (!fresh) throw std::logic_error("other arguments");
        if (onOpen) onOpen();
        if (trouble.At(Place::Open)) return nullptr;
        auto found = sources.find(url);
        if (found == sources.end()) found = sources.find("");
        return found == sources.end() ? nullptr : new Reader(*this, found->second, options ? 0 : 1);
    }

private:
    class Reader final : public AVBased::IAVReader {
    public:
        Reader(HostManager& manager, const Source& source, unsigned flags)
            : m_manager(manager)
            , m_source(source)
            , m_flags(flags) {
            ++m_manager.readers;
        }
        bool ReadItem(AVBased::AVItem* item, unsigned flags, unsigned timeout) override {
            ++m_manager.reads;
            if (trouble.At(Place::Nonsense)) {
                const bool nothing = m_next++ % 2;
                item->object = nothing ? nullptr : this;
                item->kind = static_cast<unsigned>(nothing ? 1 + m_next / 2 % 2 : 3);
                return true;
            }
            if (trouble.At(Place::Read)) return false;
            if (m_source.throwsOnRead) throw std::runtime_error("broken source");
            const bool fresh = !item->object && item->position == -1 && item->stream == 0 &&
                               item->length == 0xFFFFFFFFu && (m_flags || item->kind == 0) &&
                               flags == m_flags && timeout == 0xFFFFFFFFu;
            if (!fresh) throw std::logic_error("other arguments");
            const int number = m_next++;
            if (m_source.make) return m_source.make(*item, static_cast<size_t>(number));
            const bool sounds = number < (m_source.picture ? m_source.soundsBefore : m_source.sounds);
            item->object = sounds ? static_cast<void*>(this) : m_source.picture; // no picture, whatever it is
            item->kind = sounds ? 2 : 1;
            return item->object != nullptr;
        }
        bool Seek(unsigned milliseconds) override {
            {
                const std::scoped_lock lock(m_manager.m_mutex);
                m_manager.sought.push_back(milliseconds);
            }
            if (trouble.At(Place::Seek)) return false;
            if (m_source.seekable) m_next = 0;
            return m_source.seekable;
        }
        unsigned GetDuration() override { return trouble.At(Place::Duration) ? 0 : m_source.duration; }
        void Release() override {
            --m_manager.readers;
            delete this;
            trouble.At(Place::ReleaseReader);
        }

    private:
        HostManager& m_manager;
        const Source& m_source;
        unsigned m_flags; ///< that it is to be read with
        int m_next = 0;
    };

    std::mutex m_mutex; // of the lists
};

/// A host's media: small and large pictures, tall and wide, of several formats, and sounds that change from
/// item to item. Stays till the program ends.
inline HostManager* Sources() {
    static const auto make = [] {
        auto* const manager = new HostManager;
        unsigned seed = 0;
        const auto show = [&](const char* name, const Shape& shape) {
            HostFrame* const picture = MakeFrame(shape, ++seed).release();
            picture->fromSource = true;
            manager->sources[name] = {.picture = picture, .duration = 1000};
        };
        show("first", {AVBased::BGRA, 40, 30});
        show("second", {AVBased::YUV420P, 17, 50, 3});
        const auto play = [&](const char* name, std::initializer_list<SoundShape> shapes) {
            std::vector<std::unique_ptr<HostSound>> sounds;
            for (const SoundShape& shape : shapes)
                sounds.push_back(std::make_unique<HostSound>(MakeSound(shape, ++seed)));
            manager->sources[name] = Playing(std::move(sounds));
        };
        play("sound", {{.samples = 700},
                       {.format = AVBased::sfFloat, .rate = 8000, .samples = 90},
                       {.samples = 0},
                       {.rate = 44100, .channels = 1, .interleaved = false, .samples = 33}});
        return manager;
    };
    static HostManager* const manager = make();
    return manager;
}

} // namespace test
