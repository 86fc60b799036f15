#pragma once
/// Copies between planes of frames.
#include "avbase/avbase_srcutils/plane_views.h"

namespace AVBased {

/// Copies as many rows and bytes a row as both planes have.
void CopyRows(const Plane8& to, const Plane8& from);

/// Copies as many rows as both planes have: as they stand in memory, padding included, when the pitches are
/// equal, else as CopyRows does.
void CopyPicture(const Plane8& to, const Plane8& from);

} // namespace AVBased
