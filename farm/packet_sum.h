#pragma once
/// Checksums of encoded streams.
#include <atomic>
#include <cstdint>
#include <string>

#include "host/support/av_owner.h"
#include "host/support/digest.h"

namespace aveffect {

/// Adds up packets as a container gives them out, so that a file is checked while it is copied. SHA-256 of
/// sizes, times and contents.
class PacketSum {
public:
    struct Result {
        int64_t packets = 0;
        std::string sum; ///< in hexadecimal digits

        bool operator==(const Result&) const = default;
    };

    void Add(const AVPacket& packet);
    /// Once.
    Result Finish();

private:
    Digest m_digest;
    int64_t m_packets = 0;
};

/// When the first packet of a file begins, in microseconds. Throws as SumOf().
int64_t FirstUs(const std::string& path, const std::atomic<bool>& cancel);

/// Of the pictures in a file, or of all its streams where it has none. Throws Error (Input, Interrupted).
PacketSum::Result SumOf(const std::string& path, bool pictures, const std::atomic<bool>& cancel);

} // namespace aveffect
