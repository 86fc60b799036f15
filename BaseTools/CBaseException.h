#pragma once
/// The error that the plug-in's code throws and that its boundaries hand over to the thread's record.
#include <string>

#include "BaseTools/source_location.h"
#include "aveffect/errors.h"

class CBaseException final : public IBaseException {
public:
    /// Null texts count as empty.
    CBaseException(int code, const char* msg, int line, const char* file);
    /// Takes over another record, which must not be null.
    explicit CBaseException(IBaseException* other);

    int GetExceptionCode() const override;
    const char* GetExceptionMsg() const override;
    const char* GetExceptionSource(int* line) const override;
    void SetException(int code, const char* msg, int line, const char* file) override;
    void Clear() override;
    void Copy(IBaseException* other) override;

    int GetCode() const { return m_nCode; }
    const char* GetMsg() const { return m_strMsg.c_str(); }

private:
    int m_nCode = 0;
    std::string m_strMsg;
    int m_nLine = 0;
    std::string m_strFile;
};

namespace BaseTool {

/// Throws a CBaseException that names the caller's file and line.
[[noreturn]] void Raise(int code, const char* msg, SourceLocation where = SourceLocation::Current());
[[noreturn]] void Raise(int code, const std::string& msg, SourceLocation where = SourceLocation::Current());

} // namespace BaseTool
