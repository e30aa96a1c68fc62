#pragma once

#include <QProcess>
#include <QString>
#include <csignal>
#include <jack/jack.h>

namespace orvan::test {

/// A private jackd on the dummy driver (no sound card needed) under its own server name, so
/// test runs never meet a user's server or each other. Sets JACK_DEFAULT_SERVER for this process
/// and its children.
class JackTestServer {
public:
    static constexpr int kSampleRate = 48000;
    /// `periodFrames`: frames per cycle at 48 kHz.
    explicit JackTestServer(const QString& tag, int periodFrames = 256);
    ~JackTestServer() { stop(); }
    int periodFrames() const { return m_periodFrames; }

    /// Only points JACK_DEFAULT_SERVER at this server's name.
    void select() const { qputenv("JACK_DEFAULT_SERVER", m_name.toUtf8()); }
    /// Starts jackd and waits until a client can open on it. Without `probe` it only starts it:
    /// then this process opens no client of its own, and whoever waits must find the server.
    bool start(bool probe = true);
    /// Ends jackd with `signal` (SIGTERM: an orderly stop; SIGKILL: it dies, leaving its socket).
    void stop(int signal = SIGTERM);
    /// Stops jackd where it is (SIGSTOP), or lets it go on (SIGCONT): a server that no longer answers.
    void pause(bool paused);

private:
    QString m_name;
    int m_periodFrames;
    QProcess m_jackd;
    jack_client_t* m_probe = nullptr;
};

} // namespace orvan::test
