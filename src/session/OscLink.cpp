#include "OscLink.h"

#include <QSocketNotifier>
#include <arpa/inet.h>
#include <cstdlib>
#include <cstring>
#include <lo/lo.h>
#include <netdb.h>
#include <netinet/in.h>
#include <unistd.h>

namespace orvan {

namespace {

/// The largest datagram read; the session manager's messages are a few hundred bytes.
constexpr std::size_t kLargestDatagram = 64 * 1024;

/// A string liblo allocated, freed when it goes.
struct LoString {
    char* text;
    ~LoString() { std::free(text); }
    QByteArray bytes() const { return text ? QByteArray(text) : QByteArray(); }
};

bool isLoopback(const sockaddr_storage& address)
{
    if (address.ss_family == AF_INET) {
        const auto& in = reinterpret_cast<const sockaddr_in&>(address);
        return (ntohl(in.sin_addr.s_addr) >> 24) == IN_LOOPBACKNET;
    }
    const auto& in6 = reinterpret_cast<const sockaddr_in6&>(address);
    return IN6_IS_ADDR_LOOPBACK(&in6.sin6_addr);
}

/// The peer's address, from the URL's host and port, resolved the way liblo would.
bool resolvePeer(const QString& url, sockaddr_storage& peer, socklen_t& length)
{
    const QByteArray text = url.toUtf8();
    if (lo_url_get_protocol_id(text.constData()) != LO_UDP)
        return false;
    const LoString host{lo_url_get_hostname(text.constData())};
    const LoString port{lo_url_get_port(text.constData())};
    if (host.bytes().isEmpty() || port.bytes().isEmpty())
        return false;
    addrinfo hints{};
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_DGRAM;
    addrinfo* found = nullptr;
    if (::getaddrinfo(host.text, port.text, &hints, &found) != 0 || !found)
        return false;
    std::memcpy(&peer, found->ai_addr, found->ai_addrlen);
    length = found->ai_addrlen;
    ::freeaddrinfo(found);
    return true;
}

/// A socket of the peer's family bound to an ephemeral port: on loopback only when the peer is
/// there, so that no other machine can even reach it.
int boundSocket(const sockaddr_storage& peer)
{
    const bool loopbackOnly = isLoopback(peer);
    const int fd = ::socket(peer.ss_family, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (fd < 0)
        return -1;
    sockaddr_storage local{};
    socklen_t length = 0;
    if (peer.ss_family == AF_INET) {
        auto& in = reinterpret_cast<sockaddr_in&>(local);
        in.sin_family = AF_INET;
        in.sin_addr.s_addr = htonl(loopbackOnly ? INADDR_LOOPBACK : INADDR_ANY);
        length = sizeof in;
    } else {
        auto& in6 = reinterpret_cast<sockaddr_in6&>(local);
        in6.sin6_family = AF_INET6;
        in6.sin6_addr = loopbackOnly ? in6addr_loopback : in6addr_any;
        length = sizeof in6;
    }
    if (::bind(fd, reinterpret_cast<const sockaddr*>(&local), length) != 0) {
        ::close(fd);
        return -1;
    }
    return fd;
}

QVariantList argumentsOf(lo_message message)
{
    QVariantList args;
    const char* types = lo_message_get_types(message);
    lo_arg** argv = lo_message_get_argv(message);
    for (int i = 0, n = lo_message_get_argc(message); i < n; ++i) {
        switch (types[i]) {
        case LO_STRING: args << QString::fromUtf8(&argv[i]->s); break;
        case LO_INT32: args << int(argv[i]->i); break;
        case LO_FLOAT: args << double(argv[i]->f); break;
        case LO_DOUBLE: args << argv[i]->d; break;
        default: args << QVariant(); break; // keeps the positions of the others
        }
    }
    return args;
}

} // namespace

std::unique_ptr<OscLink> OscLink::connectTo(const QString& url)
{
    sockaddr_storage peer{};
    socklen_t length = 0;
    if (!resolvePeer(url, peer, length))
        return nullptr;
    const int fd = boundSocket(peer);
    if (fd < 0)
        return nullptr;
    return std::unique_ptr<OscLink>(new OscLink(fd, peer, length));
}

OscLink::OscLink(int fd, const sockaddr_storage& peer, socklen_t peerLength)
    : m_fd(fd)
    , m_peer(peer)
    , m_peerLength(peerLength)
    , m_notifier(std::make_unique<QSocketNotifier>(fd, QSocketNotifier::Read))
{
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, this, [this] { readPending(); });
}

OscLink::~OscLink()
{
    m_notifier.reset();
    ::close(m_fd);
}

bool OscLink::isFromPeer(const sockaddr_storage& from, socklen_t length) const
{
    if (from.ss_family != m_peer.ss_family || length != m_peerLength)
        return false;
    if (from.ss_family == AF_INET) {
        const auto& a = reinterpret_cast<const sockaddr_in&>(from);
        const auto& b = reinterpret_cast<const sockaddr_in&>(m_peer);
        return a.sin_port == b.sin_port && a.sin_addr.s_addr == b.sin_addr.s_addr;
    }
    const auto& a = reinterpret_cast<const sockaddr_in6&>(from);
    const auto& b = reinterpret_cast<const sockaddr_in6&>(m_peer);
    return a.sin6_port == b.sin6_port && IN6_ARE_ADDR_EQUAL(&a.sin6_addr, &b.sin6_addr);
}

void OscLink::readPending()
{
    QByteArray datagram(qsizetype(kLargestDatagram), Qt::Uninitialized);
    for (;;) {
        sockaddr_storage from{};
        socklen_t length = sizeof from;
        const ssize_t got = ::recvfrom(m_fd, datagram.data(), kLargestDatagram, 0, reinterpret_cast<sockaddr*>(&from), &length);
        if (got < 0)
            return; // drained (EAGAIN) or nothing to read
        // Only the session manager is heard: anything else is dropped unread and unanswered.
        if (!isFromPeer(from, length))
            continue;
        int result = 0;
        lo_message message = lo_message_deserialise(datagram.data(), size_t(got), &result);
        if (!message)
            continue; // not an OSC message (a bundle, or garbage)
        const OscMessage decoded{QByteArray(lo_get_path(datagram.data(), got)), argumentsOf(message)};
        lo_message_free(message);
        if (onMessage)
            onMessage(decoded);
    }
}

void OscLink::send(const QByteArray& path, const QVariantList& args)
{
    lo_message message = lo_message_new();
    for (const QVariant& arg : args) {
        if (arg.typeId() == QMetaType::Int)
            lo_message_add_int32(message, arg.toInt());
        else
            lo_message_add_string(message, arg.toString().toUtf8().constData());
    }
    std::size_t size = 0;
    void* bytes = lo_message_serialise(message, path.constData(), nullptr, &size);
    if (bytes)
        ::sendto(m_fd, bytes, size, 0, reinterpret_cast<const sockaddr*>(&m_peer), m_peerLength);
    std::free(bytes);
    lo_message_free(message);
}

} // namespace orvan
