// Oil with neighbourhoods of any size: the histograms of all columns follow the rows, and one of the whole
// neighbourhood slides along the row by adding a column and taking one away. What that costs grows with the
// number of bins that a column has, not with the radius.

template <class Picture>
struct WideBrush {
    // A count, times 256, and three sums. In the window what a bin lacks to 255 is added to its count, so
    // that the largest of these keys belongs to the most frequent bin and, among equals, to the lowest.
    typedef uint32_t ColumnBin __attribute__((vector_size(OilMemory::kColumnBinBytes)));
    typedef uint64_t WindowBin __attribute__((vector_size(OilMemory::kWindowBinBytes)));

    Picture& picture;
    const OilMemory& memory;
    OilBrush brush;
    uint8_t* scratch;
    uint64_t best = 0; // the window's largest key
    bool bestLost = false;

    AVEFFECT_INLINE ColumnBin* Column(size_t x) const {
        return reinterpret_cast<ColumnBin*>(scratch + memory.counts) + x * memory.bins;
    }
    AVEFFECT_INLINE WindowBin* Window() const {
        return reinterpret_cast<WindowBin*>(scratch + memory.window);
    }
    // A bit for each bin that the column has.
    AVEFFECT_INLINE uint64_t* Used(size_t x) const {
        return reinterpret_cast<uint64_t*>(scratch + memory.used + x * OilMemory::kUsedBytes);
    }

    AVEFFECT_INLINE static ColumnBin Sample(const OilRow& row, size_t x) {
        return ColumnBin{256, row.samples[0][x], row.samples[1][x], row.samples[2][x]};
    }

    void Enter(size_t row) const {
        ReadRow(picture, row, brush.levels);
        const OilRow from = picture.RowAt(row);
        for (size_t x = 0; x < picture.Width(); ++x) {
            const size_t number = from.bins[x];
            Column(x)[number] += Sample(from, x);
            Used(x)[number / 64] |= uint64_t{1} << number % 64;
        }
    }
    void Leave(size_t row) const {
        const OilRow from = picture.RowAt(row);
        for (size_t x = 0; x < picture.Width(); ++x) {
            const size_t number = from.bins[x];
            const ColumnBin left = Column(x)[number] - Sample(from, x);
            Column(x)[number] = left;
            if (left[0] == 0) Used(x)[number / 64] &= ~(uint64_t{1} << number % 64);
        }
    }

    AVEFFECT_INLINE static size_t BinOf(uint64_t key) { return 255 - (key & 255); }

    // Adds a column to the window, or takes it away.
    template <bool Adds>
    AVEFFECT_INLINE void Slide(size_t x) {
        for (size_t word = 0; word <= (memory.bins - 1) / 64; ++word)
            for (uint64_t used = Used(x)[word]; used != 0; used &= used - 1) {
                const size_t number = 64 * word + static_cast<size_t>(__builtin_ctzll(used));
                const WindowBin change = __builtin_convertvector(Column(x)[number], WindowBin);
                const WindowBin changed = Adds ? Window()[number] + change : Window()[number] - change;
                Window()[number] = changed;
                if (Adds)
                    best = changed[0] > best ? changed[0] : best;
                else
                    bestLost |= number == BinOf(best);
            }
    }

    // In four chains, which the processor follows side by side.
    AVEFFECT_INLINE void FindBest() {
        uint64_t most[4] = {};
        for (size_t bin = 0; bin < memory.bins; ++bin) {
            const uint64_t key = Window()[bin][0];
            most[bin % 4] = key > most[bin % 4] ? key : most[bin % 4];
        }
        for (unsigned i = 1; i < 4; ++i) most[0] = most[i] > most[0] ? most[i] : most[0];
        best = most[0];
        bestLost = false;
    }

    void PaintRow(size_t row) {
        const size_t width = picture.Width(), radius = brush.radius;
        for (size_t bin = 0; bin < memory.bins; ++bin) Window()[bin] = WindowBin{255 - bin};
        best = 0;
        for (size_t x = 0; x < radius && x < width; ++x) Slide<true>(x);
        uint8_t means[3][kLanes];
        for (size_t x = 0; x < width; ++x) {
            if (x > radius) Slide<false>(x - radius - 1);
            if (bestLost) FindBest();
            if (x + radius < width) Slide<true>(x + radius);
            const WindowBin bin = Window()[BinOf(best)];
            for (size_t i = 0; i < 3; ++i)
                means[i][x % kLanes] = static_cast<uint8_t>(bin[1 + i] / (bin[0] >> 8));
            if (x % kLanes != kLanes - 1 && x + 1 < width) continue;
            picture.Put(row, x - x % kLanes, {Load<U8>(means[0]), Load<U8>(means[1]), Load<U8>(means[2])});
        }
        picture.FinishRow(row);
    }

    void Paint() {
        std::memset(scratch + memory.used, 0, memory.window - memory.used);
        const size_t height = picture.Rows(), radius = brush.radius;
        for (size_t row = 0; row < radius && row < height; ++row) Enter(row);
        for (size_t row = 0; row < height; ++row) {
            if (row > radius) Leave(row - radius - 1);
            if (row + radius < height) Enter(row + radius);
            PaintRow(row);
        }
    }
};
