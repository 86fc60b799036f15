#include "tests/kernels/harness.h"

#include <algorithm>
#include <memory>
#include <random>

#include "tests/kernels/guarded_memory.h"

namespace test {

namespace {

enum class Contents { Random, NearZero, NearTop, Extremes };

struct Shape {
    size_t width; // in samples or pixels
    size_t rows;
    size_t padding; // bytes from the end of a row to the next one
    GuardedMemory::Flush flush;
    Contents contents;

    std::string Describe() const {
        return std::to_string(width) + "x" + std::to_string(rows) + ", padding " + std::to_string(padding) +
               ", contents " + std::to_string(static_cast<int>(contents)) +
               (flush == GuardedMemory::Flush::Start ? ", at a page's start" : ", at a page's end");
    }
};

std::vector<Shape> AwkwardShapes() {
    std::vector<Shape> shapes;
    size_t n = 0;
    for (const size_t width : {0u,  1u,  2u,  3u,  4u,  7u,  8u,  15u, 16u,  17u,  23u,  31u,  32u,
                               33u, 47u, 63u, 64u, 65u, 66u, 67u, 95u, 127u, 128u, 129u, 200u, 257u})
        for (const size_t rows : {1u, 2u, 3u, 4u, 7u})
            for (const Contents contents :
                 {Contents::Random, Contents::NearZero, Contents::NearTop, Contents::Extremes}) {
                const size_t paddings[] = {0, 1, 3, 4, 13, 64};
                shapes.push_back({width, rows, paddings[n % 6],
                                  n % 2 ? GuardedMemory::Flush::Start : GuardedMemory::Flush::End, contents});
                ++n;
            }
    return shapes;
}

// Enough random values to meet one case in a million.
constexpr Shape kMillions = {2899, 2503, 5, GuardedMemory::Flush::End, Contents::Random};
constexpr Shape kThousands = {523, 401, 5, GuardedMemory::Flush::End, Contents::Random};

void Fill(uint8_t* data, size_t bytes, Contents contents, std::mt19937_64& random) {
    size_t i = 0;
    for (; i + 8 <= bytes; i += 8) {
        const uint64_t word = random();
        std::copy_n(reinterpret_cast<const uint8_t*>(&word), 8, data + i);
    }
    for (; i < bytes; ++i) data[i] = static_cast<uint8_t>(random());
    if (contents == Contents::Random) return;
    for (i = 0; i < bytes; ++i) {
        const int x = data[i];
        data[i] = static_cast<uint8_t>(contents == Contents::NearZero  ? x % 4
                                       : contents == Contents::NearTop ? 252 + x % 4
                                                                       : (x & 1) * 255);
    }
}

} // namespace

std::string TryKernel(const KernelCase& kernelCase, bool inDepth) {
    std::mt19937_64 random(1);
    std::vector<Shape> shapes = AwkwardShapes();
    shapes.push_back(inDepth ? kMillions : kThousands);
    for (const Shape& shape : shapes) {
        const size_t widthBytes = shape.width * kernelCase.unitBytes;
        const size_t pitch = widthBytes + shape.padding;
        const size_t bytes = pitch * (shape.rows - 1) + widthBytes; // no padding after the last row
        std::vector<std::unique_ptr<GuardedMemory>> memories;
        std::vector<std::vector<uint8_t>> expected;
        std::vector<Plane8> planes, expectedPlanes;
        for (size_t i = 0; i < kernelCase.planes; ++i) {
            memories.push_back(std::make_unique<GuardedMemory>(bytes, shape.flush));
            uint8_t* data = memories.back()->Data();
            Fill(data, bytes, shape.contents, random);
            expected.emplace_back(data, data + bytes);
        }
        for (size_t i = 0; i < kernelCase.planes; ++i) {
            planes.push_back({memories[i]->Data(), widthBytes, pitch, shape.rows});
            expectedPlanes.push_back({expected[i].data(), widthBytes, pitch, shape.rows});
        }
        kernelCase.kernel(planes);
        kernelCase.reference(expectedPlanes);
        for (size_t i = 0; i < kernelCase.planes; ++i) {
            const auto [actual, wanted] =
                std::mismatch(memories[i]->Data(), memories[i]->Data() + bytes, expected[i].begin());
            if (wanted == expected[i].end()) continue;
            const auto at = static_cast<size_t>(wanted - expected[i].begin());
            return kernelCase.name + ", " + shape.Describe() + ": plane " + std::to_string(i) + ", byte " +
                   std::to_string(at % pitch) + " of row " + std::to_string(at / pitch) + " is " +
                   std::to_string(*actual) + ", not " + std::to_string(*wanted);
        }
    }
    return {};
}

} // namespace test
