#include "bench/reading/readers.h"

#include <gmime/gmime.h>
#include <memory>
#include <stdexcept>

namespace bench {

namespace {
template <class Type>
using Owned = std::unique_ptr<Type, decltype(&g_object_unref)>;

template <class Type>
Owned<Type> owned(Type* object) {
    return {object, &g_object_unref};
}

std::string bytesOf(GMimePart* part) {
    const auto nowhere = owned(g_mime_stream_null_new());
    const gssize bytes = g_mime_data_wrapper_write_to_stream(g_mime_part_get_content(part), nowhere.get());
    return " " + std::to_string(bytes);
}

void takeText(GMimeTextPart* part, ReadMessage& result) {
    const std::unique_ptr<char, decltype(&g_free)> text(g_mime_text_part_get_text(part), &g_free);
    if (text) {
        result.text.append(text.get()).append("\r\n");
    }
}

void walk(GMimeObject* object, bool alternative, Told told, ReadMessage& result);

void walkMultipart(GMimeMultipart* multipart, bool alternative, Told told, ReadMessage& result) {
    const int count = g_mime_multipart_get_count(multipart);
    for (int index = 0; index < count; ++index) {
        walk(g_mime_multipart_get_part(multipart, index), alternative, told, result);
    }
}

/** Among alternatives only the plain text is taken. */
void walk(GMimeObject* object, bool alternative, Told told, ReadMessage& result) {
    if (GMIME_IS_MULTIPART(object) != 0) {
        GMimeContentType* const type = g_mime_object_get_content_type(object);
        walkMultipart(GMIME_MULTIPART(object),
                      g_mime_content_type_is_type(type, "multipart", "alternative") != 0, told, result);
    } else if (GMIME_IS_TEXT_PART(object) != 0) {
        GMimeContentType* const type = g_mime_object_get_content_type(object);
        if (!alternative || g_mime_content_type_is_type(type, "text", "plain") != 0) {
            takeText(GMIME_TEXT_PART(object), result);
        }
    } else if (GMIME_IS_PART(object) != 0) {
        const char* const name = g_mime_part_get_filename(GMIME_PART(object));
        result.attachments.emplace_back(name == nullptr ? "" : name);
        if (told == Told::NameAndBytes) {
            result.attachments.back() += bytesOf(GMIME_PART(object));
        }
    }
}

ReadMessage read(GByteArray* bytes, Told told) {
    const auto stream = owned(g_mime_stream_mem_new_with_byte_array(bytes));
    g_mime_stream_mem_set_owner(GMIME_STREAM_MEM(stream.get()), FALSE);
    const auto parser = owned(g_mime_parser_new_with_stream(stream.get()));
    const auto message = owned(g_mime_parser_construct_message(parser.get(), nullptr));
    if (!message) {
        throw std::runtime_error("GMime finds no message");
    }
    ReadMessage result;
    walk(g_mime_message_get_mime_part(message.get()), false, told, result);
    return result;
}
} // namespace

Reader gmimeReader(std::string_view message, Told told) {
    g_mime_init(); // counts its calls; only the first one does anything
    const std::shared_ptr<GByteArray> bytes(g_byte_array_sized_new(static_cast<guint>(message.size())),
                                            &g_byte_array_unref);
    g_byte_array_append(bytes.get(), reinterpret_cast<const guint8*>(message.data()),
                        static_cast<guint>(message.size()));
    return [bytes, told] { return read(bytes.get(), told); };
}

} // namespace bench
