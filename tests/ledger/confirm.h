#pragma once
/// Holds hashes of the ledger to plain computations, so that it can't keep a fault.
#include <gtest/gtest.h>

#include <functional>
#include <string_view>

#include "tests/ledger/ledger.h"

namespace ledger {

inline const std::string& Stored(const std::string& key) {
    static const std::map<std::string, std::string> hashes = Read(AVEFFECT_LEDGER);
    const auto found = hashes.find(key);
    if (found == hashes.end()) throw std::runtime_error(key + " is not in the ledger");
    return found->second;
}

/// Every picture of an effect, by the name that factories know; those that the filter leaves out stay
/// unconfirmed.
inline void ExpectInLedger(
    std::string_view effect, const std::function<void(const PictureCase&, test::HostFrame&)>& plain,
    bool (*confirms)(const PictureCase&) = [](const PictureCase&) { return true; }) {
    size_t count = 0;
    for (const PictureCase& of : PictureCases()) {
        if (of.effect->name != effect || !confirms(of)) continue;
        const auto frame = Input(of);
        plain(of, *frame);
        EXPECT_EQ(HashOf(*frame), Stored(of.Key())) << of.Key();
        ++count;
    }
    EXPECT_GT(count, 0u) << effect;
}

/// The same for an effect whose computation has no settings.
inline void ExpectInLedger(std::string_view effect, const std::function<void(test::HostFrame&)>& packed,
                           const std::function<void(test::HostFrame&)>& planar) {
    ExpectInLedger(effect, [&](const PictureCase& of, test::HostFrame& frame) {
        (of.format == AVBased::BGRA ? packed : planar)(frame);
    });
}

/// Every sound of an effect: plain(case, pieces).
inline void
ExpectSoundInLedger(std::string_view effect,
                    const std::function<void(const SoundCase&, std::vector<test::HostSound>&)>& plain) {
    size_t count = 0;
    for (const SoundCase& of : SoundCases()) {
        if (of.effect->name != effect) continue;
        std::vector<test::HostSound> pieces;
        for (unsigned piece = 0; piece < kPieces; ++piece) pieces.push_back(Input(of, piece));
        plain(of, pieces);
        EXPECT_EQ(HashOf(pieces), Stored(of.Key())) << of.Key();
        ++count;
    }
    EXPECT_GT(count, 0u) << effect;
}

/// Y, U and V of 0xRRGGBB in limited range, cut.
inline std::array<int, 3> CutYuv(int colour) {
    const int r = colour >> 16 & 255, g = colour >> 8 & 255, b = colour & 255;
    return {(257 * r + 504 * g + 98 * b + 16000) / 1000, (-148 * r - 291 * g + 439 * b + 128000) / 1000,
            (439 * r - 368 * g - 71 * b + 128000) / 1000};
}

} // namespace ledger
