#pragma once
/// What else may be opened when an input is: nothing, but what the user asks for by name.
#include <string>

#include "host/media/source_request.h"

namespace aveffect {

/// Options of the container library: protocols that it may use, formats that it may find in the file. Those
/// that name other files are not among them unless the request says the format; hosts are reached only where
/// the URL is of a protocol of theirs, and files of this machine never from there.
void SetAccess(const SourceRequest& request, AVDictionary** options);

/// The format that is asked for; null when none is. Throws Error (Input) when there is no such.
const AVInputFormat* FormatAskedFor(const SourceRequest& request);

/// For an input that was refused with this code and this line: throws Error (Input) when it was because of
/// the above, and says what would be right.
void SayRefusedFormat(const SourceRequest& request, int code, const std::string& line);

} // namespace aveffect
