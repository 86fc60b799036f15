#pragma once
/// A host's frame whose clones are used again, as hosts that care for speed have it.
#include <memory>
#include <vector>

#include "avbase/avbase_srcutils/avbase_crawvideoframe.h"
#include "tests/support/guarded_bytes.h"

namespace test {

/// Its layout is fixed once it was cloned. Clones may outlive it, and are used by its thread.
class RecycledFrame : public AVBased::CRawVideoFrame {
public:
    using CRawVideoFrame::CRawVideoFrame;
    ~RecycledFrame() override { m_Shelf->Close(); }

    AVBased::IRawVideoFrame* Clone() override { return m_Shelf->CopyOf(*this, m_Shelf); }

private:
    class Copy;

    struct Shelf {
        std::vector<std::unique_ptr<Copy>> waiting;
        bool open = true;

        Shelf() { waiting.reserve(16); }
        AVBased::IRawVideoFrame* CopyOf(CRawVideoFrame& frame, const std::shared_ptr<Shelf>& self);
        void Close() {
            open = false;
            waiting.clear();
        }
    };

    class Copy final : public CRawVideoFrame {
    public:
        Copy(const CRawVideoFrame& frame, const std::shared_ptr<Shelf>& shelf)
            : CRawVideoFrame(frame)
            , m_Shelf(shelf) {}
        AVBased::IRawVideoFrame* Clone() override { return m_Shelf->CopyOf(*this, m_Shelf); }
        void Free() override {
            std::unique_ptr<Copy> self(this);
            if (m_Shelf->open) m_Shelf->waiting.push_back(std::move(self));
        }

    private:
        std::shared_ptr<Shelf> m_Shelf;
    };

    std::shared_ptr<Shelf> m_Shelf = std::make_shared<Shelf>();
};

inline AVBased::IRawVideoFrame* RecycledFrame::Shelf::CopyOf(CRawVideoFrame& frame,
                                                             const std::shared_ptr<Shelf>& self) {
    if (waiting.empty()) return new Copy(frame, self);
    Copy* const copy = waiting.back().release();
    waiting.pop_back();
    CopyVideoFrame(copy, &frame);
    return copy;
}

/// Such a frame with its pixels: planes without padding, one behind the other.
template <class OfFrame>
class InOneBlock {
public:
    InOneBlock(unsigned format, unsigned width, unsigned height)
        : m_Frame(false, format, width, height, true)
        , m_Pixels(m_Frame.GetRequireSize(), uint8_t{0}, Flush::Start) {
        unsigned char* place = m_Pixels.data();
        for (unsigned i = 0; i < m_Frame.GetBufferCount(); ++i) {
            auto* buffer = m_Frame.GetBuffer(i);
            buffer->pitch = buffer->widthBytes;
            buffer->data = place;
            place += size_t{buffer->pitch} * buffer->rows;
        }
    }
    AVBased::CRawVideoFrame& Frame() { return m_Frame; }
    GuardedBytes& Pixels() { return m_Pixels; }

private:
    OfFrame m_Frame;
    GuardedBytes m_Pixels; // from the start of a page
};

} // namespace test
