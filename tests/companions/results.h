#pragma once
/// What the companions make of a host's frames.
#include <memory>
#include <stdexcept>
#include <vector>

#include "tests/support/host_frame.h"
#include "tests/support/record.h"

namespace test {

struct Releaser {
    template <typename Owned>
    void operator()(Owned* owned) const {
        owned->Release();
    }
};

using ResultPtr = std::unique_ptr<AVBased::IRawVideoFrame, FrameFree>;

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

} // namespace test
