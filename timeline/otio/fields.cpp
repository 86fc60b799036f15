#include "timeline/otio/fields.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <stdexcept>

#include "host/support/error.h"

namespace aveffect {

namespace {

[[noreturn]] void RefuseMember(const std::string& name, const OtioJson& value, const char* right) {
    throw Error(ErrorKind::Usage, name + " is " + Shown(value) + ", but should be " + right);
}

FilmTime ReadTime(const OtioJson& time, const std::string& name) {
    if (!time.is_object()) RefuseMember(name, time, "a RationalTime object");
    const OtioJson* const value = Member(time, "value");
    const OtioJson* const rate = Member(time, "rate");
    if (!value || !value->is_number()) RefuseMember(name + ".value", value ? *value : OtioJson(), "a number");
    if (!rate || !rate->is_number() || rate->get<double>() <= 0)
        RefuseMember(name + ".rate", rate ? *rate : OtioJson(), "a number above 0, such as 24");
    try {
        return FilmTime::FromValue(value->get<double>(), rate->get<double>());
    } catch (const std::range_error&) {
        RefuseMember(name, time, "a time within a million years");
    }
}

} // namespace

std::string Shown(const OtioJson& value) {
    constexpr size_t kMost = 60;
    if (value.is_null()) return "missing";
    if (value.is_object() && value.contains("value") && value.contains("rate"))
        return Shown(value["value"]) + " at a rate of " + Shown(value["rate"]);
    if (value.is_object() && value.size() > 4) return "an object";
    if (value.is_array() && value.size() > 4) return "a list";
    // What is not UTF-8 can't come from a document.
    const std::string text = value.dump(-1, ' ', false, OtioJson::error_handler_t::replace);
    return text.size() > kMost ? text.substr(0, kMost) + "..." : text;
}

OtioSchema SchemaOf(const OtioJson& object) {
    if (!object.is_object()) return {};
    const OtioJson* const member = Member(object, "OTIO_SCHEMA");
    if (!member || !member->is_string()) return {};
    const auto& text = member->get_ref<const std::string&>();
    const size_t point = text.rfind('.');
    OtioSchema schema{text.substr(0, point), 1};
    if (point != std::string::npos)
        std::from_chars(text.data() + point + 1, text.data() + text.size(), schema.version);
    return schema;
}

bool IsA(const OtioJson& value, std::string_view schema) { return SchemaOf(value).name == schema; }

const OtioJson* Member(const OtioJson& object, const char* name) {
    if (!object.is_object()) return nullptr;
    const auto member = object.find(name);
    return member == object.end() || member->is_null() ? nullptr : &*member;
}

std::string TextOf(const OtioJson& object, const char* name, const std::string& otherwise) {
    const OtioJson* const value = Member(object, name);
    if (!value) return otherwise;
    if (!value->is_string()) RefuseMember(name, *value, "a text");
    return value->get<std::string>();
}

bool SwitchOf(const OtioJson& object, const char* name, bool otherwise) {
    const OtioJson* const value = Member(object, name);
    if (!value) return otherwise;
    if (!value->is_boolean()) RefuseMember(name, *value, "true or false");
    return value->get<bool>();
}

double NumberOf(const OtioJson& object, const char* name, double otherwise) {
    const OtioJson* const value = Member(object, name);
    if (!value) return otherwise;
    if (!value->is_number() || !std::isfinite(value->get<double>())) RefuseMember(name, *value, "a number");
    return value->get<double>();
}

int WholeOf(const OtioJson& object, const char* name, int otherwise) {
    const double number = NumberOf(object, name, otherwise);
    if (number != std::round(number) || std::abs(number) > std::numeric_limits<int>::max())
        RefuseMember(name, object[name], "a whole number");
    return static_cast<int>(number);
}

const OtioJson& ListOf(const OtioJson& object, const char* name) {
    static const OtioJson kNone = OtioJson::array();
    const OtioJson* const value = Member(object, name);
    if (!value) return kNone;
    if (!value->is_array()) RefuseMember(name, *value, "a list");
    return *value;
}

const OtioJson& ObjectOf(const OtioJson& object, const char* name) {
    static const OtioJson kNone = OtioJson::object();
    const OtioJson* const value = Member(object, name);
    if (!value) return kNone;
    if (!value->is_object()) RefuseMember(name, *value, "an object");
    return *value;
}

std::optional<FilmTime> TimeOf(const OtioJson& object, const char* name) {
    const OtioJson* const time = Member(object, name);
    if (!time) return {};
    return ReadTime(*time, name);
}

std::optional<FilmRange> RangeOf(const OtioJson& object, const char* name) {
    const OtioJson* const range = Member(object, name);
    if (!range) return {};
    if (!range->is_object()) RefuseMember(name, *range, "a TimeRange object");
    const std::string text = name;
    const OtioJson missing;
    const OtioJson* const start = Member(*range, "start_time");
    const OtioJson* const lasts = Member(*range, "duration");
    const OtioJson& duration = lasts ? *lasts : missing;
    const FilmRange read{start ? ReadTime(*start, text + ".start_time") : FilmTime(),
                         ReadTime(duration, text + ".duration")};
    if (read.duration < FilmTime()) RefuseMember(text + ".duration", duration, "0 or longer");
    return read;
}

FilmTime TickOf(const OtioJson& object, const char* range) {
    const OtioJson* const start = Member(object.at(range), "start_time");
    const OtioJson* const time = start ? start : Member(object.at(range), "duration");
    return FilmTime::FromValue(1, NumberOf(*time, "rate", 1));
}

} // namespace aveffect
