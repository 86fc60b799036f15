#pragma once
/// Objects of the interchange format: their schemas and members. What is of another type than it should be is
/// an Error (Usage) that names the member, the value and what would be right.
#include <optional>
#include <string>
#include <string_view>

#include "timeline/film/film_time.h"
#include "timeline/otio/document.h"

namespace aveffect {

/// "Clip.2" is version 2 of Clip; an object without a schema has an empty name.
struct OtioSchema {
    std::string name;
    int version = 0;
};

OtioSchema SchemaOf(const OtioJson& object);

/// Whether it is an object of that schema, of any version.
bool IsA(const OtioJson& value, std::string_view schema);

/// The member; null when it is missing, and for null itself.
const OtioJson* Member(const OtioJson& object, const char* name);

std::string TextOf(const OtioJson& object, const char* name, const std::string& otherwise = {});
bool SwitchOf(const OtioJson& object, const char* name, bool otherwise);
/// Finite.
double NumberOf(const OtioJson& object, const char* name, double otherwise);
int WholeOf(const OtioJson& object, const char* name, int otherwise);
/// Objects and lists that are missing are empty.
const OtioJson& ListOf(const OtioJson& object, const char* name);
const OtioJson& ObjectOf(const OtioJson& object, const char* name);

/// A RationalTime; absent when it is missing.
std::optional<FilmTime> TimeOf(const OtioJson& object, const char* name);
/// A TimeRange whose duration is not below 0; absent when it is missing.
std::optional<FilmRange> RangeOf(const OtioJson& object, const char* name);
/// The length of a tick of a TimeRange's start, which is there.
FilmTime TickOf(const OtioJson& object, const char* range);

/// A value for a message: cut when it is long.
std::string Shown(const OtioJson& value);

} // namespace aveffect
