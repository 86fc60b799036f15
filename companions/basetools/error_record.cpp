/// The error records, one a thread.
#include <new>
#include <string>
#include <utility>

#include "aveffect/base_tools.h"

namespace {

class ErrorRecord final : public IBaseException {
public:
    int GetExceptionCode() const override { return m_code; }
    const char* GetExceptionMsg() const override { return m_message.c_str(); }

    const char* GetExceptionSource(int* line) const override {
        if (line) *line = m_line;
        return m_file.c_str();
    }

    void SetException(int code, const char* msg, int line, const char* file) override {
        m_code = code;
        m_line = line;
        try {
            // Copies first: the texts may be this record's own.
            std::string message(msg ? msg : "");
            std::string source(file ? file : "");
            m_message.swap(message);
            m_file.swap(source);
        } catch (const std::bad_alloc&) { // the code says enough
            m_message.clear();
            m_file.clear();
        }
    }

    void Clear() override {
        m_code = AVBased::kNoError;
        m_message.clear();
    }

    void Copy(IBaseException* other) override {
        if (!other || other == this) return;
        int line = 0;
        const char* file = other->GetExceptionSource(&line);
        SetException(other->GetExceptionCode(), other->GetExceptionMsg(), line, file);
    }

private:
    int m_code = AVBased::kNoError;
    int m_line = 0;
    std::string m_message;
    std::string m_file;
};

// Part of the thread, so that there is one when memory is short.
thread_local ErrorRecord t_record;

} // namespace

IBaseException* GetBaseException() { return &t_record; }

void ReleaseBaseException() {
    static_cast<void>(std::exchange(t_record, ErrorRecord())); // the old texts go with what comes back
}
