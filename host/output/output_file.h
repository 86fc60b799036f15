#pragma once
/// A file that appears under its name only when it is whole.
#include <atomic>
#include <memory>
#include <optional>
#include <string>

#include "host/support/av_owner.h"
#include "host/support/unfinished.h"

namespace aveffect {

/// Writes to a file without a name in the target's directory, which Publish() links to the target and which
/// is gone when the program ends before, however it ends. Where the file system has no such files it is a
/// hidden one (".NAME.XXXXXX.part"), renamed by Publish() and removed by the destructor otherwise. Devices
/// and pipes are written to directly. Used by one thread at a time.
class OutputFile {
public:
    /// Refuses a target that exists unless overwrite is set, and one that is the input itself in any case.
    /// Throws Error (Output). Writes nothing yet.
    static void Check(const std::string& target, const std::string& input, bool overwrite);

    /// Creates the file. The flag, which outlives it, ends the wait for the reader of a pipe. Throws Error
    /// (Output, Interrupted).
    OutputFile(const std::string& target, bool overwrite, const std::atomic<bool>& cancel);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// The file as the container library writes to it; this object's.
    AVIOContext* Io() noexcept { return m_io.get(); }

    /// Whether what was written can be read again and replaced: not on pipes and devices.
    bool Seekable() const noexcept { return IsRegular() && m_io->seekable != 0; }

    /// What has been written, from its beginning, for the container library to read; this object outlives it,
    /// CloseReader() frees it. Null when memory is short.
    AVIOContext* OpenReader();
    static void CloseReader(AVIOContext* reader) noexcept;

    /// Throws Error (Output, Interrupted) when any write has failed so far; otherwise with the code's text
    /// when code is negative.
    void Require(int code, const char* doing);

    /// Writes what is buffered and gives the file its name, in one step: no other program's file is replaced
    /// unless overwrite is set, whenever it came into being. Where outputs are to be durable, file and name
    /// are on the disk then. Throws Error (Output).
    void Publish();

private:
    struct IoDeleter {
        void operator()(AVIOContext* io) const noexcept {
            av_freep(&io->buffer);
            avio_context_free(&io);
        }
    };
    bool CreateNameless();
    int CreateTemporary();
    std::string TemporaryPath() const;
    void TakePermissions(int file) const;
    void OpenIo();
    /// It gets its name in the end, unlike devices and pipes.
    bool IsRegular() const noexcept { return m_nameless || !m_temporary.empty(); }
    void Settle() const;
    int LinkTo(const std::string& path) const;
    void GiveName();
    void CopyToTemporary();
    void Rename();
    void Discard() noexcept;
    [[noreturn]] void FailExists() const;
    [[noreturn]] void Fail(const char* doing, int error) const;
    static int Read(void* self, uint8_t* data, int bytes);
    static int64_t SeekReader(void* self, int64_t offset, int whence);
    static int Write(void* self, uint8_t* data, int bytes);
    static int64_t Seek(void* self, int64_t offset, int whence);

    std::string m_target;                   ///< as the user wrote it
    std::string m_resolved;                 ///< symbolic links followed
    std::string m_temporary;                ///< the file's name while it has another one than the target's
    std::optional<Unfinished> m_unfinished; ///< after m_temporary, whose path it has
    bool m_nameless = false;
    bool m_overwrite;
    const std::atomic<bool>& m_cancel;
    int m_file = -1;
    int m_error = 0; ///< errno of the first write that failed
    int64_t m_readerAt = 0;
    std::unique_ptr<AVIOContext, IoDeleter> m_io;
};

} // namespace aveffect
