#pragma once
/// Keeps the media libraries' log off standard error and at hand for messages.
#include <cstdint>
#include <string>

namespace aveffect {

/// Replaces the libraries' log callback of the whole process, once: from then on nothing is printed and the
/// last error line of each thread is kept. Safe from any thread.
void CaptureLibraryLog();

/// The calling thread's error line, which is then forgotten. Empty when there is none. Call it before an
/// operation too, so that what it returns afterwards is about that operation.
std::string TakeLibraryError();

/// Collects the error lines of those library objects whose "opaque" pointer it is: containers and codecs,
/// from whichever thread they write. Safe from any thread.
class ErrorLines {
public:
    ErrorLines();
    ~ErrorLines();
    ErrorLines(const ErrorLines&) = delete; // the objects hold on to its place
    ErrorLines& operator=(const ErrorLines&) = delete;

    int64_t Count() const;
    /// Empty when there was none.
    std::string First() const;
    void Forget();

    /// For the log callback.
    static void Add(void* origin, const std::string& line);

private:
    int64_t m_count = 0;
    std::string m_first;
};

} // namespace aveffect
