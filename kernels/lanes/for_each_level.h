// Compiles one kernel body once for each instruction-set level. No include guard: a source file defines
// AVEFFECT_KERNEL_BODY as the name of its body and includes this once.
//
// The body stands in namespace sse2, avx2, avx512 and avx512vbmi in turn, compiled for that level alone, with
// the vector layer of lanes.inl for registers of 16, 32, 64 and 64 bytes; or in one namespace, neon
// or plain, for other processors, with registers of 16 bytes (AVEFFECT_ONE_LEVEL names it). Bodies hold no
// lambdas and call no library templates: a lambda does not take the level's target with every compiler, and a
// library template compiled above the baseline could replace the baseline's copy at link time.
#if defined(AVEFFECT_NEON)
#include <arm_neon.h>
#elif !defined(AVEFFECT_ONE_LEVEL)
#include <immintrin.h>
#endif

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "kernels/lanes/arithmetic.h"
#include "kernels/planes.h"

// AVEFFECT_UNROLL stands before loops of a constant number of rounds, up to 16, whose arrays are to live in
// registers.
#define AVEFFECT_PRAGMA(text) _Pragma(#text)
#ifdef __clang__
#define AVEFFECT_BEGIN_TARGET(features)                                                                      \
    AVEFFECT_PRAGMA(clang attribute push(__attribute__((target(features))), apply_to = function))
#define AVEFFECT_END_TARGET AVEFFECT_PRAGMA(clang attribute pop)
#define AVEFFECT_UNROLL AVEFFECT_PRAGMA(unroll)
#else
// Vectors wider than the baseline's pass between inlined functions only, so their calling convention does not
// matter.
#pragma GCC diagnostic ignored "-Wpsabi"
#define AVEFFECT_BEGIN_TARGET(features)                                                                      \
    AVEFFECT_PRAGMA(GCC push_options) AVEFFECT_PRAGMA(GCC target(features))
#define AVEFFECT_END_TARGET AVEFFECT_PRAGMA(GCC pop_options)
#define AVEFFECT_UNROLL AVEFFECT_PRAGMA(GCC unroll 16)
#endif

#ifdef AVEFFECT_ONE_LEVEL
#define AVEFFECT_LANE_BYTES 16
namespace AVBased::kernels::AVEFFECT_ONE_LEVEL {
#include "kernels/lanes/lanes.inl"
#include AVEFFECT_KERNEL_BODY
} // namespace AVBased::kernels::AVEFFECT_ONE_LEVEL
#undef AVEFFECT_LANE_BYTES
#else

#define AVEFFECT_LANE_BYTES 16
AVEFFECT_BEGIN_TARGET("sse2")
namespace AVBased::kernels::sse2 {
#include "kernels/lanes/lanes.inl"
#include AVEFFECT_KERNEL_BODY
} // namespace AVBased::kernels::sse2
AVEFFECT_END_TARGET
#undef AVEFFECT_LANE_BYTES

#define AVEFFECT_LANE_BYTES 32
AVEFFECT_BEGIN_TARGET("avx2")
namespace AVBased::kernels::avx2 {
#include "kernels/lanes/lanes.inl"
#include AVEFFECT_KERNEL_BODY
} // namespace AVBased::kernels::avx2
AVEFFECT_END_TARGET
#undef AVEFFECT_LANE_BYTES

#define AVEFFECT_LANE_BYTES 64
AVEFFECT_BEGIN_TARGET("avx512f,avx512bw,avx512dq,avx512vl")
namespace AVBased::kernels::avx512 {
#include "kernels/lanes/lanes.inl"
#include AVEFFECT_KERNEL_BODY
} // namespace AVBased::kernels::avx512
AVEFFECT_END_TARGET

#define AVEFFECT_HAS_TABLES
AVEFFECT_BEGIN_TARGET("avx512f,avx512bw,avx512dq,avx512vl,avx512vbmi")
namespace AVBased::kernels::avx512vbmi {
#include "kernels/lanes/lanes.inl"
#include AVEFFECT_KERNEL_BODY
} // namespace AVBased::kernels::avx512vbmi
AVEFFECT_END_TARGET
#undef AVEFFECT_HAS_TABLES
#undef AVEFFECT_LANE_BYTES
#endif
