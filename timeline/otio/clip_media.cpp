#include "timeline/otio/clip_media.h"

#include "timeline/otio/fields.h"

namespace aveffect {

namespace {

NumberedMedia::Missing MissingOf(const std::string& policy) {
    if (policy == "error") return NumberedMedia::Missing::Refuse;
    if (policy == "hold") return NumberedMedia::Missing::Hold;
    if (policy == "black") return NumberedMedia::Missing::Black;
    Refuse("missing_frame_policy is \"" + policy + "\", but should be error, hold or black");
}

NumberedMedia ReadNumbered(const OtioJson& reference, const MediaTerms& terms) {
    NumberedMedia numbered;
    const std::string folder = TextOf(reference, "target_url_base");
    numbered.before = NumberedPlace(folder, TextOf(reference, "name_prefix"), terms);
    numbered.after = TextOf(reference, "name_suffix");
    if (numbered.after.find_first_of(std::string("/\0", 2)) != std::string::npos)
        Refuse("name_suffix is " + Shown(numbered.after) + ", but should be the end of a file's name");
    numbered.first = WholeOf(reference, "start_frame", 1);
    numbered.step = WholeOf(reference, "frame_step", 1);
    numbered.digits = WholeOf(reference, "frame_zero_padding", 0);
    constexpr int kMostDigits = 18;
    if (numbered.step < 1)
        Refuse("frame_step is " + std::to_string(numbered.step) + ", but should be 1 or more");
    if (numbered.digits < 0 || numbered.digits > kMostDigits)
        Refuse("frame_zero_padding is " + std::to_string(numbered.digits) + ", but should be from 0 to 18");
    const double rate = NumberOf(reference, "rate", 0);
    numbered.rate = rate > 0 ? RateMeant(rate) : AVRational{0, 1};
    if (numbered.rate.num <= 0 || numbered.rate.den <= 0)
        Refuse("rate is " + Shown(reference.value("rate", OtioJson())) +
               ", but should be pictures a second, above 0");
    numbered.missing = MissingOf(TextOf(reference, "missing_frame_policy", "error"));
    return numbered;
}

} // namespace

const OtioJson* ActiveReference(const OtioJson& clip) {
    const OtioJson* const several = Member(clip, "media_references");
    if (!several) return Member(clip, "media_reference");
    const std::string key = TextOf(clip, "active_media_reference_key", "DEFAULT_MEDIA");
    const OtioJson& references = ObjectOf(clip, "media_references");
    if (references.empty()) return nullptr;
    const auto active = references.find(key);
    if (active == references.end())
        Refuse("active_media_reference_key is \"" + key + "\", but media_references has no such member");
    return active->is_null() ? nullptr : &*active;
}

FilmMedia ReadMedia(const OtioJson* reference, const MediaTerms& terms, const std::string& place,
                    Findings& findings) {
    FilmMedia media;
    if (!reference) {
        findings.Unknown("clips without media, which are black and silent", place);
        return media;
    }
    media.available = RangeOf(*reference, "available_range");
    const std::string schema = SchemaOf(*reference).name;
    if (schema == "ExternalReference") {
        media.url = MediaPlace(TextOf(*reference, "target_url"), terms);
        media.kind = FilmMedia::Kind::File;
    } else if (schema == "ImageSequenceReference") {
        media.numbered = ReadNumbered(*reference, terms);
        media.kind = FilmMedia::Kind::Numbered;
    } else if (schema == "MissingReference") {
        findings.Unknown("clips whose media are missing, which are black and silent", place);
    } else if (schema == "GeneratorReference") {
        findings.Unknown(
            "generators \"" + TextOf(*reference, "generator_kind") + "\", which are black and silent", place);
    } else {
        findings.Unknown("media references " + OtioJson(schema).dump() + ", which are black and silent",
                         place);
    }
    return media;
}

} // namespace aveffect
