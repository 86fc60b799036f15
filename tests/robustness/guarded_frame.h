#pragma once
/// A host's frame whose planes lie between protected pages, with watched bytes on the side that a page
/// doesn't reach up to.
#include <algorithm>
#include <memory>
#include <random>
#include <vector>

#include "aveffect/memory_frame.h"
#include "tests/kernels/guarded_memory.h"
#include "tests/support/host_frame.h"

namespace test {

class GuardedFrame final : public AVBased::MemoryFrame {
public:
    GuardedFrame(const Shape& shape, GuardedMemory::Flush flush, unsigned seed)
        : MemoryFrame(shape.format, shape.width, shape.height, {})
        , m_Shape(shape)
        , m_Flush(flush) {
        std::mt19937 random(seed);
        for (const HostFrame::Plane& plane : HostFrame(shape).planes) {
            const size_t bytes = size_t{plane.pitch} * plane.rows;
            m_Planes.push_back({plane.width, plane.pitch, plane.rows,
                                std::make_unique<GuardedMemory>(bytes + kWatched, flush)});
            std::fill_n(Watched(m_Planes.back()), kWatched, kWatchedByte);
            std::generate_n(Data(m_Planes.back()), bytes,
                            [&] { return static_cast<unsigned char>(random()); });
        }
    }

    unsigned GetBufferCount() override { return static_cast<unsigned>(m_Planes.size()); }
    unsigned char* GetBuffer(unsigned index, unsigned* width, unsigned* pitch, unsigned* rows) override {
        const Plane& plane = m_Planes.at(index);
        *width = plane.width;
        *pitch = plane.pitch;
        *rows = plane.rows;
        return Data(plane);
    }
    void Free() override { delete this; }
    AVBased::IRawVideoFrame* Clone() override {
        auto* copy = new GuardedFrame(m_Shape, m_Flush, 0);
        copy->Take(*this);
        return copy;
    }
    /// The bytes of a frame of the same shape.
    void Take(const GuardedFrame& from) {
        for (size_t i = 0; i < m_Planes.size(); ++i)
            std::copy_n(Data(from.m_Planes[i]), Bytes(m_Planes[i]), Data(m_Planes[i]));
    }

    bool WatchedBytesAreWhole() const {
        return std::all_of(m_Planes.begin(), m_Planes.end(), [this](const Plane& plane) {
            return std::all_of(Watched(plane), Watched(plane) + kWatched,
                               [](unsigned char byte) { return byte == kWatchedByte; });
        });
    }
    /// Byte for byte, padding included.
    bool Equals(GuardedFrame& other) const {
        for (size_t i = 0; i < m_Planes.size(); ++i)
            if (!std::equal(Data(m_Planes[i]), Data(m_Planes[i]) + Bytes(m_Planes[i]),
                            Data(other.m_Planes[i])))
                return false;
        return true;
    }

private:
    struct Plane {
        unsigned width, pitch, rows;
        std::unique_ptr<GuardedMemory> memory;
    };
    static constexpr size_t kWatched = 64;
    static constexpr unsigned char kWatchedByte = 0xA5;

    static size_t Bytes(const Plane& plane) { return size_t{plane.pitch} * plane.rows; }
    unsigned char* Data(const Plane& plane) const {
        return plane.memory->Data() + (m_Flush == GuardedMemory::Flush::End ? kWatched : 0);
    }
    unsigned char* Watched(const Plane& plane) const {
        return plane.memory->Data() + (m_Flush == GuardedMemory::Flush::End ? 0 : Bytes(plane));
    }

    Shape m_Shape;
    GuardedMemory::Flush m_Flush;
    std::vector<Plane> m_Planes;
};

struct GuardedFree {
    void operator()(AVBased::IRawVideoFrame* frame) const { frame->Free(); }
};
using GuardedFramePtr = std::unique_ptr<GuardedFrame, GuardedFree>;

} // namespace test
