#pragma once
/// Holds a kernel to a plain reference on awkward planes between protected pages.
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "kernels/planes.h"

namespace test {

using AVBased::kernels::Plane32;
using AVBased::kernels::Plane8;

/// Works in place on planes of bytes; those of packed kernels are whole pixels wide.
using PlaneFunction = std::function<void(const std::vector<Plane8>& planes)>;

/// One kernel, with its parameters bound, and what it must compute.
struct KernelCase {
    std::string name;
    size_t planes;    ///< how many it takes, all of one size
    size_t unitBytes; ///< of a sample or pixel
    PlaneFunction kernel;
    PlaneFunction reference;
};

/// Every kernel at the level that a feature word selects. A new kernel adds a line to the list.
std::vector<KernelCase> KernelCases(unsigned features);

/// Tries sizes around register widths, paddings, base offsets and contents, and one large random plane: with
/// millions of values, or, not in depth, with 200000. Empty when every byte is right and none outside the
/// rows' width was touched; else what went wrong first. A touch of the pages around the memory ends the
/// process.
std::string TryKernel(const KernelCase& kernelCase, bool inDepth = true);

} // namespace test
