#pragma once
/// Who is answered: the page that this program has opened, in a browser of this machine.
#include <string>

#include <httplib.h>

namespace aveffect {

/// Bytes of what a request may bring.
inline constexpr size_t kLargestBody = 2 << 20;

/// 128 random bits in hexadecimal digits. Throws Error (Output) where the system has none.
std::string MakeToken();

/// Looks at headers alone, before a body is read. Safe from any thread.
class Gate {
public:
    Gate(std::string token, int port);

    /// Whether a request is refused; then the response says why. A request for the page that brings the token
    /// in its address gets a cookie instead, and is sent on to where the address shows nothing.
    bool Refuses(const httplib::Request& request, httplib::Response& response) const;

    std::string Address() const { return m_origin + "/?token=" + m_token; }

private:
    bool IsHere(const std::string& host) const;
    bool HasToken(const httplib::Request& request) const;
    bool IsOurs(const httplib::Request& request) const;

    std::string m_token, m_host, m_localHost, m_origin, m_cookie;
};

/// What the browser is told about every answer: nothing from elsewhere is loaded or may use it, and nothing
/// is kept.
void AddHeaders(httplib::Response& response);

} // namespace aveffect
