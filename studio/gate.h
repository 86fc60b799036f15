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

    /// Whether there is nothing more to answer: a request is refused, and the response says why, or it has
    /// brought the token in its address, which becomes a cookie, and is sent on to where the address shows
    /// nothing.
    bool Answers(const httplib::Request& request, httplib::Response& response) const;

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
