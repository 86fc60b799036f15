#pragma once
/// What editors show of a service.
#include <framework/mlt.h>

#include "aveffect/effect_info.h"

namespace aveffect::mlt {

/// "aveffect.SHORT-NAME".
std::string ServiceName(const AVBased::EffectInfo& effect);

/// A transition is one, everything else a filter.
mlt_service_type ServiceType(const AVBased::EffectInfo& effect);

/// The catalogue's words, ranges and values in force, laid out as the host's metaschema has it; the caller's.
/// Null without memory.
mlt_properties MetadataOf(const AVBased::EffectInfo& effect);

} // namespace aveffect::mlt
