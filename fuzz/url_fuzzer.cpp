// The text of a media source, read and built again, and then changed by any operations.
#include <cstdlib>

#include "avbase/avbase_srcutils/avbase_url.h"
#include "tests/support/input_bytes.h"

namespace {

using namespace AVBased;

// What was built reads as what it was built from, unless what followed an empty protocol holds another one.
void ReadAgain(CSourceURL& url) {
    const std::string text = url.GetURL();
    CSourceURL again(text);
    if (url.GetProtocol().empty() && text.find(URLSplitProtocol) != std::string::npos) return;
    if (again.GetURL() != text || again.GetProtocol() != url.GetProtocol() ||
        again.GetMovieID() != url.GetMovieID() || again.GetStreamCount() != url.GetStreamCount() ||
        again.GetAngle() != url.GetAngle() || again.GetAudioMergeFlag() != url.GetAudioMergeFlag())
        std::abort();
    for (int i = 0; i < url.GetStreamCount(); ++i) {
        const StreamItem *was = url.GetStream(i, kStreamNone), *is = again.GetStream(i, kStreamNone);
        if (is->id != was->id || is->type != was->type || is->flag != was->flag) std::abort();
    }
}

StreamType TakeType(test::InputBytes& input) {
    return static_cast<StreamType>(input.TakeWithin(kStreamVideo, kStreamSubtitle));
}

void Change(CSourceURL& url, test::InputBytes& input) {
    switch (input.Take<uint8_t>() % 10) {
    case 0:
        return url.SetProtocol(input.TakeLine());
    case 1:
        return url.SetFilePath(input.TakeLine());
    case 2:
        return url.SetMovieID(input.Take<int>());
    case 3: {
        const StreamType type = TakeType(input);
        return url.AddStream(input.Take<int>(), type, input.Take<uint8_t>() % 2);
    }
    case 4: {
        const struct {
            StreamItem* (CSourceURL::*set)(int);
            int (CSourceURL::*get)();
        } kinds[] = {{&CSourceURL::SetVideoStreamID, &CSourceURL::GetVideoStreamID},
                     {&CSourceURL::SetAudioStreamID, &CSourceURL::GetAudioStreamID},
                     {&CSourceURL::SetSubtitleID, &CSourceURL::GetSubtitleID}};
        const auto& kind = kinds[input.TakeWithin(0, 2)];
        const int id = input.Take<int>();
        if ((url.*kind.set)(id)->id != id || (url.*kind.get)() != id) std::abort();
        return;
    }
    case 5: {
        const std::string key = input.TakeLine(), value = input.TakeLine();
        url.SetParam(key, value);
        if (url.GetParam(key) != value) std::abort();
        return;
    }
    case 6:
        return url.ClearParams();
    case 7: {
        const int angle = input.Take<int>();
        url.SetAngle(angle);
        if (url.GetAngle() != angle) std::abort();
        return;
    }
    case 8:
        return url.SetAudioMergeFlag(input.Take<uint8_t>() % 2);
    default: {
        const int index = input.Take<int>();
        StreamType type = kStreamNone;
        const int id = url.GetStream(index, &type);
        const bool exists = index >= 0 && index < url.GetStreamCount();
        if (exists != (type != kStreamNone) || (!exists && id != CSourceURL::kNone)) std::abort();
    }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    test::InputBytes input(data, size);
    const std::string text = input.TakeLine();
    CSourceURL url(text);
    // The built text ends at its first byte 0.
    if (text.find('\0') == std::string::npos) ReadAgain(url);
    while (!input.Empty()) {
        Change(url, input);
        CSourceURL(url.GetURL()).GetURL();
    }
    return 0;
}
