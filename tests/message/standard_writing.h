#pragma once

#include "message/standard_writer.h"
#include "platform/runtime_error.h"
#include "tests/support/application.h"
#include "tests/support/drive_stands_for.h"
#include "tests/support/temporary_folder.h"

#include <QDateTime>
#include <gtest/gtest.h>

#include <string>

namespace support {

inline constexpr bool kEightBit = true;

/** A server's extensions. */
inline smtplib::Extensions offering(bool eightBit, bool smtpUtf8 = false) {
    smtplib::Extensions extensions;
    extensions.eightBit = eightBit;
    extensions.smtpUtf8 = smtpUtf8;
    return extensions;
}

/** The fields of a message from Ann to Bob. */
inline smtplib::Message toBob() {
    smtplib::Message message;
    message.sender = "ann@example.org";
    message.recipients = "bob@example.org";
    message.subject = "Hello";
    message.messageId = "<1@example.org>";
    return message;
}

/** The standard writer, and what it makes of letters. */
class StandardWriting : public testing::Test {
  protected:
    StandardWriting() { application(); }

    smtplib::PreparedMessage written(const Letter& letter, const smtplib::Extensions& offered,
                                     const smtplib::Message& fields = toBob()) {
        const ComposedMessage composed =
            writer.compose(letter, [this](const QString&, std::string_view closingLine) {
                closing = closingLine;
                return EncodedFile{};
            });
        EXPECT_EQ(composed.MessageBody, "");
        EXPECT_EQ(composed.ExtraHeaders, "");
        return composed.form(fields, offered, QDateTime::currentDateTime());
    }

    int errorOf(const smtplib::Message& fields, const smtplib::Extensions& offered) {
        return platform::errorNumberOf([&] { written({"x", {}, {}}, offered, fields); });
    }

    int errorOfCheck(const smtplib::Message& fields) {
        return platform::errorNumberOf([&] { writer.check(fields); });
    }

    TemporaryFolder folder;
    DriveStandsFor drive{'C', folder.qtPath(".")};
    StandardWriter writer;
    /** What stands behind the encoded file. */
    std::string closing;
};

} // namespace support
