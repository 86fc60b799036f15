#pragma once
/// Finished chunks of a plan, in its folder.
#include <atomic>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "farm/packet_sum.h"

namespace aveffect {

/// What is known of a chunk that is whole.
struct ChunkReceipt {
    std::string file; ///< in the folder; empty: there was nothing to write
    int64_t bytes = 0;
    PacketSum::Result packets;
    int64_t delay = 0;   ///< of the pictures, as DelayOf()
    int64_t shiftUs = 0; ///< of what lies beside them: how much earlier than its file says it begins

    std::string Text() const;
};

/// The folder of a plan, which many machines may use at a time. A chunk counts once its receipt is there, a
/// file that appears whole; the receipt names the chunk's own file. Throws Error (Output) for what the folder
/// does not let do.
class ChunkStore {
public:
    /// Extension: of the chunks' files.
    ChunkStore(std::filesystem::path folder, std::string extension);

    /// A name that no other worker writes to.
    std::string TemporaryPath(int64_t part) const;

    /// Absent where the part isn't done, or its file is not what the receipt says by its size.
    std::optional<ChunkReceipt> Find(int64_t part) const;
    /// What was said of the part's last failure; absent where there was none.
    std::optional<std::string> Failure(int64_t part) const;

    /// Names the file after what it holds, and the part counts. Where another worker was earlier its file
    /// stays, and this one goes.
    void Keep(int64_t part, const std::string& temporary, ChunkReceipt receipt);
    void SetFailure(int64_t part, const std::string& message) const;

    std::filesystem::path FileOf(const ChunkReceipt& receipt) const { return Chunks() / receipt.file; }

private:
    std::filesystem::path Chunks() const { return m_folder / "chunks"; }
    std::filesystem::path NameOf(int64_t part, const std::string& ending) const;

    std::filesystem::path m_folder;
    std::string m_extension;
};

} // namespace aveffect
