#include "components/netcodelib/netcode.h"

#include "components/netcodelib/base64_encoder.h"
#include "components/netcodelib/part_decoder.h"
#include "components/netcodelib/write_behind.h"
#include "platform/drives.h"
#include "platform/private_file.h"
#include "platform/runtime_error.h"

#include <string>
#include <string_view>

namespace netcodelib {

using platform::RuntimeError;
namespace errors = platform::errors;

namespace {
/** Whole lines of encoded text, about 64 KiB. */
constexpr std::size_t kPieceBytes = Base64Encoder::kLineBytes * 1150;
constexpr std::int64_t kProgressBytes = 1 << 20;

class Encoding {
  public:
    static constexpr platform::Writing kWriting = platform::Writing::InPlace;

    explicit Encoding(std::string_view closingText) : closingText_(closingText) {}

    void append(std::string_view piece, std::string& output) { encoder_.append(piece, output); }

    void finish(std::string& output) {
        encoder_.finish(output);
        output += closingText_;
    }

  private:
    Base64Encoder encoder_;
    std::string_view closingText_;
};

class Decoding {
  public:
    static constexpr platform::Writing kWriting = platform::Writing::BesideTarget;

    void append(std::string_view piece, std::string& output) { decoder_.append(piece, output); }

    void finish(std::string& output) { decoder_.finish(output); }

  private:
    PartDecoder decoder_;
};
} // namespace

void NetCode::setCodingFormat(int format) {
    if (format != kBase64) {
        throw RuntimeError(errors::InvalidProcedureCall);
    }
}

void NetCode::setAction(Action action) {
    switch (action) {
    case Action::Decode:
        convert(Decoding());
        break;
    case Action::Encode:
        encodedFile_ = nullptr;
        convert(Encoding(closingText_));
        break;
    case Action::None:
        break;
    }
}

template <class Coder>
void NetCode::convert(Coder coder) {
    platform::RegularInput source(platform::nativePath(sourceFile_));
    const QString target = platform::nativePath(targetFile_);
    if (source.isFileOf(target)) {
        throw RuntimeError(errors::PathFileAccess);
    }
    platform::PrivateOutput output(target, Coder::kWriting,
                                   overwrite_ ? platform::Existing::Replace : platform::Existing::Refuse);

    // Half of the work is writing, and most computers can do both at once.
    WriteBehind behind([&output](std::string_view bytes) { output.write(bytes); });
    std::string buffer(kPieceBytes, '\0');
    std::string converted;
    std::int64_t reported = 0;
    for (std::string_view piece = source.read(buffer); !piece.empty(); piece = source.read(buffer)) {
        coder.append(piece, converted);
        behind.write(converted);
        if (Progress && source.bytesRead() - reported >= kProgressBytes) {
            reported = source.bytesRead();
            Progress(reported, source.size());
        }
    }
    coder.finish(converted);
    behind.write(converted);
    behind.finish();
    if (Progress) {
        Progress(source.bytesRead(), source.size());
    }
    output.finish();
    if constexpr (Coder::kWriting == platform::Writing::InPlace) {
        encodedFile_ = output.takeFile();
    }
}

} // namespace netcodelib
