#pragma once
/// Interchange files as JSON documents, in which everything is kept.
#include <string>

#include <nlohmann/json.hpp>

namespace aveffect {

/// Members keep their order.
using OtioJson = nlohmann::ordered_json;

/// Throws Error (Usage): what a film says is wrong.
[[noreturn]] void Refuse(const std::string& message);

/// Throws Error (Usage) that tells the line and what is wrong: no JSON, members that stand twice, numbers
/// that are none, nesting deeper than 256 objects, more than 256 MB, more than 4,000 members of an object.
OtioJson ParseDocument(const std::string& bytes);

/// The text of a file, as others write them: four blanks a level.
std::string DocumentText(const OtioJson& document);

/// The bytes of a file. Throws Error (Input) when it can't be read, and Error (Usage) when it is too large.
std::string DocumentBytes(const std::string& path);

} // namespace aveffect
