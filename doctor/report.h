#pragma once

#include <QString>
#include <QStringList>

#include <cstdint>
#include <optional>
#include <vector>

namespace doctor {

/** What a finding means for members. */
enum class Grade {
    /** Members cannot start, log in or send. */
    Stops,
    /** Members can work, and will meet it. */
    Met,
    /** For information. */
    Info
};

/** One thing that an administrator is told. What does not apply is empty, 0 or nothing. */
struct Finding {
    Grade grade = Grade::Info;
    /** What it is about: "settings", "folders", "POP3", "message" and so on. */
    QString about;
    QString text;
    /** What to do. */
    QString advice{};
    /** The number that members see. */
    int number = 0;
    /** The text of the box that members see. */
    QString box{};
    /** The line of the settings file, counted from 1. */
    int line = 0;
    /** The message's number on the server. */
    int message = 0;
    QString from{};
    QString subject{};
    /** Bytes of the message, as the server reports them. */
    std::optional<std::int64_t> size{};

    bool operator==(const Finding&) const = default;
};

/** A setting as the program takes it. */
struct SettingSeen {
    int line = 0;
    QString key;
    /** What the line says; what counts without it where it was not read. */
    QString value;
    /** What follows from it. */
    QString meaning;
};

/** One address of a server, and what became of a connection to it. */
struct AddressSeen {
    QString address;
    /** Why there was no connection; empty when there was one. */
    QString problem;
    std::int64_t milliseconds = 0;
};

struct CertificateSeen {
    QString subject;
    QString issuer;
    QStringList names;
    /** Days, as yyyy-MM-dd. */
    QString validFrom;
    QString validUntil;
    bool isValid = false;
    /** Why it is not valid for this host; empty when it is. */
    QString reason;
};

/** What was seen of one server. */
struct ServerSeen {
    /** "POP3", "SMTP" or "LDAP". */
    QString protocol;
    /** As it is written in the settings. */
    QString name;
    QString host{};
    int port = 0;
    /** What the spelling of the name promises. */
    QString promise{};
    std::vector<AddressSeen> addresses{};
    QString greeting{};
    /** How long the first session took, its end included; nothing when there was none. */
    std::optional<std::int64_t> milliseconds{};
    /** Such as "TLS 1.3"; empty for none. */
    QString encryption{};
    std::optional<CertificateSeen> certificate{};
    QStringList offers{};
    /** What of it the program will use. */
    QStringList uses{};
    /** What became of a log-on; empty when nobody has logged on. */
    QString logOn{};
    /** Messages in the mailbox, and their bytes. */
    std::optional<int> messages{};
    std::optional<std::int64_t> bytes{};
};

struct Report {
    std::vector<SettingSeen> settings;
    std::vector<ServerSeen> servers;
    std::vector<Finding> findings;
    /** The folder that was examined, and "house" or "standard". */
    QString folder;
    QString mode;

    /** 1 when something stops members, otherwise 0. */
    int status() const;
};

/** The report as one object of JSON, with a line end behind it. */
QByteArray asJson(const Report& report);

/** The report for a person. Nothing in it is obeyed by a terminal. */
QString asText(const Report& report);

} // namespace doctor
