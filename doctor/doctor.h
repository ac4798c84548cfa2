#pragma once

#include "doctor/servers.h"
#include "message/mail_mode.h"

#include <QString>

#include <functional>

namespace doctor {

/** What is asked of the doctor. */
struct Order {
    MailMode mode = MailMode::House;
    /** Who logs on, as typed into the login window; empty for nobody. */
    QString user;
    QString password;
    Patience patience{};
    std::function<void(const QString& what)> progress{};
};

/**
 * Examines the current folder and the servers that its settings name. Needs a QGuiApplication on any
 * platform. Changes nothing anywhere: no file is written, no lock taken, no message fetched, deleted or
 * offered. The settings and the credentials of the process are those of the order afterwards.
 */
Report examine(const Order& order);

} // namespace doctor
