#pragma once

#include <cstddef>
#include <lber.h>
#include <string>
#include <string_view>

namespace directory {

/**
 * What the library reads and writes in place of a socket: bytes in memory, so that it never waits. It has to
 * outlive the library's own end of it.
 */
class LdapStream {
  public:
    LdapStream();
    ~LdapStream();
    LdapStream(const LdapStream&) = delete;
    LdapStream& operator=(const LdapStream&) = delete;

    /** One that the library may have for a socket's: nothing ever comes there. */
    int descriptor() const noexcept { return descriptor_; }

    /** Lets the library use this stream; false when it refuses. */
    bool layBelow(Sockbuf* buffer);

    std::string takeWritten();

    void giveToRead(std::string_view bytes);

    std::size_t unread() const noexcept { return incoming_.size() - taken_; }

  private:
    static int setUp(Sockbuf_IO_Desc* layer, void* stream);
    static int remove(Sockbuf_IO_Desc* layer);
    static int control(Sockbuf_IO_Desc* layer, int option, void* argument);
    static ber_slen_t read(Sockbuf_IO_Desc* layer, void* bytes, ber_len_t most);
    static ber_slen_t write(Sockbuf_IO_Desc* layer, void* bytes, ber_len_t count);
    static int close(Sockbuf_IO_Desc* layer);

    int descriptor_;
    std::string outgoing_;
    std::string incoming_;
    /** Bytes of `incoming_` that the library has read. */
    std::size_t taken_ = 0;
};

} // namespace directory
