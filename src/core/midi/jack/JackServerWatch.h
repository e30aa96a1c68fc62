#pragma once

#include <QFileSystemWatcher>
#include <QString>
#include <functional>
#include <sys/types.h>

namespace orvan {

/// Tells when a JACK server (the one JACK_DEFAULT_SERVER names, else "default") starts, without
/// polling: jackd 2 keeps its request socket, "jack_<server>_<uid>_0", in /dev/shm, and the folder
/// is watched with inotify. A socket that appears, or is replaced by a restarted server (a killed
/// one leaves its socket behind), calls `started` on the main thread. Unrelated changes in the
/// folder only cost one stat() each.
class JackServerWatch {
public:
    /// Main thread.
    explicit JackServerWatch(std::function<void()> started);

    /// The socket this watch looks for.
    const QString& socketPath() const { return m_socket; }

private:
    struct Identity {
        ino_t inode = 0;
        qint64 changed = 0; // nanoseconds of the last status change
        bool operator==(const Identity&) const = default;
    };
    Identity identity() const;
    void onFolderChanged();

    QString m_socket;
    Identity m_last;
    std::function<void()> m_started;
    QFileSystemWatcher m_watcher;
};

} // namespace orvan
