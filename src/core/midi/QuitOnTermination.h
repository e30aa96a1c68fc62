#pragma once

namespace orvan {

/// Makes SIGTERM, SIGINT and SIGHUP quit the main loop instead of killing the process, so the
/// MIDI systems close their JACK clients on the way out. A JACK client process that dies keeps the
/// locks it held in JACK's metadata store (/dev/shm/jack_db-<uid>, shared by every server of the
/// user); a few hundred such deaths exhaust it, and from then on no client can read a port's
/// display name: the app would find no unit at all. Call on the main thread once a
/// QCoreApplication exists; calling again does nothing.
void quitOnTermination();

} // namespace orvan
