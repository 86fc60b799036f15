#pragma once
/// What goes wrong while an element works.
#include <gst/gst.h>

#include "adapters/support/last_words.h"

namespace aveffect::gst {

/// Posts warnings on the bus, none twice in a row. Safe from any thread that does not hold the element's
/// lock.
class Complaints {
public:
    /// The element outlives it.
    explicit Complaints(GstElement* element)
        : m_element(element) {}

    /// What has happened, as a sentence without its end.
    void Say(const char* text) noexcept;

private:
    GstElement* m_element;
    adapters::LastWords m_said;
};

} // namespace aveffect::gst
