#pragma once
/// A host's media access whose sources are in memory, and which counts what is asked of it.
#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "aveffect/media.h"
#include "aveffect/video_frame.h"

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

class HostManager final : public AVBased::IAVManager {
public:
    std::map<std::string, Source> sources; ///< that of the empty URL stands for all others
    std::function<void()> onOpen;          ///< may throw
    std::vector<std::string> opened;       ///< URLs that were asked for
    std::vector<unsigned> sought;          ///< milliseconds
    int reads = 0;
    int readers = 0; ///< not yet released

    AVBased::IAVReader* OpenSource(const char* url, const char* options, unsigned* streams, unsigned* width,
                                   unsigned* height, unsigned* duration) override {
        opened.emplace_back(url);
        // Who wants pictures asks for everything, who wants sound for all but the duration.
        const bool fresh =
            streams && width && height && (options ? !*options && !duration : duration != nullptr);
        if (!fresh) throw std::logic_error("other arguments");
        if (onOpen) onOpen();
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
            m_manager.sought.push_back(milliseconds);
            if (m_source.seekable) m_next = 0;
            return m_source.seekable;
        }
        unsigned GetDuration() override { return m_source.duration; }
        void Release() override {
            --m_manager.readers;
            delete this;
        }

    private:
        HostManager& m_manager;
        const Source& m_source;
        unsigned m_flags; ///< that it is to be read with
        int m_next = 0;
    };
};

} // namespace test
