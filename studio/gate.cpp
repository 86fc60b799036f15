#include "studio/gate.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <sys/random.h>
#include <utility>

#include "host/support/error.h"

namespace aveffect {

namespace {

// Takes as long whatever the texts are, so that no time tells how much of a guess is right.
bool Same(const std::string& text, const std::string& other) {
    if (text.size() != other.size()) return false;
    unsigned char differs = 0;
    for (size_t index = 0; index < text.size(); ++index)
        differs |= static_cast<unsigned char>(text[index] ^ other[index]);
    return differs == 0;
}

void Answer(httplib::Response& response, int status, const char* text) {
    response.status = status;
    response.set_content(text, "text/plain; charset=utf-8");
}

// The library would read others to their end, which need not come.
bool SaysLength(const httplib::Request& request) {
    constexpr size_t kLongestNumber = 7;
    const std::string length = request.get_header_value("Content-Length");
    const bool number = !length.empty() && length.size() <= kLongestNumber &&
                        length.find_first_not_of("0123456789") == std::string::npos;
    return number && std::stoul(length) <= kLargestBody && !request.has_header("Transfer-Encoding") &&
           request.get_header_value_count("Content-Length") == 1;
}

} // namespace

std::string MakeToken() {
    std::array<unsigned char, 16> bytes{};
    if (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size()))
        throw Error(ErrorKind::Output, std::string("no random numbers: ") + std::strerror(errno));
    std::string text;
    for (const unsigned char byte : bytes) {
        constexpr char kDigits[] = "0123456789abcdef";
        text += kDigits[byte >> 4];
        text += kDigits[byte & 15];
    }
    return text;
}

Gate::Gate(std::string token, int port)
    : m_token(std::move(token))
    , m_host("127.0.0.1:" + std::to_string(port))
    , m_localHost("localhost:" + std::to_string(port))
    , m_origin("http://" + m_host)
    , m_cookie("aveffect-" + std::to_string(port)) {}

// A name that somebody else's server made point here is another one.
bool Gate::IsHere(const std::string& host) const { return host == m_host || host == m_localHost; }

bool Gate::HasToken(const httplib::Request& request) const {
    const std::string cookies = request.get_header_value("Cookie");
    for (size_t begin = 0; begin < cookies.size();) {
        const size_t end = std::min(cookies.find(';', begin), cookies.size());
        const std::string cookie = cookies.substr(begin, end - begin);
        if (cookie.starts_with(m_cookie + "=") && Same(cookie.substr(m_cookie.size() + 1), m_token))
            return true;
        begin = cookies.find_first_not_of("; ", end);
    }
    return false;
}

bool Gate::IsOurs(const httplib::Request& request) const {
    const std::string origin = request.get_header_value("Origin");
    const std::string site = request.get_header_value("Sec-Fetch-Site");
    return (origin.empty() || origin == m_origin || origin == "http://" + m_localHost) &&
           (site.empty() || site == "same-origin" || site == "none");
}

bool Gate::Answers(const httplib::Request& request, httplib::Response& response) const {
    AddHeaders(response);
    if (!IsHere(request.get_header_value("Host"))) {
        Answer(response, 421, "This server answers to 127.0.0.1 and localhost alone.\n");
    } else if (request.method == "GET" && request.path == "/" && request.has_param("token") &&
               Same(request.get_param_value("token"), m_token)) {
        response.set_header("Set-Cookie", m_cookie + "=" + m_token + "; Path=/; HttpOnly; SameSite=Strict");
        // A redirect would go on as asked by whoever has led here, and cookies don't go along with strangers.
        response.set_content("<!doctype html><title>AVEffect Studio</title><link rel=\"icon\" "
                             "href=\"data:,\"><meta http-equiv=\"refresh\" content=\"0;url=/\">",
                             "text/html; charset=utf-8");
    } else if (!HasToken(request)) {
        Answer(response, 403,
               "Open the address that aveffect studio has printed: it holds the token without which nobody "
               "is answered.\n");
    } else if (!IsOurs(request)) {
        Answer(response, 403, "Other pages may not ask here.\n");
    } else if (request.method != "GET" && request.method != "POST" && request.method != "DELETE") {
        Answer(response, 405, "There are GET, POST and DELETE.\n");
    } else if (request.method == "POST" && request.get_header_value("Content-Type") != "application/json") {
        Answer(response, 415, "Bodies are application/json.\n");
    } else if (request.method == "POST" && !SaysLength(request)) {
        Answer(response, 411, "Bodies say their length, which is at most 2097152 bytes.\n");
    } else {
        return false;
    }
    return true;
}

void AddHeaders(httplib::Response& response) {
    response.set_header(
        "Content-Security-Policy",
        "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' blob: data:; media-src "
        "'self' "
        "blob:; connect-src 'self'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'");
    response.set_header("X-Content-Type-Options", "nosniff");
    response.set_header("Referrer-Policy", "no-referrer");
    response.set_header("Cross-Origin-Resource-Policy", "same-origin");
    response.set_header("Cross-Origin-Opener-Policy", "same-origin");
    response.set_header("Cache-Control", "no-store");
}

} // namespace aveffect
