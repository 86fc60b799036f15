#pragma once
/// Takes values from bytes that decide; zeros and empty texts once they are used up.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

namespace test {

class InputBytes {
public:
    InputBytes(const uint8_t* data, size_t size)
        : m_Data(data)
        , m_Left(size) {}

    bool Empty() const { return m_Left == 0; }
    size_t Left() const { return m_Left; }

    template <class T>
    T Take() {
        T value{};
        const size_t count = std::min(sizeof value, m_Left);
        std::memcpy(&value, m_Data, count);
        Skip(count);
        return value;
    }
    /// From low to high, both included.
    unsigned TakeWithin(unsigned low, unsigned high) { return low + Take<uint16_t>() % (high - low + 1); }

    /// Up to the next line's end, or to the bytes' end.
    std::string TakeLine() {
        const uint8_t* const end = std::find(m_Data, m_Data + m_Left, '\n');
        std::string line(m_Data, end);
        Skip(std::min(line.size() + 1, m_Left));
        return line;
    }
    /// Everything that is left.
    std::string TakeRest() {
        std::string rest(m_Data, m_Data + m_Left);
        Skip(m_Left);
        return rest;
    }
    /// Fills memory with the bytes that are left, over and over; with a value when there are none.
    void Spread(uint8_t* to, size_t size) const {
        for (size_t i = 0; i < size; ++i) to[i] = m_Left ? m_Data[i % m_Left] : static_cast<uint8_t>(i);
    }

private:
    void Skip(size_t count) {
        m_Data += count;
        m_Left -= count;
    }

    const uint8_t* m_Data;
    size_t m_Left;
};

} // namespace test
