#pragma once

#include <QByteArray>
#include <QString>
#include <QtGlobal>

namespace support {

/** Lets a drive's letter stand for a folder for as long as it lives. */
class DriveStandsFor {
  public:
    DriveStandsFor(char letter, const QString& folder)
        : name_(QByteArrayLiteral("BRINDLEWAKE_DRIVE_") + letter),
          wasSet_(qEnvironmentVariableIsSet(name_.constData())),
          old_(qgetenv(name_.constData())) {
        qputenv(name_.constData(), folder.toUtf8());
    }

    ~DriveStandsFor() {
        if (wasSet_) {
            qputenv(name_.constData(), old_);
        } else {
            qunsetenv(name_.constData());
        }
    }

    DriveStandsFor(const DriveStandsFor&) = delete;
    DriveStandsFor& operator=(const DriveStandsFor&) = delete;

  private:
    QByteArray name_;
    bool wasSet_;
    QByteArray old_;
};

} // namespace support
