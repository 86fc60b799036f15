#pragma once
/// Files made of elements within elements, taken apart and put together again: MP4's boxes, EBML's elements
/// (Matroska, WebM), RIFF's chunks (AVI, WAV, WebP).
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace fuzzing {

enum class Dialect { Mp4, Ebml, Riff };

struct Element {
    std::string id;    ///< as it stands in the file; empty: bytes that are no element, without a header
    std::string bytes; ///< its own, before the children
    std::vector<Element> children;  ///< of elements that hold others
    std::optional<uint64_t> claims; ///< the size that its header says; absent: the true one
};

struct MediaTree {
    Dialect dialect;
    Element root; ///< without an id: the file
};

/// Absent where the bytes begin like none of these files. Whatever follows is kept: what is no element is
/// bytes.
std::optional<MediaTree> ParseMediaTree(const std::string& file);

/// The file, sizes made right but for those that are claimed.
std::string MediaBytes(const MediaTree& tree);

} // namespace fuzzing
