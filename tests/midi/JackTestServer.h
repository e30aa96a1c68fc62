#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>
#include <csignal>
#include <functional>
#include <jack/jack.h>
#include <memory>

namespace orvan::test {

/// Processes Qt events until `condition` holds or a generous deadline passes; for waiting on a
/// real JACK server and the processes around it, never for timing.
bool waitUntil(const std::function<bool()>& condition, int timeoutMilliseconds = 10000);

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

    /// Full port names of the server's MIDI ports.
    QStringList midiPorts() const;
    bool connectPorts(const QString& from, const QString& to) const;
    /// Whether the server reports a connection from one port to the other.
    bool areConnected(const QString& from, const QString& to) const;

private:
    QString m_name;
    int m_periodFrames;
    QProcess m_jackd;
    jack_client_t* m_probe = nullptr;
};

/// A child process speaking on JACK (orvan-unit-sim or jack_midi_dump), its output collected.
class JackChild {
public:
    JackChild(QString program, QStringList arguments);
    ~JackChild();

    bool start();
    /// Ends it the way a user does (SIGTERM) and waits for it.
    void stop();
    /// Every line it printed so far.
    QStringList lines() const;

private:
    QString m_program;
    QStringList m_arguments;
    std::unique_ptr<QProcess> m_process;
    QString m_output;
};

} // namespace orvan::test
