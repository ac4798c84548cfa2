#pragma once

#include <QLineEdit>

namespace controls {

/**
 * A field for a password. To screen readers it is a password field with its name, state and focus, but no
 * text: Qt would tell every program on the accessibility bus each letter in clear as it is typed.
 */
class PasswordBox : public QLineEdit {
  public:
    explicit PasswordBox(QWidget* parent = nullptr);

    /** Empties the field and overwrites its letters, also in each QString that shares them through text(). */
    void forget();
};

} // namespace controls
