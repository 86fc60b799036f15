#include "timeline/jobs/text_file.h"

#include <algorithm>

#include "host/output/output_file.h"

namespace aveffect {

void WriteTextFile(const std::string& path, const std::string& text, bool overwrite,
                   const std::atomic<bool>& cancel) {
    constexpr size_t kPiece = size_t{1} << 20;
    OutputFile file(path, overwrite, cancel);
    for (size_t done = 0; done < text.size(); done += kPiece)
        avio_write(file.Io(), reinterpret_cast<const unsigned char*>(text.data()) + done,
                   static_cast<int>(std::min(kPiece, text.size() - done)));
    file.Require(0, "writing");
    file.Publish();
}

} // namespace aveffect
