#include "components/directory/ldap_stream.h"

#include <cerrno>
#include <sys/eventfd.h>
#include <unistd.h>
#include <utility>

namespace directory {

namespace {
LdapStream& streamOf(const Sockbuf_IO_Desc* layer) {
    return *static_cast<LdapStream*>(layer->sbiod_pvt);
}
} // namespace

LdapStream::LdapStream() : descriptor_(eventfd(0, EFD_CLOEXEC)) {}

LdapStream::~LdapStream() {
    // The library leaves it open.
    ::close(descriptor_);
}

bool LdapStream::layBelow(Sockbuf* buffer) {
    static Sockbuf_IO functions{setUp, remove, control, read, write, close};
    return ber_sockbuf_add_io(buffer, &functions, LBER_SBIOD_LEVEL_PROVIDER, this) == 0;
}

std::string LdapStream::takeWritten() {
    return std::exchange(outgoing_, {});
}

void LdapStream::giveToRead(std::string_view bytes) {
    incoming_.erase(0, taken_);
    taken_ = 0;
    incoming_ += bytes;
}

int LdapStream::setUp(Sockbuf_IO_Desc* layer, void* stream) {
    layer->sbiod_pvt = stream;
    return 0;
}

int LdapStream::remove(Sockbuf_IO_Desc* /*layer*/) {
    return 0;
}

int LdapStream::control(Sockbuf_IO_Desc* layer, int option, void* /*argument*/) {
    // Without this answer the library would ask the system whether there is something to read.
    return option == LBER_SB_OPT_DATA_READY && streamOf(layer).unread() > 0 ? 1 : 0;
}

ber_slen_t LdapStream::read(Sockbuf_IO_Desc* layer, void* bytes, ber_len_t most) {
    LdapStream& stream = streamOf(layer);
    if (stream.unread() == 0) {
        errno = EWOULDBLOCK;
        return -1;
    }
    const std::size_t count = stream.incoming_.copy(static_cast<char*>(bytes), most, stream.taken_);
    stream.taken_ += count;
    return static_cast<ber_slen_t>(count);
}

ber_slen_t LdapStream::write(Sockbuf_IO_Desc* layer, void* bytes, ber_len_t count) {
    streamOf(layer).outgoing_.append(static_cast<const char*>(bytes), count);
    return static_cast<ber_slen_t>(count);
}

int LdapStream::close(Sockbuf_IO_Desc* /*layer*/) {
    return 0;
}

} // namespace directory
