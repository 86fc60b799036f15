#include "timeline/otio/places.h"

#include <optional>
#include <sstream>

#include "host/settings/value_text.h"
#include "host/support/error.h"
#include "timeline/otio/fields.h"

namespace aveffect {

namespace {

/// "children[3]".
struct Step {
    std::string name;
    std::optional<size_t> index;
};

[[noreturn]] void RefusePlace(const std::string& place, const std::string& why) {
    throw Error(ErrorKind::Usage,
                "'" + place + "' is no place in the film: " + why +
                    "; `aveffect timeline show` tells them, as tracks[0].children[2].effects[0]");
}

Step StepOf(const std::string& text, const std::string& place) {
    const size_t bracket = text.find('[');
    if (bracket == std::string::npos) return {text, {}};
    const auto index = ParseWhole(text.substr(bracket + 1, text.size() - bracket - 2));
    if (!text.ends_with(']') || !index || *index < 0)
        RefusePlace(place, "'" + text + "' should be a name and a number in brackets");
    return {text.substr(0, bracket), static_cast<size_t>(*index)};
}

} // namespace

std::string PathIn(const std::string& place) { return place.substr(0, place.find(' ')); }

OtioJson& ObjectAt(OtioJson& document, const std::string& place) {
    OtioJson* object = &document;
    std::istringstream steps(PathIn(place));
    std::string text;
    while (std::getline(steps, text, '.')) {
        Step step = StepOf(text, place);
        if (step.name == "tracks") {
            // A stack at the top holds the tracks itself, and a track is the only one.
            const bool alone = IsA(*object, "Track") || IsA(*object, "Sequence");
            if (IsA(*object, "Timeline") && object->contains("tracks")) object = &(*object)["tracks"];
            if (!step.index || (alone && *step.index == 0)) continue;
            step.name = "children";
        }
        if (!step.index || !object->is_object() || !object->contains(step.name))
            RefusePlace(place, "there is no '" + text + "'");
        OtioJson& list = (*object)[step.name];
        if (!list.is_array() || *step.index >= list.size())
            RefusePlace(place, "'" + step.name + "' has " +
                                   std::to_string(list.is_array() ? list.size() : 0) + " there");
        object = &list[*step.index];
    }
    return *object;
}

} // namespace aveffect
