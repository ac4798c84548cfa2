#include "mailserver/mailbox.h"

#include "mailserver/mail_text.h"

#include <algorithm>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace mailserver {

namespace {

std::string contentOf(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream content;
    if (!(content << file.rdbuf())) {
        throw std::runtime_error("cannot read " + path.string());
    }
    return std::move(content).str();
}

} // namespace

void Mailbox::load(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> paths;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.path().extension() == ".eml") {
            paths.push_back(entry.path());
        }
    }
    std::sort(paths.begin(), paths.end());
    for (const auto& path : paths) {
        if (!append(contentOf(path))) {
            throw std::runtime_error("too large: " + path.string());
        }
    }
}

bool Mailbox::append(std::string_view text) {
    std::string lines = withCrLf(text);
    if (lines.size() > kMaximumMessageBytes || bytes_ + lines.size() > kMaximumBytes) {
        return false;
    }
    store(std::move(lines));
    return true;
}

void Mailbox::store(std::string text) {
    bytes_ += text.size();
    ++lastNumber_;
    messages_.push_back(
        std::make_shared<const Message>(Message{"message-" + std::to_string(lastNumber_), std::move(text)}));
}

void Mailbox::remove(const std::string& uniqueId) {
    const auto found = std::find_if(messages_.begin(), messages_.end(), [&](const MessagePointer& message) {
        return message->uniqueId == uniqueId;
    });
    if (found == messages_.end()) {
        return;
    }
    bytes_ -= (*found)->text.size();
    messages_.erase(found);
}

} // namespace mailserver
