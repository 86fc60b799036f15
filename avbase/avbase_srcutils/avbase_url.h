#pragma once
/// The text by which a host is asked for a media source: protocol, path, and a query that selects a movie,
/// streams and free parameters.
#include <list>
#include <map>
#include <string>

namespace AVBased {

inline constexpr char URLSplitProtocol[] = "://";
inline constexpr char URLSplitPath[] = "?";
inline constexpr char URLSplitParams[] = "&";
inline constexpr char URLEncoderEqual[] = "=";

enum StreamType : int { kStreamNone = 0, kStreamVideo = 1, kStreamAudio = 2, kStreamSubtitle = 3 };

/// One selected stream. In the text the flag is bit 29 of the number.
struct StreamItem {
    int id; ///< -1 when the text had a negative number
    StreamType type;
    bool flag;
};

/// "protocol://path?key=value&key=value", of which only the path must be there. A piece of the query that is
/// not a key and a value, or where one of the two is empty, says nothing. Numbers are read as far as they are
/// decimal, and limited to 32 bits; other texts count as 0.
class CSourceURL {
public:
    /// What the id operations return when there is nothing.
    static constexpr int kNone = -2;

    explicit CSourceURL(const std::string& text);

    /// The text that the fields make; valid until the next call or the object's end.
    const char* GetURL();

    const std::string& GetProtocol() const { return m_strProtocol; }
    void SetProtocol(const std::string& protocol) { m_strProtocol = protocol; }
    const std::string& GetFilePath() const { return m_strFilePath; }
    void SetFilePath(const std::string& path) { m_strFilePath = path; }
    int GetMovieID() const { return m_nMovieID; }
    void SetMovieID(int id) { m_nMovieID = id; }

    /// Appends a stream; one without a type is dropped, with a warning in the log.
    void AddStream(int id, StreamType type, bool flag);
    int GetStreamCount() const { return static_cast<int>(m_Streams.size()); }
    /// The index-th stream's id and type; kNone and type none when there is none.
    int GetStream(int index, StreamType* type);
    /// The index-th stream of that type, of any for type none; null when there is none.
    StreamItem* GetStream(int index, StreamType type);

    /// The first stream of the type; kNone when there is none.
    int GetVideoStreamID() { return FirstID(kStreamVideo); }
    int GetAudioStreamID() { return FirstID(kStreamAudio); }
    int GetSubtitleID() { return FirstID(kStreamSubtitle); }
    /// Sets the id of the first stream of the type, which is appended when there is none.
    StreamItem* SetVideoStreamID(int id) { return SetFirstID(id, kStreamVideo); }
    StreamItem* SetAudioStreamID(int id) { return SetFirstID(id, kStreamAudio); }
    StreamItem* SetSubtitleID(int id) { return SetFirstID(id, kStreamSubtitle); }

    /// An absent key is inserted with an empty value.
    const std::string& GetParam(const std::string& key) { return m_Params[key]; }
    void SetParam(const std::string& key, const std::string& value) { m_Params[key] = value; }
    void ClearParams() { m_Params.clear(); }
    /// The parameter "angle"; kNone when it is absent or empty.
    int GetAngle();
    void SetAngle(int angle);
    /// Whether the parameter "merge" is "1".
    bool GetAudioMergeFlag() { return GetParam("merge") == "1"; }
    void SetAudioMergeFlag(bool merge) { SetParam("merge", merge ? "1" : "0"); }

private:
    void ParseQuery(const std::string& query);
    void ParsePair(const std::string& key, const std::string& value);
    int FirstID(StreamType type);
    StreamItem* SetFirstID(int id, StreamType type);

    std::string m_strProtocol;
    std::string m_strFilePath;
    int m_nMovieID = kNone;
    std::list<StreamItem> m_Streams; // items are handed out by address
    std::map<std::string, std::string> m_Params;
    std::string m_strURL; // what GetURL returned last
};

} // namespace AVBased
