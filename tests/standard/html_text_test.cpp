#include "standard/html_text.h"
#include "tests/support/sanitizer.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <string>

namespace {
using standard::textOfHtml;

struct HtmlCase {
    const char* name;
    std::string document;
    std::string text;
};

class HtmlText : public testing::TestWithParam<HtmlCase> {};

TEST_P(HtmlText, IsLegible) {
    EXPECT_EQ(textOfHtml(GetParam().document), GetParam().text);
}

const HtmlCase kHtmlCases[] = {
    {"PlainText", "Just words", "Just words"},
    {"Nothing", "", ""},
    {"WhiteSpaceIsOneBlank", " a \r\n\t b ", "a b"},
    {"NoBreakSpaces",
     "a&nbsp;&nbsp;b\xC2\xA0"
     "c",
     "a  b c"},
    {"Paragraphs", "<p>a</p><p>b</p>", "a\r\n\r\nb"},
    {"Blocks", "<div>a</div><div>b<div>c</div></div>d", "a\r\nb\r\nc\r\nd"},
    {"LineBreaks", "a<br>b<br/><br />c", "a\r\nb\r\n\r\nc"},
    {"Headings", "<h1>Title</h1>text", "Title\r\n\r\ntext"},
    {"InlineElements", "<b>a</b><i>b</i> <span>c</span>", "ab c"},
    {"Link", "<a href=\"https://x.example/a?b=1&amp;c=2\">here</a>", "here <https://x.example/a?b=1&c=2>"},
    {"LinkThatIsItsText", "<a href='https://x.example/'>x.example</a>", "x.example"},
    {"LinkToAMailbox", "<a href=mailto:a@b>a@b</a>", "a@b"},
    {"LinkThatSaysAnother", "<a href=\"http://bad.example\">http://good.example</a>",
     "http://good.example <http://bad.example>"},
    {"LinkAroundAPicture", "<a href=\"http://x.example\"><img src=y></a>", "<http://x.example>"},
    {"LinkThatRuns", "<a href=\"JavaScript:run()\">press</a>", "press"},
    {"LinkToAPlaceInside", "<a href=\"#top\">up</a>", "up"},
    {"LinkLeftOpen", "<a href=\"http://x.example\">a", "a <http://x.example>"},
    {"LinkWithoutItsSecondQuote", "<a href=\"http://x.example>a</a> b", "a <http://x.example> b"},
    {"List", "<ul><li>a</li><li>b</li></ul>c", "* a\r\n* b\r\nc"},
    {"ListWithoutEndTags", "<ul><li>a<li>b</ul>", "* a\r\n* b"},
    {"CountedList", "<ol><li>a<li>b</ol>", "1. a\r\n2. b"},
    {"CountedListFromThree", "<ol start=3><li>a<li>b</ol>", "3. a\r\n4. b"},
    {"ListInAList", "<ul><li>a<ul><li>b</ul><li>c</ul>", "* a\r\n  * b\r\n* c"},
    {"EmptyItem", "<ul><li></li></ul><p>a</p>", "a"},
    {"Table", "<table><tr><th>a<th>b<tr><td>c<td>d</table>e", "a | b\r\nc | d\r\ne"},
    {"TableOfParagraphs", "<table><tr><td><p>a</p></td><td><p>b</p></td></tr></table>", "a | b"},
    {"TableForLayout",
     "<table><tr><td><table><tr><td>a</td></tr><tr><td>b</td></tr></table></td></tr></table>", "a\r\nb"},
    {"CellOfSeveralLines", "<table><tr><td>a<br>b</td><td>c</td></tr></table>", "a\r\nb\r\nc"},
    {"EmptyCells", "<table><tr><td></td><td>a</td><td> </td><td>b</td></tr></table>", "a | b"},
    {"Quotation", "a<blockquote>b<br>c<blockquote>d</blockquote></blockquote>e",
     "a\r\n\r\n> b\r\n> c\r\n>\r\n>> d\r\n\r\ne"},
    {"Preformatted", "<pre>a  b\n  c</pre>", "a  b\r\n  c"},
    {"Rule", "a<hr>b", "a\r\n----------\r\nb"},
    {"Picture", "<img src=\"http://x.example/y.gif\" alt=\"Our logo\">", "[Our logo]"},
    {"PictureWithoutWords", "a<img src=\"http://x.example/y.gif\">b", "ab"},
    {"Script", "a<script>if (1 < 2) { run(); }</script>b", "ab"},
    {"ScriptLeftOpen", "a<script>run();", "a"},
    {"Style", "<style type=x>p { color: red }</STYLE >a", "a"},
    {"Title", "<head><title>T</title></head><body>a", "a"},
    {"Frame", "<iframe src=x>no</iframe>a", "a"},
    {"Base", "<base href=\"http://bad.example/\"><a href=\"b\">a</a>", "a <b>"},
    {"Form", "<form action=x><input value=y><button>Send</button></form>a", "Send\r\na"},
    {"Comment", "a<!-- <b> -->b<!---->c", "abc"},
    {"CommentLeftOpen", "a<!-- b", "a"},
    {"ConditionalComment", "<!--[if mso]>no<![endif]--><![if !mso]>yes<![endif]>", "yes"},
    {"Declaration", "<!DOCTYPE html><?xml version=1?>a", "a"},
    {"NamedReferences", "&lt;&amp;&gt;&quot;&euro;&Auml;&auml;", "<&>\"€Ää"},
    {"NumberedReferences", "&#228;&#xE4;&#x1F600;", "ää😀"},
    {"ReferencesWithoutEnd", "&auml &eacutex &amp b &euro c", "ä &eacutex & b &euro c"},
    {"ReferenceOfWindows", "&#147;x&#148;", "“x”"},
    {"ReferencesThatNameNothing", "&nobody; &#; &#xD800; &#99999999999;", "&nobody; &#; \uFFFD \uFFFD"},
    {"Ampersand", "a & b &", "a & b &"},
    {"SignThatBeginsNoTag", "1 < 2 <3 a<", "1 < 2 <3 a<"},
    {"TagLeftOpen", "a <b", "a"},
    {"UpperCaseTags", "<P>a</P><P>b</P>", "a\r\n\r\nb"},
    {"SignInAnAttribute", "<p title=\"a>b\">c", "c"},
    {"EndTagWithoutStart", "</ul></blockquote></table></pre></td>a", "a"},
};

INSTANTIATE_TEST_SUITE_P(Documents, HtmlText, testing::ValuesIn(kHtmlCases),
                         [](const auto& test) { return std::string(test.param.name); });

std::string repeated(const std::string& piece, int times) {
    std::string text;
    for (int number = 0; number < times; ++number) {
        text += piece;
    }
    return text;
}

/** Bytes of a document; the sanitizers make everything many times slower. */
constexpr std::size_t kDocumentBytes = support::fewerIfSanitized(4'000'000U, 40U);

/** A document that is slow or large for a careless reader. */
class HostileHtml : public testing::TestWithParam<std::string> {};

TEST_P(HostileHtml, TakesTimeAndMemoryInProportion) {
    const std::string document = repeated(GetParam(), static_cast<int>(kDocumentBytes / GetParam().size()));
    const auto start = std::chrono::steady_clock::now();
    const std::string text = textOfHtml(document);
    EXPECT_LT(text.size(), 3 * document.size());
    // A tenth of a second on an idle computer; anything that is not in proportion takes minutes.
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

INSTANTIATE_TEST_SUITE_P(Documents, HostileHtml,
                         testing::Values("<table><tr><td>", "<ul><li>x", "<ol><li>x<br>y",
                                         "<blockquote>x<br>", "<a b='", "<a b=\"", "<a href=x", "<a href=x>",
                                         "<script>", "<!--", "<hr>", "&", "&#", "<", "</", "<p", "<pre> ",
                                         "<td>x", "<img alt=x>", "<a href=y>x<hr>", "=",
                                         "<table><tr><td>x<td>", "&nbsp;", "<br>x"));

TEST(HtmlText, OfTablesFiveHundredDeepIsRead) {
    const std::string document =
        repeated("<table><tr><td>", 500) + "inside" + repeated("</td></tr></table>", 500);
    EXPECT_EQ(textOfHtml(document), "inside");
}

TEST(HtmlText, OfTenMegabytesInOneLineIsRead) {
    const std::string letters(10'000'000, 'x');
    EXPECT_EQ(textOfHtml("<p>" + letters + "</p>"), letters);
}

TEST(CharsetOfHtml, IsFoundInBothForms) {
    EXPECT_EQ(standard::charsetOfHtml("<html><META charset=\"KOI8-R\">"), "koi8-r");
    EXPECT_EQ(standard::charsetOfHtml("<meta http-equiv=x content='text/html; charset=utf-8'>"), "utf-8");
    EXPECT_EQ(standard::charsetOfHtml("<p>charset=utf-8</p>"), "");
}
} // namespace
