#pragma once

#include <QByteArray>

#include <ctime>

namespace support {

/** Makes a time zone the local one for as long as this lives. */
class LocalZone {
  public:
    explicit LocalZone(const char* name) : before_(qgetenv("TZ")), wasSet_(qEnvironmentVariableIsSet("TZ")) {
        qputenv("TZ", name);
        tzset();
    }

    ~LocalZone() {
        if (wasSet_) {
            qputenv("TZ", before_);
        } else {
            qunsetenv("TZ");
        }
        tzset();
    }

    LocalZone(const LocalZone&) = delete;
    LocalZone& operator=(const LocalZone&) = delete;

  private:
    QByteArray before_;
    bool wasSet_;
};

} // namespace support
