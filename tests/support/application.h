#pragma once

class QApplication;

namespace support {

/** The one application object that sockets, timers and windows need; made at the first call. */
QApplication& application();

/** Ends it. main() does so after the last test: at the process's end it would be too late for Qt. */
void endApplication();

} // namespace support
