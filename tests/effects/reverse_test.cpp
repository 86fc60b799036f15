// Reverse, which leaves the middle of odd sizes alone.
#include <gtest/gtest.h>

#include "tests/ledger/confirm.h"
#include "tests/support/effect_cases.h"

namespace {

using namespace AVBased;
using test::HostFrame;
using Byte = unsigned char;

// Where a position's new value comes from: the one equally far from the middle on the other side.
struct Origin {
    bool mirror, vertical;

    void operator()(HostFrame& frame) const {
        const unsigned unit = frame.GetPixelFormat() == BGRA ? 4 : 1;
        for (HostFrame::Plane& plane : frame.planes) {
            HostFrame::Plane old = plane;
            const unsigned width = plane.width / unit, rows = plane.rows;
            for (unsigned y = 0; y < rows; ++y)
                for (unsigned x = 0; x < width; ++x) {
                    const bool inMiddle = 2 * x + 1 == width || 2 * y + 1 == rows;
                    if (mirror && vertical && inMiddle) continue;
                    const unsigned fromX = mirror ? width - 1 - x : x, fromY = vertical ? rows - 1 - y : y;
                    for (unsigned i = 0; i < unit; ++i)
                        plane.At(x * unit + i, y) = old.At(fromX * unit + i, fromY);
                }
        }
    }
};

TEST(Reverse, MirrorsFlipsOrBoth) {
    for (const auto& [mirror, vertical] :
         {std::pair{"1", "0"}, {"0", "1"}, {"1", "1"}, {"2", "1"}, {"-1", "2"}}) {
        const test::Setting setting{"reverse", {{"mirror", mirror}, {"vertical", vertical}}};
        const Origin plain{std::string(mirror) == "1", std::string(vertical) == "1"};
        ASSERT_NO_FATAL_FAILURE(test::ExpectComputes(setting, plain));
    }
    test::ExpectComputes({"reverse"}, test::kPacked, [](HostFrame&) {});
    ledger::ExpectInLedger("reverse", [](const auto& of, HostFrame& frame) {
        Origin{of.Int("mirror") == 1, of.Int("vertical") == 1}(frame);
    });
}

} // namespace
