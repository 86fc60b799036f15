#include "AVEffect/support/portrait_mixes.h"

#include <algorithm>
#include <array>

namespace AVBased {

namespace {

constexpr uint8_t kOpaque = 255;
constexpr uint32_t kWhole = 256; // the weight of the colour alone, or of the sample alone
constexpr size_t kTables = 4;    // of a pass, see kernels::PortraitColumns
constexpr size_t kWidestRegister = 64;

// What is done to the pixels that one sample stands for, in the order of its times.
class MixList {
public:
    void Add(uint64_t time, uint64_t weight, bool fills) {
        size_t place = m_nCount++;
        for (; place > 0 && m_Mixes[place - 1].time > time; --place) m_Mixes[place] = m_Mixes[place - 1];
        m_Mixes[place] = {time, static_cast<uint16_t>(weight), fills};
    }
    // Once the colour fills a sample it stays; but a mix makes a filled pixel opaque.
    kernels::PortraitPlace Place(uint8_t alphaOfFill) const {
        kernels::PortraitPlace place = {{}, 0, kOpaque, 0};
        bool filled = false;
        for (size_t i = 0; i < m_nCount; ++i) {
            const Mix& mix = m_Mixes[i];
            if (mix.fills) place.mixes = 0;
            if (mix.fills || !filled) place.weights[place.mixes++] = mix.weight;
            place.alpha = mix.fills ? alphaOfFill : kOpaque;
            filled = filled || mix.fills;
        }
        return place;
    }

private:
    struct Mix {
        uint64_t time;
        uint16_t weight;
        bool fills;
    };
    std::array<Mix, 2 * kernels::kMostMixes> m_Mixes; // each of four pixels filled and mixed from both sides
    size_t m_nCount = 0;
};

size_t Upwards(size_t bytes) { return (bytes + kWidestRegister - 1) / kWidestRegister * kWidestRegister; }

} // namespace

void PortraitMixes::Find(Places& places, unsigned band, size_t pictureSize, size_t size, unsigned shift,
                         uint8_t alphaOfFill, Order order) {
    const uint64_t width = band, solid = width >> 4;
    const uint64_t end = std::min<uint64_t>(width + solid, pictureSize);
    const auto timeOf = [&](uint64_t k, uint64_t side) {
        return 1 + (order == Order::InTurn ? 2 * k + side : side * pictureSize + k);
    };
    places.clear();
    for (size_t i = 0; i < size; ++i) {
        const size_t first = i << shift, next = std::min((i + 1) << shift, pictureSize);
        MixList mixes;
        for (uint64_t x = first; x < next; ++x) {
            const uint64_t opposite = pictureSize - 1 - x; // where the pixel stands from the other side
            if (x < solid) mixes.Add(0, kWhole, true);
            if (x >= solid && x < end) mixes.Add(timeOf(x - solid, 0), (end - x) * kWhole / width, false);
            if (opposite >= solid && opposite < end)
                mixes.Add(timeOf(end - 1 - opposite, 1), kWhole - (opposite + 1 - solid) * kWhole / width,
                          false);
            if (opposite < solid) mixes.Add(timeOf(pictureSize, 1), kWhole, true);
        }
        places.push_back(mixes.Place(alphaOfFill));
        places.back().samples = static_cast<uint8_t>(next - first);
    }
}

// The columns with mixes begin and end a row; between them a plane has none, or the two runs are one. Whole
// registers cost less than parts.
void PortraitMixes::AddRuns(kernels::PortraitFrame& frame, size_t unitBytes) const {
    const auto isMixed = [](const kernels::PortraitPlace& place) { return place.mixes != 0; };
    const auto left = std::find_if_not(m_Columns.begin(), m_Columns.end(), isMixed) - m_Columns.begin();
    const auto right = std::find_if_not(m_Columns.rbegin(), m_Columns.rend(), isMixed) - m_Columns.rbegin();
    const size_t rowBytes = m_Columns.size() * unitBytes;
    const size_t leftEnd = std::min(Upwards(static_cast<size_t>(left) * unitBytes), rowBytes);
    const size_t rightBegin =
        (rowBytes - static_cast<size_t>(right) * unitBytes) / kWidestRegister * kWidestRegister;
    if (leftEnd < rightBegin) {
        frame.runs[0].end = leftEnd;
        frame.runs[1].begin = rightBegin;
        frame.runs[1].end = rowBytes;
    } else {
        frame.runs[0].end = rowBytes;
    }
}

void PortraitMixes::FillTables(kernels::PortraitFrame& frame, size_t unitBytes) {
    size_t passes = 0, longest = 0;
    for (const kernels::PortraitPlace& place : m_Columns) passes = std::max<size_t>(passes, place.mixes);
    for (const kernels::PortraitColumns& run : frame.runs) longest = std::max(longest, run.end - run.begin);
    const size_t pitch = (Upwards(longest) + kWidestRegister) / 2, runEntries = passes * kTables * pitch;
    m_Tables.resize(std::size(frame.runs) * runEntries);
    uint16_t* tables = m_Tables.data();
    for (kernels::PortraitColumns& run : frame.runs) {
        run.passes = passes;
        run.pitch = pitch;
        run.tables = tables;
        for (size_t byte = run.begin; byte < run.end; ++byte) {
            const kernels::PortraitPlace& place = m_Columns[byte / unitBytes];
            const bool alpha = byte % unitBytes == 3;
            const uint32_t value = alpha ? place.alpha : (frame.colour >> (byte % unitBytes * 8)) & 0xFF;
            uint16_t* entry = tables + byte % 2 * 2 * pitch + (byte - run.begin) / 2;
            for (size_t pass = 0; pass < passes; ++pass, entry += kTables * pitch) {
                const bool mixes = pass < place.mixes;
                const uint32_t weight = !mixes ? 0 : alpha ? kWhole : place.weights[pass];
                entry[0] = static_cast<uint16_t>(kWhole - weight);
                entry[pitch] = static_cast<uint16_t>(value * weight);
            }
        }
        tables += runEntries;
    }
}

kernels::PortraitFrame PortraitMixes::Of(const PortraitGeometry& geometry, size_t width, size_t rows,
                                         size_t unitBytes, uint32_t colour) {
    const auto alpha = static_cast<uint8_t>(colour >> 24);
    Find(m_Rows, geometry.band, geometry.height, rows, geometry.verticalShift, alpha, Order::SideBySide);
    Find(m_Columns, geometry.band, geometry.width, width, geometry.horizontalShift, alpha, Order::InTurn);
    kernels::PortraitFrame frame = {
        colour, m_Rows.data(), {}, m_Columns.front().samples, m_Columns.back().samples};
    AddRuns(frame, unitBytes);
    FillTables(frame, unitBytes);
    return frame;
}

} // namespace AVBased
