#include "adapters/gstreamer/complaints.h"

namespace aveffect::gst {

void Complaints::Say(const char* text) noexcept {
    if (!m_said.AreNew(text)) return;
    char* const words = g_strdup_printf("%s; pictures and sound are passed on", text);
    gst_element_message_full(m_element, GST_MESSAGE_WARNING, GST_LIBRARY_ERROR, GST_LIBRARY_ERROR_FAILED,
                             words, nullptr, "aveffect", "Say", 0);
}

} // namespace aveffect::gst
