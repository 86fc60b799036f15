#include "mediabridge/picture_pool.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <list>
#include <memory>
#include <mutex>
#include <new>

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/pixdesc.h>
}

namespace mediabridge {
namespace {

constexpr std::size_t kAlignment = 64;
/// Enough for a chain's copies of 1080p in flight; more would only hide memory from the encoder.
constexpr std::size_t kIdleBytesMax = std::size_t{96} << 20;

struct FreeMemory {
    void operator()(std::uint8_t* data) const noexcept { std::free(data); }
};

struct Block {
    std::unique_ptr<std::uint8_t, FreeMemory> data;
    std::size_t size = 0;
};

/// Idle blocks, the most recently used first.
class BlockPool {
public:
    /// A list of one block, which Return() can take back without allocating. Empty when memory is short.
    std::list<Block> Take(std::size_t size) {
        std::list<Block> taken;
        {
            const std::scoped_lock lock(m_mutex);
            for (auto block = m_idle.begin(); block != m_idle.end(); ++block) {
                if (block->size != size) continue;
                m_idleBytes -= size;
                taken.splice(taken.begin(), m_idle, block);
                return taken;
            }
        }
        auto* data = static_cast<std::uint8_t*>(std::aligned_alloc(kAlignment, size));
        if (data) taken.push_back({std::unique_ptr<std::uint8_t, FreeMemory>(data), size});
        return taken;
    }

    void Return(std::list<Block>& returned) noexcept {
        std::list<Block> dropped;
        const std::scoped_lock lock(m_mutex);
        m_idleBytes += returned.front().size;
        m_idle.splice(m_idle.begin(), returned);
        while (m_idleBytes > kIdleBytesMax) {
            m_idleBytes -= m_idle.back().size;
            dropped.splice(dropped.begin(), m_idle, std::prev(m_idle.end()));
        }
    }

private:
    std::mutex m_mutex;
    std::list<Block> m_idle;
    std::size_t m_idleBytes = 0;
};

/// Pictures may outlive the library's static objects, so each holds the pool.
struct Loan {
    std::shared_ptr<BlockPool> pool;
    std::list<Block> block;
};

const std::shared_ptr<BlockPool>& ProcessPool() {
    static const auto pool = std::make_shared<BlockPool>();
    return pool;
}

void EndLoan(void* opaque, std::uint8_t*) {
    const std::unique_ptr<Loan> loan(static_cast<Loan*>(opaque));
    loan->pool->Return(loan->block);
}

AVBufferRef* BorrowBuffer(std::size_t size) try {
    auto loan = std::make_unique<Loan>(Loan{ProcessPool(), {}});
    loan->block = loan->pool->Take(size);
    if (loan->block.empty()) return nullptr;
    std::uint8_t* data = loan->block.front().data.get();
    AVBufferRef* buffer = av_buffer_create(data, size, EndLoan, loan.get(), 0);
    if (buffer) static_cast<void>(loan.release()); // the buffer's now; EndLoan frees it
    return buffer;
} catch (const std::bad_alloc&) {
    return nullptr;
}

constexpr std::size_t RoundUp(std::size_t value) {
    return (value + kAlignment - 1) / kAlignment * kAlignment;
}

struct PictureLayout {
    std::array<int, 4> lineSizes{};
    std::array<std::size_t, 4> offsets{};
    std::array<bool, 4> present{};
    std::size_t total = 0;
};

/// Whether rows can lie as they do in that picture.
bool StoredTopDown(const AVFrame* picture) {
    for (std::size_t plane = 0; plane < 4; ++plane)
        if (picture->linesize[plane] < 0) return false;
    return true;
}

/// Rows as far apart as in another picture of the same format and size, or as near as the alignment allows.
bool LayOut(AVPixelFormat format, int width, int height, const AVFrame* like, PictureLayout& layout) {
    if (av_image_check_size(static_cast<unsigned>(width), static_cast<unsigned>(height), kSilent, nullptr) <
            0 ||
        av_image_fill_linesizes(layout.lineSizes.data(), format, width) < 0)
        return false;
    std::array<std::ptrdiff_t, 4> pitches{};
    for (std::size_t plane = 0; plane < pitches.size(); ++plane) {
        layout.lineSizes[plane] =
            like ? like->linesize[plane]
                 : static_cast<int>(RoundUp(static_cast<std::size_t>(layout.lineSizes[plane])));
        pitches[plane] = layout.lineSizes[plane];
    }
    std::array<std::size_t, 4> sizes{};
    if (av_image_fill_plane_sizes(sizes.data(), format, height, pitches.data()) < 0) return false;
    for (std::size_t plane = 0; plane < sizes.size(); ++plane) {
        layout.present[plane] = sizes[plane] != 0;
        layout.offsets[plane] = layout.total;
        if (sizes[plane])
            layout.total += RoundUp(sizes[plane]) + kAlignment; // libswscale stores whole registers
    }
    return layout.total != 0;
}

AVFramePtr Allocate(AVPixelFormat format, int width, int height, const AVFrame* like) {
    PictureLayout layout;
    if (!LayOut(format, width, height, like, layout)) return nullptr;
    AVFramePtr picture(av_frame_alloc());
    if (!picture) return nullptr;
    picture->buf[0] = BorrowBuffer(layout.total);
    if (!picture->buf[0]) return nullptr;
    picture->format = format;
    picture->width = width;
    picture->height = height;
    for (std::size_t plane = 0; plane < layout.offsets.size(); ++plane) {
        if (!layout.present[plane]) continue;
        picture->data[plane] = picture->buf[0]->data + layout.offsets[plane];
        picture->linesize[plane] = layout.lineSizes[plane];
    }
    ClearBehindRows(picture.get());
    return picture;
}

} // namespace

AVFramePtr AllocatePicture(AVPixelFormat format, int width, int height) {
    return Allocate(format, width, height, nullptr);
}

AVFramePtr CopyPicture(const AVFrame* picture) {
    AVFramePtr copy = Allocate(static_cast<AVPixelFormat>(picture->format), picture->width, picture->height,
                               StoredTopDown(picture) ? picture : nullptr);
    if (!copy || av_frame_copy(copy.get(), picture) < 0 || av_frame_copy_props(copy.get(), picture) < 0)
        return nullptr;
    return copy;
}

void ClearBehindRows(AVFrame* picture) {
    const auto format = static_cast<AVPixelFormat>(picture->format);
    const AVPixFmtDescriptor* descriptor = av_pix_fmt_desc_get(format);
    for (int plane = 0; plane < 4; ++plane) {
        const int bytes = av_image_get_linesize(format, picture->width, plane);
        if (bytes <= 0 || bytes >= picture->linesize[plane]) continue;
        const int shift = plane == 1 || plane == 2 ? descriptor->log2_chroma_h : 0;
        const auto gap = static_cast<std::size_t>(picture->linesize[plane] - bytes);
        for (int y = 0; y < AV_CEIL_RSHIFT(picture->height, shift); ++y)
            std::memset(picture->data[plane] + std::ptrdiff_t{picture->linesize[plane]} * y + bytes, 0, gap);
    }
}

} // namespace mediabridge
