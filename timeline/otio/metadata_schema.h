#pragma once
/// What metadata.aveffect may hold, as a JSON Schema.
#include "timeline/otio/document.h"

namespace aveffect {

/// A schema (draft 2020-12) for whole films: it looks at the metadata of this program's effects, transitions
/// and outputs, wherever they are, and at nothing else. "$defs" has one for each effect, by its short name.
/// Made from the catalogue. What depends on other members, such as times that lie in a clip, is left to
/// reading.
OtioJson MetadataSchema();

} // namespace aveffect
