#include "adapters/gstreamer/complaints.h"

#include <exception>

namespace aveffect::gst {

void Complaints::Say(const char* text) noexcept {
    {
        const std::scoped_lock lock(m_mutex);
        try {
            if (m_said == text) return;
            m_said = text;
        } catch (const std::exception&) {
            return; // there is no memory to remember it
        }
    }
    char* const words = g_strdup_printf("%s; pictures and sound are passed on", text);
    gst_element_message_full(m_element, GST_MESSAGE_WARNING, GST_LIBRARY_ERROR, GST_LIBRARY_ERROR_FAILED,
                             words, nullptr, "aveffect", "Say", 0);
}

} // namespace aveffect::gst
