#pragma once
/// Errors of the reference host: one sentence for people and a kind that becomes the program's exit code.
#include <new>
#include <stdexcept>
#include <string>
#include <utility>

namespace aveffect {

enum class ErrorKind {
    Usage,  ///< the request is wrong: unknown effect or property, value out of range, impossible combination
    Input,  ///< the input is missing, unreadable, or no media
    Output, ///< the output exists, can't be written, or the disk is full
    Effect, ///< the plug-in is missing or an effect failed
    Interrupted, ///< the user asked to stop
};

class Error : public std::runtime_error {
public:
    Error(ErrorKind kind, const std::string& message, std::string picture = {})
        : std::runtime_error(message)
        , m_kind(kind)
        , m_picture(std::move(picture)) {}
    ErrorKind Kind() const noexcept { return m_kind; }
    /// What was written, with a mark under the place that is meant, in lines; empty where nothing is shown.
    const std::string& Picture() const noexcept { return m_picture; }

private:
    ErrorKind m_kind;
    std::string m_picture;
};

/// Memory is refused: nobody's fault, and so no Error, which would be taken for one.
class NoMemory : public std::bad_alloc {
public:
    explicit NoMemory(const std::string& text)
        : m_text(text) {} // NOLINT(bugprone-throw-keyword-missing): kept, not forgotten to be thrown
    const char* what() const noexcept override { return m_text.what(); }

private:
    std::runtime_error m_text; ///< copying it throws nothing
};

} // namespace aveffect
