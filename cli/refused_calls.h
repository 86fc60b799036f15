#pragma once
/// Sees when the system refuses memory or a thread to anybody in the process. Libraries pass over some of
/// that: a codec works with fewer threads and makes other bytes, a muxer leaves a header out.
namespace aveffect {

/// Whether refusals are seen, as g_refused (refusals.h); not under sanitizers, which bring these calls
/// themselves. To be called once, so that what sees them is part of the program.
bool SeesRefusals() noexcept;

} // namespace aveffect
