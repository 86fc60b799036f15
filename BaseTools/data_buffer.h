#pragma once
/// A queue of bytes between one who delivers blocks of one size and one who takes blocks of another.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <deque>
#include <memory>

namespace BaseTool {

/// First in, first out. A push costs one allocation and one copy; a pop copies straight out of what was
/// pushed. With locking, one thread may push while another pops.
class CDataBuffer2 {
public:
    explicit CDataBuffer2(bool bLock);
    /// An exception of the lock ends the program.
    ~CDataBuffer2();
    CDataBuffer2(const CDataBuffer2&) = delete;
    CDataBuffer2& operator=(const CDataBuffer2&) = delete;

    /// Appends a copy of the bytes; null or no bytes do nothing. Throws CBaseException 10021007 "No enough
    /// memory".
    void Push(const void* data, size_t size);
    /// The same, before all that is queued.
    void PushFront(const void* data, size_t size);

    /// Takes up to so many bytes out, into dst unless that is null, and returns how many: fewer when no more
    /// are queued.
    size_t Pop(void* dst, size_t size);

    /// Bytes that are queued.
    uint64_t GetDataSize() const;
    void Clear();

private:
    struct Free {
        void operator()(unsigned char* bytes) const noexcept { std::free(bytes); }
    };
    /// One push; offset < size while it is queued.
    struct DataNode {
        std::unique_ptr<unsigned char, Free> data;
        uint64_t offset; // bytes taken out already
        uint64_t size;
    };

    enum class End { Front, Back };
    void Insert(End end, const void* data, size_t size);

    std::deque<DataNode> m_Nodes;
    uint64_t m_nTotal = 0;
    void* m_pCritical = nullptr; // null without locking
};

} // namespace BaseTool
