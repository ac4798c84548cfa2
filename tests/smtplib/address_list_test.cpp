#include "components/smtplib/address_list.h"
#include "platform/runtime_error.h"

#include <gmock/gmock.h>

#include <string>

namespace {

using smtplib::Address;
using smtplib::distinctMailboxes;
using smtplib::parseAddressList;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::SizeIs;
namespace errors = platform::errors;

/** "name|mailbox" for each address; a name that was typed in quotes has them. */
std::vector<std::string> described(std::string_view text) {
    std::vector<std::string> lines;
    for (const Address& address : parseAddressList(text)) {
        const std::string name =
            address.nameWasQuoted ? '"' + address.displayName + '"' : address.displayName;
        lines.push_back(name + '|' + address.mailbox());
    }
    return lines;
}

int errorOf(std::string_view text) {
    return platform::errorNumberOf([&] { parseAddressList(text); });
}

struct Good {
    const char* name;
    std::string typed;
    std::vector<std::string> addresses;
};

class AddressListTaken : public testing::TestWithParam<Good> {};

TEST_P(AddressListTaken, GivesItsAddresses) {
    EXPECT_THAT(described(GetParam().typed), ElementsAreArray(GetParam().addresses));
}

const std::vector<Good> kGood{
    {"Nothing", "", {}},
    {"Blanks", " \t ", {}},
    {"EmptyItems", ",, ,", {}},
    {"Plain", "ann@example.org", {"|ann@example.org"}},
    {"BlanksAround", "  ann@example.org\t", {"|ann@example.org"}},
    {"Two", "ann@example.org, bob@example.org", {"|ann@example.org", "|bob@example.org"}},
    {"WithoutBlankBehindTheComma", "a@x.org,b@x.org", {"|a@x.org", "|b@x.org"}},
    {"CommaAtTheEnd", "ann@example.org, ", {"|ann@example.org"}},
    {"EmptyItemBetween", ",a@x.org,,b@x.org,", {"|a@x.org", "|b@x.org"}},
    {"AngleBrackets", "<ann@example.org>", {"|ann@example.org"}},
    {"Name", "Ann Miller <ann@example.org>", {"Ann Miller|ann@example.org"}},
    {"NameWithoutBlank", "Ann<ann@example.org>", {"Ann|ann@example.org"}},
    {"NameWithDot", "Ann B. Miller <ann@example.org>", {"Ann B. Miller|ann@example.org"}},
    {"NameWithManyBlanks", "Ann   \t Miller <a@x.org>", {"Ann Miller|a@x.org"}},
    {"NameBeyondAscii", "J\xc3\xb6rg <j@x.org>", {"J\xc3\xb6rg|j@x.org"}},
    {"NameThatIsAnEncodedWord", "=?utf-8?q?J=C3=B6rg?= <j@x.org>", {"=?utf-8?q?J=C3=B6rg?=|j@x.org"}},
    {"QuotedNameWithComma", R"("Miller, Ann" <ann@example.org>)", {R"("Miller, Ann"|ann@example.org)"}},
    {"QuotedNameWithBrackets",
     R"("A <b@x.org>, \"C\" \\" <ann@example.org>)",
     {R"("A <b@x.org>, "C" \"|ann@example.org)"}},
    {"QuotedAndBareName", R"("Ann" Miller <a@x.org>)", {R"("Ann Miller"|a@x.org)"}},
    {"EmptyQuotedName", R"("" <a@x.org>)", {R"(""|a@x.org)"}},
    {"CommentBehind", "ann@example.org (Ann, at home)", {"|ann@example.org"}},
    {"CommentsEverywhere", "(a)Ann(b)<(c)ann(d)@(e)example.org(f)>(g)", {"Ann|ann@example.org"}},
    {"NestedComment", R"(a@x.org (one (two \) b@x.org) , c@x.org))", {"|a@x.org"}},
    {"CommentBeyondAscii", "a@x.org (\xc3\xb6)", {"|a@x.org"}},
    {"BlanksAroundTheSign", "ann @ example.org", {"|ann@example.org"}},
    {"QuotedLocalPart", R"("ann miller"@x.org)", {R"(|"ann miller"@x.org)"}},
    {"QuotedLocalPartWithSigns", R"("a>\"b\\"@x.org)", {R"(|"a>\"b\\"@x.org)"}},
    {"LocalPartThatNeedsNoQuotes", R"("ann.miller"@x.org)", {"|ann.miller@x.org"}},
    {"SignsOfAnAtom", "a!#$%&'*+-/=?^_`{|}~@x.org", {"|a!#$%&'*+-/=?^_`{|}~@x.org"}},
    {"DomainLiteral", "ann@[192.0.2.1]", {"|ann@[192.0.2.1]"}},
    {"DomainLiteralOfIpv6", "<ann@[IPv6:2001:db8::1]>", {"|ann@[IPv6:2001:db8::1]"}},
    {"DomainOfOneLabel", "ann@localhost", {"|ann@localhost"}},
    {"DomainWithUnderscore", "ann@mail_1.example.org", {"|ann@mail_1.example.org"}},
    {"Group", "Friends: a@x.org, Bob <b@x.org>;", {"|a@x.org", "Bob|b@x.org"}},
    {"GroupOfNobody", "undisclosed-recipients:;", {}},
    {"GroupBetweenOthers",
     R"(a@x.org, "My: friends": b@x.org,; , c@x.org)",
     {"|a@x.org", "|b@x.org", "|c@x.org"}},
    {"LongestLocalPart", std::string(64, 'a') + "@x.org", {'|' + std::string(64, 'a') + "@x.org"}},
    {"LongestLabel", "a@" + std::string(63, 'x') + ".org", {"|a@" + std::string(63, 'x') + ".org"}},
};

template <class Case>
std::string nameOf(const testing::TestParamInfo<Case>& test) {
    return test.param.name;
}

INSTANTIATE_TEST_SUITE_P(Lists, AddressListTaken, testing::ValuesIn(kGood), nameOf<Good>);

struct Bad {
    const char* name;
    std::string typed;
    int error = errors::BadAddress;
};

class AddressListRefused : public testing::TestWithParam<Bad> {};

TEST_P(AddressListRefused, IsRefusedAlsoBehindAGoodAddress) {
    EXPECT_EQ(errorOf(GetParam().typed), GetParam().error);
    EXPECT_EQ(errorOf("ann@example.org, " + GetParam().typed), GetParam().error);
}

const std::vector<Bad> kBad{
    {"BareUserName", "ann"},
    {"UnquotedNameWithComma", "Miller, Ann <ann@example.org>"},
    {"TwoWords", "ann miller@example.org"},
    {"TwoAddressesWithoutComma", "a@x.org b@x.org"},
    {"SemicolonForAComma", "a@x.org; b@x.org"},
    {"NoLocalPart", "@example.org"},
    {"NoDomain", "ann@"},
    {"TwoSigns", "ann@example.org@example.org"},
    {"EmptyBrackets", "<>"},
    {"NameAlone", "Ann <>"},
    {"OpenBracket", "Ann <ann@example.org"},
    {"CloseBracketAlone", "ann@example.org>"},
    {"BracketsInBrackets", "<<a@x.org>>"},
    {"WordsBehindTheBrackets", "<a@x.org> Ann"},
    {"TwoPairsOfBrackets", "A <a@x.org> <b@x.org>"},
    {"Route", "<@relay.example.org:ann@example.org>"},
    {"DotFirst", ".ann@example.org"},
    {"DotLast", "ann.@example.org"},
    {"TwoDots", "a..b@example.org"},
    {"DomainWithDotLast", "ann@example.org."},
    {"DomainWithDotFirst", "ann@.example.org"},
    {"DomainWithTwoDots", "ann@example..org"},
    {"DomainWithHyphenFirst", "ann@-example.org"},
    {"DomainWithSign", "ann@exa%mple.org"},
    {"DomainInQuotes", R"(ann@"example.org")"},
    {"OpenQuote", R"("Ann <ann@example.org>)"},
    {"QuoteOpenAfterBackslash", R"("Ann\" <a@x.org>)"},
    {"OpenComment", "ann@example.org (Ann"},
    {"CommentClosedAlone", "ann@example.org)"},
    {"OpenLiteral", "ann@[192.0.2.1"},
    {"EmptyLiteral", "ann@[]"},
    {"LiteralWithBlank", "ann@[192.0.2.1 SIZE]"},
    {"LiteralWithBracket", "ann@[a>b]"},
    {"LiteralWithComma", "ann@[IPv6:2001:db8::,]"},
    {"LiteralForAName", "[x] <ann@example.org>"},
    {"LiteralForALocalPart", "[x]@example.org"},
    {"EmptyQuotedLocalPart", R"(""@example.org)"},
    {"Backslash", "a\\b@example.org"},
    {"LocalPartBeyondAscii", "j\xc3\xb6rg@example.org"},
    {"QuotedLocalPartBeyondAscii", "\"j\xc3\xb6rg\"@example.org"},
    {"DomainBeyondAscii", "ann@ex\xc3\xa4mple.org"},
    {"LiteralBeyondAscii", "ann@[\xc3\xa4]"},
    {"ControlCharacter", "ann\x01@example.org"},
    {"ControlCharacterInAName", "\"A\x1b[1m\" <a@x.org>"},
    {"ControlCharacterInAComment", "a@x.org (\x07)"},
    {"TabInALocalPart", "\"a\tb\"@example.org"},
    {"OpenGroup", "Friends: a@x.org"},
    {"GroupInAGroup", "A: B: a@x.org;;"},
    {"GroupWithoutAName", ": a@x.org;"},
    {"WordsBehindAGroup", "A: a@x.org; b@x.org"},
    {"LocalPartTooLong", std::string(65, 'a') + "@x.org"},
    {"QuotesCountForTheLocalPart", '"' + std::string(63, ' ') + "\"@x.org"},
    {"LabelTooLong", "a@" + std::string(64, 'x') + ".org"},
    {"LineEnd", "ann@example.org\r\nRCPT TO:<eve@example.org>", errors::FieldHoldsLineEnd},
    {"CarriageReturn", "\"A\rB\" <ann@example.org>", errors::FieldHoldsLineEnd},
    {"LineFeed", "ann@example.org (\n)", errors::FieldHoldsLineEnd},
    {"Nul", std::string("ann\0@example.org", 16), errors::FieldHoldsLineEnd},
};

INSTANTIATE_TEST_SUITE_P(Lists, AddressListRefused, testing::ValuesIn(kBad), nameOf<Bad>);

struct Faulty {
    const char* name;
    std::string typed;
    /** The part that is to be marked as faulty. */
    std::string marked;
    int error = errors::BadAddress;
};

class AddressListFault : public testing::TestWithParam<Faulty> {};

TEST_P(AddressListFault, IsFoundInItsItem) {
    const auto& [name, typed, marked, error] = GetParam();
    for (const char* before : {"", "ann@example.org, ", "Friends: a@x.org; , ", ",,"}) {
        const std::string text = before + typed;
        const auto fault = smtplib::findAddressFault(text);
        ASSERT_TRUE(fault.has_value()) << text;
        EXPECT_EQ(fault->error, error);
        EXPECT_EQ(errorOf(text), error);
        EXPECT_EQ(text.substr(fault->begin, fault->end - fault->begin), marked) << text;
    }
}

const std::vector<Faulty> kFaulty{
    {"Alone", "bob", "bob"},
    {"BetweenOthers", "bob@, cid@example.org", "bob@"},
    {"TheFirstOfTwo", "bob, cid", "bob"},
    {"BlanksAround", "  bob \t , cid@example.org", "bob"},
    {"UnquotedNameWithComma", "Miller, Ann <ann@example.org>", "Miller"},
    {"CommaInAQuotedName", "\"Miller, Ann\" <ann>, cid@example.org", "\"Miller, Ann\" <ann>"},
    {"TwoWords", "ann miller@x.org, cid@example.org", "ann miller@x.org"},
    {"SemicolonForAComma", "a@x.org;b@x.org, cid@example.org", "a@x.org;b@x.org"},
    {"QuoteWithoutEnd", "\"Ann <a@x.org>, cid@example.org", "\"Ann <a@x.org>, cid@example.org"},
    {"CommentWithoutEnd", "a@x.org (Ann, cid@example.org", "a@x.org (Ann, cid@example.org"},
    {"BracketWithoutEnd", "Ann <a@x.org, cid@example.org", "Ann <a@x.org"},
    {"SignThatHasNoPlace", "a@x.org, \\b@x.org, cid@example.org", "\\b@x.org"},
    {"BeyondAscii", "j\xc3\xb6rg@x.org, cid@example.org", "j\xc3\xb6rg@x.org"},
    {"TooLong", std::string(65, 'a') + "@x.org, cid@example.org", std::string(65, 'a') + "@x.org"},
    {"MemberOfAGroup", "Friends: a@x.org, bob, cid@x.org;", "bob"},
    {"FirstMemberOfAGroup", "Friends: bob, cid@x.org;", "bob"},
    {"GroupWithoutEnd", "Friends: a@x.org, cid@x.org", "Friends: a@x.org"},
    {"LineEnd", "a@x.org, bob@x.org\r\nBcc: eve@x.org, cid@x.org", "bob@x.org\r\nBcc: eve@x.org",
     errors::FieldHoldsLineEnd},
    {"Nul", std::string("a@x.org\0", 8), std::string("a@x.org\0", 8), errors::FieldHoldsLineEnd},
};

INSTANTIATE_TEST_SUITE_P(Lists, AddressListFault, testing::ValuesIn(kFaulty), nameOf<Faulty>);

TEST(AddressList, AListWithoutFaultHasNone) {
    for (const Good& good : kGood) {
        EXPECT_FALSE(smtplib::findAddressFault(good.typed).has_value()) << good.name;
    }
}

TEST(AddressList, AFaultIsTheErrorOfItsListAndNeverEmpty) {
    for (const Bad& bad : kBad) {
        const auto fault = smtplib::findAddressFault(bad.typed);
        ASSERT_TRUE(fault.has_value()) << bad.name;
        EXPECT_EQ(fault->error, bad.error) << bad.name;
        EXPECT_LT(fault->begin, fault->end) << bad.name;
        EXPECT_LE(fault->end, bad.typed.size()) << bad.name;
    }
}

TEST(AddressList, APathMayHaveItsLongestLengthAndNoMore) {
    // A path has 256 bytes: 3 for the brackets and the "@", 2 for the local part, 251 for the domain.
    const std::string label = std::string(61, 'x') + '.';
    const std::string domain = label + label + label + label + "abc";
    ASSERT_EQ(domain.size(), 251U);
    EXPECT_EQ(parseAddressList("ab@" + domain).front().mailbox().size() + 2, 256U);
    EXPECT_EQ(errorOf("abc@" + domain), errors::BadAddress);
}

TEST(AddressList, TenThousandAddressesAreTakenInOneGo) {
    std::string typed;
    for (int number = 0; number < 10'000; ++number) {
        typed +=
            "\"Name, " + std::to_string(number) + "\" <user" + std::to_string(number) + "@example.org>, ";
    }
    const std::vector<Address> addresses = parseAddressList(typed);
    EXPECT_THAT(addresses, SizeIs(10'000));
    EXPECT_EQ(addresses.back().mailbox(), "user9999@example.org");
    EXPECT_THAT(distinctMailboxes(addresses, addresses), SizeIs(10'000));
}

TEST(AddressList, ManyOpenCommentsAreNoBurden) {
    EXPECT_EQ(errorOf(std::string(1'000'000, '(')), errors::BadAddress);
}

TEST(DistinctMailboxes, GivesEachAddressOfBothListsOnceInItsOrder) {
    const auto mailboxes = distinctMailboxes(parseAddressList("b@x.org, a@x.org, B <b@x.org>"),
                                             parseAddressList("c@x.org, a@x.org"));
    EXPECT_THAT(mailboxes, ElementsAre("b@x.org", "a@x.org", "c@x.org"));
}

TEST(DistinctMailboxes, CaseCountsInTheLocalPartOnly) {
    const auto mailboxes = distinctMailboxes(parseAddressList("a@x.org, a@X.ORG, A@x.org, \"a\"@x.org"), {});
    EXPECT_THAT(mailboxes, ElementsAre("a@x.org", "A@x.org"));
}

} // namespace
