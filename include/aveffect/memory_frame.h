#pragma once
/// A ready-made frame for hosts: pictures in the host's own memory, and clones with memory of their own.
#include <cstddef>
#include <cstring>
#include <memory>
#include <utility>
#include <vector>

#include "aveffect/video_frame.h"

namespace AVBased {

/// Shows the host's planes to effects. Nothing is copied or owned except in clones. Top-down, without crops,
/// border data or further interfaces. Used by one thread at a time.
class MemoryFrame : public IRawVideoFrame {
public:
    struct Plane {
        unsigned char* data;
        unsigned widthBytes; ///< bytes of picture a row
        unsigned pitch;      ///< bytes from row to row
        unsigned rows;
    };

    /// A picture of that format (see pixel_format.h) and size in pixels. The planes' memory must outlive the
    /// frame.
    MemoryFrame(unsigned format, unsigned width, unsigned height, std::vector<Plane> planes)
        : m_planes(std::move(planes))
        , m_format(format)
        , m_width(width)
        , m_height(height) {}
    virtual ~MemoryFrame() = default;

    unsigned GetPixelFormat() override { return m_format; }
    void GetDimension(unsigned* width, unsigned* height) override {
        if (width) *width = m_width;
        if (height) *height = m_height;
    }
    int GetTimeStamp() override { return m_timeStamp; }
    void SetTimeStamp(int timeStamp) override { m_timeStamp = timeStamp; }
    bool IsTopDown() override { return true; }
    bool IsPacked() override { return m_planes.size() == 1; }
    unsigned GetBufferCount() override { return static_cast<unsigned>(m_planes.size()); }
    unsigned GetTotalSize() override {
        unsigned total = 0;
        for (const Plane& plane : m_planes) total += plane.rows * plane.pitch;
        return total;
    }
    unsigned char* GetBuffer(unsigned index, unsigned* widthBytes, unsigned* pitch, unsigned* rows) override {
        const Plane& plane = m_planes.at(index);
        *widthBytes = plane.widthBytes;
        *pitch = plane.pitch;
        *rows = plane.rows;
        return plane.data;
    }
    double GetDAR() override { return 0; }
    bool CropRightAndBottom(unsigned, unsigned) override { return false; }
    /// Deletes clones; a frame that the host made itself is left to the host.
    void Free() override {
        if (m_memory) delete this;
    }
    unsigned GetDuration() override { return m_duration; }
    void SetDuration(unsigned duration) override { m_duration = duration; }
    unsigned GetDuplicatedCount(unsigned* extra) override {
        if (extra) *extra = m_duplicatedExtra;
        return m_duplicatedCount;
    }
    void SetDuplicatedCount(unsigned count, unsigned extra) override {
        m_duplicatedCount = count;
        m_duplicatedExtra = extra;
    }
    /// May throw std::bad_alloc; the plug-in records that. Planes without memory stay without.
    IRawVideoFrame* Clone() override {
        const auto bytesOf = [](const Plane& plane) {
            return plane.data ? size_t{plane.pitch} * plane.rows : 0;
        };
        std::unique_ptr<MemoryFrame> copy(new MemoryFrame(*this));
        size_t total = 0;
        for (const Plane& plane : m_planes) total += bytesOf(plane);
        copy->m_memory.reset(new unsigned char[total], std::default_delete<unsigned char[]>());
        unsigned char* place = copy->m_memory.get();
        for (Plane& plane : copy->m_planes) {
            if (!plane.data) continue;
            const size_t bytes = bytesOf(plane);
            if (bytes) std::memcpy(place, plane.data, bytes);
            plane.data = std::exchange(place, place + bytes);
        }
        return copy.release();
    }
    bool CanBeModified() override { return m_canBeModified; }
    void SetCanBeModified(bool modifiable) override { m_canBeModified = modifiable; }
    bool IsInterlaced() override { return m_interlaced; }
    void SetInterlaced(bool interlaced) override { m_interlaced = interlaced; }
    bool IsTopFieldFirst() override { return m_topFieldFirst; }
    void SetTopFieldFirst(bool topFieldFirst) override { m_topFieldFirst = topFieldFirst; }
    void SetBorderData(void*, int) override {}
    void GetBorderData(void** data, int* bytes) override {
        *data = nullptr;
        *bytes = 0;
    }
    void* GetInterface(const char* name) override {
        return name && std::strcmp(name, kRawVideoInterface) == 0 ? static_cast<IRawVideoFrame*>(this)
                                                                  : nullptr;
    }

protected:
    MemoryFrame(const MemoryFrame&) = default;

private:
    std::vector<Plane> m_planes;
    std::shared_ptr<unsigned char> m_memory; // a clone's pixels
    unsigned m_format;
    unsigned m_width;
    unsigned m_height;
    int m_timeStamp = 0;
    unsigned m_duration = 1;
    unsigned m_duplicatedCount = 1;
    unsigned m_duplicatedExtra = 0;
    bool m_canBeModified = true;
    bool m_interlaced = false;
    bool m_topFieldFirst = false;
};

} // namespace AVBased
