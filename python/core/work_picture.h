#pragma once
/// The memory that effects work in for a picture of Python's.
#include <cstdint>
#include <vector>

#include "adapters/support/shown_pictures.h"
#include "python/core/array_picture.h"

namespace aveffect::python {

/// A picture in a format that effects know, its rows without gaps: of the arrays themselves where they are
/// so, else in memory of its own. Everything but Picture() needs the interpreter's lock.
class WorkPicture {
public:
    /// What is to be worked on, and where it goes, of the same shapes; both may be one. With ownOrder effects
    /// are known to take pixels in any order of their bytes. Holds the source's samples from then on.
    WorkPicture(const ArrayPicture& source, const ArrayPicture& target, bool ownOrder);

    /// Of the memory that is worked in.
    const adapters::HostPicture& Picture() const noexcept { return m_picture; }

    /// Has the target hold what was made. Flatten: where it has no alpha, over black.
    void Finish(bool flatten);

private:
    void Load(const ArrayPicture& source);
    void Flatten();

    ArrayPicture m_target;
    bool m_direct;
    adapters::HostPicture m_picture;
    std::vector<uint8_t> m_memory;
};

} // namespace aveffect::python
