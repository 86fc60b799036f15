#pragma once
/// A host's own frames for tests: any format of the frame table and none, any pitch, any base offset, chroma
/// rounded down or up, either way up, cropped, with a second view; what lies beside the bytes is guarded.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/pixdesc.h>
}

#include "aveffect/memory_frame.h"
#include "aveffect/pixel_format.h"
#include "mediabridge/pixel_formats.h"
#include "tests/support/guarded_bytes.h"
#include "tests/support/trouble.h"

namespace test {

/// The layout of a planar or packed format as libavutil has it, so that tests do not lean on the code they
/// try.
struct Layout {
    unsigned planes;
    unsigned pixelBytes; ///< of plane 0
    unsigned hShift, vShift;
};

inline Layout LayoutOf(unsigned format) {
    const AVPixelFormat id = mediabridge::LibraryFormat(format);
    const AVPixFmtDescriptor& of = *av_pix_fmt_desc_get(id);
    return {static_cast<unsigned>(av_pix_fmt_count_planes(id)), static_cast<unsigned>(of.comp[0].step),
            of.log2_chroma_w, of.log2_chroma_h};
}

struct Shape {
    unsigned format = AVBased::BGRA;
    unsigned width = 0, height = 0;
    unsigned extraPitch = 0; ///< bytes from the end of a row to the next one
    unsigned offset = 0;     ///< bytes from an aligned address to the first byte
    bool roundUp = false;    ///< chroma of odd sizes
    Flush flush = Flush::End;
    bool bottomUp = false;
    bool tight = false; ///< no memory but for what the frame table counts: half of samples with many bits

    /// As extraPitch: a row begins in the last byte of the one before.
    static constexpr unsigned kOverlapping = ~0u;
};

/// For messages.
inline std::string Describe(const Shape& shape) {
    return "format " + std::to_string(shape.format) + ", " + std::to_string(shape.width) + "x" +
           std::to_string(shape.height) + ", padding " + std::to_string(shape.extraPitch) + ", offset " +
           std::to_string(shape.offset) + (shape.roundUp ? ", chroma rounded up" : "") +
           (shape.bottomUp ? ", bottom-up" : "");
}

/// What a frame's bytes are: anything, or what meets the limits of samples.
enum class Contents { Random, NearZero, NearTop, Extremes };

class HostFrame final : public HostMedia, public AVBased::MemoryFrame, public AVBased::IMVCRawVideoFrame {
public:
    struct Plane {
        unsigned width = 0; ///< bytes a row that are told
        unsigned held = 0;  ///< bytes a row that there are
        unsigned pitch = 0, rows = 0;
        size_t offset = 0;
        GuardedBytes bytes; ///< offset, then rows x pitch

        unsigned char* Data() { return bytes.data() + offset; }
        unsigned char& At(unsigned x, unsigned y) { return Data()[size_t{y} * pitch + x]; }
    };

    explicit HostFrame(const Shape& ofShape)
        : MemoryFrame(ofShape.format, ofShape.width, ofShape.height, {})
        , shape(ofShape) {
        // What isn't in the table gets one plane of four bytes a pixel.
        for (unsigned i = 0; i < std::max(1u, mediabridge::TablePlaneCount(shape.format)); ++i) {
            Plane plane = Measured(i);
            const bool overlaps = shape.extraPitch == Shape::kOverlapping;
            plane.pitch = plane.held + (overlaps && plane.held == 0 ? 0 : shape.extraPitch);
            const size_t rowsBefore = std::max(plane.rows, 1u) - 1;
            const size_t last = plane.rows ? std::max(plane.pitch, plane.held) : 0;
            plane.offset = shape.offset;
            plane.bytes =
                GuardedBytes(shape.offset + size_t{plane.pitch} * rowsBefore + last, uint8_t{0}, shape.flush);
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
    /// Sets every byte of the picture, counted from its top.
    void Fill(const std::function<unsigned(unsigned plane, unsigned byte, unsigned row)>& value) {
        for (unsigned i = 0; i < planes.size(); ++i)
            for (unsigned y = 0; y < planes[i].rows; ++y)
                for (unsigned x = 0; x < planes[i].held; ++x)
                    planes[i].At(x, shape.bottomUp ? planes[i].rows - 1 - y : y) =
                        static_cast<unsigned char>(value(i, x, y));
    }
    /// Byte for byte, padding included.
    bool operator==(const HostFrame& other) const {
        return std::equal(planes.begin(), planes.end(), other.planes.begin(), other.planes.end(),
                          [](const Plane& a, const Plane& b) { return a.bytes == b.bytes; });
    }

    Shape shape;
    std::vector<Plane> planes;
    std::function<AVBased::IRawVideoFrame*(HostFrame&)> onClone; ///< stands in for Clone() when set
    int* freed = nullptr;                                        ///< counts Free() when set
    HostFrame* subset = nullptr;                                 ///< the second view, not owned
    int view = 0;                                                ///< what it is called, when set
    double ratio = 0;                                            ///< of its sides as shown

    void GetDimension(unsigned* width, unsigned* height) override {
        MemoryFrame::GetDimension(width, height);
        if (width) *width -= m_right;
        if (height) *height -= m_bottom;
    }
    bool IsTopDown() override { return !shape.bottomUp; }
    bool IsPacked() override { return planes.size() == 1; }
    unsigned GetBufferCount() override { return static_cast<unsigned>(planes.size()); }
    unsigned char* GetBuffer(unsigned index, unsigned* width, unsigned* pitch, unsigned* rows) override {
        Plane& plane = planes.at(index);
        *width =
            plane.width - std::min(plane.width, mediabridge::TableCropBytes(shape.format, index, m_right));
        *pitch = plane.pitch;
        *rows = plane.rows - std::min(plane.rows, m_bottom);
        return GivesBuffers() ? plane.Data() : nullptr;
    }
    double GetDAR() override { return ratio; }
    bool CropRightAndBottom(unsigned right, unsigned bottom) override {
        if (right >= shape.width || bottom >= shape.height) return false;
        m_right = right;
        m_bottom = bottom;
        return true;
    }
    void Free() override {
        if (freed) ++*freed;
        Delete(this);
    }
    AVBased::IRawVideoFrame* Clone() override { return onClone ? onClone(*this) : CloneOf(*this); }
    void* GetInterface(const char* name) override {
        if (subset && std::strcmp(name, AVBased::kSubsetFrameInterface) == 0)
            return static_cast<AVBased::IRawVideoFrame*>(subset);
        if (view && std::strcmp(name, AVBased::kMVCInterface) == 0)
            return static_cast<IMVCRawVideoFrame*>(this);
        return MemoryFrame::GetInterface(name);
    }
    bool SetViewID(int id) override {
        view = id;
        return true;
    }
    int GetViewID() override { return view; }

private:
    Plane Measured(unsigned i) const {
        Plane plane;
        if (!mediabridge::TablePlaneCount(shape.format)) {
            plane.width = plane.held = shape.width * 4;
            plane.rows = shape.height;
            return plane;
        }
        const AVPixelFormat format = mediabridge::LibraryFormat(shape.format);
        const AVPixFmtDescriptor& of = *av_pix_fmt_desc_get(format);
        const auto table = mediabridge::TablePlaneSize(shape.format, i, shape.width, shape.height);
        const auto whole = static_cast<unsigned>(
            av_image_get_linesize(format, static_cast<int>(shape.width), static_cast<int>(i)));
        const unsigned shift = i == 1 || i == 2 ? of.log2_chroma_h : 0u;
        plane.width = shape.roundUp ? whole : table.widthBytes;
        plane.rows = shape.roundUp ? (shape.height + (1u << shift) - 1) >> shift : table.rows;
        plane.held = plane.width;
        if (of.comp[0].depth == 10 && !shape.roundUp && !shape.tight) plane.held *= 2;
        if (of.flags & AV_PIX_FMT_FLAG_BITSTREAM && !shape.tight) plane.held = whole;
        return plane;
    }

    unsigned m_right = 0, m_bottom = 0; // cropped
};

struct FrameFree {
    void operator()(AVBased::IRawVideoFrame* frame) const { frame->Free(); }
};
using FramePtr = std::unique_ptr<HostFrame, FrameFree>;

inline FramePtr MakeFrame(Shape shape, unsigned seed = 1, Contents contents = Contents::Random) {
    FramePtr frame(new HostFrame(shape));
    frame->Randomise(seed, contents);
    return frame;
}

} // namespace test
