#include "cli/manual_page.h"

namespace aveffect {

std::filesystem::path ManualPage(const AVBased::EffectInfo& effect, const std::filesystem::path& program) {
    const std::string page = "html/effects/" + std::string(effect.shortName) + ".html";
    for (std::filesystem::path folder = program; folder.has_relative_path(); folder = folder.parent_path())
        for (const char* documents : {"share/doc/aveffect", "share/doc/aveffect-doc"}) {
            std::filesystem::path file = folder / documents / page;
            std::error_code unreadable; // is as good as not there
            if (std::filesystem::is_regular_file(file, unreadable)) return file;
        }
    return {};
}

} // namespace aveffect
