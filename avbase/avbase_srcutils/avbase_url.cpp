#include "avbase/avbase_srcutils/avbase_url.h"

#include <algorithm>
#include <cassert>
#include <climits>
#include <cstdlib>
#include <cstring>

#include "BaseTools/sysutils.h"

namespace AVBased {

namespace {

constexpr int kFlagBit = 1 << 29;

constexpr struct {
    const char* key;
    StreamType type;
} kStreamKeys[] = {{"vstreamid", kStreamVideo}, {"astreamid", kStreamAudio}, {"subtitleid", kStreamSubtitle}};

constexpr char kMovieKey[] = "movieid";
constexpr char kAngleKey[] = "angle";

// Null for other types.
const char* KeyOf(StreamType type) {
    for (const auto& stream : kStreamKeys)
        if (type == stream.type) return stream.key;
    return nullptr;
}

int ToNumber(const std::string& text) {
    return static_cast<int>(std::clamp<long>(std::strtol(text.c_str(), nullptr, 10), INT_MIN, INT_MAX));
}

std::string Pair(const std::string& key, const std::string& value) { return key + URLEncoderEqual + value; }

// Both admit an index one past the end; there is no item then.
bool IsIndex(int index, int count) { return index >= 0 && index <= count; }

} // namespace

CSourceURL::CSourceURL(const std::string& text) {
    const size_t protocolEnd = text.find(URLSplitProtocol);
    size_t path = 0;
    if (protocolEnd != std::string::npos) {
        m_strProtocol = text.substr(0, protocolEnd);
        path = protocolEnd + std::strlen(URLSplitProtocol);
    }
    const size_t pathEnd = text.find(URLSplitPath, path);
    if (pathEnd == std::string::npos) {
        m_strFilePath = text.substr(path);
        return;
    }
    m_strFilePath = text.substr(path, pathEnd - path);
    ParseQuery(text.substr(pathEnd + std::strlen(URLSplitPath)));
}

void CSourceURL::ParseQuery(const std::string& query) {
    for (size_t begin = 0; begin <= query.size();) {
        const size_t end = std::min(query.find(URLSplitParams, begin), query.size());
        const std::string piece = query.substr(begin, end - begin);
        const size_t equal = piece.find(URLEncoderEqual);
        begin = end + 1;
        if (equal == std::string::npos || piece.find(URLEncoderEqual, equal + 1) != std::string::npos)
            continue;
        if (equal > 0 && equal + 1 < piece.size()) ParsePair(piece.substr(0, equal), piece.substr(equal + 1));
    }
}

void CSourceURL::ParsePair(const std::string& key, const std::string& value) {
    if (key == kMovieKey) {
        m_nMovieID = ToNumber(value);
        return;
    }
    for (const auto& stream : kStreamKeys)
        if (key == stream.key) {
            const int number = ToNumber(value);
            if (number < 0)
                AddStream(-1, stream.type, false);
            else
                AddStream(number & ~kFlagBit, stream.type, (number & kFlagBit) != 0);
            return;
        }
    SetParam(key, value);
}

// The movie's "&" stands even when nothing or a parameter's own "&" follows: hosts have stored such texts.
const char* CSourceURL::GetURL() {
    std::string query;
    if (m_nMovieID != kNone) query = Pair(kMovieKey, std::to_string(m_nMovieID)) + URLSplitParams;
    for (auto item = m_Streams.begin(); item != m_Streams.end(); ++item) {
        const char* key = KeyOf(item->type);
        if (!key) assert(false);
        if (item != m_Streams.begin()) query += URLSplitParams;
        query += Pair(key, std::to_string(item->flag ? item->id | kFlagBit : item->id));
    }
    for (const auto& [key, value] : m_Params) {
        if (key.empty() || value.empty()) continue;
        if (!query.empty()) query += URLSplitParams;
        query += Pair(key, value);
    }
    m_strURL = m_strProtocol.empty() ? m_strFilePath : m_strProtocol + URLSplitProtocol + m_strFilePath;
    if (!query.empty()) m_strURL += URLSplitPath + query;
    return m_strURL.c_str();
}

void CSourceURL::AddStream(int id, StreamType type, bool flag) {
    if (type == kStreamNone) {
        BaseTool::log_common_msg(2, __FILE__, __LINE__, "discard error stream id =%d", id);
        return;
    }
    m_Streams.push_back({id, type, flag});
}

int CSourceURL::GetStream(int index, StreamType* type) {
    const StreamItem* item = GetStream(index, kStreamNone);
    *type = item ? item->type : kStreamNone;
    return item ? item->id : kNone;
}

StreamItem* CSourceURL::GetStream(int index, StreamType type) {
    if (!IsIndex(index, GetStreamCount())) return nullptr;
    for (StreamItem& item : m_Streams)
        if ((type == kStreamNone || item.type == type) && index-- == 0) return &item;
    return nullptr;
}

int CSourceURL::FirstID(StreamType type) {
    const StreamItem* item = GetStream(0, type);
    return item ? item->id : kNone;
}

StreamItem* CSourceURL::SetFirstID(int id, StreamType type) {
    if (StreamItem* item = GetStream(0, type)) {
        item->id = id;
        return item;
    }
    AddStream(id, type, false);
    return &m_Streams.back();
}

int CSourceURL::GetAngle() {
    const std::string& angle = GetParam(kAngleKey);
    return angle.empty() ? kNone : ToNumber(angle);
}

void CSourceURL::SetAngle(int angle) { SetParam(kAngleKey, std::to_string(angle)); }

} // namespace AVBased
