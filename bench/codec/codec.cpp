// Base64 of 64 MB in memory, by the program's codec and by those of OpenSSL, GLib and Qt, in one run:
//
//     bench_codec [rounds]
//
// Encoding: the program writes lines of 76 characters with CR LF, as mail wants them; OpenSSL's EVP encoder
// writes lines of 64 characters with LF, which cannot be changed; Qt writes one line. Each does what it does.
// Decoding: all read the same text of 76-character lines with CR LF. Those that take pieces get the same
// pieces of 64 KiB and convert them into a small buffer, as before writing it to a file; Qt takes all at
// once.
//
// A first round compares all results. The rounds that count are interleaved and drop the result, so that only
// the codec is timed. The time is that of the processor, which other programs disturb least.

#include "components/netcodelib/base64_decoder.h"
#include "components/netcodelib/base64_encoder.h"

#include <QByteArray>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <glib.h>
#include <iomanip>
#include <iostream>
#include <memory>
#include <openssl/evp.h>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace {
constexpr std::size_t kBytes = 64'000'000;
constexpr std::size_t kPieceBytes = 57 * 1150;
constexpr double kBytesPerMegabyte = 1e6;

/** Takes one piece of a result. */
using Sink = std::function<void(std::string_view)>;

struct Contestant {
    std::string name;
    std::function<void(std::string_view input, const Sink& sink)> work;
    std::vector<double> megabytesPerSecond;
};

using EncodeContext = std::unique_ptr<EVP_ENCODE_CTX, decltype(&EVP_ENCODE_CTX_free)>;

EncodeContext newContext() {
    return {EVP_ENCODE_CTX_new(), &EVP_ENCODE_CTX_free};
}

template <class Action>
void forEachPiece(std::string_view input, const Action& action) {
    while (!input.empty()) {
        const std::string_view piece = input.substr(0, kPieceBytes);
        action(piece);
        input.remove_prefix(piece.size());
    }
}

const unsigned char* bytes(std::string_view text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

/** Where the libraries written in C put a piece of their result. */
class Buffer {
  public:
    explicit Buffer(std::size_t bytes) : bytes_(bytes, '\0') {}

    unsigned char* bytes() { return reinterpret_cast<unsigned char*>(bytes_.data()); }

    template <class Count>
    std::string_view first(Count bytes) const {
        return std::string_view(bytes_).substr(0, static_cast<std::size_t>(bytes));
    }

  private:
    std::string bytes_;
};

template <class Coder>
void convertInPieces(std::string_view input, const Sink& sink) {
    Coder coder;
    std::string buffer;
    forEachPiece(input, [&](std::string_view piece) {
        buffer.clear();
        coder.append(piece, buffer);
        sink(buffer);
    });
    buffer.clear();
    coder.finish(buffer);
    sink(buffer);
}

void encodeWithOpenSsl(std::string_view input, const Sink& sink) {
    const EncodeContext context = newContext();
    EVP_EncodeInit(context.get());
    Buffer buffer(kPieceBytes * 2);
    int written = 0;
    forEachPiece(input, [&](std::string_view piece) {
        if (EVP_EncodeUpdate(context.get(), buffer.bytes(), &written, bytes(piece),
                             static_cast<int>(piece.size())) != 1) {
            throw std::runtime_error("EVP_EncodeUpdate failed");
        }
        sink(buffer.first(written));
    });
    EVP_EncodeFinal(context.get(), buffer.bytes(), &written);
    sink(buffer.first(written));
}

void decodeWithOpenSsl(std::string_view input, const Sink& sink) {
    const EncodeContext context = newContext();
    EVP_DecodeInit(context.get());
    Buffer buffer(kPieceBytes);
    int written = 0;
    forEachPiece(input, [&](std::string_view piece) {
        if (EVP_DecodeUpdate(context.get(), buffer.bytes(), &written, bytes(piece),
                             static_cast<int>(piece.size())) < 0) {
            throw std::runtime_error("EVP_DecodeUpdate failed");
        }
        sink(buffer.first(written));
    });
    if (EVP_DecodeFinal(context.get(), buffer.bytes(), &written) < 0) {
        throw std::runtime_error("EVP_DecodeFinal failed");
    }
    sink(buffer.first(written));
}

void decodeWithGlib(std::string_view input, const Sink& sink) {
    Buffer buffer(kPieceBytes);
    gint state = 0;
    guint save = 0;
    forEachPiece(input, [&](std::string_view piece) {
        sink(buffer.first(g_base64_decode_step(piece.data(), piece.size(), buffer.bytes(), &state, &save)));
    });
}

QByteArray withoutCopying(std::string_view bytes) {
    return QByteArray::fromRawData(bytes.data(), static_cast<qsizetype>(bytes.size()));
}

void encodeWithQt(std::string_view input, const Sink& sink) {
    const QByteArray text = withoutCopying(input).toBase64();
    sink({text.constData(), static_cast<std::size_t>(text.size())});
}

void decodeWithQt(std::string_view input, const Sink& sink) {
    const QByteArray bytes = QByteArray::fromBase64(withoutCopying(input));
    sink({bytes.constData(), static_cast<std::size_t>(bytes.size())});
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

double processorSeconds() {
    std::timespec time{};
    if (clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time) != 0) {
        throw std::runtime_error("no processor time");
    }
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/** Runs all contestants in turn, round by round. Speeds count the bytes of the file, not of its text. */
void race(std::vector<Contestant>& contestants, std::string_view input, int rounds) {
    for (int round = 0; round < rounds; ++round) {
        for (Contestant& contestant : contestants) {
            std::size_t produced = 0;
            const double start = processorSeconds();
            contestant.work(input, [&produced](std::string_view piece) { produced += piece.size(); });
            const double seconds = processorSeconds() - start;
            if (produced == 0) {
                throw std::runtime_error(contestant.name + " has done nothing");
            }
            contestant.megabytesPerSecond.push_back(kBytes / kBytesPerMegabyte / seconds);
        }
    }
}

std::string resultOf(const Contestant& contestant, std::string_view input) {
    std::string result;
    contestant.work(input, [&result](std::string_view piece) { result.append(piece); });
    return result;
}

void show(const char* title, const std::vector<Contestant>& contestants) {
    const double own = median(contestants.front().megabytesPerSecond);
    std::cout << title << '\n' << std::fixed;
    for (const Contestant& contestant : contestants) {
        const auto& speeds = contestant.megabytesPerSecond;
        const auto [slowest, fastest] = std::minmax_element(speeds.begin(), speeds.end());
        std::cout << "  " << std::left << std::setw(28) << contestant.name << std::right
                  << std::setprecision(0) << std::setw(7) << median(speeds) << " MB/s  (" << *slowest
                  << " to " << *fastest << ")" << std::setprecision(2) << "  Brindlewake is "
                  << own / median(speeds) << " times as fast\n";
    }
}

std::string randomBytes() {
    std::mt19937_64 generator(1);
    std::string bytes(kBytes, '\0');
    for (char& byte : bytes) {
        byte = static_cast<char>(generator() & 0xFFU);
    }
    return bytes;
}

std::string withoutLineEnds(std::string text) {
    std::erase_if(text, [](char character) { return character == '\r' || character == '\n'; });
    return text;
}

void requireSame(bool same, const Contestant& contestant) {
    if (!same) {
        throw std::runtime_error(contestant.name + " has another result: there is nothing to compare");
    }
}

void run(int rounds) {
    const std::string bytes = randomBytes();

    std::vector<Contestant> encoders{
        {"Brindlewake, 76 + CR LF", convertInPieces<netcodelib::Base64Encoder>, {}},
        {"OpenSSL EVP, 64 + LF", encodeWithOpenSsl, {}},
        {"Qt toBase64, one line", encodeWithQt, {}}};
    const std::string text = resultOf(encoders.front(), bytes);
    const std::string characters = withoutLineEnds(text);
    for (const Contestant& encoder : encoders) {
        requireSame(withoutLineEnds(resultOf(encoder, bytes)) == characters, encoder);
    }
    race(encoders, bytes, rounds);
    show("Encoding 64 MB", encoders);

    std::vector<Contestant> decoders{{"Brindlewake", convertInPieces<netcodelib::Base64Decoder>, {}},
                                     {"GLib g_base64_decode_step", decodeWithGlib, {}},
                                     {"OpenSSL EVP_DecodeUpdate", decodeWithOpenSsl, {}},
                                     {"Qt fromBase64", decodeWithQt, {}}};
    for (const Contestant& decoder : decoders) {
        requireSame(resultOf(decoder, text) == bytes, decoder);
    }
    race(decoders, text, rounds);
    show("Decoding to 64 MB, lines of 76 + CR LF", decoders);
    std::cout << "Medians of " << rounds << " interleaved rounds, processor time" << std::endl;
}
} // namespace

int main(int argumentCount, char** arguments) {
    try {
        const int rounds = argumentCount > 1 ? std::atoi(arguments[1]) : 11;
        if (rounds < 1) {
            std::cerr << "usage: bench_codec [rounds]\n";
            return 2;
        }
        run(rounds);
    } catch (const std::exception& error) {
        std::cerr << "bench_codec: " << error.what() << '\n';
        return 1;
    }
    return 0;
}
