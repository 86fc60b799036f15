#include "studio/studio.h"

#include <chrono>
#include <filesystem>
#include <fstream>
#include <new>
#include <thread>
#include <utility>

#include <sys/socket.h>

#include "host/support/error.h"
#include "studio/gate.h"
#include "studio/output_choices.h"
#include "studio/page_files.h"
#include "studio/requests.h"
#include "studio/workshop.h"

namespace aveffect {

using httplib::Request;
using httplib::Response;
using nlohmann::json;

namespace {

constexpr size_t kThreads = 16;   // that answer
constexpr int kMostListeners = 6; // pages that are told of renders: each takes a thread
constexpr auto kTick = std::chrono::milliseconds(100);
constexpr auto kAwayFor = std::chrono::seconds(3); // no page; it may only be loading anew

void SendJson(Response& response, const json& words) {
    response.set_content(words.dump(-1, ' ', false, json::error_handler_t::replace), "application/json");
}

void SendError(Response& response, int status, const std::string& message, const std::string& picture = {}) {
    response.status = status;
    SendJson(response, {{"error", message}, {"picture", picture}});
}

int StatusOf(ErrorKind kind) {
    switch (kind) {
    case ErrorKind::Usage:
        return 400;
    case ErrorKind::Input:
        return 404;
    case ErrorKind::Output:
        return 409;
    case ErrorKind::Effect:
        return 422;
    case ErrorKind::Interrupted:
        return 503;
    }
    return 500;
}

const char* TypeOf(const std::string& name) {
    const std::string extension = name.substr(name.rfind('.') + 1);
    constexpr std::pair<const char*, const char*> kTypes[] = {{"html", "text/html; charset=utf-8"},
                                                              {"js", "text/javascript; charset=utf-8"},
                                                              {"css", "text/css; charset=utf-8"},
                                                              {"svg", "image/svg+xml"},
                                                              {"mp4", "video/mp4"},
                                                              {"webm", "video/webm"},
                                                              {"mov", "video/quicktime"},
                                                              {"gif", "image/gif"},
                                                              {"png", "image/png"},
                                                              {"jpg", "image/jpeg"},
                                                              {"webp", "image/webp"},
                                                              {"avif", "image/avif"},
                                                              {"wav", "audio/wav"},
                                                              {"flac", "audio/flac"},
                                                              {"mp3", "audio/mpeg"},
                                                              {"ogg", "audio/ogg"},
                                                              {"m4a", "audio/mp4"}};
    for (const auto& [known, type] : kTypes)
        if (extension == known) return type;
    return "application/octet-stream";
}

double NumberParam(const Request& request, const char* name, double otherwise) {
    if (!request.has_param(name)) return otherwise;
    const std::string text = request.get_param_value(name);
    const json number = json::parse(text, nullptr, false);
    if (!number.is_number())
        throw Error(ErrorKind::Usage, std::string(name) + " is '" + text + "', but should be a number");
    return number.get<double>();
}

} // namespace

class Studio::Work {
public:
    explicit Work(StudioOptions options)
        : m_options(std::move(options))
        , m_roots(m_options.folders, m_options.files) {
        m_server.new_task_queue = [] { return new httplib::ThreadPool(kThreads); };
        socket_t listening = INVALID_SOCKET;
        m_server.set_socket_options([&listening](socket_t socket) {
            const int yes = 1;
            setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
            listening = socket;
        });
        m_server.set_tcp_nodelay(true); // else small answers wait for the ones before to be confirmed
        m_server.set_payload_max_length(kLargestBody);
        m_server.set_keep_alive_max_count(100);
        m_port = m_options.port;
        if (m_port == 0)
            m_port = m_server.bind_to_any_port("127.0.0.1");
        else if (!m_server.bind_to_port("127.0.0.1", m_port))
            m_port = -1;
        if (m_port <= 0)
            throw Error(ErrorKind::Output, "port " + std::to_string(m_options.port) +
                                               " can't be listened at; another one is chosen without --port");
        m_server.set_socket_options([](socket_t) {});
        // The library lets five wait; who comes when these do would be heard seconds or minutes later.
        ::listen(listening, SOMAXCONN);
        m_gate = std::make_unique<Gate>(MakeToken(), m_port);
    }

    std::string Address() const { return m_gate->Address(); }
    const std::vector<std::string>& Roots() const { return m_roots.Folders(); }

    void Serve(const Plugin& plugin, const std::atomic<bool>& cancel) {
        Workshop workshop(m_options, m_roots, plugin, m_stop);
        m_workshop = &workshop;
        AddRoutes();
        bool listened = true;
        std::thread listener([&] {
            listened = m_server.listen_after_bind();
            m_ended = true;
        });
        while (!cancel && !m_ended && !IsDeserted()) std::this_thread::sleep_for(kTick);
        m_stop = true;
        while (!m_server.is_running() && !m_ended) std::this_thread::sleep_for(kTick);
        m_server.stop();
        listener.join();
        if (!listened) throw Error(ErrorKind::Output, "the server has stopped listening");
        if (cancel) throw Error(ErrorKind::Interrupted, "interrupted");
    }

private:
    bool IsDeserted() {
        const auto now = std::chrono::steady_clock::now();
        if (!m_options.endsWithPage || m_listeners > 0 || !m_seen || m_workshop->Jobs().Busy()) {
            m_lastSeen = now;
            return false;
        }
        return now - m_lastSeen > kAwayFor;
    }

    /// Handlers throw what everything else does.
    template <typename Handle>
    static httplib::Server::Handler Guarded(Handle handle) {
        return [handle](const Request& request, Response& response) {
            try {
                handle(request, response);
            } catch (const Error& error) {
                SendError(response, StatusOf(error.Kind()), error.what(), error.Picture());
            } catch (const std::bad_alloc&) {
                SendError(response, 503, "out of memory");
            } catch (const std::exception& error) {
                SendError(response, 500, std::string("unexpected error: ") + error.what());
            }
        };
    }

    template <typename Make>
    void Get(const char* path, Make make) {
        m_server.Get(path, Guarded([make](const Request& request, Response& response) {
                         SendJson(response, make(request));
                     }));
    }
    template <typename Make>
    void Post(const char* path, Make make) {
        m_server.Post(path, Guarded([make](const Request& request, Response& response) {
                          SendJson(response, make(ParseBody(request.body)));
                      }));
    }

    static void SendMedia(Response& response, MadeMedia media) {
        response.set_header("X-Picture-Time", std::to_string(media.timeMs));
        response.set_content(std::move(media.bytes), media.type.c_str());
    }

    void AddRoutes() {
        m_server.set_pre_routing_handler([this](const Request& request, Response& response) {
            return m_gate->Answers(request, response) ? httplib::Server::HandlerResponse::Handled
                                                      : httplib::Server::HandlerResponse::Unhandled;
        });
        for (const PageFile& file : PageFiles()) {
            const std::string name(file.name);
            std::string path = "/" + (name == "index.html" ? "" : name);
            for (size_t dot = path.find('.'); dot != std::string::npos; dot = path.find('.', dot + 2))
                path.insert(dot, "\\");
            m_server.Get(path, [file, name](const Request&, Response& response) {
                response.set_content(file.bytes.data(), file.bytes.size(), TypeOf(name));
            });
        }
        m_server.Get("/api/catalogue", [this](const Request&, Response& response) {
            response.set_content(m_options.catalogue, "application/json");
        });
        AddLookingRoutes();
        AddWritingRoutes();
    }

    void AddLookingRoutes() {
        Get("/api/start", [this](const Request&) { return m_workshop->Start(); });
        Get("/api/formats", [](const Request&) { return OutputChoices(); });
        Get("/api/files",
            [this](const Request& request) { return m_roots.List(request.get_param_value("path")); });
        Post("/api/clips", [this](const json& body) { return m_workshop->OpenClip(ReadPath(body)); });
        Post("/api/open", [this](const json& body) { return m_workshop->OpenFilm(ReadPath(body)); });
        Post("/api/waveform", [this](const json& body) { return m_workshop->Waveform(ReadSoundWish(body)); });
        Post("/api/command", [this](const json& body) { return m_workshop->Commands(ReadOutputWish(body)); });
        m_server.Get(R"(/api/clips/(c\d{1,9})/thumbnail)",
                     Guarded([this](const Request& request, Response& response) {
                         const double height = NumberParam(request, "height", 90);
                         if (!(height >= 16 && height <= 720))
                             throw Error(ErrorKind::Usage, "height should be from 16 to 720");
                         SendMedia(response, m_workshop->Thumbnail(request.matches[1],
                                                                   ReadMoment(NumberParam(request, "at", 0)),
                                                                   static_cast<int>(height)));
                     }));
        m_server.Post("/api/frame", Guarded([this](const Request& request, Response& response) {
                          std::optional<MadeMedia> media =
                              m_workshop->Frame(ReadFrameWish(ParseBody(request.body)));
                          if (media) return SendMedia(response, std::move(*media));
                          response.status = 204; // a newer one is on its way
                      }));
        m_server.Post("/api/sound", Guarded([this](const Request& request, Response& response) {
                          SendMedia(response, m_workshop->Sound(ReadSoundWish(ParseBody(request.body))));
                      }));
    }

    void AddWritingRoutes() {
        Post("/api/save", [this](const json& body) {
            m_workshop->SaveFilm(ReadOutputWish(body));
            return json{{"saved", true}};
        });
        Post("/api/jobs", [this](const json& body) {
            return json{{"id", m_workshop->Render(ReadOutputWish(body))}};
        });
        Get("/api/jobs", [this](const Request&) { return m_workshop->Jobs().Words(); });
        m_server.Delete(R"(/api/jobs/(j\d{1,9}))",
                        Guarded([this](const Request& request, Response& response) {
                            m_workshop->Jobs().Cancel(request.matches[1]);
                            SendJson(response, m_workshop->Jobs().Words());
                        }));
        m_server.Get(R"(/api/jobs/(j\d{1,9})/file)",
                     Guarded([this](const Request& request, Response& response) {
                         SendFile(m_workshop->Jobs().OutputOf(request.matches[1]), response);
                     }));
        m_server.Get("/api/events",
                     Guarded([this](const Request&, Response& response) { Listen(response); }));
    }

    void SendFile(const std::string& name, Response& response) {
        const std::string place = m_roots.File(name);
        auto file = std::make_shared<std::ifstream>(place, std::ios::binary);
        const auto size = static_cast<size_t>(std::filesystem::file_size(place));
        if (!*file) throw Error(ErrorKind::Input, name + " can't be read");
        response.set_content_provider(
            size, TypeOf(place), [file](size_t offset, size_t length, httplib::DataSink& sink) {
                char bytes[65536];
                file->clear();
                file->seekg(static_cast<std::streamoff>(offset));
                file->read(bytes, static_cast<std::streamsize>(std::min(length, sizeof bytes)));
                return file->gcount() > 0 && sink.write(bytes, static_cast<size_t>(file->gcount()));
            });
    }

    /// Counts a page for as long as it listens.
    class Listener {
    public:
        explicit Listener(std::atomic<int>& count)
            : m_count(count) {
            ++m_count;
        }
        ~Listener() { --m_count; }
        Listener(const Listener&) = delete;
        Listener& operator=(const Listener&) = delete;

    private:
        std::atomic<int>& m_count;
    };

    /// Server-sent events: the list of renders whenever it has changed, at most five times a second, and a
    /// comment now and then, which finds out whether anybody still listens.
    void Listen(Response& response) {
        const auto listener = std::make_shared<Listener>(m_listeners);
        if (m_listeners > kMostListeners)
            throw Error(ErrorKind::Usage, "so many pages are open that no more are told of renders");
        m_seen = true;
        response.set_chunked_content_provider(
            "text/event-stream",
            [this, listener, told = UINT64_MAX](size_t, httplib::DataSink& sink) mutable {
                std::string text = ": here\n\n";
                for (int tick = 0; tick < 10 && !m_stop; ++tick) {
                    const uint64_t version = m_workshop->Jobs().Version();
                    if (std::exchange(told, version) != version) {
                        text =
                            "event: jobs\ndata: " +
                            m_workshop->Jobs().Words().dump(-1, ' ', false, json::error_handler_t::replace) +
                            "\n\n";
                        break;
                    }
                    std::this_thread::sleep_for(kTick);
                }
                if (m_stop) text = "event: closing\ndata: {}\n\n";
                if (!sink.write(text.data(), text.size())) return false;
                if (m_stop) sink.done();
                std::this_thread::sleep_for(2 * kTick);
                return true;
            });
    }

    StudioOptions m_options;
    aveffect::Roots m_roots;
    httplib::Server m_server;
    int m_port = 0;
    std::unique_ptr<Gate> m_gate;
    Workshop* m_workshop = nullptr; ///< while serving
    std::atomic<bool> m_stop = false, m_ended = false, m_seen = false;
    std::atomic<int> m_listeners = 0;
    std::chrono::steady_clock::time_point m_lastSeen = std::chrono::steady_clock::now();
};

Studio::Studio(StudioOptions options)
    : m_work(std::make_unique<Work>(std::move(options))) {}
Studio::~Studio() = default;

std::string Studio::Address() const { return m_work->Address(); }
const std::vector<std::string>& Studio::Roots() const { return m_work->Roots(); }
void Studio::Serve(const Plugin& plugin, const std::atomic<bool>& cancel) { m_work->Serve(plugin, cancel); }

} // namespace aveffect
