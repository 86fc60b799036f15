#pragma once
/// Errors and logging as they cross the plug-in's boundary: the per-thread error record, the process's
/// logger, and the codes that appear in the record.

/// The error record of one thread. Holds the most recent error only.
///
/// Obtained from GetBaseException(); owned by the tools library. Texts stay valid until the record changes.
/// A record is used by its own thread alone.
class IBaseException {
public:
    /// The error's code, 0 for none. See AVBased::ErrorCode.
    virtual int GetExceptionCode() const = 0;
    /// The message, never null, empty when there is none.
    virtual const char* GetExceptionMsg() const = 0;
    /// The source file that raised the error, never null; its line goes to *line.
    virtual const char* GetExceptionSource(int* line) const = 0;
    /// Replaces the record. A null message or file counts as empty.
    virtual void SetException(int code, const char* msg, int line, const char* file) = 0;
    /// Sets the code to 0 and empties the message. Line and file stay as they were.
    virtual void Clear() = 0;
    /// Takes over code, message, line and file of another record.
    virtual void Copy(IBaseException* other) = 0;

protected:
    ~IBaseException() = default;
};

/// The process's logger. Safe to call from any thread.
class IBaseLogger {
public:
    /// Writes one message. Levels: 0 debug, 1 info, 2 warning, 3 error. The last two arguments are reserved,
    /// 0.
    virtual void Write(int level, const char* source, const char* message, int reserved1, int reserved2) = 0;

protected:
    ~IBaseLogger() = default;
};

namespace AVBased {

/// Codes of the error record.
enum ErrorCode : int {
    kNoError = 0,
    kBadIndex = 10021000,           ///< "Bad index"
    kResourceDuplicated = 10021002, ///< "Resource duplicated"
    kBadPointer = 10021003,         ///< "Bad pointer": a required pointer is null
    kDoesNotExist = 10021005,       ///< a named thing does not exist
    kNoMemory = 10021007,           ///< "No enough memory"
    kUnknownException = 10021008,   ///< "Unknown exception", and input that an effect does not serve
    kNoInterface = 10021009,        ///< interface name not found; the message is the name
    kStandardException = 10021015,  ///< an exception of the C++ library; the message is its own text
    kWrongState = 10021019,         ///< not now: what is asked for has happened already, or not yet
};

} // namespace AVBased
