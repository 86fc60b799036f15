// Renders a clip through a chain of effects with the host library: host_library IN OUT EFFECT...
//
//   host_library in.mp4 out.mkv gray "spherize/bulge:spherize_scale=0%=0;100%=2"
#include <atomic>
#include <cstdio>
#include <exception>

#include "host/jobs/render.h"

int main(int count, char** arguments) {
    using namespace aveffect;
    if (count < 4) return std::fprintf(stderr, "host_library IN OUT EFFECT...\n"), 2;
    try {
        const Plugin plugin(PLUGIN_DIR);

        RenderOptions options;
        options.input = arguments[1];
        options.output = arguments[2];
        for (int i = 3; i < count; ++i)
            options.effects.push_back(ParseEffect(arguments[i], /*lenient*/ false));

        RenderObserver observer;
        observer.progress = [](const RenderProgress& state) {
            std::fprintf(stderr, "\r%lld pictures", static_cast<long long>(state.framesDone));
        };
        observer.warning = [](const std::string& text) { std::fprintf(stderr, "%s\n", text.c_str()); };

        // Set from another thread, it ends the render; the output's name then stays free.
        const std::atomic<bool> cancel = false;
        const RenderResult result = Render(plugin, options, observer, cancel);
        std::fprintf(stderr, "\n");
        if (result.inputDamage) std::fprintf(stderr, "%s\n", result.inputDamage->c_str());
        std::printf("%lld\n", static_cast<long long>(result.frames));
    } catch (const std::exception& error) {
        // One sentence that names what is wrong and what would be right.
        return std::fprintf(stderr, "%s\n", error.what()), 1;
    }
}
