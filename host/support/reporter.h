#pragma once
/// Tells the observer, one call at a time.
#include <mutex>
#include <string>

#include "host/support/observer.h"

namespace aveffect {

/// Safe from any thread. The observer outlives it.
class Reporter {
public:
    explicit Reporter(const RenderObserver& observer)
        : m_observer(observer) {}

    void Note(const std::string& text) {
        const std::scoped_lock lock(m_mutex);
        if (m_observer.note) m_observer.note(text);
    }
    void Remark(const std::string& text) {
        const std::scoped_lock lock(m_mutex);
        if (m_observer.remark) m_observer.remark(text);
    }
    void Warn(const std::string& text) {
        const std::scoped_lock lock(m_mutex);
        if (m_observer.warning) m_observer.warning(text);
    }
    void Progress(const RenderProgress& progress) {
        const std::scoped_lock lock(m_mutex);
        if (m_observer.progress) m_observer.progress(progress);
    }

private:
    std::mutex m_mutex;
    const RenderObserver& m_observer;
};

} // namespace aveffect
