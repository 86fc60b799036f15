#include "farm/farm_plan.h"

#include <nlohmann/json.hpp>

#include "host/support/error.h"

namespace aveffect {

namespace {

using Json = nlohmann::ordered_json;

constexpr int kLayout = 2; ///< of the file

void Put(Json& object, const char* name, const std::optional<int64_t>& number) {
    if (number) object[name] = *number;
}

std::optional<int64_t> Number(const Json& object, const char* name) {
    return object.contains(name) ? std::optional(object[name].get<int64_t>()) : std::nullopt;
}

Json Pair(AVRational ratio) { return {ratio.num, ratio.den}; }

AVRational Ratio(const Json& pair) {
    const AVRational ratio{pair.at(0).get<int>(), pair.at(1).get<int>()};
    if (ratio.num <= 0 || ratio.den <= 0) throw std::range_error("a rate is not above 0");
    return ratio;
}

Json ChunkJson(const PlannedChunk& chunk) {
    Json json = {{"begin", chunk.begin}, {"end", chunk.end}};
    Put(json, "from_ms", chunk.fromMs);
    Put(json, "to_ms", chunk.toMs);
    Put(json, "start_ticks", chunk.startTicks);
    return json;
}

PlannedChunk ChunkOf(const Json& json) {
    PlannedChunk chunk{json.at("begin").get<int64_t>(), json.at("end").get<int64_t>(),
                       Number(json, "from_ms"), Number(json, "to_ms"), Number(json, "start_ticks")};
    if (chunk.begin < 0 || chunk.end <= chunk.begin) throw std::range_error("a chunk has no pictures");
    return chunk;
}

FarmPlan PlanOf(const Json& json) {
    if (json.at("layout").get<int>() != kLayout) throw std::range_error("it is laid out by another version");
    FarmPlan plan;
    plan.version = json.at("version").get<std::string>();
    plan.words = json.at("command").get<std::vector<std::string>>();
    plan.output = json.at("output").get<std::string>();
    plan.kind = json.at("kind").get<std::string>();
    plan.numbered = json.at("numbered").get<bool>();
    plan.seed = json.at("seed").get<unsigned>();
    plan.rate = Ratio(json.at("rate"));
    plan.ticks = Ratio(json.at("ticks"));
    plan.firstTicks = json.at("first_ticks").get<int64_t>();
    plan.wholeStart = json.at("whole_start").get<int64_t>();
    plan.wholeToMs = Number(json, "whole_to_ms");
    plan.wholeLengthMs = Number(json, "whole_length_ms");
    for (const Json& medium : json.at("media"))
        plan.media.push_back({medium.at("name").get<std::string>(), medium.at("bytes").get<int64_t>()});
    for (const Json& clip : json.at("clip_ends"))
        plan.clipEnds.push_back(
            {{clip.at("ticks").get<int64_t>(), Ratio(clip.at("base"))}, clip.at("still").get<bool>()});
    plan.probe = json.at("probe").get<std::string>();
    for (const Json& chunk : json.at("chunks")) plan.chunks.push_back(ChunkOf(chunk));
    if (plan.chunks.empty()) throw std::range_error("it has no chunks");
    return plan;
}

} // namespace

std::string PlanText(const FarmPlan& plan) {
    Json json = {{"layout", kLayout},
                 {"version", plan.version},
                 {"command", plan.words},
                 {"output", plan.output},
                 {"kind", plan.kind},
                 {"numbered", plan.numbered},
                 {"seed", plan.seed},
                 {"rate", Pair(plan.rate)},
                 {"ticks", Pair(plan.ticks)},
                 {"first_ticks", plan.firstTicks},
                 {"whole_start", plan.wholeStart}};
    Put(json, "whole_to_ms", plan.wholeToMs);
    Put(json, "whole_length_ms", plan.wholeLengthMs);
    json["media"] = Json::array();
    for (const PlannedMedium& medium : plan.media)
        json["media"].push_back({{"name", medium.name}, {"bytes", medium.bytes}});
    json["clip_ends"] = Json::array();
    for (const ClipEnd& clip : plan.clipEnds)
        json["clip_ends"].push_back(
            {{"ticks", clip.end.ticks}, {"base", Pair(clip.end.base)}, {"still", clip.still}});
    json["probe"] = plan.probe;
    // Every chunk has a line of its own, for people and their tools.
    std::string text = json.dump(1);
    text.resize(text.size() - 2);
    text += ",\n \"chunks\": [";
    for (size_t index = 0; index < plan.chunks.size(); ++index)
        text += (index ? ",\n  " : "\n  ") + ChunkJson(plan.chunks[index]).dump();
    return text + "\n ]\n}\n";
}

FarmPlan ParsePlan(const std::string& text, const std::string& path) {
    try {
        return PlanOf(Json::parse(text));
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& wrong) {
        throw Error(ErrorKind::Input, path + " is no plan: " + wrong.what());
    }
}

} // namespace aveffect
