#include "components/poplib/commands.h"

namespace poplib {

namespace {
Command openCommand(CommandKind kind, const std::string& line, std::int32_t messageNumber = 0,
                    std::int32_t bodyLineLimit = 0) {
    return {{line, line}, kind, messageNumber, bodyLineLimit};
}
} // namespace

bool canBeSentAsArgument(std::string_view argument) noexcept {
    constexpr std::size_t keywordSpaceAndLineEnd = 7;
    constexpr std::string_view forbidden("\r\n\0", 3);
    return argument.size() + keywordSpaceAndLineEnd <= kMaximumCommandBytes &&
           argument.find_first_of(forbidden) == std::string_view::npos;
}

Command capaCommand() {
    return openCommand(CommandKind::Capa, "CAPA");
}

Command stlsCommand() {
    return openCommand(CommandKind::Stls, "STLS");
}

Command utf8Command() {
    return openCommand(CommandKind::Utf8, "UTF8");
}

Command userCommand(std::string_view name) {
    return openCommand(CommandKind::User, "USER " + std::string(name));
}

Command passCommand(std::string_view password) {
    return {{"PASS " + std::string(password), "PASS ****"}, CommandKind::Pass};
}

Command apopCommand(std::string_view name, std::string_view digest) {
    const std::string line = "APOP " + std::string(name) + ' ';
    return {{line + std::string(digest), line + "****"}, CommandKind::Apop};
}

Command authCommand(std::string_view mechanism, std::string_view initialResponse) {
    const std::string line = "AUTH " + std::string(mechanism);
    if (initialResponse.empty()) {
        return openCommand(CommandKind::Auth, line);
    }
    return {{line + ' ' + std::string(initialResponse), line + " ****"}, CommandKind::Auth};
}

Command authResponseCommand(std::string_view response) {
    if (response == "*") {
        return openCommand(CommandKind::AuthResponse, "*");
    }
    return {{std::string(response), std::string(protocol::kHidden)}, CommandKind::AuthResponse};
}

Command statCommand() {
    return openCommand(CommandKind::Stat, "STAT");
}

Command listCommand(std::int32_t messageNumber) {
    return openCommand(CommandKind::List, "LIST " + std::to_string(messageNumber), messageNumber);
}

Command listAllCommand() {
    return openCommand(CommandKind::ListAll, "LIST");
}

Command uidlCommand() {
    return openCommand(CommandKind::Uidl, "UIDL");
}

Command topCommand(std::int32_t messageNumber, std::int32_t bodyLineLimit) {
    return openCommand(CommandKind::Top,
                       "TOP " + std::to_string(messageNumber) + ' ' + std::to_string(bodyLineLimit),
                       messageNumber, bodyLineLimit);
}

Command retrCommand(std::int32_t messageNumber, std::int32_t bodyLineLimit) {
    return openCommand(CommandKind::Retr, "RETR " + std::to_string(messageNumber), messageNumber,
                       bodyLineLimit);
}

Command deleCommand(std::int32_t messageNumber) {
    return openCommand(CommandKind::Dele, "DELE " + std::to_string(messageNumber), messageNumber);
}

Command quitCommand() {
    return openCommand(CommandKind::Quit, "QUIT");
}

} // namespace poplib
