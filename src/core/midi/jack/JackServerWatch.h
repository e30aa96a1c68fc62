#pragma once

#include <QFileSystemWatcher>
#include <QString>
#include <functional>

namespace orvan {

/// Tells when a JACK server (the one JACK_DEFAULT_SERVER names, else "default") may have started,
/// without polling: jackd 2 keeps its request socket, "jack_<server>_<uid>_0", in /dev/shm, and
/// the folder is watched with inotify. Every change in the folder while that socket exists calls
/// `changed` on the main thread: a server creates several files there while it starts, so an
/// attempt made too early is followed by another. A killed server leaves its socket behind; then
/// attempts fail at once, and are made only when something in the folder changes.
class JackServerWatch {
public:
    /// Main thread.
    explicit JackServerWatch(std::function<void()> changed);

private:
    void onFolderChanged();

    QString m_socket;
    std::function<void()> m_changed;
    QFileSystemWatcher m_watcher;
};

} // namespace orvan
