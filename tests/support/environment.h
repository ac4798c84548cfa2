#pragma once

#include <QByteArray>

#include <string>
#include <utility>

namespace support {

/** Gives a variable of the environment another value, for as long as it lives. */
class EnvironmentVariable {
  public:
    EnvironmentVariable(const char* name, const std::string& value)
        : name_(name), wasSet_(qEnvironmentVariableIsSet(name)), old_(qgetenv(name)) {
        qputenv(name, QByteArray::fromStdString(value));
    }

    ~EnvironmentVariable() {
        if (wasSet_) {
            qputenv(name_, old_);
        } else {
            qunsetenv(name_);
        }
    }

    EnvironmentVariable(const EnvironmentVariable&) = delete;
    EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;

  private:
    const char* name_;
    bool wasSet_;
    QByteArray old_;
};

} // namespace support
