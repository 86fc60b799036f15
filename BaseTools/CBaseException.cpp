#include "BaseTools/CBaseException.h"

CBaseException::CBaseException(int code, const char* msg, int line, const char* file) {
    CBaseException::SetException(code, msg, line, file);
}

CBaseException::CBaseException(IBaseException* other) { CBaseException::Copy(other); }

int CBaseException::GetExceptionCode() const { return m_nCode; }

const char* CBaseException::GetExceptionMsg() const { return m_strMsg.c_str(); }

const char* CBaseException::GetExceptionSource(int* line) const {
    if (line) *line = m_nLine;
    return m_strFile.c_str();
}

void CBaseException::SetException(int code, const char* msg, int line, const char* file) {
    m_nCode = code;
    m_strMsg = msg ? msg : "";
    m_nLine = line;
    m_strFile = file ? file : "";
}

void CBaseException::Clear() {
    m_nCode = AVBased::kNoError;
    m_strMsg.clear();
}

void CBaseException::Copy(IBaseException* other) {
    if (other == this) return;
    int line = 0;
    const char* file = other->GetExceptionSource(&line);
    CBaseException::SetException(other->GetExceptionCode(), other->GetExceptionMsg(), line, file);
}

namespace BaseTool {

void Raise(int code, const char* msg, SourceLocation where) {
    throw CBaseException(code, msg, where.line, where.file);
}

void Raise(int code, const std::string& msg, SourceLocation where) { Raise(code, msg.c_str(), where); }

} // namespace BaseTool
