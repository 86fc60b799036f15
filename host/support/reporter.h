#pragma once
/// Tells the observer, one call at a time.
#include <mutex>
#include <set>
#include <string>

#include "host/support/observer.h"

namespace aveffect {

/// Safe from any thread. Notes and warnings are said once, whichever of several threads find them out. The
/// observer outlives it.
class Reporter {
public:
    explicit Reporter(const RenderObserver& observer)
        : m_observer(observer) {}

    void Note(const std::string& text) {
        const std::scoped_lock lock(m_mutex);
        if (m_observer.note && m_said.insert(text).second) m_observer.note(text);
    }
    void Remark(const std::string& text) {
        const std::scoped_lock lock(m_mutex);
        if (m_observer.remark) m_observer.remark(text);
    }
    void Warn(const std::string& text) {
        const std::scoped_lock lock(m_mutex);
        if (m_observer.warning && m_said.insert(text).second) m_observer.warning(text);
    }
    void Progress(const RenderProgress& progress) {
        const std::scoped_lock lock(m_mutex);
        if (m_observer.progress) m_observer.progress(progress);
    }

private:
    std::mutex m_mutex;
    const RenderObserver& m_observer;
    std::set<std::string> m_said;
};

} // namespace aveffect
