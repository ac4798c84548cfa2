// Prints what GMime reads in the messages of the named files, in the form that email_package has.

#include <cstdio>
#include <gmime/gmime.h>
#include <memory>
#include <string>
#include <string_view>

namespace {
struct Unref {
    void operator()(void* object) const { g_object_unref(object); }
};

struct Free {
    void operator()(char* text) const { g_free(text); }
};

using Text = std::unique_ptr<char, Free>;

template <class Type>
using Owned = std::unique_ptr<Type, Unref>;

std::string digits(std::string_view bytes) {
    std::string text;
    for (const char byte : bytes) {
        constexpr std::string_view hexadecimal = "0123456789abcdef";
        const auto value = static_cast<unsigned char>(byte);
        text += {hexadecimal[value >> 4U], hexadecimal[value & 15U]};
    }
    return text.empty() ? "-" : text;
}

std::string orEmpty(const char* text) {
    return text == nullptr ? std::string() : text;
}

/** Everything that is written into the stream by the function. */
template <class Write>
std::string written(const Write& write) {
    const Owned<GMimeStream> stream(g_mime_stream_mem_new());
    write(stream.get());
    const GByteArray* const bytes = g_mime_stream_mem_get_byte_array(GMIME_STREAM_MEM(stream.get()));
    return {reinterpret_cast<const char*>(bytes->data), bytes->len};
}

std::string withoutCarriageReturns(const std::string& text) {
    std::string plain;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text.compare(at, 2, "\r\n") != 0) {
            plain += text[at];
        }
    }
    return plain.ends_with('\n') ? plain.substr(0, plain.size() - 1) : plain;
}

void printAddresses(const char* field, InternetAddressList* list) {
    for (int at = 0; list != nullptr && at < internet_address_list_length(list); ++at) {
        InternetAddress* const address = internet_address_list_get_address(list, at);
        const char* const mailbox = internet_address_mailbox_get_idn_addr(INTERNET_ADDRESS_MAILBOX(address));
        std::printf("%s %s %s\n", field, digits(orEmpty(internet_address_get_name(address))).c_str(),
                    digits(orEmpty(mailbox)).c_str());
    }
}

void printFile(GMimeObject* part) {
    GMimeContentType* const type = g_mime_object_get_content_type(part);
    const Text name(g_mime_content_type_get_mime_type(type));
    const std::string fileName = orEmpty(g_mime_object_get_content_disposition_parameter(part, "filename"));
    const std::string content = written([part](GMimeStream* stream) {
        if (GMIME_IS_MESSAGE_PART(part)) {
            GMimeMessage* const inner = g_mime_message_part_get_message(GMIME_MESSAGE_PART(part));
            g_mime_object_write_to_stream(GMIME_OBJECT(inner), nullptr, stream);
        } else {
            g_mime_data_wrapper_write_to_stream(g_mime_part_get_content(GMIME_PART(part)), stream);
        }
    });
    std::printf("file %s %s %s\n", name.get(), digits(fileName).c_str(), digits(content).c_str());
}

void describe(GMimeMessage* message) {
    std::printf("subject %s\n", digits(orEmpty(g_mime_message_get_subject(message))).c_str());
    printAddresses("from", g_mime_message_get_from(message));
    printAddresses("to", g_mime_message_get_to(message));
    printAddresses("cc", g_mime_message_get_cc(message));
    GMimeObject* const whole = g_mime_message_get_mime_part(message);
    const bool hasParts = GMIME_IS_MULTIPART(whole);
    GMimeObject* const first = hasParts ? g_mime_multipart_get_part(GMIME_MULTIPART(whole), 0) : whole;
    const Text text(g_mime_text_part_get_text(GMIME_TEXT_PART(first)));
    std::printf("text %s\n", digits(withoutCarriageReturns(orEmpty(text.get()))).c_str());
    for (int at = 1; hasParts && at < g_mime_multipart_get_count(GMIME_MULTIPART(whole)); ++at) {
        printFile(g_mime_multipart_get_part(GMIME_MULTIPART(whole), at));
    }
}
} // namespace

int main(int count, char** arguments) {
    g_mime_init();
    for (int at = 1; at < count; ++at) {
        const Owned<GMimeStream> file(g_mime_stream_file_open(arguments[at], "r", nullptr));
        const Owned<GMimeParser> parser(g_mime_parser_new_with_stream(file.get()));
        const Owned<GMimeMessage> message(g_mime_parser_construct_message(parser.get(), nullptr));
        std::printf("message\n");
        describe(message.get());
    }
    g_mime_shutdown();
    return 0;
}
