#include "cli/player.h"

#include <algorithm>
#include <chrono>
#include <cinttypes>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <filesystem>
#include <memory>

#include <SDL.h>
#include <dlfcn.h>

#include "host/jobs/playback.h"
#include "host/support/reporter.h"

namespace aveffect {

namespace {

using mediabridge::AVFramePtr;

constexpr int64_t kStepMs = 5'000, kLeapMs = 60'000;
constexpr int kBytesASample = 4; ///< of sound: two channels of 16 bits

struct SdlFree {
    void operator()(SDL_Window* window) const noexcept { SDL_DestroyWindow(window); }
    void operator()(SDL_Renderer* renderer) const noexcept { SDL_DestroyRenderer(renderer); }
    void operator()(SDL_Texture* texture) const noexcept { SDL_DestroyTexture(texture); }
};
template <typename T>
using SdlPtr = std::unique_ptr<T, SdlFree>;

[[noreturn]] void Fail(const std::string& what) {
    throw Error(ErrorKind::Output, what + ": " + SDL_GetError());
}

/// Tells a library, where it is installed, whom to call instead of writing to standard error.
template <typename Handler>
void SetHandler(const char* library, const char* setter, Handler* handler) {
    void* const opened = dlopen(library, RTLD_LAZY); // and stays: the handler is in use
    void* const set = opened ? dlsym(opened, setter) : nullptr;
    if (set) reinterpret_cast<void (*)(Handler*)>(set)(handler);
}

void IgnoreSound(const char* /*file*/, int /*line*/, const char* /*function*/, int /*error*/,
                 const char* /*text*/, ...) {}
void IgnoreDisplay(const char* /*text*/, va_list /*values*/) {}
void IgnoreLog(void* /*self*/, int /*category*/, SDL_LogPriority /*priority*/, const char* /*text*/) {}

/// Drivers' own words on displays and devices that are tried in vain would stand between the program's.
void SilenceDrivers() {
    SDL_LogSetOutputFunction(IgnoreLog, nullptr);
    SetHandler("libasound.so.2", "snd_lib_error_set_handler", IgnoreSound);
    SetHandler("libwayland-client.so.0", "wl_log_set_handler_client", IgnoreDisplay);
}

/// The library, set up while this lives.
class Sdl {
public:
    Sdl() {
        SilenceDrivers();
        SDL_SetHint(SDL_HINT_NO_SIGNAL_HANDLERS, "1");
        SDL_SetHint(SDL_HINT_RENDER_SCALE_QUALITY, "linear");
        if (SDL_Init(SDL_INIT_EVENTS) != 0) Fail("nothing can be played");
        // Where there is no display the library would draw to memory, unless it was told to.
        if (SDL_InitSubSystem(SDL_INIT_VIDEO) != 0) return;
        const std::string driver = SDL_GetCurrentVideoDriver();
        m_hasDisplay = (driver != "offscreen" && driver != "dummy" && driver != "evdev") ||
                       SDL_getenv("SDL_VIDEODRIVER");
    }
    ~Sdl() { SDL_Quit(); }
    Sdl(const Sdl&) = delete;
    Sdl& operator=(const Sdl&) = delete;

    bool HasDisplay() const noexcept { return m_hasDisplay; }

private:
    bool m_hasDisplay = false;
};

/// Shows pictures, the shape of their pixels respected, or a bar for sound alone.
class Screen {
public:
    void Show(const AVFrame& picture, double pixelAspect) {
        m_aspect = pixelAspect;
        if (!m_window) Open(picture.width * pixelAspect, picture.height);
        if (picture.width != m_width || picture.height != m_height) MakeTexture(picture);
        SDL_UpdateTexture(m_texture.get(), nullptr, picture.data[0], picture.linesize[0]);
        Draw();
    }

    /// How far sound is, from 0 to 1.
    void ShowShare(double share) {
        constexpr int kWidth = 480, kHeight = 32;
        if (!m_window) Open(kWidth, kHeight);
        m_share = share;
        Draw();
    }

    /// Draws once more what was shown last.
    void Draw() {
        if (!m_renderer) return;
        SDL_SetRenderDrawColor(m_renderer.get(), 0, 0, 0, SDL_ALPHA_OPAQUE);
        SDL_RenderClear(m_renderer.get());
        int width = 0, height = 0;
        SDL_GetRendererOutputSize(m_renderer.get(), &width, &height);
        if (m_texture)
            DrawPicture(width, height);
        else
            DrawBar(width, height);
        SDL_RenderPresent(m_renderer.get());
    }

    void SetTitle(const std::string& title) {
        if (m_window) SDL_SetWindowTitle(m_window.get(), title.c_str());
    }

    void ToggleFullscreen() {
        const bool full = SDL_GetWindowFlags(m_window.get()) & SDL_WINDOW_FULLSCREEN_DESKTOP;
        SDL_SetWindowFullscreen(m_window.get(), full ? 0 : SDL_WINDOW_FULLSCREEN_DESKTOP);
    }

private:
    void DrawPicture(int width, int height) {
        const double scale = std::min(width / (m_width * m_aspect), double(height) / m_height);
        const int shownWidth = static_cast<int>(std::lround(m_width * m_aspect * scale));
        const int shownHeight = static_cast<int>(std::lround(m_height * scale));
        const SDL_Rect place = {(width - shownWidth) / 2, (height - shownHeight) / 2, shownWidth,
                                shownHeight};
        SDL_RenderCopy(m_renderer.get(), m_texture.get(), nullptr, &place);
    }

    void DrawBar(int width, int height) {
        constexpr Uint8 kGrey = 160;
        SDL_SetRenderDrawColor(m_renderer.get(), kGrey, kGrey, kGrey, SDL_ALPHA_OPAQUE);
        const SDL_Rect bar = {0, 0, static_cast<int>(std::lround(width * m_share)), height};
        SDL_RenderFillRect(m_renderer.get(), &bar);
    }

    // That large, in square pixels, or as the desktop lets it be.
    void Open(double width, double height) {
        constexpr double kShareOfDesktop = 0.9;
        SDL_Rect desktop = {0, 0, static_cast<int>(width), static_cast<int>(height)};
        SDL_GetDisplayUsableBounds(0, &desktop);
        const double scale =
            std::min({1.0, kShareOfDesktop * desktop.w / width, kShareOfDesktop * desktop.h / height});
        m_window.reset(SDL_CreateWindow("aveffect", SDL_WINDOWPOS_CENTERED, SDL_WINDOWPOS_CENTERED,
                                        std::max(1, static_cast<int>(width * scale)),
                                        std::max(1, static_cast<int>(height * scale)), SDL_WINDOW_RESIZABLE));
        if (!m_window) Fail("no window can be opened");
        m_renderer.reset(SDL_CreateRenderer(m_window.get(), -1, 0));
        if (!m_renderer) Fail("nothing can be drawn in a window");
    }

    void MakeTexture(const AVFrame& picture) {
        m_width = picture.width;
        m_height = picture.height;
        m_texture.reset(SDL_CreateTexture(m_renderer.get(), SDL_PIXELFORMAT_ARGB8888,
                                          SDL_TEXTUREACCESS_STREAMING, m_width, m_height));
        if (!m_texture) Fail("pictures of this size can't be shown");
        SDL_SetTextureBlendMode(m_texture.get(),
                                SDL_BLENDMODE_BLEND); // over black, as opaque outputs have it
    }

    SdlPtr<SDL_Window> m_window;
    SdlPtr<SDL_Renderer> m_renderer;
    SdlPtr<SDL_Texture> m_texture;
    int m_width = 0, m_height = 0;
    double m_aspect = 1;
    double m_share = 0;
};

/// Feeds sound to the device a little ahead, and tells how far it is heard.
class Speaker {
public:
    Speaker() {
        SDL_AudioSpec wanted = {};
        wanted.freq = Playback::kSoundRate;
        wanted.format = AUDIO_S16SYS;
        wanted.channels = 2;
        wanted.samples = 1024;
        if (SDL_InitSubSystem(SDL_INIT_AUDIO) == 0)
            m_device = SDL_OpenAudioDevice(nullptr, 0, &wanted, nullptr, 0);
        if (m_device == 0) m_why = SDL_GetError();
    }
    ~Speaker() {
        if (m_device != 0) SDL_CloseAudioDevice(m_device);
    }
    Speaker(const Speaker&) = delete;
    Speaker& operator=(const Speaker&) = delete;

    bool Works() const noexcept { return m_device != 0; }
    /// Why it doesn't.
    const std::string& Why() const noexcept { return m_why; }
    void Pause(bool paused) { SDL_PauseAudioDevice(m_device, paused ? 1 : 0); }
    void Clear() { SDL_ClearQueuedAudio(m_device); }
    /// Milliseconds that are queued.
    int64_t Queued() const {
        return int64_t{SDL_GetQueuedAudioSize(m_device)} * 1000 / kBytesASample / Playback::kSoundRate;
    }
    void Feed(const AVFrame& sound) {
        SDL_QueueAudio(m_device, sound.data[0], static_cast<Uint32>(sound.nb_samples * kBytesASample));
    }

private:
    SDL_AudioDeviceID m_device = 0;
    std::string m_why;
};

std::string ClockText(int64_t milliseconds) {
    char text[32];
    const int64_t seconds = milliseconds / 1000;
    std::snprintf(text, sizeof text, "%" PRId64 ":%02" PRId64, seconds / 60, seconds % 60);
    return text;
}

/// What is played, and where it stands. Times are milliseconds of what is played.
class Player {
public:
    Player(const Sdl& sdl, const Plugin& plugin, const RenderOptions& options, Reporter& reporter,
           const std::atomic<bool>& cancel)
        : m_hasDisplay(sdl.HasDisplay())
        , m_plugin(plugin)
        , m_options(options)
        , m_reporter(reporter)
        , m_cancel(cancel)
        , m_name(std::filesystem::path(options.input).filename().string()) {
        GoTo(0);
    }

    void Run() {
        while (!m_quits && !IsOver()) {
            if (m_cancel) throw Error(ErrorKind::Interrupted, "interrupted");
            HandleEvents();
            FeedSound();
            if (m_playback->HasPictures())
                Advance();
            else
                ShowSound();
        }
    }

private:
    using Clock = std::chrono::steady_clock;

    bool IsOver() const {
        if (!m_playback->HasPictures()) return !m_sounds && !m_paused && m_speaker->Queued() == 0;
        return m_playback->Ended() && !m_next && !m_playback->IsStill() && !m_paused && Now() >= m_shownUntil;
    }

    // Playing begins with the first picture, however long that takes to make.
    void GoTo(int64_t time) {
        time = std::max<int64_t>(0, time);
        if (m_playback && m_playback->LengthMs())
            time = std::min(time, std::max<int64_t>(0, *m_playback->LengthMs() - 1));
        m_playback.reset();
        m_playback = std::make_unique<Playback>(m_plugin, m_options, time, m_reporter, m_cancel);
        if (m_playback->HasPictures() && !m_hasDisplay)
            throw Error(ErrorKind::Output, "there is no display to play on; `aveffect render` writes a file");
        if (m_playback->HasSound() && !m_speaker) OpenSpeaker();
        m_sounds = m_playback->HasSound() && m_speaker->Works();
        if (m_sounds) {
            m_speaker->Pause(true);
            m_speaker->Clear();
        }
        m_next.reset();
        m_begins = true;
        m_fedSamples = 0;
        m_shownUntil = m_anchor = time;
        if (!m_playback->HasPictures()) Begin();
    }

    // Without a device a clip plays silently.
    void OpenSpeaker() {
        m_speaker = std::make_unique<Speaker>();
        if (m_speaker->Works()) return;
        if (!m_playback->HasPictures())
            throw Error(ErrorKind::Output, "there is nothing to play sound on: " + m_speaker->Why());
        m_reporter.Warn("there is no sound: " + m_speaker->Why());
    }

    // The sound's, as far as there is any: people hear a gap sooner than they see one.
    int64_t Now() const {
        if (m_begins) return m_anchor;
        if (m_sounds) return m_anchor + m_fedSamples * 1000 / Playback::kSoundRate - m_speaker->Queued();
        const auto passed = (m_paused ? m_pausedAt : Clock::now()) - m_anchoredAt;
        return m_anchor + std::chrono::duration_cast<std::chrono::milliseconds>(passed).count();
    }

    void Begin() {
        m_begins = false;
        m_anchoredAt = m_pausedAt = Clock::now();
        if (m_sounds) m_speaker->Pause(m_paused);
    }

    void Pause(bool paused) {
        if (paused == m_paused) return;
        if (paused)
            m_pausedAt = Clock::now();
        else
            m_anchoredAt += Clock::now() - m_pausedAt;
        m_paused = paused;
        if (m_sounds) m_speaker->Pause(paused || m_begins);
    }

    void HandleEvents() {
        SDL_Event event;
        while (SDL_PollEvent(&event)) {
            if (event.type == SDL_QUIT) m_quits = true;
            if (event.type == SDL_WINDOWEVENT) m_screen.Draw();
            if (event.type == SDL_KEYDOWN) HandleKey(event.key.keysym.sym);
        }
    }

    void HandleKey(SDL_Keycode key) {
        switch (key) {
        case SDLK_q:
        case SDLK_ESCAPE:
            m_quits = true;
            break;
        case SDLK_SPACE:
            Pause(!m_paused);
            break;
        case SDLK_LEFT:
            GoTo(Now() - kStepMs);
            break;
        case SDLK_RIGHT:
            GoTo(Now() + kStepMs);
            break;
        case SDLK_DOWN:
            GoTo(Now() - kLeapMs);
            break;
        case SDLK_UP:
            GoTo(Now() + kLeapMs);
            break;
        case SDLK_HOME:
            GoTo(0);
            break;
        case SDLK_PERIOD:
            Pause(true);
            m_steps = true;
            break;
        case SDLK_f:
            m_screen.ToggleFullscreen();
            break;
        default:
            break;
        }
    }

    void FeedSound() {
        constexpr int64_t kAheadMs = 200, kPieceMs = 50;
        while (m_sounds && m_speaker->Queued() < kAheadMs) {
            const int64_t fed = m_anchor + m_fedSamples * 1000 / Playback::kSoundRate;
            const AVFramePtr sound = m_playback->NextSound(fed + kPieceMs);
            if (!sound) return EndSound();
            m_speaker->Feed(*sound);
            m_fedSamples += sound->nb_samples;
        }
    }

    // What is queued is still heard; the time goes on from here by itself.
    void EndSound() {
        m_anchor = Now();
        m_anchoredAt = m_pausedAt = Clock::now();
        m_sounds = false;
    }

    // Shows the pictures whose time has come and waits a little for the next one.
    void Advance() {
        constexpr int kWaitMs = 10;
        const int64_t now = Now();
        m_playback->SkipTo(now);
        if (!m_next) m_next = m_playback->Next(kWaitMs);
        if (!m_next || (!m_begins && !m_steps && (m_paused || m_next->timeMs > now))) {
            if (m_next || m_playback->Ended()) SDL_WaitEventTimeout(nullptr, kWaitMs);
        } else {
            m_screen.Show(*m_next->picture, m_next->pixelAspect);
            m_shownUntil = m_next->endMs;
            m_next.reset();
            m_steps = false;
            if (m_begins) Begin();
        }
        SetTitle();
    }

    // Without a display there is nothing to see, and no keys.
    void ShowSound() {
        constexpr int kWaitMs = 20;
        const double length = static_cast<double>(m_playback->LengthMs().value_or(0));
        if (m_hasDisplay)
            m_screen.ShowShare(length > 0 ? std::min(1.0, static_cast<double>(Now()) / length) : 0);
        SetTitle();
        SDL_WaitEventTimeout(nullptr, kWaitMs);
    }

    void SetTitle() {
        std::string title = m_name + " - " + ClockText(Now());
        if (const auto length = m_playback->LengthMs()) title += " / " + ClockText(*length);
        if (m_paused) title += " (paused)";
        if (title != m_title) m_screen.SetTitle(m_title = title);
    }

    const bool m_hasDisplay;
    const Plugin& m_plugin;
    const RenderOptions& m_options;
    Reporter& m_reporter;
    const std::atomic<bool>& m_cancel;
    const std::string m_name;
    Screen m_screen;
    std::unique_ptr<Speaker> m_speaker;
    std::unique_ptr<Playback> m_playback;
    std::optional<PlayedPicture> m_next; ///< made, not shown yet
    bool m_begins = true;                ///< no picture was shown since playing began here
    bool m_sounds = false;               ///< sound is fed and tells the time
    bool m_paused = false, m_steps = false, m_quits = false;
    int64_t m_anchor = 0; ///< where playing began, or sound ended
    Clock::time_point m_anchoredAt, m_pausedAt;
    int64_t m_fedSamples = 0; ///< since the anchor
    int64_t m_shownUntil = 0;
    std::string m_title;
};

} // namespace

void Play(const Plugin& plugin, const RenderOptions& options, const RenderObserver& observer,
          const std::atomic<bool>& cancel) {
    Reporter reporter(observer);
    const Sdl sdl;
    Player(sdl, plugin, options, reporter, cancel).Run();
}

} // namespace aveffect
