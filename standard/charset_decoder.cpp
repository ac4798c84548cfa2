#include "standard/charset_decoder.h"

#include "platform/text.h"
#include "standard/header_fields.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <glib.h>
#include <iconv.h>
#include <string>
#include <utility>

namespace standard {

namespace {
constexpr std::string_view kReplacement = "\xEF\xBF\xBD"; // U+FFFD

/** What mail programs call by the name of a smaller charset. */
constexpr std::array<std::pair<std::string_view, const char*>, 24> kMeant = {{
    {"iso-8859-1", "CP1252"},
    {"iso8859-1", "CP1252"},
    {"iso_8859-1", "CP1252"},
    {"latin1", "CP1252"},
    {"latin-1", "CP1252"},
    {"iso-8859-9", "CP1254"},
    {"iso-8859-11", "CP874"},
    {"tis-620", "CP874"},
    {"gb2312", "GB18030"},
    {"gbk", "GB18030"},
    {"gb_2312-80", "GB18030"},
    {"x-gbk", "GB18030"},
    {"shift_jis", "CP932"},
    {"shift-jis", "CP932"},
    {"x-sjis", "CP932"},
    {"ks_c_5601-1987", "CP949"},
    {"ks_c_5601", "CP949"},
    {"euc-kr", "CP949"},
    {"windows-31j", "CP932"},
    {"x-windows-949", "CP949"},
    {"x-mac-roman", "MACINTOSH"},
    {"unicode-1-1-utf-7", "UTF-7"},
    {"iso-8859-8-i", "ISO-8859-8"},
    {"iso-8859-6-i", "ISO-8859-6"},
}};

/** Only letters, digits and a few signs: the name of a charset never means anything else to iconv. */
bool isName(std::string_view name) {
    constexpr std::size_t longest = 40;
    return !name.empty() && name.size() <= longest && std::all_of(name.begin(), name.end(), [](char letter) {
        return (letter >= 'a' && letter <= 'z') || (letter >= '0' && letter <= '9') || letter == '-' ||
               letter == '_' || letter == '.' || letter == ':' || letter == '+';
    });
}

/** The name without the marks that some programs put around it, in lower case. */
std::string plainName(std::string_view charset) {
    const auto isMark = [](char letter) {
        return letter == '"' || letter == '\'' || letter == ' ' || letter == ';' || letter == ',';
    };
    while (!charset.empty() && isMark(charset.front())) {
        charset.remove_prefix(1);
    }
    const auto end = std::find_if(charset.begin(), charset.end(), isMark);
    return lowerCase(charset.substr(0, static_cast<std::size_t>(end - charset.begin())));
}

bool isUtf8Name(std::string_view name) {
    return name == "utf-8" || name == "utf8" || name == "utf_8" || name == "unicode-1-1-utf-8";
}

/** Names of a text whose bytes tell best what it is. */
bool isBytes(std::string_view name) {
    return name.empty() || name == "us-ascii" || name == "ascii" || name == "ansi_x3.4-1968" ||
           name == "unknown-8bit" || name == "x-unknown" || name == "unknown" || name == "8bit" ||
           name == "7bit" || name == "binary" || isUtf8Name(name);
}

/** Where the next bytes are that are not UTF-8, at or after `start`; the end when there are none. */
std::size_t nextInvalid(std::string_view text, std::size_t start) {
    while (start < text.size()) {
        const char* end = nullptr;
        if (g_utf8_validate_len(text.data() + start, text.size() - start, &end) != FALSE) {
            return text.size();
        }
        const auto found = static_cast<std::size_t>(end - text.data());
        if (text[found] != '\0') {
            return found;
        }
        start = found + 1;
    }
    return text.size();
}

/** The text with U+FFFD for each byte that does not belong to a character. */
std::string repaired(std::string_view text) {
    std::string valid;
    valid.reserve(text.size() + kReplacement.size());
    std::size_t start = 0;
    while (start < text.size()) {
        const std::size_t end = nextInvalid(text, start);
        valid.append(text.substr(start, end - start));
        if (end < text.size()) {
            valid.append(kReplacement);
        }
        start = end + 1;
    }
    return valid;
}

/** Whether any character beyond ASCII is valid. */
bool hasValidCharacter(std::string_view text) {
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = nextInvalid(text, start);
        const std::string_view valid = text.substr(start, end - start);
        if (std::any_of(valid.begin(), valid.end(),
                        [](char byte) { return static_cast<unsigned char>(byte) >= 0x80; })) {
            return true;
        }
        start = end + 1;
    }
    return false;
}
} // namespace

/** The conversion by the system's iconv. */
class CharsetDecoder::Conversion {
  public:
    explicit Conversion(const std::string& name) {
        const auto* const meant = std::find_if(kMeant.begin(), kMeant.end(),
                                               [&](const auto& entry) { return entry.first == name; });
        const std::string known = name.starts_with("cp-") ? "cp" + name.substr(3) : name;
        handle_ = iconv_open("UTF-8", meant == kMeant.end() ? known.c_str() : meant->second);
        unit_ = name.starts_with("utf-16") || name.starts_with("ucs-2")   ? 2
                : name.starts_with("utf-32") || name.starts_with("ucs-4") ? 4
                                                                          : 1;
    }

    ~Conversion() {
        if (isOpen()) {
            iconv_close(handle_);
        }
    }

    Conversion(const Conversion&) = delete;
    Conversion& operator=(const Conversion&) = delete;

    bool isOpen() const noexcept {
        // iconv_open() says no with this value. NOLINTNEXTLINE(performance-no-int-to-ptr)
        return handle_ != reinterpret_cast<iconv_t>(-1);
    }

    void append(std::string_view bytes, std::string& text) {
        std::string joined;
        if (!rest_.empty()) {
            joined = std::move(rest_);
            rest_.clear();
            bytes = joined.append(bytes);
        }
        while (!bytes.empty() && convert(bytes, text)) {
        }
    }

    void finish(std::string& text) {
        if (!rest_.empty()) {
            text.append(kReplacement);
        }
        std::array<char, 64> buffer{};
        char* out = buffer.data();
        std::size_t room = buffer.size();
        iconv(handle_, nullptr, nullptr, &out, &room);
        text.append(buffer.data(), buffer.size() - room);
    }

  private:
    /** Converts up to a buffer full, or to the next fault; false when only part of a character is left. */
    bool convert(std::string_view& bytes, std::string& text) {
        std::array<char, 16'384> buffer; // NOLINT(cppcoreguidelines-pro-type-member-init): written first
        char* in = const_cast<char*>(bytes.data()); // NOLINT(cppcoreguidelines-pro-type-const-cast): iconv's
        std::size_t left = bytes.size();
        char* out = buffer.data();
        std::size_t room = buffer.size();
        errno = 0;
        const bool failed = iconv(handle_, &in, &left, &out, &room) == static_cast<std::size_t>(-1);
        const int error = failed ? errno : 0;
        text.append(buffer.data(), buffer.size() - room);
        bytes.remove_prefix(bytes.size() - left);
        if (error == EINVAL && bytes.size() < kLongestCharacter) {
            rest_ = bytes;
            return false;
        }
        if (error == EILSEQ || error == EINVAL) {
            text.append(kReplacement);
            bytes.remove_prefix(std::min(unit_, bytes.size()));
        }
        return error == 0 || error == EILSEQ || error == EINVAL || error == E2BIG;
    }

    /** Bytes; with the escapes before it. */
    static constexpr std::size_t kLongestCharacter = 16;

    iconv_t handle_ = nullptr;
    std::size_t unit_ = 1;
    /** The first bytes of a character whose others have not come yet. */
    std::string rest_;
};

CharsetDecoder::CharsetDecoder(std::string_view charset) {
    const std::string name = plainName(charset);
    isUtf8_ = isUtf8Name(name);
    if (!isBytes(name) && isName(name)) {
        auto conversion = std::make_unique<Conversion>(name);
        conversion_ = conversion->isOpen() ? std::move(conversion) : nullptr;
    }
}

CharsetDecoder::~CharsetDecoder() = default;

void CharsetDecoder::append(std::string_view bytes, std::string& text) {
    start_ = std::min(start_, text.size());
    if (conversion_) {
        conversion_->append(bytes, text);
    } else {
        text.append(bytes);
    }
}

void CharsetDecoder::finish(std::string& text) {
    if (conversion_) {
        conversion_->finish(text);
        return;
    }
    start_ = std::min(start_, text.size());
    const std::string_view bytes = std::string_view(text).substr(start_);
    if (nextInvalid(bytes, 0) == bytes.size()) {
        return;
    }
    std::string valid =
        isUtf8_ && hasValidCharacter(bytes) ? repaired(bytes) : platform::toBytes(platform::fromBytes(bytes));
    text.replace(start_, std::string::npos, valid);
}

std::string toUtf8(std::string_view bytes, std::string_view charset) {
    CharsetDecoder decoder(charset);
    std::string text;
    decoder.append(bytes, text);
    decoder.finish(text);
    return text;
}

} // namespace standard
