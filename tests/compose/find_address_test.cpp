// The window that finds addresses for a field of the compose window.

#include "platform/runtime_error.h"
#include "tests/compose/find_fixture.h"

using addresses::FoundAddress;
using addresses::FoundAddresses;
using support::eventsRunUntil;
using support::kAnn;
using support::kBob;
using support::text;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {
class FindAddress : public support::FindTest {};
} // namespace

TEST_F(FindAddress, StandsAboveTheComposeWindowWithTheKeyboardInItsField) {
    open();
    EXPECT_EQ(findWindow().windowTitle(), text("Example School E-Mail"));
    EXPECT_FALSE(composeWindow().isEnabled());
    EXPECT_TRUE(findWindow().txtFind->hasFocus());
    EXPECT_THAT(source.asked, ElementsAre(""));
    EXPECT_EQ(line(), text("Searching..."));
    EXPECT_FALSE(findWindow().cmdUse->isEnabled());
    EXPECT_THAT(boxes, IsEmpty());
}

TEST_F(FindAddress, LeavesTheFieldsInViewAboveIt) {
    open();
    for (const QWidget* field : {composeWindow().tTo, composeWindow().tCc}) {
        EXPECT_LT(field->mapToGlobal(field->rect().bottomLeft()).y(), findWindow().frameGeometry().top());
    }
    EXPECT_EQ(findWindow().frameGeometry().bottom(), composeWindow().frameGeometry().bottom());
}

TEST_F(FindAddress, TypingSearchesOnceAfterAPause) {
    open();
    type(text("bo"));
    type(text("b"));
    EXPECT_THAT(source.asked, SizeIs(1));
    ASSERT_TRUE(eventsRunUntil([this] { return source.asked.size() == 2; }));
    EXPECT_EQ(source.asked.back(), "bob");
    source.answer({{kBob}, false, {}});
    EXPECT_FALSE(findWindow().tmrFind->isActive());
    EXPECT_EQ(source.sources, 1);
}

TEST_F(FindAddress, TheFirstOneFoundIsMarked) {
    openWith({kAnn, kBob});
    EXPECT_EQ(marked(), 1);
    EXPECT_TRUE(findWindow().cmdUse->isEnabled());
    const auto* const list = findWindow().lstFound;
    EXPECT_EQ(list->Rows(), 3);
    EXPECT_EQ(list->TextMatrix(0, 0), text("Name"));
    EXPECT_EQ(list->TextMatrix(0, 1), text("Address"));
    EXPECT_EQ(list->TextMatrix(0, 2), text("Found in"));
    EXPECT_EQ(list->TextMatrix(2, 0), text("Miller, Bob"));
    EXPECT_EQ(list->TextMatrix(2, 1), text("bob@example.net"));
    EXPECT_EQ(list->TextMatrix(2, 2), text("Address book"));
    EXPECT_TRUE(findWindow().txtFind->hasFocus());
}

TEST_F(FindAddress, TheLineTellsHowManyWereFoundAndAScreenReaderHearsIt) {
    struct Case {
        FoundAddresses outcome;
        const char* line;
    };

    const std::vector<Case> cases{
        {{{}, false, {}}, "Please type some letters"},
        {{{}, false, {}}, "Nobody found"},
        {{{kAnn}, false, {}}, "1 found"},
        {{{kAnn, kBob}, false, {}}, "2 found"},
        {{std::vector<FoundAddress>(addresses::mostFound, kAnn), true, {}},
         "More than 50 found: please type more letters"},
        {{{kAnn}, false, "2 cards could not be read."}, "1 found. 2 cards could not be read."},
        {{{}, false, "The directory does not answer."}, "Nobody found. The directory does not answer."}};
    open();
    for (const Case& one : cases) {
        source.answer(one.outcome);
        EXPECT_EQ(line(), text(one.line));
        EXPECT_EQ(heard(), text(one.line));
        EXPECT_EQ(marked(), one.outcome.found.empty() ? -1 : 1);
        findWindow().txtFind->setText(findWindow().txtFind->text() + u'x');
        EXPECT_EQ(line(), text("Searching..."));
        press(Qt::Key_Return);
    }
    EXPECT_THAT(boxes, IsEmpty());
}

TEST_F(FindAddress, ALetterTypedWhileASearchRunsGivesThatSearchUp) {
    open();
    type(text("a"));
    EXPECT_FALSE(source.isAsked());
    ASSERT_TRUE(eventsRunUntil([this] { return source.isAsked(); }));
    EXPECT_THAT(source.asked, ElementsAre("", "a"));
    type(text("n"));
    EXPECT_FALSE(source.isAsked());
    EXPECT_EQ(line(), text("Searching..."));
}

TEST_F(FindAddress, AnErrorIsToldInTheLineAndNotInABox) {
    source.trouble = [] { throw platform::RuntimeError(platform::errors::FileNotFound); };
    open();
    EXPECT_EQ(line(), text("The addresses cannot be looked up. Error# 53"));
    EXPECT_EQ(heard(), line());
    source.trouble = {};
    press(Qt::Key_Return);
    source.answer({{kAnn}, false, {}});
    EXPECT_EQ(line(), text("1 found"));
    EXPECT_THAT(boxes, IsEmpty());
}

TEST_F(FindAddress, TheColumnsHaveRoomInASmallWindowToo) {
    openWith({kAnn, {std::string(64, 'W'), std::string(200, 'w') + "@example.net", "Mail"}});
    for (const QSize& size : {findWindow().size(), findWindow().minimumSizeHint(), QSize(1'200, 600)}) {
        findWindow().resize(size);
        QCoreApplication::processEvents();
        const auto* const list = findWindow().lstFound;
        const int letter = list->fontMetrics().averageCharWidth();
        EXPECT_GE(list->columnWidth(0), 8 * letter);
        EXPECT_GE(list->columnWidth(1), 10 * letter);
        EXPECT_LE(list->columnWidth(0) + list->columnWidth(1) + list->columnWidth(2),
                  list->viewport()->width());
    }
}
