#pragma once
/// Frames for tests whose planes touch inaccessible memory: a read outside ends the test.
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/pixdesc.h>
}

#include "aveffect/base_tools.h"
#include "aveffect/memory_frame.h"
#include "aveffect/pixel_format.h"
#include "mediabridge/pixel_formats.h"
#include "tests/support/guarded_bytes.h"

namespace test {

struct FrameShape {
    unsigned format = AVBased::BGRA;
    unsigned width = 0;
    unsigned height = 0;
    unsigned extraPitch = 0;
    bool roundUp = false; ///< chroma of odd sizes is there, and reported
    bool bottomUp = false;
    bool atEnd = true; ///< the last row ends where memory ends, else the first starts where it starts
};

class GuardedFrame final : public AVBased::MemoryFrame, public AVBased::IMVCRawVideoFrame {
public:
    struct Plane {
        unsigned reported = 0; ///< bytes a row that GetBuffer tells
        unsigned bytes = 0;    ///< bytes a row that there are
        unsigned rows = 0;
        unsigned pitch = 0;
        unsigned char* data = nullptr;
    };

    explicit GuardedFrame(const FrameShape& shape)
        : MemoryFrame(shape.format, shape.width, shape.height, {})
        , m_shape(shape) {
        const AVPixelFormat format = mediabridge::LibraryFormat(shape.format);
        const AVPixFmtDescriptor* descriptor = av_pix_fmt_desc_get(format);
        const bool tenBit = descriptor->comp[0].depth == 10;
        for (unsigned i = 0; i < mediabridge::TablePlaneCount(shape.format); ++i) {
            const auto table = mediabridge::TablePlaneSize(shape.format, i, shape.width, shape.height);
            const auto whole = static_cast<unsigned>(
                av_image_get_linesize(format, static_cast<int>(shape.width), static_cast<int>(i)));
            const unsigned shift = i == 1 || i == 2 ? descriptor->log2_chroma_h : 0u;
            Plane plane;
            plane.reported = shape.roundUp ? whole : table.widthBytes;
            plane.bytes = plane.reported;
            if (tenBit && !shape.roundUp) plane.bytes *= 2;
            if (descriptor->flags & AV_PIX_FMT_FLAG_BITSTREAM) plane.bytes = whole;
            plane.rows = shape.roundUp ? (shape.height + (1u << shift) - 1) >> shift : table.rows;
            plane.pitch = plane.bytes + shape.extraPitch;
            const std::size_t size =
                plane.rows ? std::size_t{plane.pitch} * (plane.rows - 1) + plane.bytes : 0;
            m_memory.emplace_back(size, uint8_t{0}, shape.atEnd ? Flush::End : Flush::Start);
            plane.data = m_memory.back().data();
            m_planes.push_back(plane);
        }
    }

    /// Sets every byte of the picture, counted from its top.
    void Fill(const std::function<unsigned(unsigned plane, unsigned byte, unsigned row)>& value) {
        for (unsigned i = 0; i < m_planes.size(); ++i)
            for (unsigned y = 0; y < m_planes[i].rows; ++y)
                for (unsigned x = 0; x < m_planes[i].bytes; ++x)
                    Row(i, y)[x] = static_cast<unsigned char>(value(i, x, y));
    }

    Plane& PlaneAt(unsigned index) { return m_planes[index]; }

    bool IsTopDown() override { return !m_shape.bottomUp; }
    bool IsPacked() override { return m_planes.size() == 1; }
    unsigned GetBufferCount() override { return static_cast<unsigned>(m_planes.size()); }
    unsigned char* GetBuffer(unsigned index, unsigned* widthBytes, unsigned* pitch, unsigned* rows) override {
        *widthBytes = m_planes.at(index).reported;
        *pitch = m_planes[index].pitch;
        *rows = m_planes[index].rows;
        return m_planes[index].data;
    }
    double GetDAR() override { return 1.5; }
    void* GetInterface(const char* name) override {
        if (std::string(name) == AVBased::kMVCInterface) return static_cast<IMVCRawVideoFrame*>(this);
        return MemoryFrame::GetInterface(name);
    }
    bool SetViewID(int) override { return true; }
    int GetViewID() override { return 5; }

private:
    unsigned char* Row(unsigned plane, unsigned y) {
        const Plane& p = m_planes[plane];
        return p.data + std::size_t{p.pitch} * (m_shape.bottomUp ? p.rows - 1 - y : y);
    }

    FrameShape m_shape;
    std::vector<GuardedBytes> m_memory;
    std::vector<Plane> m_planes;
};

struct Freer {
    void operator()(AVBased::IRawVideoFrame* frame) const { frame->Free(); }
};
using FramePtr = std::unique_ptr<AVBased::IRawVideoFrame, Freer>;

/// The bytes of one row of a top-down frame.
inline std::vector<unsigned> Row(AVBased::IRawVideoFrame& frame, unsigned plane, unsigned y) {
    unsigned bytes = 0, pitch = 0, rows = 0;
    const unsigned char* data = frame.GetBuffer(plane, &bytes, &pitch, &rows);
    if (y >= rows) throw std::out_of_range("no such row");
    data += std::size_t{pitch} * y;
    return {data, data + bytes};
}

/// All rows of all planes in one.
inline std::vector<unsigned> Pixels(AVBased::IRawVideoFrame& frame) {
    std::vector<unsigned> all;
    for (unsigned plane = 0; plane < frame.GetBufferCount(); ++plane) {
        unsigned bytes = 0, pitch = 0, rows = 0;
        frame.GetBuffer(plane, &bytes, &pitch, &rows);
        for (unsigned y = 0; y < rows; ++y)
            for (const unsigned byte : Row(frame, plane, y)) all.push_back(byte);
    }
    return all;
}

/// The code in the calling thread's record, which is cleared.
inline int TakeError() {
    const int code = GetBaseException()->GetExceptionCode();
    GetBaseException()->Clear();
    return code;
}

} // namespace test
