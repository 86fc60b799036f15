// Bodies of the edge light kernels, for one level. Squares and products of whole numbers are whole numbers,
// so single precision, or that and a correction, finds what double precision does; both round towards 0.

// Each of these turns 32-bit lanes of two differences, 0 to 255 in 16 bits each, into sqrt(x * x + y * y)
// times a level that is not negative.

// Below 2^24 single precision holds whole numbers, and their roots don't round up to the next whole one.
struct SmallLevels {
    static constexpr uint32_t kMost = 11;

    F32 square;

    AVEFFECT_INLINE explicit SmallLevels(uint32_t level)
        : square(SplatF32(static_cast<float>(level * level))) {}
    AVEFFECT_INLINE U32 operator()(I16 differences) const {
        return (U32)Truncated(SquareRoot(ToFloat(MultiplyAddPairs(differences, differences)) * square));
    }
};

// The root is less than a sixteenth off, so that a sixteenth less it is never too large, and at most by one
// too small.
struct MiddleLevels {
    static constexpr uint32_t kMost = 90; // up to here the roots fit into 15 bits

    I16 level;

    AVEFFECT_INLINE explicit MiddleLevels(uint32_t factor)
        : level(SplatI16(static_cast<int16_t>(factor))) {}
    AVEFFECT_INLINE U32 operator()(I16 differences) const {
        const I16 scaled = differences * level;
        const I32 square = MultiplyAddPairs(scaled, scaled);
        const I32 next = Truncated(SquareRoot(ToFloat(square)) - 0.0625f) + 1;
        return (U32)(next + (MultiplyAddPairs((I16)next, (I16)next) > square));
    }
};

// Results may have up to 40 bits; the low ones of all of them count.
struct LargeLevels {
    double level;

    AVEFFECT_INLINE explicit LargeLevels(uint32_t factor)
        : level(factor) {}
    AVEFFECT_INLINE U32 operator()(I16 differences) const {
        uint32_t lanes[kLanes / 4];
        Store(lanes, MultiplyAddPairs(differences, differences));
        for (uint32_t& lane : lanes)
            lane = static_cast<uint32_t>(static_cast<int64_t>(__builtin_sqrt(lane) * level));
        return Load<U32>(lanes);
    }
};

AVEFFECT_INLINE U8 Distance(U8 a, U8 b) { return SubSaturated(a, b) | SubSaturated(b, a); }

template <class Level>
struct Edges {
    Level magnitude;
    U8 sign; // all bits of negative levels
    U8 flip;

    AVEFFECT_INLINE Edges(int32_t level, uint8_t flipped)
        : magnitude(level < 0 ? 0 - static_cast<uint32_t>(level) : static_cast<uint32_t>(level))
        , sign(Splat8(level < 0 ? 255 : 0))
        , flip(Splat8(flipped)) {}
    AVEFFECT_INLINE U8 Finish(U8 magnitudes) const { return ((magnitudes ^ sign) - sign) ^ flip; }
};

template <class Level>
struct PixelEdges {
    static constexpr size_t kStep = 4;
    Edges<Level> edges;

    AVEFFECT_INLINE U32 Magnitudes(U32 x, U32 y) const {
        return edges.magnitude((I16)((x & 0xFF) | (y & 0xFF0000))) & 0xFF;
    }
    AVEFFECT_INLINE U8 operator()(U8 pixels, U8 right, U8 below) const {
        const U32 x = (U32)Distance(pixels, right), y = (U32)Distance(pixels, below);
        const U32 blue = Magnitudes(x, y << 16), green = Magnitudes(x >> 8, y << 8),
                  red = Magnitudes(x >> 16, y);
        return Select(AlphaMask(), pixels, edges.Finish((U8)(blue | green << 8 | red << 16)));
    }
};

template <class Level>
struct SampleEdges {
    static constexpr size_t kStep = 1;
    Edges<Level> edges;

    AVEFFECT_INLINE I16 Half(U8 differences) const {
        return PackPairs((I32)(edges.magnitude(WidenLow(differences)) & 0xFF),
                         (I32)(edges.magnitude(WidenHigh(differences)) & 0xFF));
    }
    AVEFFECT_INLINE U8 operator()(U8 samples, U8 right, U8 below) const {
        const U8 x = Distance(samples, right), y = Distance(samples, below);
        return edges.Finish(Pack(Half(InterleaveLow(x, y)), Half(InterleaveHigh(x, y))));
    }
};

// As ForRow does, the last register computed from the old bytes.
template <class Op>
AVEFFECT_INLINE void ForRowAndBelow(uint8_t* row, const uint8_t* below, size_t width, const uint8_t* soon,
                                    const Op& op) {
    const uint8_t* const right = row + Op::kStep;
    if (width < kLanes) {
        U8 whole{}, wholeRight{}, wholeBelow{};
        std::memcpy(&whole, row, width);
        std::memcpy(&wholeRight, right, width);
        std::memcpy(&wholeBelow, below, width);
        whole = op(whole, wholeRight, wholeBelow);
        std::memcpy(row, &whole, width);
        return;
    }
    const size_t end = width - kLanes;
    const U8 last = op(Load<U8>(row + end), Load<U8>(right + end), Load<U8>(below + end));
    for (size_t x = 0; x < end; x += kLanes) {
        Prefetch(soon + x);
        Store(row + x, op(Load<U8>(row + x), Load<U8>(right + x), Load<U8>(below + x)));
    }
    Store(row + end, last);
}

template <class Op>
AVEFFECT_INLINE void ForRowsWithBelow(Plane8 plane, size_t width, const Op& op) {
    for (size_t y = 0; y + 1 < plane.rows; ++y) {
        const uint8_t* const below = plane.Row(y + 1);
        ForRowAndBelow(plane.Row(y), below, width, below + plane.pitch, op);
    }
}

template <template <class> class Op>
AVEFFECT_INLINE void ForLevel(Plane8 plane, size_t width, int32_t level, uint8_t flip) {
    const uint32_t size = level < 0 ? 0 - static_cast<uint32_t>(level) : static_cast<uint32_t>(level);
    if (size <= SmallLevels::kMost)
        ForRowsWithBelow(plane, width, Op<SmallLevels>{{level, flip}});
    else if (size <= MiddleLevels::kMost)
        ForRowsWithBelow(plane, width, Op<MiddleLevels>{{level, flip}});
    else
        ForRowsWithBelow(plane, width, Op<LargeLevels>{{level, flip}});
}

void EdgeLightRgba32(Plane32 plane, int32_t level) noexcept {
    if (plane.width > 1) ForLevel<PixelEdges>(plane.Bytes(), (plane.width - 1) * 4, level, 0);
}
void EdgeLightComponent(Plane8 plane, int32_t level, uint8_t flip) noexcept {
    if (plane.width > 0) ForLevel<SampleEdges>(plane, plane.width, level, flip);
}

constexpr EdgeLightKernels kKernels = {EdgeLightRgba32, EdgeLightComponent};
