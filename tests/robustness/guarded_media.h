#pragma once
/// A host's pictures and sounds between protected pages, with watched bytes on the side that a page doesn't
/// reach up to, and the host's media access, all of which can be told to go wrong.
#include <algorithm>
#include <atomic>
#include <map>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "aveffect/media.h"
#include "aveffect/memory_frame.h"
#include "mediabridge/pixel_formats.h"
#include "tests/support/guarded_bytes.h"
#include "tests/support/host_frame.h"
#include "tests/support/host_sound.h"

namespace test {

/// Where the world outside the plug-in can go wrong.
enum class Place {
    Nowhere,
    Open,
    Duration,
    Read,
    Nonsense, ///< items without an object, of no known kind, and no end of them
    Seek,
    ReleaseReader,
    SourceClone, ///< of what a reader gives, as are the next two
    SourceBuffer,
    SourceFree,
    Clone, ///< of the frames to process, as are the next two
    Buffer,
    Free,
    MakeConverter,
    Convert,
    ReleaseConverter,
    MakeCropPan,
    Pad,
    ReleaseCropPan,
    MakeResampler,
    Resample,
    DestroyResampler,
    End
};

enum class How { Nothing, Exception, Oddity };

/// What goes wrong at present. Changed while no processor runs.
struct Trouble {
    Place place = Place::Nowhere;
    How how = How::Nothing;

    /// True where nothing shall be given; or throws.
    bool At(Place here) const {
        if (here != place) return false;
        if (how == How::Exception) throw std::runtime_error("trouble outside");
        if (how == How::Oddity) throw 5;
        return true;
    }
};
inline Trouble trouble;

/// The memory of a picture or a sound.
class GuardedBuffers {
public:
    static inline std::atomic<int> alive = 0;
    bool fromSource = false; ///< a reader's, or a clone of it
    bool hasBuffers = true;

    explicit GuardedBuffers(Flush flush)
        : m_Flush(flush) {
        ++alive;
    }
    GuardedBuffers(const GuardedBuffers& other)
        : GuardedBuffers(other.m_Flush) {
        fromSource = other.fromSource;
        hasBuffers = other.hasBuffers;
        for (size_t i = 0; i < other.Count(); ++i) {
            Add(other.Bytes(i));
            std::copy_n(other.Data(i), Bytes(i), Data(i));
        }
    }
    GuardedBuffers& operator=(const GuardedBuffers&) = delete;
    ~GuardedBuffers() { --alive; }

    void Randomise(unsigned seed) {
        std::minstd_rand random(seed);
        for (size_t i = 0; i < Count(); ++i)
            std::generate_n(Data(i), Bytes(i), [&] { return static_cast<unsigned char>(random() >> 8); });
    }
    void Clear() {
        for (size_t i = 0; i < Count(); ++i) std::fill_n(Data(i), Bytes(i), static_cast<unsigned char>(0));
    }
    size_t Count() const { return m_Buffers.size(); }
    size_t Bytes(size_t i) const { return m_Buffers[i].bytes; }
    unsigned char* Data(size_t i) const {
        return m_Buffers[i].memory.data() + (m_Flush == Flush::End ? kWatched : 0);
    }
    bool WatchedBytesAreWhole() const {
        for (size_t i = 0; i < Count(); ++i)
            if (std::count(Watched(i), Watched(i) + kWatched, kWatchedByte) != kWatched) return false;
        return true;
    }
    /// Byte for byte, padding included.
    bool operator==(const GuardedBuffers& other) const {
        for (size_t i = 0; i < Count(); ++i)
            if (!std::equal(Data(i), Data(i) + Bytes(i), other.Data(i), other.Data(i) + other.Bytes(i)))
                return false;
        return Count() == other.Count();
    }

protected:
    void Add(size_t bytes) {
        m_Buffers.push_back({bytes, GuardedBytes(bytes + kWatched, uint8_t{0}, m_Flush)});
        std::fill_n(Watched(Count() - 1), kWatched, kWatchedByte);
    }
    unsigned char* Give(size_t i) const {
        const bool nothing = trouble.At(fromSource ? Place::SourceBuffer : Place::Buffer);
        return nothing || !hasBuffers || i >= Count() ? nullptr : Data(i);
    }
    template <class Media>
    Media* CloneOf(const Media& media) const {
        return trouble.At(fromSource ? Place::SourceClone : Place::Clone) ? nullptr : new Media(media);
    }
    template <class Media>
    void Delete(const Media* media) const {
        const bool ofSource = fromSource;
        delete media;
        trouble.At(ofSource ? Place::SourceFree : Place::Free);
    }

private:
    struct Buffer {
        size_t bytes;
        mutable GuardedBytes memory; // of const pictures, effects get what they work on
    };
    static constexpr int kWatched = 64;
    static constexpr unsigned char kWatchedByte = 0xA5;

    unsigned char* Watched(size_t i) const {
        return m_Buffers[i].memory.data() + (m_Flush == Flush::End ? 0 : Bytes(i));
    }

    Flush m_Flush;
    std::vector<Buffer> m_Buffers;
};

/// A picture of any format: those that the frame table doesn't have get one plane of four bytes a pixel.
class GuardedFrame final : public GuardedBuffers, public AVBased::MemoryFrame {
public:
    GuardedFrame(const Shape& ofShape, Flush flush, unsigned seed)
        : GuardedBuffers(flush)
        , MemoryFrame(ofShape.format, ofShape.width, ofShape.height, {})
        , shape(ofShape) {
        const unsigned count = std::max(1u, mediabridge::TablePlaneCount(shape.format));
        for (unsigned i = 0; i < count; ++i) {
            const auto [width, rows] = SizeOf(i);
            const unsigned extra = width == 0 && shape.extraPitch == kOverlapping ? 0 : shape.extraPitch;
            planes.push_back({nullptr, width, width + extra, rows});
            const size_t pitch = planes[i].pitch;
            Add(rows == 0 ? 0 : std::max(pitch * rows, pitch * (rows - 1) + width));
        }
        Randomise(seed);
    }

    /// As extraPitch: a row begins in the last byte of the one before.
    static constexpr unsigned kOverlapping = ~0u;

    Shape shape;
    std::vector<Plane> planes;
    GuardedFrame* subset = nullptr; ///< the second view, not owned

    bool IsPacked() override { return planes.size() == 1; }
    unsigned GetBufferCount() override { return static_cast<unsigned>(planes.size()); }
    unsigned char* GetBuffer(unsigned index, unsigned* width, unsigned* pitch, unsigned* rows) override {
        *width = planes.at(index).widthBytes;
        *pitch = planes[index].pitch;
        *rows = planes[index].rows;
        return Give(index);
    }
    void Free() override { Delete(this); }
    AVBased::IRawVideoFrame* Clone() override { return CloneOf(*this); }
    void* GetInterface(const char* name) override {
        if (subset && std::strcmp(name, AVBased::kSubsetFrameInterface) == 0)
            return static_cast<AVBased::IRawVideoFrame*>(subset);
        return MemoryFrame::GetInterface(name);
    }

private:
    std::pair<unsigned, unsigned> SizeOf(unsigned plane) const {
        const auto of = [&](unsigned width, unsigned height) {
            return mediabridge::TablePlaneSize(shape.format, plane, width, height);
        };
        if (!mediabridge::TablePlaneCount(shape.format)) return {shape.width * 4, shape.height};
        const mediabridge::PlaneSize down = of(shape.width, shape.height);
        if (plane == 0 || !shape.roundUp) return {down.widthBytes, down.rows};
        const unsigned across = 64 / of(64, 64).widthBytes, along = 64 / of(64, 64).rows;
        return {(shape.width + across - 1) / across, (shape.height + along - 1) / along};
    }
};

/// A sound whose buffers may hold less or more than it says.
class GuardedSound final : public GuardedBuffers, public ShapedSound {
public:
    GuardedSound(const SoundShape& ofShape, size_t bufferBytes, Flush flush, unsigned seed)
        : GuardedBuffers(flush)
        , ShapedSound(ofShape) {
        const int count = shape.interleaved ? 1 : std::clamp(shape.channels, 0, 8);
        for (int i = 0; i < count; ++i) Add(bufferBytes);
        Randomise(seed);
    }
    explicit GuardedSound(const SoundShape& ofShape)
        : GuardedSound(ofShape, BytesOf(ofShape), Flush::End, ofShape.samples) {}

    static size_t BytesOf(const SoundShape& shape) {
        const size_t each = shape.format < 0 || shape.format > 10 ? 4 : SampleBytesOf(shape.format);
        return shape.samples * each * (shape.interleaved ? static_cast<size_t>(shape.channels) : 1);
    }

    unsigned char* GetBuffer(int index, unsigned* size) override {
        unsigned char* const data = Give(static_cast<size_t>(index));
        *size = data ? static_cast<unsigned>(Bytes(static_cast<size_t>(index))) : 0;
        return data;
    }
    void Release() override { Delete(this); }
    AVBased::IRawAudioFrame* Clone() override { return CloneOf(*this); }
};

/// A host's media access for all threads: small and large pictures, tall and wide, of several formats, and
/// sounds that change from item to item.
class SourceManager final : public AVBased::IAVManager {
public:
    static inline std::atomic<int> readers = 0;

    SourceManager() {
        Show("first", {AVBased::BGRA, 40, 30});
        Show("second", {AVBased::YUV420P, 17, 50, 3});
        Show("dot", {AVBased::BGRA, 1, 1});
        Show("line", {AVBased::YUV444P, 64, 1});
        for (const SoundShape& shape :
             {SoundShape{.samples = 700}, SoundShape{.format = AVBased::sfFloat, .rate = 8000, .samples = 90},
              SoundShape{.samples = 0},
              SoundShape{.rate = 44100, .channels = 1, .interleaved = false, .samples = 33}})
            Play("sound", shape);
        Play("tick", {.samples = 1});
        Play("odd", {.format = 5, .samples = 10});
        Play("odd", {.samples = 10});
        m_Sources["silence"];
    }
    AVBased::IAVReader* OpenSource(const char* url, const char*, unsigned*, unsigned*, unsigned*,
                                   unsigned*) override {
        const auto found = m_Sources.find(url);
        if (trouble.At(Place::Open) || found == m_Sources.end()) return nullptr;
        return new Reader(found->second);
    }

private:
    using Items = std::vector<AVBased::AVItem>;

    class Reader final : public AVBased::IAVReader {
    public:
        explicit Reader(const Items& items)
            : m_Items(items) {
            ++readers;
        }
        bool ReadItem(AVBased::AVItem* item, unsigned, unsigned) override {
            if (trouble.At(Place::Nonsense)) {
                const bool nothing = m_Next++ % 2;
                item->object = nothing ? nullptr : this;
                item->kind = nothing ? 1 + m_Next / 2 % 2 : 3;
                return true;
            }
            if (trouble.At(Place::Read) || m_Next == m_Items.size()) return false;
            *item = m_Items[m_Next++];
            return true;
        }
        bool Seek(unsigned) override {
            if (trouble.At(Place::Seek)) return false;
            m_Next = 0;
            return true;
        }
        unsigned GetDuration() override { return trouble.At(Place::Duration) ? 0 : 1000; }
        void Release() override {
            --readers;
            delete this;
            trouble.At(Place::ReleaseReader);
        }

    private:
        const Items& m_Items;
        uint32_t m_Next = 0;
    };

    void Show(const char* name, const Shape& shape) {
        auto& picture = m_Pictures.emplace_back(
            new GuardedFrame(shape, Flush::End, static_cast<unsigned>(m_Pictures.size())));
        picture->fromSource = true;
        m_Sources[name].push_back({static_cast<AVBased::IRawVideoFrame*>(picture.get()), 0, 0, 1, 1});
    }
    void Play(const char* name, const SoundShape& shape) {
        auto& sound = m_Sounds.emplace_back(new GuardedSound(shape));
        sound->fromSource = true;
        m_Sources[name].push_back({static_cast<AVBased::IRawAudioFrame*>(sound.get()), 0, 0, 1, 2});
    }

    std::vector<std::unique_ptr<GuardedFrame>> m_Pictures;
    std::vector<std::unique_ptr<GuardedSound>> m_Sounds;
    std::map<std::string, Items> m_Sources;
};

inline SourceManager* Sources() {
    static SourceManager sources;
    return &sources;
}

} // namespace test
