#pragma once
/// Tables of rows and columns as kernels take them.
#include <cstdint>
#include <vector>

#include "kernels/pick.h"

namespace AVBased {

/// Points into the table: valid while that is neither changed nor let go.
inline kernels::Places PlacesOf(const std::vector<uint32_t>& table) { return {table.data(), table.size()}; }

} // namespace AVBased
