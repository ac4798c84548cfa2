#pragma once

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace mailserver {

/** A server's certificate with its key, in PEM. */
struct Certificate {
    std::string certificatePem;
    std::string keyPem;
    /** The authorities between the certificate and the root; a careless server forgets them. */
    std::string intermediatesPem;

    /** What a server presents: the certificate first, then the authorities above it, without the root. */
    std::string chainPem() const { return certificatePem + intermediatesPem; }
};

/** What a certificate may be used for (RFC 5280 section 4.2.1.12). */
enum class Purpose { Server, Client };

/** What a certificate says. */
struct CertificateDescription {
    /** Names of hosts, as dNSName: whatever bytes are given, an IP address or a NUL too. */
    std::vector<std::string> names;
    /** IPv4 and IPv6 addresses, as iPAddress. */
    std::vector<std::string> addresses;
    /** Nothing checks it, but old servers have their name only here. */
    std::string commonName = "A server";
    /** When it begins and ends to be valid, counted from now. */
    std::chrono::seconds notBefore = -std::chrono::hours(1);
    std::chrono::seconds notAfter = std::chrono::hours(24);
    Purpose purpose = Purpose::Server;
    /** Signed over SHA-1, which nobody takes any more. */
    bool weaklySigned = false;
};

/**
 * An authority that issues certificates while a demo or a test runs. All keys are new ones on the curve
 * P-256. Whatever OpenSSL refuses raises std::runtime_error.
 */
class Authority {
  public:
    /** One that has signed itself. Nobody trusts it who is not told to. */
    explicit Authority(const std::string& name);
    ~Authority();
    Authority(Authority&&) noexcept;
    Authority& operator=(Authority&&) noexcept;
    Authority(const Authority&) = delete;
    Authority& operator=(const Authority&) = delete;

    /** Its own certificate: what a client is to trust, if it is a root. */
    const std::string& certificatePem() const;

    /** An authority below this one. */
    Authority intermediate(const std::string& name) const;

    Certificate issue(const CertificateDescription& description) const;

  private:
    struct Signer;
    explicit Authority(std::unique_ptr<Signer> signer);

    std::unique_ptr<Signer> signer_;
};

/** A certificate that no authority has signed but its own key. \throws std::runtime_error as an authority. */
Certificate selfSigned(const CertificateDescription& description);

/** Where a certificate was written to. */
struct CertificateFiles {
    std::filesystem::path chain;
    std::filesystem::path key;
};

/**
 * Writes <name>.pem, the chain, and <name>.key, which only its owner can read (mode 0600), into the folder.
 * Files that are there are replaced. \throws std::runtime_error when one cannot be written.
 */
CertificateFiles writeTo(const std::filesystem::path& folder, const std::string& name,
                         const Certificate& certificate);

} // namespace mailserver
