#pragma once

#include <QByteArray>

#include <string>
#include <utility>

namespace support {

/** Gives a variable of the environment another value, for as long as it lives. */
class EnvironmentVariable {
  public:
    EnvironmentVariable(std::string name, const std::string& value)
        : name_(std::move(name)),
          wasSet_(qEnvironmentVariableIsSet(name_.c_str())),
          old_(qgetenv(name_.c_str())) {
        qputenv(name_.c_str(), QByteArray::fromStdString(value));
    }

    ~EnvironmentVariable() {
        if (wasSet_) {
            qputenv(name_.c_str(), old_);
        } else {
            qunsetenv(name_.c_str());
        }
    }

    EnvironmentVariable(const EnvironmentVariable&) = delete;
    EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;

  private:
    std::string name_;
    bool wasSet_;
    QByteArray old_;
};

} // namespace support
