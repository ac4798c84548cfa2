#pragma once

#include "components/protocol/secrets.h"
#include "components/transport/connection.h"
#include "components/transport/server_name.h"
#include "doctor/report.h"
#include "email/settings.h"

#include <QString>

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace doctor {

/**
 * How long the doctor waits for a server, shorter than the program, so that its own words come soon. What is
 * silent for so long is told as the program would tell it in the end.
 */
struct Patience {
    std::chrono::milliseconds connection{20'000};
    std::chrono::milliseconds answer{20'000};
    std::chrono::milliseconds quit{5'000};
};

/** What the checks of servers share. */
struct Surveys {
    Report& report;
    Patience patience{};
    /** Told what is being done; may be empty. */
    std::function<void(const QString& what)> progress{};
    /** What must not be shown, whoever says it. */
    protocol::Secrets secrets{};

    /** A text that a server has said, as text for the report: one line of no great length. */
    QString said(const std::string& bytes) const;

    void tell(const QString& what) const {
        if (progress) {
            progress(what);
        }
    }
};

/** Tries each address of a server, without saying anything there, and returns what became of it. */
std::vector<AddressSeen> tryAddresses(const transport::ServerName& server, const Patience& patience);

/** Adds what the addresses that do not answer mean, when another one does. */
void addDeafAddresses(const ServerSeen& server, std::vector<Finding>& findings);

/**
 * Begins the survey of a server: notes what its name says, and tries its addresses. Nothing for a name that
 * is none, which is told among the settings.
 */
std::optional<transport::ServerName> approach(ServerSeen& server, const transport::DefaultPorts& ports,
                                              const Surveys& surveys);

/**
 * A certificate for the report. `error` is what the program has made of it: 0, or 20322 to 20325.
 */
CertificateSeen seenCertificate(const transport::Certificate& certificate, int error, const QString& host);

/** Adds that the certificate ends soon. */
void addEndOfCertificate(const ServerSeen& server, std::vector<Finding>& findings);

/** Why the program refuses a certificate with this error, 20322 to 20324, in words. */
QString whyRefused(int error, const QString& host);

/** What the error means, without the advice to tell the administrator, who reads this. */
QString meaningForAdministrators(int error);

/** What an administrator may do about an error of a server. */
QString adviceFor(int error, const QString& protocol);

/** A typed name with another scheme. */
QString withScheme(const QString& typed, const transport::ServerName& server, const QString& scheme);

} // namespace doctor
