#pragma once
/// Pieces of films that were rendered before.
#include <atomic>
#include <cstdint>
#include <filesystem>
#include <set>
#include <string>

namespace aveffect {

/// A directory of encoded pieces, each in a file that is named by all that it depends on. Several programs
/// may use it at a time: files appear whole.
class SegmentStore {
public:
    /// Makes the directory where there is none. Extension: of the files, without a point. Throws Error
    /// (Output).
    SegmentStore(std::filesystem::path directory, std::string extension, uint64_t limit);

    /// A name for a piece that depends on this text.
    static std::string KeyOf(const std::string& text);
    std::string PathOf(const std::string& key) const;

    /// Whether there is a piece of that name with so many pictures; one with others is removed. Throws Error
    /// (Interrupted).
    bool Holds(const std::string& key, int64_t pictures, const std::atomic<bool>& cancel);

    void Remove(const std::string& key);

    /// Keeps the files together below the limit: what is not needed goes, what was used longest ago first.
    /// Throws Error (Output) when that does not do.
    void MakeRoom(const std::set<std::string>& needed);

private:
    std::filesystem::path m_directory;
    std::string m_extension;
    uint64_t m_limit; ///< bytes
};

} // namespace aveffect
