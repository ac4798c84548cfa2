#include "components/smtplib/address_list.h"
#include "platform/runtime_error.h"

#include <gmock/gmock.h>

#include <string>

namespace {

using smtplib::AddressCharacters;
using smtplib::parseAddressList;
namespace errors = platform::errors;

/** The only mailbox of the text, or the number of the error that it raises. */
std::string mailboxIn(const std::string& text, AddressCharacters characters) {
    std::string mailbox;
    const int error =
        platform::errorNumberOf([&] { mailbox = parseAddressList(text, characters).at(0).mailbox(); });
    return error == 0 ? mailbox : std::to_string(error);
}

TEST(AddressCharacters, DecideWhatBecomesOfAddressesBeyondAscii) {
    const std::string bad = std::to_string(errors::BadAddress);
    const std::string beyond = std::to_string(errors::AddressBeyondAscii);

    const struct {
        std::string typed;
        std::string ascii;
        std::string inDomain;
        std::string any;
    } cases[] = {
        {"a@x.org", "a@x.org", "a@x.org", "a@x.org"},
        {"a@X.ORG", "a@X.ORG", "a@X.ORG", "a@X.ORG"},
        {"a@b\xc3\xbc.org", bad, "a@xn--b-eha.org", "a@xn--b-eha.org"},
        {"a@B\xc3\x9c.org", bad, "a@xn--b-eha.org", "a@xn--b-eha.org"},
        {"a@xn--b-eha.org", "a@xn--b-eha.org", "a@xn--b-eha.org", "a@xn--b-eha.org"},
        {"\xc3\xb6@x.org", bad, beyond, "\xc3\xb6@x.org"},
        {"\xc3\xb6@\xc3\xb6.org", bad, beyond, "\xc3\xb6@xn--nda.org"},
        {"\"\xc3\xb6 b\"@x.org", bad, beyond, "\"\xc3\xb6 b\"@x.org"},
        {"\"\xc3\xb6\"@x.org", bad, beyond, "\xc3\xb6@x.org"},
        {"\xe2\x80\xae"
         "a@x.org",
         bad, bad, bad},
        {"a\xe2\x80\x8b"
         "b@x.org",
         bad, bad, bad},
        {"\"a\xc2\xa0"
         "b\"@x.org",
         bad, bad, bad},
        {"\xff@x.org", bad, bad, bad},
        {"a\xef\xbf\xbd@x.org", bad, bad, bad},
        {"\xed\xa0\x80@x.org", bad, bad, bad},
        {"a@\xff.org", bad, bad, bad},
        {"a@x\xe2\x80\xae.org", bad, bad, bad},
        {"a@[\xc3\xb6]", bad, bad, bad},
    };

    for (const auto& [typed, ascii, inDomain, any] : cases) {
        EXPECT_EQ(mailboxIn(typed, AddressCharacters::Ascii), ascii) << typed;
        EXPECT_EQ(mailboxIn(typed, AddressCharacters::AnyInDomain), inDomain) << typed;
        EXPECT_EQ(mailboxIn(typed, AddressCharacters::Any), any) << typed;
    }
}

TEST(AddressCharacters, ADomainThatIsTooLongInALabelsIsRefused) {
    std::string label;
    for (int letter = 0; letter < 62; ++letter) {
        label += "\xc3\xb6";
    }
    EXPECT_EQ(mailboxIn("a@" + label + ".org", AddressCharacters::Any), std::to_string(errors::BadAddress));
}

TEST(AddressCharacters, TheFaultIsThatOfTheFirstAddressThatIsNotAllowed) {
    const std::string text = "a@x.org, \xc3\xb6@x.org, b";
    const auto beyond = smtplib::findAddressFault(text, AddressCharacters::AnyInDomain);
    ASSERT_TRUE(beyond.has_value());
    EXPECT_EQ(beyond->error, errors::AddressBeyondAscii);
    EXPECT_EQ(text.substr(beyond->begin, beyond->end - beyond->begin), "\xc3\xb6@x.org");
    const auto bad = smtplib::findAddressFault(text, AddressCharacters::Any);
    ASSERT_TRUE(bad.has_value());
    EXPECT_EQ(bad->error, errors::BadAddress);
    EXPECT_EQ(text.substr(bad->begin), "b");
}

} // namespace
