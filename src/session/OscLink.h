#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QVariantList>
#include <functional>
#include <memory>
#include <sys/socket.h>

class QSocketNotifier;

namespace orvan {

/// One OSC message: its path and its arguments (QString for 's', int for 'i', double for 'f'
/// and 'd'; other types are passed over).
struct OscMessage {
    QByteArray path;
    QVariantList args;
};

/// A UDP socket that talks to one peer only: the session manager at the address an `osc.udp://`
/// URL names. It listens on the loopback interface when the peer is on it, and drops every
/// datagram that does not come from the peer's exact address and port. liblo encodes and decodes
/// the messages. Lives on the main thread: the socket is watched with a QSocketNotifier, so
/// nothing runs while it is idle and no thread is needed.
class OscLink final : public QObject {
public:
    /// Nothing when the URL does not name a UDP peer that resolves, or no socket can be made.
    static std::unique_ptr<OscLink> connectTo(const QString& url);
    ~OscLink() override;

    void send(const QByteArray& path, const QVariantList& args);

    /// Called on the main thread for each message from the peer.
    std::function<void(const OscMessage&)> onMessage;

private:
    OscLink(int fd, const sockaddr_storage& peer, socklen_t peerLength);
    void readPending();
    bool isFromPeer(const sockaddr_storage& from, socklen_t length) const;

    int m_fd;
    sockaddr_storage m_peer;
    socklen_t m_peerLength;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace orvan
