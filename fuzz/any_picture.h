#pragma once
/// Pictures as any host may have them, made from a fuzzer's bytes.
#include <vector>

#include "avbase/avbase_srcutils/avbase_crawvideoframe.h"
#include "fuzz/input_bytes.h"
#include "mediabridge/pixel_formats.h"

namespace fuzz {

/// Every format of the frame table, and those that effects serve more often.
inline unsigned TakeFormat(InputBytes& input) {
    const unsigned choice = input.Take<uint8_t>();
    if (choice % 2) return AVBased::kEffectFormats[choice / 2 % AVBased::kEffectFormats.size()];
    unsigned format = choice / 2 % (AVBased::XYZ12LE + 1);
    while (mediabridge::TablePlaneCount(format) == 0) ++format;
    return format;
}

/// Any format and small size, top-down or bottom-up, cropped or not, at any address, with any pitch.
class AnyPicture {
public:
    explicit AnyPicture(InputBytes& input)
        // Braces, for they are taken in this order.
        : m_Frame{false, TakeFormat(input), input.TakeWithin(1, 80), input.TakeWithin(1, 50),
                  input.Take<uint8_t>() % 4 != 0} {
        const auto loose = input.Take<uint8_t>();
        m_Planes.resize(m_Frame.GetBufferCount());
        for (unsigned i = 0; i < m_Planes.size(); ++i) {
            auto& plane = *m_Frame.GetBuffer(i);
            const bool roundsUp = loose & 1, isWide = loose & 2;
            if (roundsUp && (i == 1 || i == 2)) {
                ++plane.widthBytes;
                ++plane.rows;
            }
            plane.pitch = plane.widthBytes * (isWide ? 2 : 1) + (loose >> 2 & 7);
            const size_t offset = loose >> 5 & 3;
            m_Planes[i].resize(offset + size_t{plane.pitch} * plane.rows);
            plane.data = m_Planes[i].data() + offset;
        }
        if (loose & 0x80) m_Frame.CropRightAndBottom(input.TakeWithin(0, 9), input.TakeWithin(0, 9));
        for (auto& plane : m_Planes) input.Spread(plane.data(), plane.size());
    }

    AVBased::CRawVideoFrame& Frame() { return m_Frame; }

private:
    AVBased::CRawVideoFrame m_Frame;
    std::vector<std::vector<unsigned char>> m_Planes;
};

} // namespace fuzz
