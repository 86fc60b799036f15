// A film's file: read whatever it holds, and written again without loss.
#include <cstdlib>
#include <string>

#include "timeline/jobs/film_words.h"
#include "timeline/otio/document.h"
#include "timeline/otio/film_reader.h"
#include "timeline/otio/places.h"

namespace {

using namespace aveffect;

void Visit(const FilmItem& item, OtioJson& document) {
    // Each item's place leads to it; only tracks that are gaps now have lost children.
    if (!item.place.starts_with("timeline")) ObjectAt(document, item.place);
    for (const FilmItem& child : item.children) Visit(child, document);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    const OtioTerms terms{{"/nonexistent", "/nonexistent"}, nullptr};
    const ReadFilm read = ReadOtio(bytes, terms);
    FilmText(read.film);
    OtioJson document;
    try {
        document = ParseDocument(bytes);
    } catch (const Error&) {
        if (read.faults.empty()) std::abort();
        return 0;
    }
    if (ParseDocument(DocumentText(document)) != document) std::abort();
    for (const FilmItem& track : read.film.stack.children) Visit(track, document);
    return 0;
}
