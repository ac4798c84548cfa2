#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace mailserver {

/** Whether the server lets this user in with this password. */
using Admission = std::function<bool(std::string_view user, std::string_view password)>;

/** A user's password, nothing where there is no such user. */
using PasswordOf = std::function<std::optional<std::string>(std::string_view user)>;

/** Who may log on. */
struct Accounts {
    Admission admits;
    /** For the ways to log on in which the password itself does not come; without it nobody can use these. */
    PasswordOf passwordOf = {};
};

/** What lets any user in, unless there is another rule. */
inline constexpr std::string_view kDemoPassword = "demo";

/** Any user is known, with the same password. */
inline Accounts anyUserWith(std::string_view password) {
    const std::string wanted(password);
    return {[wanted](std::string_view /*user*/, std::string_view given) { return given == wanted; },
            [wanted](std::string_view /*user*/) { return std::optional(wanted); }};
}

/** One user is known. */
inline Accounts only(const std::string& user, const std::string& password) {
    return {[=](std::string_view name, std::string_view given) { return name == user && given == password; },
            [=](std::string_view name) { return name == user ? std::optional(password) : std::nullopt; }};
}

} // namespace mailserver
