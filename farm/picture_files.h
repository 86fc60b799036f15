#pragma once
/// Chunks of numbered pictures: a directory of files, numbered from 1, with their checksums beside them.
#include <atomic>
#include <filesystem>

#include "farm/packet_sum.h"
#include "host/output/output_plan.h"

namespace aveffect {

/// Where a chunk's render writes to: a pattern in a directory, which is made. Throws Error (Output).
std::string PicturePattern(const std::filesystem::path& directory, const std::string& extension);

/// Adds the list of checksums, in the form of sha256sum, whose own stands for them all. Throws Error (Input,
/// Output, Interrupted).
PacketSum::Result SealPictures(const std::filesystem::path& directory, const std::string& extension,
                               const std::atomic<bool>& cancel);

/// Of a file, or of all that lies in a directory; 0 where there is none. Throws Error (Input).
int64_t BytesAt(const std::filesystem::path& path);

/// Copies the pictures to the output's names, from that number on; each is read once, and appears when it is
/// what was rendered. Throws Error: Input for what is not; Output, Interrupted.
void CopyPictures(const std::filesystem::path& directory, const PacketSum::Result& expected,
                  const OutputPlan& output, int64_t first, bool overwrite, const std::atomic<bool>& cancel);

} // namespace aveffect
