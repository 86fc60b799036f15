#include "adapters/sound/channel.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace AVBased::sound {

double ControlRange::ValueOf(const float* control) const noexcept {
    if (!control || std::isnan(*control)) return first;
    const double value = *control;
    return std::clamp(whole ? std::round(value) : value, least, most);
}

void Channel::Connect(size_t port, void* place) noexcept {
    if (port < kFirstControl + m_Controls.size()) m_Places[port] = static_cast<float*>(place);
}

void Channel::Run(size_t count) noexcept {
    const float* const from = m_Places[kInput];
    float* const to = m_Places[kOutput];
    if (!from || !to || count == 0) return;
    // Hosts may have a control in the memory of the output.
    double values[kMostControls];
    for (size_t i = 0; i < m_Controls.size(); ++i)
        values[i] = m_Controls[i].ValueOf(m_Places[kFirstControl + i]);
    if (from != to) std::memmove(to, from, count * sizeof *to);
    Work(to, count, {values, m_Controls.size()});
}

} // namespace AVBased::sound
