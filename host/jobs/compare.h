#pragma once
/// How far two clips or still pictures differ.
#include <atomic>
#include <cstdint>
#include <functional>
#include <limits>
#include <optional>
#include <string>

#include "host/support/av_owner.h"
#include "host/support/observer.h"

namespace aveffect {

struct CompareOptions {
    std::string first, second;      ///< source URLs
    std::string difference;         ///< still picture to write of the pair that differs most; empty: none
    std::optional<AVRational> rate; ///< of numbered pictures
    bool overwrite = false;
};

/// A pair of pictures that stand at the same place.
struct ComparedPair {
    int64_t index = 0;  ///< from 0
    int64_t timeMs = 0; ///< in the first clip, from its start
};

struct Comparison {
    int64_t pairs = 0;                         ///< that were compared
    int64_t differing = 0;                     ///< pairs of which a sample differs
    int64_t restOfFirst = 0, restOfSecond = 0; ///< pictures for which the other has none
    std::optional<ComparedPair> firstDifference;
    std::optional<ComparedPair> largestDifference; ///< of the lowest signal-to-noise ratio
    double psnr = 0; ///< of all pairs, in decibels; infinite when nothing differs
    /// Of largestDifference; infinite when nothing differs.
    double lowestPsnr = std::numeric_limits<double>::infinity();
    double ssim = 1;                        ///< mean
    int brightened = 1;                     ///< factor by which the difference's picture was brightened
    std::optional<std::string> inputDamage; ///< as in RenderResult

    bool Same() const { return differing == 0 && restOfFirst == 0 && restOfSecond == 0; }
};

/// Compares the pictures one by one as they are seen (upright), whatever their times. Sound is not looked at.
/// The picture of the difference appears only when it is whole, and not when nothing differs: last, once
/// what was found has been told. Throws Error, and what telling throws.
Comparison Compare(const CompareOptions& options, const RenderObserver& observer,
                   const std::function<void(const Comparison&)>& tell, const std::atomic<bool>& cancel);

} // namespace aveffect
