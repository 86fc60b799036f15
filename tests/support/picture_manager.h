#pragma once
/// A host's media access whose sources are pictures in memory, and which counts what is asked of it.
#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "aveffect/media.h"
#include "aveffect/video_frame.h"

namespace test {

/// One source by its URL.
struct PictureSource {
    AVBased::IRawVideoFrame* picture = nullptr; ///< null: nothing but sound
    int soundsBefore = 0;                       ///< items that come before the picture
    int sounds = 1000;                          ///< items before the end, without a picture
    bool throwsOnRead = false;
};

class PictureManager final : public AVBased::IAVManager {
public:
    std::map<std::string, PictureSource> sources; ///< others can't be opened
    std::function<void()> onOpen;                 ///< may throw
    std::vector<std::string> opened;              ///< URLs that were asked for
    int reads = 0;
    int readers = 0; ///< not yet released

    AVBased::IAVReader* OpenSource(const char* url, const char* options, unsigned* streams, unsigned* width,
                                   unsigned* height, unsigned* duration) override {
        opened.emplace_back(url);
        if (options || !streams || !width || !height || !duration) throw std::logic_error("other arguments");
        if (onOpen) onOpen();
        const auto found = sources.find(url);
        return found == sources.end() ? nullptr : new Reader(*this, found->second);
    }

private:
    class Reader final : public AVBased::IAVReader {
    public:
        Reader(PictureManager& manager, const PictureSource& source)
            : m_manager(manager)
            , m_source(source) {
            ++m_manager.readers;
        }
        bool ReadItem(AVBased::AVItem* item, unsigned flags, unsigned timeout) override {
            ++m_manager.reads;
            if (m_source.throwsOnRead) throw std::runtime_error("broken source");
            const bool fresh = !item->object && item->position == -1 && item->stream == 0 &&
                               item->length == 0xFFFFFFFFu && flags == 1 && timeout == 0xFFFFFFFFu;
            if (!fresh) throw std::logic_error("other arguments");
            const int index = m_index++;
            if (index < m_source.soundsBefore || (!m_source.picture && index < m_source.sounds)) {
                item->object = this; // not a picture, whatever it is
                item->kind = 2;
                return true;
            }
            item->object = m_source.picture;
            item->kind = 1;
            return m_source.picture != nullptr;
        }
        bool Seek(unsigned) override { return false; }
        unsigned GetDuration() override { return 0; }
        void Release() override {
            --m_manager.readers;
            delete this;
        }

    private:
        PictureManager& m_manager;
        PictureSource m_source;
        int m_index = 0;
    };
};

} // namespace test
