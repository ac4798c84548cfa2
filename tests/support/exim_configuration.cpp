#include "tests/support/exim_configuration.h"

#include <algorithm>
#include <map>
#include <sstream>

namespace support {

namespace {
std::string encryption(const EximOptions& options, const EximPlaces& places) {
    const std::string port = std::to_string(places.port);
    if (!options.certificate) {
        return "daemon_smtp_ports = " + port + "\ntls_advertise_hosts =\n";
    }
    const std::string tlsPort = std::to_string(places.tlsPort);
    return "daemon_smtp_ports = " + port + " : " + tlsPort + "\ntls_on_connect_ports = " + tlsPort +
           "\ntls_advertise_hosts = *\ntls_resumption_hosts = *\ntls_certificate = " + places.folder +
           "/certificate.pem\ntls_privatekey = " + places.folder + "/certificate.key\n";
}

std::string accessLists(const EximOptions& options) {
    std::string text = "begin acl\nsender:\n";
    if (!options.answerToMailInClear.empty()) {
        text += "  deny !encrypted = *\n       message = " + options.answerToMailInClear + "\n";
    }
    text += "  accept\nrecipient:\n";
    if (!options.answerToStrangers.empty()) {
        text += "  deny !authenticated = *\n       message = " + options.answerToStrangers + "\n";
    }
    return text + "  deny local_parts = nobody\n"
                  "       message = no such user here\n"
                  "  accept domains = example.org\n"
                  "  deny\n";
}

/** Compares what the client has said, in the variables of these numbers. */
std::string isAccount(const EximAccount& account, const std::string& user, const std::string& password) {
    return "  server_condition = ${if and{{eq{$auth" + user + "}{" + account.user + "}}{eq{$auth" + password +
           "}{" + account.password + "}}}}\n  server_set_id = $auth" + user + "\n";
}

std::string authenticators(const EximOptions& options) {
    if (!options.account) {
        return {};
    }
    const EximAccount& account = *options.account;
    const std::map<std::string, std::string> drivers = {
        {"PLAIN", "  driver = plaintext\n  server_prompts = :\n" + isAccount(account, "2", "3")},
        {"LOGIN", "  driver = plaintext\n  server_prompts = <| Username: | Password:\n" +
                      isAccount(account, "1", "2")},
        {"CRAM-MD5", "  driver = cram_md5\n  server_secret = ${if eq{$auth1}{" + account.user + "}{" +
                         account.password + "}fail}\n  server_set_id = $auth1\n"}};
    const std::string when = options.logOnNeedsTls ? "${if def:tls_in_cipher}" : "yes";
    std::string text = "begin authenticators\n";
    std::istringstream mechanisms(options.mechanisms);
    for (std::string mechanism; mechanisms >> mechanism;) {
        std::string name = mechanism;
        std::replace(name.begin(), name.end(), '-', '_');
        text += "by_" + name + ":\n" + drivers.at(mechanism) + "  public_name = " + mechanism +
                "\n  server_advertise_condition = " + when + "\n";
    }
    return text;
}
} // namespace

std::string eximConfiguration(const EximOptions& options, const EximPlaces& places) {
    return "spool_directory = " + places.folder + "/spool\nlog_file_path = " + places.folder +
           "/%slog\npid_file_path = " + places.folder + "/pid\nexim_user = " + places.user +
           "\nexim_group = " + places.group + "\nlocal_interfaces = 127.0.0.1\n" +
           encryption(options, places) + "message_size_limit = " + std::to_string(places.sizeLimit) +
           "\nprimary_hostname = mail.example.org\nqualify_domain = example.org\n"
           // Nothing of the computer around it: no name service, no environment, no full disk.
           "disable_ipv6\ndaemon_startup_retries = 0\nhost_lookup =\nrfc1413_query_timeout = 0s\n"
           "keep_environment =\nnotifier_socket =\ncheck_spool_space = 0\ncheck_spool_inodes = 0\n"
           "check_log_space = 0\ncheck_log_inodes = 0\n"
           "acl_smtp_mail = sender\nacl_smtp_rcpt = recipient\n" +
           accessLists(options) +
           "begin routers\n"
           "everybody:\n  driver = accept\n  transport = maildir\n"
           "begin transports\n"
           "maildir:\n  driver = appendfile\n  directory = " +
           places.maildir +
           "\n  maildir_format\n  create_directory = false\n  envelope_to_add\n  user = " + places.user +
           "\n  group = " + places.group + "\n" + authenticators(options);
}

} // namespace support
