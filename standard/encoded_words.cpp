#include "standard/encoded_words.h"

#include "standard/charset_decoder.h"
#include "standard/header_fields.h"
#include "standard/hexadecimal.h"
#include "standard/transfer_decoder.h"

#include <algorithm>
#include <cstddef>
#include <glib.h>
#include <memory>
#include <optional>
#include <utility>

namespace standard {

namespace {
struct EncodedWord {
    std::string charset;
    std::string bytes;
    /** Bytes of the word in the field. */
    std::size_t length = 0;
};

/** The encoding Q (RFC 2047 section 4.2). */
std::string decodedQ(std::string_view text) {
    std::string bytes;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const auto byte = text[at] == '=' ? byteOfDigits(text.substr(at + 1)) : std::nullopt;
        bytes.push_back(byte.value_or(text[at] == '_' ? ' ' : text[at]));
        at += byte ? 2 : 0;
    }
    return bytes;
}

/**
 * Where the text of an encoded word ends, which is before its "?="; nothing when there is none, or when
 * another word begins first. So each byte is looked at once, however many words are without an end.
 */
std::optional<std::size_t> endOfText(std::string_view rest, std::size_t start) {
    for (std::size_t at = start; at < rest.size(); ++at) {
        if (rest[at] != '?') {
            continue;
        }
        if (rest.substr(at + 1).starts_with('=')) {
            return at;
        }
        if (at > start && rest[at - 1] == '=') {
            return std::nullopt;
        }
    }
    return std::nullopt;
}

/** The encoded word that the text begins with; it begins with "=?". */
std::optional<EncodedWord> wordAt(std::string_view text) {
    constexpr std::size_t longestCharset = 60;
    constexpr std::string_view notInNames = "? \t\r\n=()<>@,;:[]";
    const std::size_t question = text.find_first_of(notInNames, 2);
    if (question == std::string_view::npos || question == 2 || question > longestCharset ||
        text[question] != '?' || !text.substr(question + 2).starts_with('?')) {
        return std::nullopt;
    }
    const char encoding = static_cast<char>(text[question + 1] | 0x20);
    const std::size_t start = question + 3;
    const auto end = encoding == 'b' || encoding == 'q' ? endOfText(text, start) : std::nullopt;
    if (!end) {
        return std::nullopt;
    }
    const std::string_view encoded = text.substr(start, *end - start);
    EncodedWord word;
    // RFC 2231 section 5 puts a language behind the charset.
    word.charset = lowerCase(text.substr(2, question - 2));
    word.charset.resize(std::min(word.charset.find('*'), word.charset.size()));
    if (encoding == 'b') {
        if (!isDecodable(encoded, TransferEncoding::Base64)) {
            return std::nullopt;
        }
        word.bytes = decoded(encoded, TransferEncoding::Base64);
    } else {
        word.bytes = decodedQ(encoded);
    }
    word.length = *end + 2;
    return word;
}

/** Decodes a field's text, one stretch after the other. */
class Words {
  public:
    /** How the text of encoded words is written. */
    using Write = std::string (*)(std::string text);

    explicit Words(Write write) : write_(write) {}

    std::string decode(std::string_view text) {
        std::size_t plainFrom = 0;
        for (std::size_t at = text.find("=?"); at != std::string_view::npos; at = text.find("=?", at)) {
            const auto word = wordAt(text.substr(at));
            if (!word) {
                at += 2;
                continue;
            }
            takePlain(text.substr(plainFrom, at - plainFrom));
            take(*word);
            at += word->length;
            plainFrom = at;
        }
        takePlain(text.substr(plainFrom));
        endOfWords();
        return std::move(result_);
    }

  private:
    void takePlain(std::string_view plain) {
        // RFC 2047 section 6.2: white space between two encoded words belongs to their coding. What comes
        // behind the last one is text.
        if (!trimmed(plain).empty() || charset_.empty()) {
            endOfWords();
            result_ += toUtf8(plain);
        } else {
            betweenWords_ = plain;
        }
    }

    void take(const EncodedWord& word) {
        if (word.charset != charset_) {
            betweenWords_ = {};
            endOfWords();
            charset_ = word.charset;
        }
        betweenWords_ = {};
        // A character may be cut by the end of a word, so the bytes of several words are read as one text.
        bytes_ += word.bytes;
    }

    void endOfWords() {
        if (!charset_.empty()) {
            result_ += write_(toUtf8(bytes_, charset_));
            result_ += betweenWords_;
        }
        bytes_.clear();
        charset_.clear();
        betweenWords_ = {};
    }

    Write write_;
    std::string result_;
    std::string bytes_;
    /** The charset of the bytes; empty while there are none. */
    std::string charset_;
    std::string_view betweenWords_;
};
} // namespace

std::string decodedText(std::string_view text) {
    return Words([](std::string decodedWords) { return decodedWords; }).decode(text);
}

std::string withWordsOfUtf8(std::string_view text) {
    return Words([](std::string decodedWords) {
               const std::unique_ptr<char, decltype(&g_free)> encoded(
                   g_base64_encode(reinterpret_cast<const unsigned char*>(decodedWords.data()),
                                   decodedWords.size()),
                   &g_free);
               return "=?utf-8?B?" + std::string(encoded.get()) + "?=";
           })
        .decode(text);
}

} // namespace standard
