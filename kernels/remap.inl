// Bodies of the remap kernels, for one level. The processors' gathers are no faster than loads one by one
// where neighbours come from neighbours, as they mostly do.

void RemapRgba32(uint8_t* to, const uint8_t* from, const uint32_t* offsets, size_t pixels) noexcept {
    size_t i = 0;
    for (; i + 4 <= pixels; i += 4) { // stored together
        uint32_t group[4];
        for (size_t j = 0; j < 4; ++j) std::memcpy(&group[j], from + offsets[i + j], sizeof group[j]);
        std::memcpy(to + i * 4, group, sizeof group);
    }
    for (; i < pixels; ++i) std::memcpy(to + i * 4, from + offsets[i], 4);
}

void RemapComponent(uint8_t* to, const uint8_t* from, const uint32_t* offsets, size_t samples) noexcept {
    size_t i = 0;
    for (; i + 4 <= samples; i += 4) {
        to[i] = from[offsets[i]];
        to[i + 1] = from[offsets[i + 1]];
        to[i + 2] = from[offsets[i + 2]];
        to[i + 3] = from[offsets[i + 3]];
    }
    for (; i < samples; ++i) to[i] = from[offsets[i]];
}

constexpr RemapKernels kKernels = {RemapRgba32, RemapComponent};
