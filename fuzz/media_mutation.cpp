#include "fuzz/media_mutation.h"

#include <algorithm>
#include <random>
#include <vector>

#include "fuzz/media_tree.h"

namespace fuzzing {

namespace {

class Mutation {
public:
    explicit Mutation(uint32_t seed)
        : m_random(seed) {}

    size_t Below(size_t bound) { return m_random() % bound; }

    void ChangeTree(MediaTree& tree) {
        std::vector<Place> places;
        Collect(tree.root, places);
        if (places.empty()) return;
        const auto [parent, index] = places[Below(places.size())];
        std::vector<Element>& siblings = parent->children;
        Element& element = siblings[index];
        const auto at = siblings.begin() + static_cast<std::ptrdiff_t>(index);
        switch (Below(10)) {
        case 0:
            element.claims = Odd(8, element.bytes.size());
            break;
        case 1:
            siblings.insert(at, Element(element));
            break;
        case 2:
            siblings.erase(at);
            break;
        case 3:
            std::swap(element, siblings[Below(siblings.size())]);
            break;
        case 4: {
            const auto [from, place] = places[Below(places.size())];
            const Element copy = from->children[place]; // it may hold this one
            element = copy;
            break;
        }
        case 5:
            element.bytes.resize(Below(element.bytes.size() + 9));
            break;
        default:
            ChangeNumber(element.bytes, tree.dialect != Dialect::Riff);
        }
    }

    /// A number of 1, 2, 4 or 8 bytes at a place where such a number may stand.
    void ChangeNumber(std::string& bytes, bool bigEndian) {
        const size_t width = std::min(size_t{1} << Below(4), bytes.size());
        if (width == 0) return;
        const size_t slots = bytes.size() / width;
        // Headers matter more than what they head.
        const size_t at = width * Below(Below(2) ? slots : std::min<size_t>(slots, 64));
        uint64_t old = 0;
        for (size_t i = 0; i < width; ++i)
            old = old << 8 | static_cast<uint8_t>(bytes[at + (bigEndian ? i : width - 1 - i)]);
        const uint64_t value = Odd(width, old);
        for (size_t i = 0; i < width; ++i)
            bytes[at + (bigEndian ? width - 1 - i : i)] = static_cast<char>(value >> (8 * i));
    }

private:
    struct Place {
        Element* parent;
        size_t index;
    };

    static void Collect(Element& element, std::vector<Place>& places) {
        for (size_t i = 0; i < element.children.size(); ++i) {
            places.push_back({&element, i});
            Collect(element.children[i], places);
        }
    }

    /// A number near an end of what so many bytes hold, near the old one, or any.
    uint64_t Odd(size_t width, uint64_t old) {
        const uint64_t all = width == 8 ? ~uint64_t{0} : (uint64_t{1} << (8 * width)) - 1;
        const uint64_t values[] = {
            0,       1,       all,     all >> 1, (all >> 1) + 1, old + 1,
            old - 1, old * 2, old / 2, ~old,     old << 16,      (uint64_t{m_random()} << 32) + m_random()};
        return values[Below(std::size(values))] & all;
    }

    std::mt19937 m_random;
};

} // namespace

std::string MutateMedia(const std::string& file, uint32_t seed) {
    Mutation mutation(seed);
    std::optional<MediaTree> tree = ParseMediaTree(file);
    std::string bytes = file;
    for (size_t changes = 1 + mutation.Below(3); changes > 0; --changes) {
        if (tree) {
            mutation.ChangeTree(*tree);
        } else {
            mutation.ChangeNumber(bytes, mutation.Below(2) == 0);
        }
    }
    return tree ? MediaBytes(*tree) : bytes;
}

} // namespace fuzzing
