// What the program finds in the library, which is loaded at the first message that is listed or opened.

#include "standard/reading.h"
#include "standard/transfer_decoder.h"

namespace standard {

namespace {
class Reader final : public StandardReader {
  public:
    ListedFields listed(const ListedFields& fields) const override { return listedFields(fields); }

    StandardMessage read(std::string_view header, std::string_view body) const override {
        return readStandardMessage(header, body);
    }

    void decode(const StandardAttachment& attachment,
                const std::function<void(std::string_view)>& take) const override {
        standard::decode(attachment.content, attachment.encoding, take);
    }
};
} // namespace

} // namespace standard

extern "C" __attribute__((visibility("default"))) const StandardReader* brindlewakeStandardReader() {
    static const standard::Reader reader;
    return &reader;
}
