#pragma once
/// A host's own frames for tests: any pitch, any base offset, chroma rounded down or up, every byte outside
/// the picture watched, and beyond it a protected page.
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <random>
#include <stdexcept>
#include <vector>

#include "aveffect/memory_frame.h"
#include "aveffect/pixel_format.h"
#include "tests/support/guarded_bytes.h"

namespace test {

/// The layout of a planar or packed format, written down here once more so that tests do not lean on the code
/// they try.
struct Layout {
    unsigned planes;
    unsigned pixelBytes; ///< of plane 0
    unsigned hShift, vShift;
};

inline Layout LayoutOf(unsigned format) {
    switch (format) {
    case AVBased::BGRA:
        return {1, 4, 0, 0};
    case AVBased::RGB24:
        return {1, 3, 0, 0};
    case AVBased::YUV420P:
    case AVBased::YUVJ420P:
        return {3, 1, 1, 1};
    case AVBased::YUV422P:
    case AVBased::YUVJ422P:
        return {3, 1, 1, 0};
    case AVBased::YUV410P:
        return {3, 1, 2, 2};
    case AVBased::YUV411P:
        return {3, 1, 2, 0};
    case AVBased::YUV444P:
        return {3, 1, 0, 0};
    case AVBased::YUVA420P:
        return {4, 1, 1, 1};
    case AVBased::YUVA444P:
        return {4, 1, 0, 0};
    default:
        throw std::invalid_argument("no layout for this format");
    }
}

struct Shape {
    unsigned format = AVBased::BGRA;
    unsigned width = 0, height = 0;
    unsigned extraPitch = 0; ///< bytes from the end of a row to the next one
    unsigned offset = 0;     ///< bytes from an aligned address to the first byte
    bool roundUp = false;    ///< chroma of odd sizes
    Flush flush = Flush::End;
};

/// What a frame's bytes are: anything, or what meets the limits of samples.
enum class Contents { Random, NearZero, NearTop, Extremes };

class HostFrame final : public AVBased::MemoryFrame {
public:
    struct Plane {
        unsigned width = 0, pitch = 0, rows = 0;
        size_t offset = 0;
        GuardedBytes bytes; ///< offset, then rows x pitch

        unsigned char* Data() { return bytes.data() + offset; }
        unsigned char& At(unsigned x, unsigned y) { return Data()[size_t{y} * pitch + x]; }
    };

    explicit HostFrame(Shape shape)
        : MemoryFrame(shape.format, shape.width, shape.height, {}) {
        const Layout layout = LayoutOf(shape.format);
        for (unsigned i = 0; i < layout.planes; ++i) {
            const bool chroma = i == 1 || i == 2;
            Plane plane;
            plane.width = Shifted(shape, shape.width, chroma ? layout.hShift : 0) * layout.pixelBytes;
            plane.rows = Shifted(shape, shape.height, chroma ? layout.vShift : 0);
            plane.pitch = plane.width + shape.extraPitch;
            plane.offset = shape.offset;
            plane.bytes =
                GuardedBytes(shape.offset + size_t{plane.pitch} * plane.rows, uint8_t{0}, shape.flush);
            planes.push_back(std::move(plane));
        }
    }

    /// Every byte, padding included.
    void Randomise(unsigned seed, Contents contents = Contents::Random) {
        std::mt19937 random(seed);
        for (Plane& plane : planes)
            for (unsigned char& byte : plane.bytes) {
                const unsigned x = random() & 255;
                byte = static_cast<unsigned char>(contents == Contents::Random     ? x
                                                  : contents == Contents::NearZero ? x % 4
                                                  : contents == Contents::NearTop  ? 252 + x % 4
                                                                                   : x % 2 * 255);
            }
    }

    std::vector<Plane> planes;
    std::function<AVBased::IRawVideoFrame*(HostFrame&)> onClone; ///< stands in for Clone() when set
    int* freed = nullptr;                                        ///< counts Free() when set
    HostFrame* subset = nullptr;                                 ///< the second view, not owned

    unsigned GetBufferCount() override { return static_cast<unsigned>(planes.size()); }
    unsigned char* GetBuffer(unsigned index, unsigned* width, unsigned* pitch, unsigned* rows) override {
        Plane& plane = planes.at(index);
        *width = plane.width;
        *pitch = plane.pitch;
        *rows = plane.rows;
        return plane.Data();
    }
    void Free() override {
        if (freed) ++*freed;
        delete this;
    }
    AVBased::IRawVideoFrame* Clone() override { return onClone ? onClone(*this) : new HostFrame(*this); }
    void* GetInterface(const char* name) override {
        if (subset && std::strcmp(name, AVBased::kSubsetFrameInterface) == 0)
            return static_cast<AVBased::IRawVideoFrame*>(subset);
        return MemoryFrame::GetInterface(name);
    }

private:
    static unsigned Shifted(const Shape& shape, unsigned size, unsigned shift) {
        return shape.roundUp ? (size + (1u << shift) - 1) >> shift : size >> shift;
    }
};

struct Freer {
    void operator()(HostFrame* frame) const { frame->Free(); }
};
using FramePtr = std::unique_ptr<HostFrame, Freer>;

inline FramePtr MakeFrame(Shape shape, unsigned seed = 1, Contents contents = Contents::Random) {
    FramePtr frame(new HostFrame(shape));
    frame->Randomise(seed, contents);
    return frame;
}

} // namespace test
