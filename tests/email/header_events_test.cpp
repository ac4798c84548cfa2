#include "email/header_events.h"
#include "platform/runtime_error.h"
#include "platform/text.h"
#include "tests/support/sanitizer.h"

#include <gtest/gtest.h>

#include <chrono>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

using email::HeaderEvents;
using email::MessageSummary;
using platform::errorNumberOf;
namespace errors = platform::errors;

using Line = std::pair<std::string, std::string>;

MessageSummary summaryOf(const std::vector<Line>& lines) {
    MessageSummary summary;
    email::resetForListing(summary);
    HeaderEvents events;
    for (const auto& [field, value] : lines) {
        events.add(summary, field, value);
    }
    return summary;
}

TEST(HeaderEvents, EveryLineIsKeptInArrivalOrder) {
    EXPECT_EQ(summaryOf({{"Received", "by a"}, {"", " with b"}, {"X", ""}, {"Received", "by c"}}).HeaderText,
              "Received: by a\r\n:  with b\r\nX: \r\nReceived: by c\r\n");
}

TEST(HeaderEvents, ABoundaryOnAContinuationLineIsFound) {
    const MessageSummary summary =
        summaryOf({{"Content-Type", "multipart/mixed;"}, {"", "\tboundary=\"XyZ\""}});
    EXPECT_EQ(summary.ContentType, "multipart/mixed;\tboundary=\"XyZ\"");
    EXPECT_EQ(summary.Boundary, "XyZ");
}

TEST(HeaderEvents, ABoundaryOnTheContentTypeLineItselfIsFound) {
    EXPECT_EQ(summaryOf({{"Content-Type", "multipart/mixed; boundary=\"a b=c\"; x=\"y\""}}).Boundary,
              "a b=c");
}

TEST(HeaderEvents, ABoundaryCutInTwoByContinuationLinesIsErrorFiveUntilItIsWhole) {
    MessageSummary summary;
    HeaderEvents events;
    events.add(summary, "Content-Type", "multipart/mixed;");
    events.add(summary, "", " bound");
    EXPECT_EQ(summary.Boundary, "");
    EXPECT_EQ(errorNumberOf([&] { events.add(summary, "", "ary="); }), errors::InvalidProcedureCall);
    EXPECT_EQ(errorNumberOf([&] { events.add(summary, "", "\"XyZ"); }), errors::InvalidProcedureCall);
    events.add(summary, "", "9\"");
    EXPECT_EQ(summary.Boundary, "XyZ9");
    EXPECT_EQ(summary.ContentType, "multipart/mixed; boundary=\"XyZ9\"");
}

TEST(HeaderEvents, TheParametersNameMayBeCutAnywhere) {
    const std::string whole = "multipart/mixed; boundary=\"XyZ\"";
    const std::size_t nameEnds = whole.find('"');
    for (std::size_t cut = 1; cut < nameEnds; ++cut) {
        EXPECT_EQ(summaryOf({{"Content-Type", whole.substr(0, cut)}, {"", whole.substr(cut)}}).Boundary,
                  "XyZ")
            << cut;
    }
}

TEST(HeaderEvents, AFoldedSubjectAfterContentTypeLandsInContentType) {
    const MessageSummary summary =
        summaryOf({{"Content-Type", "text/plain"}, {"Subject", "first line"}, {"", " second line"}});
    EXPECT_EQ(summary.Subject, "first line");
    EXPECT_EQ(summary.ContentType, "text/plain second line");
}

TEST(HeaderEvents, AFoldedSubjectBeforeContentTypeLosesItsContinuation) {
    const MessageSummary summary =
        summaryOf({{"Subject", "first line"}, {"", " second line"}, {"Content-Type", "text/plain"}});
    EXPECT_EQ(summary.Subject, "first line");
    EXPECT_EQ(summary.ContentType, "text/plain");
}

TEST(HeaderEvents, ABoundaryInAFoldedLineOfAnotherHeaderCounts) {
    EXPECT_EQ(
        summaryOf({{"Content-Type", "multipart/mixed;"}, {"X", "1"}, {"", " boundary=\"odd\""}}).Boundary,
        "odd");
}

TEST(HeaderEvents, ContinuationLinesAfterAnEmptyContentTypeAreNotItsOwn) {
    EXPECT_EQ(summaryOf({{"Content-Type", ""}, {"", " text/plain"}}).ContentType, "");
}

TEST(HeaderEvents, TwoContentTypeHeadersRunTogether) {
    const MessageSummary summary = summaryOf({{"Content-Type", "text/plain; boundary=\"first\""},
                                              {"CONTENT-TYPE", "multipart/mixed; boundary=\"second\""}});
    EXPECT_EQ(summary.ContentType, "text/plain; boundary=\"first\"multipart/mixed; boundary=\"second\"");
    EXPECT_EQ(summary.Boundary, "first");
}

TEST(HeaderEvents, TwoDateHeadersTheSecondWins) {
    EXPECT_EQ(summaryOf({{"Date", "Mon"}, {"Date", "Tue"}}).Date, "Tue");
}

TEST(HeaderEvents, TheLastFromAndSubjectWinToo) {
    const MessageSummary summary =
        summaryOf({{"From", "a"}, {"Subject", "1"}, {"From", "b"}, {"Subject", ""}});
    EXPECT_EQ(summary.From, "b");
    EXPECT_EQ(summary.Subject, "");
}

TEST(HeaderEvents, AHeaderNamedFromInAnyCaseIsMatched) {
    for (const char* name : {"from", "From", "FROM", "fRoM"}) {
        EXPECT_EQ(summaryOf({{name, "somebody"}}).From, "somebody") << name;
    }
    EXPECT_EQ(summaryOf({{"dAtE", "Mon"}}).Date, "Mon");
    EXPECT_EQ(summaryOf({{"SUBJECT", "s"}}).Subject, "s");
    EXPECT_EQ(summaryOf({{"content-TYPE", "text/plain"}}).ContentType, "text/plain");
}

TEST(HeaderEvents, NamesThatOnlyResembleAreNotMatched) {
    const MessageSummary summary =
        summaryOf({{"X-From", "x"}, {"From ", "x"}, {" Subject", "x"}, {"Dates", "x"}});
    EXPECT_EQ(summary.From, "");
    EXPECT_EQ(summary.Subject, "'");
    EXPECT_EQ(summary.Date, "'");
}

TEST(HeaderEvents, ValuesAreKeptUntrimmed) {
    EXPECT_EQ(summaryOf({{"From", "  a <b@c>  "}}).From, "  a <b@c>  ");
}

TEST(HeaderEvents, TheParametersNameIsCaseSensitive) {
    EXPECT_EQ(summaryOf({{"Content-Type", "multipart/mixed; Boundary=\"XyZ\""}}).Boundary, "");
    EXPECT_EQ(summaryOf({{"Content-Type", "multipart/mixed; boundary =\"XyZ\""}}).Boundary, "");
}

TEST(HeaderEvents, AnEmptyQuotedBoundaryIsEmpty) {
    EXPECT_EQ(summaryOf({{"Content-Type", "multipart/mixed; boundary=\"\""}}).Boundary, "");
}

TEST(HeaderEvents, AnUnquotedBoundaryIsErrorFiveAndAgainOnTheNextLine) {
    MessageSummary summary;
    HeaderEvents events;
    const auto add = [&](const char* field, const char* value) {
        return errorNumberOf([&] { events.add(summary, field, value); });
    };
    EXPECT_EQ(add("Content-Type", "multipart/mixed; boundary=abc"), errors::InvalidProcedureCall);
    EXPECT_EQ(add("X", "y"), errors::InvalidProcedureCall);
    EXPECT_EQ(add("Subject", "never taken"), errors::InvalidProcedureCall);
    EXPECT_EQ(summary.Boundary, "");
    EXPECT_EQ(summary.Subject, "");
    EXPECT_EQ(summary.HeaderText, "Content-Type: multipart/mixed; boundary=abc\r\nX: y\r\n"
                                  "Subject: never taken\r\n");
}

TEST(HeaderEvents, ABoundaryWithOnlyAnOpeningQuoteIsErrorFive) {
    EXPECT_EQ(errorNumberOf([] {
                  summaryOf({{"Content-Type", "multipart/mixed; boundary=\"abc"}});
              }),
              errors::InvalidProcedureCall);
}

TEST(HeaderEvents, AQuoteOfALaterParameterIsTakenForTheBoundarys) {
    EXPECT_EQ(summaryOf({{"Content-Type", "multipart/mixed; boundary=abc; name=\"x\""}}).Boundary, "x");
}

TEST(HeaderEvents, AnUnquotedBoundaryBehindAQuotedParameterIsTheTextUpToTheFirstQuote) {
    EXPECT_EQ(summaryOf({{"Content-Type", "multipart/mixed; name=\"x\"; boundary=abc"}}).Boundary,
              "multipart/mixed; name=");
    EXPECT_EQ(summaryOf({{"Content-Type", "multipart/mixed; name=\"x\"; boundary=abc"}, {"X", "y"}}).Boundary,
              "multipart/mixed; name=");
}

TEST(HeaderEvents, AHeaderWithoutBoundaryLeavesItEmpty) {
    EXPECT_EQ(summaryOf({{"Content-Type", "text/plain; charset=\"utf-8\""}, {"X", "boundary=abc"}}).Boundary,
              "");
}

TEST(HeaderEvents, OneObjectServesMessagesInTurn) {
    HeaderEvents events;
    MessageSummary first;
    MessageSummary second;
    events.add(first, "Content-Type", "multipart/mixed; boundary=\"a\"");
    events.add(second, "Content-Type", "multipart/mixed;");
    events.add(first, "", " x");
    events.add(second, "", " boundary=\"b\"");
    EXPECT_EQ(first.Boundary, "a");
    EXPECT_EQ(second.Boundary, "b");
}

TEST(HeaderEvents, TheSameSummaryListedAgainStartsAfresh) {
    HeaderEvents events;
    MessageSummary summary;
    for (const char* boundary : {"one", "two"}) {
        email::resetForListing(summary);
        events.add(summary, "Content-Type", std::string("multipart/mixed; boundary=\"") + boundary + "\"");
        EXPECT_EQ(summary.Boundary, boundary);
    }
    email::resetForListing(summary);
    events.add(summary, "Content-Type", "text/plain");
    EXPECT_EQ(summary.Boundary, "");
}

TEST(HeaderEvents, AHundredThousandContinuationLinesTakeTimeInProportion) {
    const std::string line(70, 'b');
    for (const char* start :
         {"text/plain;", R"(multipart/mixed; boundary="b"; x=")", "multipart/mixed; x=\"y\"; boundary="}) {
        MessageSummary summary;
        HeaderEvents events;
        const auto begin = std::chrono::steady_clock::now();
        events.add(summary, "Content-Type", start);
        for (int count = 0; count < 100'000; ++count) {
            events.add(summary, "", line);
        }
        EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5)) << start;
        EXPECT_EQ(summary.ContentType.size(), std::string_view(start).size() + 7'000'000);
    }
}

/** The rules step by step, searching everything anew on every line. */
void addLiterally(MessageSummary& summary, const std::string& field, const std::string& value) {
    using platform::inStr;
    summary.HeaderText += field + ": " + value + "\r\n";
    const std::string name = platform::upperCase(field);
    if (name == "CONTENT-TYPE") {
        summary.ContentType += value;
    }
    if (!summary.ContentType.empty() && field.empty()) {
        summary.ContentType += value;
    }
    const std::size_t parameterAt = inStr(1, summary.ContentType, "boundary=");
    if (parameterAt != 0) {
        const auto first = static_cast<std::int64_t>(inStr(parameterAt, summary.ContentType, "\""));
        const auto second =
            static_cast<std::int64_t>(inStr(static_cast<std::size_t>(first) + 1, summary.ContentType, "\""));
        summary.Boundary = platform::mid(summary.ContentType, first + 1, second - first - 1);
    }
    if (name == "SUBJECT") {
        summary.Subject = value;
    }
    if (name == "FROM") {
        summary.From = value;
    }
    if (name == "DATE") {
        summary.Date = value;
    }
}

TEST(HeaderEvents, WhatIsRememberedBetweenLinesChangesNoResult) {
    const std::vector<std::string> fields = {"Content-Type", "", "", "", "Subject", "From", "date"};
    const std::vector<std::string> values = {
        "",  "\"",    "bound",      "ary=",       "boundary=", "a",        "\"x\"", "boundary=\"b\"",
        ";", " y=\"", "boundary=c", "bboundary=", "bo",        "undary=\""};
    std::mt19937 random(20'011); // NOLINT(cert-msc51-cpp): the same cases on every run
    const auto anyOf = [&random](const std::vector<std::string>& texts) {
        return texts.at(std::uniform_int_distribution<std::size_t>(0, texts.size() - 1)(random));
    };
    HeaderEvents events;
    for (int message = 0; message < support::fewerIfSanitized(20'000, 5); ++message) {
        MessageSummary remembered;
        MessageSummary literal;
        for (int line = 0; line < 8; ++line) {
            const std::string field = anyOf(fields);
            const std::string value = anyOf(values);
            const int error = errorNumberOf([&] { events.add(remembered, field, value); });
            ASSERT_EQ(error, errorNumberOf([&] { addLiterally(literal, field, value); }))
                << literal.HeaderText;
            ASSERT_EQ(remembered.Boundary, literal.Boundary) << literal.HeaderText;
            ASSERT_EQ(remembered.ContentType, literal.ContentType) << literal.HeaderText;
            ASSERT_EQ(remembered.Subject, literal.Subject) << literal.HeaderText;
        }
    }
}

} // namespace
