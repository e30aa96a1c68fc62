#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>
#include <csignal>
#include <jack/jack.h>

namespace orvan::test {

/// A private jackd on the dummy driver (no sound card needed) under its own server name, so
/// test runs never meet a user's server or each other. Sets JACK_DEFAULT_SERVER for this process
/// and its children.
class JackTestServer {
public:
    /// `periodFrames`: frames per cycle at 48 kHz.
    explicit JackTestServer(const QString& tag, int periodFrames = 256);
    int periodFrames() const { return m_periodFrames; }
    static constexpr int kSampleRate = 48000;
    ~JackTestServer();

    /// Only points JACK_DEFAULT_SERVER at this server's name.
    void select() const;
    /// Removes JACK's shared-memory leftovers of dead servers when no jackd is running.
    static void forgetStaleServers();
    /// Starts jackd and waits until a client can open on it. Without `probe` it only starts it:
    /// then this process opens no client of its own, and whoever waits must find the server.
    bool start(bool probe = true);
    /// Ends jackd with `signal` (SIGTERM: an orderly stop; SIGKILL: it dies, leaving its socket).
    void stop(int signal = SIGTERM);
    bool isRunning() const { return m_probe != nullptr; }

    /// Whether the server reports a connection from one port to the other.
    bool areConnected(const QString& from, const QString& to) const;

private:
    QString m_name;
    int m_periodFrames;
    QProcess m_jackd;
    jack_client_t* m_probe = nullptr;
};

} // namespace orvan::test
