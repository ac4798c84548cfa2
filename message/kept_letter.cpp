#include "message/kept_letter.h"

#include <QCryptographicHash>

#include <charconv>
#include <utility>

namespace {
constexpr std::string_view kFirstLine = "Brindlewake letter 1\n";

// A field is its name, a space, the number of its bytes, LF, its bytes, LF.

void append(std::string& file, std::string_view name, std::string_view value) {
    file.append(name).append(" ").append(std::to_string(value.size())).append("\n");
    file.append(value).append("\n");
}

/** Takes the prefix from the text's start; false when it does not stand there. */
bool take(std::string_view& text, std::string_view prefix) {
    if (!text.starts_with(prefix)) {
        return false;
    }
    text.remove_prefix(prefix.size());
    return true;
}

/** Takes the field of this name from the text's start. */
std::optional<std::string_view> takeField(std::string_view& text, std::string_view name) {
    std::size_t size = 0;
    if (!take(text, name) || !take(text, " ")) {
        return std::nullopt;
    }
    const auto number = std::from_chars(text.data(), text.data() + text.size(), size);
    if (number.ec != std::errc()) {
        return std::nullopt;
    }
    text.remove_prefix(static_cast<std::size_t>(number.ptr - text.data()));
    if (!take(text, "\n") || size > text.size()) {
        return std::nullopt;
    }
    const std::string_view value = text.substr(0, size);
    text.remove_prefix(size);
    return take(text, "\n") ? std::optional(value) : std::nullopt;
}

bool takeField(std::string_view& text, std::string_view name, QString& value) {
    const auto bytes = takeField(text, name);
    if (bytes) {
        value = QString::fromUtf8(bytes->data(), static_cast<qsizetype>(bytes->size()));
    }
    return bytes.has_value();
}

bool takeField(std::string_view& text, std::string_view name, std::string& value) {
    const auto bytes = takeField(text, name);
    value = bytes.value_or(std::string_view());
    return bytes.has_value();
}

std::string joined(const std::vector<std::string>& ids) {
    std::string text;
    for (const std::string& id : ids) {
        text += id + '\n';
    }
    return text;
}

std::vector<std::string> lines(std::string_view text) {
    std::vector<std::string> found;
    for (std::size_t end = text.find('\n'); end != std::string_view::npos; end = text.find('\n')) {
        found.emplace_back(text.substr(0, end));
        text.remove_prefix(end + 1);
    }
    return found;
}

/** The name of the first field of what a letter takes along; any other letter has none of these fields. */
constexpr std::string_view kOrigin = "In-Reply-To";

void append(std::string& file, const LetterOrigin& origin) {
    const ReceivedMessage none;
    const ReceivedMessage& original = origin.original ? *origin.original : none;
    append(file, kOrigin, origin.inReplyTo);
    append(file, "References", joined(origin.references));
    append(file, "Original-Name", origin.originalName.toStdString());
    append(file, "Original-Header", original.header);
    append(file, "Original-Body", original.body);
}

bool takeOrigin(std::string_view& file, LetterOrigin& origin) {
    std::string references;
    auto original = std::make_shared<ReceivedMessage>();
    const bool taken = takeField(file, kOrigin, origin.inReplyTo) &&
                       takeField(file, "References", references) &&
                       takeField(file, "Original-Name", origin.originalName) &&
                       takeField(file, "Original-Header", original->header) &&
                       takeField(file, "Original-Body", original->body);
    origin.references = lines(references);
    if (!original->header.empty() || !original->body.empty()) {
        origin.original = std::move(original);
    } else {
        origin.originalName.clear();
    }
    return taken;
}
} // namespace

bool isEmpty(const KeptLetter& letter, const QString& senderAddress) {
    return letter.to.isEmpty() && (letter.copies.isEmpty() || letter.copies == senderAddress) &&
           letter.subject.isEmpty() && letter.attachment.isEmpty() && letter.text.empty();
}

std::string keptLetterFile(const KeptLetter& letter) {
    std::string file(kFirstLine);
    // Room for the lines and the fields that people type, so that a long text is copied once.
    constexpr std::size_t usually = 4096;
    const std::size_t original =
        letter.origin.original ? letter.origin.original->header.size() + letter.origin.original->body.size()
                               : 0;
    file.reserve(letter.text.size() + original + usually);
    append(file, "To", letter.to.toStdString());
    append(file, "Cc", letter.copies.toStdString());
    append(file, "Subject", letter.subject.toStdString());
    append(file, "Attachment", letter.attachment.toStdString());
    if (!letter.origin.isEmpty()) {
        append(file, letter.origin);
    }
    append(file, "Text", letter.text);
    return file;
}

std::optional<KeptLetter> keptLetterIn(std::string_view file) {
    KeptLetter letter;
    if (!take(file, kFirstLine) || !takeField(file, "To", letter.to) ||
        !takeField(file, "Cc", letter.copies) || !takeField(file, "Subject", letter.subject) ||
        !takeField(file, "Attachment", letter.attachment)) {
        return std::nullopt;
    }
    if (file.starts_with(kOrigin) && !takeOrigin(file, letter.origin)) {
        return std::nullopt;
    }
    const auto text = takeField(file, "Text");
    if (!text || !file.empty()) {
        return std::nullopt;
    }
    letter.text = *text;
    return letter;
}

QString keptLetterName(const QString& sender, const QString& folder) {
    const QByteArray both = folder.toUtf8() + '\0' + sender.toUtf8();
    const QByteArray digest = QCryptographicHash::hash(both, QCryptographicHash::Sha256);
    constexpr qsizetype letters = 32;
    return QLatin1String(digest.toHex().first(letters)) + QStringLiteral(".letter");
}
