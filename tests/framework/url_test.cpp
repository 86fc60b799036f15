#include <gtest/gtest.h>

#include "avbase/avbase_srcutils/avbase_url.h"

namespace {

using namespace AVBased;

TEST(SourceUrl, BuildsBackWhatItParses) {
    const struct {
        const char *text, *protocol, *path, *built;
    } kTable[] = {
        {"C:/clips/a.mov", "", "C:/clips/a.mov", "C:/clips/a.mov"},
        {"", "", "", ""},
        {"file:///x/a.mp4?vstreamid=0&astreamid=1&angle=2", "file", "/x/a.mp4",
         "file:///x/a.mp4?vstreamid=0&astreamid=1&angle=2"},
        {"a.mp4?movieid=3", "", "a.mp4", "a.mp4?movieid=3&"},
        {"a.mp4?angle=2&movieid=3", "", "a.mp4", "a.mp4?movieid=3&&angle=2"},
        {"a.mp4?movieid=-2", "", "a.mp4", "a.mp4"},
        {"a.mp4?angle=2&vstreamid=4&movieid=1", "", "a.mp4", "a.mp4?movieid=1&vstreamid=4&angle=2"},
        {"a?astreamid=536870913&subtitleid=-7", "", "a", "a?astreamid=536870913&subtitleid=-1"},
        {"a?z=1&b=2&z=3&novalue&two=1=2&empty=&=empty&&", "", "a", "a?b=2&z=3"},
        {"a?astreamid=99999999999&vstreamid=x", "", "a", "a?astreamid=2147483647&vstreamid=0"},
        {"p://q://r?s?t=1", "p", "q://r", "p://q://r?s?t=1"},
        {"://x?", "", "x", "x"},
    };
    for (const auto& row : kTable) {
        CSourceURL url(row.text);
        EXPECT_EQ(url.GetProtocol(), row.protocol) << row.text;
        EXPECT_EQ(url.GetFilePath(), row.path) << row.text;
        EXPECT_STREQ(url.GetURL(), row.built) << row.text;
    }
}

TEST(SourceUrl, FindsAndSetsStreams) {
    CSourceURL url("a?vstreamid=5&astreamid=536870913&astreamid=2");
    StreamType type = kStreamNone;
    EXPECT_EQ(url.GetStream(1, &type), 1);
    EXPECT_EQ(type, kStreamAudio);
    for (const int index : {-1, 3, 4}) { // one past the end is let through, and finds nothing
        type = kStreamVideo;
        EXPECT_EQ(url.GetStream(index, &type), -2);
        EXPECT_EQ(type, kStreamNone);
        EXPECT_EQ(url.GetStream(index, kStreamNone), nullptr);
    }
    EXPECT_TRUE(url.GetStream(0, kStreamAudio)->flag);
    EXPECT_EQ(url.GetStream(1, kStreamAudio)->id, 2);
    EXPECT_EQ(url.GetStream(2, kStreamNone)->id, 2);
    EXPECT_EQ(url.GetStream(1, kStreamVideo), nullptr);
    EXPECT_EQ(url.GetVideoStreamID(), 5);
    EXPECT_EQ(url.GetSubtitleID(), -2);
    EXPECT_EQ(url.SetAudioStreamID(9)->flag, true);
    const StreamItem* subtitle = url.SetSubtitleID(4);
    EXPECT_EQ(subtitle, url.GetStream(3, kStreamNone));
    url.AddStream(7, kStreamNone, true);
    EXPECT_EQ(url.GetStreamCount(), 4);
    EXPECT_STREQ(url.GetURL(), "a?vstreamid=5&astreamid=536870921&astreamid=2&subtitleid=4");
}

TEST(SourceUrl, KeepsParameters) {
    CSourceURL url("a?merge=2");
    EXPECT_FALSE(url.GetAudioMergeFlag());
    EXPECT_EQ(url.GetAngle(), -2);
    EXPECT_STREQ(url.GetURL(), "a?merge=2"); // the empty angle is there, and left out
    url.SetAngle(-3);
    url.SetAudioMergeFlag(true);
    EXPECT_EQ(url.GetAngle(), -3);
    EXPECT_TRUE(url.GetAudioMergeFlag());
    url.SetProtocol("http");
    url.SetMovieID(0);
    EXPECT_STREQ(url.GetURL(), "http://a?movieid=0&&angle=-3&merge=1");
    url.ClearParams();
    EXPECT_STREQ(url.GetURL(), "http://a?movieid=0&");
}

TEST(SourceUrlDeathTest, HasNoTextForAnUnknownStream) {
    CSourceURL url("a");
    url.AddStream(1, static_cast<StreamType>(9), false);
    EXPECT_DEATH(url.GetURL(), "GetURL.*false");
}

} // namespace
