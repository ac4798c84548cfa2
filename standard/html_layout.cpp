#include "standard/html_layout.h"

#include <algorithm>

namespace standard {

namespace {
constexpr std::string_view kNoBreakSpace = "\xC2\xA0";

bool isHtmlSpace(char character) noexcept {
    return character == ' ' || character == '\t' || character == '\r' || character == '\n' ||
           character == '\f';
}
} // namespace

void HtmlLayout::addText(std::string_view text) {
    while (!text.empty()) {
        if (isHtmlSpace(text.front())) {
            blank_ = true;
            text.remove_prefix(1);
        } else if (text.starts_with(kNoBreakSpace)) {
            hardBlanks_ += blank_ ? 2 : 1;
            blank_ = false;
            text.remove_prefix(kNoBreakSpace.size());
        } else {
            const auto* const end = std::find_if(text.begin(), text.end(), [](char character) {
                return isHtmlSpace(character) || character == kNoBreakSpace.front();
            });
            // The first byte of a no-break space begins other characters too.
            const auto length = std::max<std::size_t>(1, static_cast<std::size_t>(end - text.begin()));
            beginWord();
            text_ += text.substr(0, length);
            text.remove_prefix(length);
        }
    }
}

void HtmlLayout::addPreformatted(std::string_view text) {
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, end);
        line = line.substr(0, line.find_last_not_of('\r') + 1);
        const std::size_t indent = std::min(line.find_first_not_of(' '), line.size());
        hardBlanks_ += indent;
        if (indent < line.size()) {
            beginWord();
            text_ += line.substr(indent);
        }
        lineEnds_ += end < text.size() ? 1 : 0;
        text.remove_prefix(std::min(end + 1, text.size()));
    }
}

void HtmlLayout::breakBlock(int lineEnds) {
    blank_ = false;
    hardBlanks_ = 0;
    if (!atStartOfCell()) {
        lineEnds_ = std::max(lineEnds_, lineEnds);
    }
}

void HtmlLayout::endLine() {
    constexpr int most = 3;
    blank_ = false;
    hardBlanks_ = 0;
    lineEnds_ = std::min(lineEnds_ + 1, most);
}

void HtmlLayout::addRule() {
    constexpr std::string_view rule = "----------";
    breakBlock(1);
    if (decorationLeft_ > rule.size()) {
        beginWord();
        decorate(rule);
    }
    breakBlock(1);
}

void HtmlLayout::beginList(int firstNumber) {
    constexpr std::size_t deepest = 100;
    if (lists_.size() < deepest) {
        lists_.push_back(firstNumber);
    } else {
        ++furtherLists_;
    }
}

void HtmlLayout::endList() {
    mark_.clear();
    if (furtherLists_ > 0) {
        --furtherLists_;
    } else if (!lists_.empty()) {
        lists_.pop_back();
    }
}

void HtmlLayout::beginItem() {
    breakBlock(1);
    const bool isCounted = !lists_.empty() && lists_.back() >= 0;
    mark_ = isCounted ? std::to_string(lists_.back()++) + ". " : "* ";
}

void HtmlLayout::endItem() {
    // An item without text leaves no mark to what comes behind it.
    mark_.clear();
    breakBlock(1);
}

void HtmlLayout::beginTable() {
    breakBlock(1);
    if (tables_.size() < kDeepestTable) {
        tables_.emplace_back();
    } else {
        ++furtherTables_;
    }
}

void HtmlLayout::endTable() {
    if (furtherTables_ > 0) {
        --furtherTables_;
    } else if (!tables_.empty()) {
        endCell();
        tables_.pop_back();
    }
    separator_ = false;
    breakBlock(1);
}

void HtmlLayout::beginRow() {
    if (furtherTables_ == 0 && !tables_.empty()) {
        endCell();
        tables_.back().rowHasText = false;
    }
    separator_ = false;
    breakBlock(1);
}

void HtmlLayout::beginCell() {
    if (furtherTables_ > 0 || tables_.empty()) {
        breakBlock(1);
        return;
    }
    endCell();
    Table& table = tables_.back();
    table.inCell = true;
    table.cellHasText = false;
    table.cellHasLines = false;
    separator_ = table.rowHasText;
}

void HtmlLayout::endCell() {
    if (furtherTables_ > 0 || tables_.empty() || !tables_.back().inCell) {
        return;
    }
    Table& table = tables_.back();
    table.inCell = false;
    if (table.cellHasLines) {
        // What stands beside several lines begins a line of its own.
        table.rowHasText = false;
        breakBlock(1);
    } else if (table.cellHasText) {
        // The ends of the cell's only block are no reason for the next cell to begin a line.
        table.rowHasText = true;
        lineEnds_ = 0;
    }
    blank_ = false;
    hardBlanks_ = 0;
}

/** Whether the innermost cell is still empty: a block at its start does not begin a line. */
bool HtmlLayout::atStartOfCell() const {
    const auto cell =
        std::find_if(tables_.rbegin(), tables_.rend(), [](const Table& table) { return table.inCell; });
    return cell != tables_.rend() && !cell->cellHasText;
}

void HtmlLayout::noteTextInCells() {
    for (auto table = tables_.rbegin(); table != tables_.rend() && !table->cellHasText; ++table) {
        table->cellHasText = table->inCell;
    }
}

void HtmlLayout::decorate(std::string_view text) {
    if (text.size() <= decorationLeft_) {
        decorationLeft_ -= text.size();
        text_ += text;
    }
}

/** Writes the line ends that are due, and what each line begins with. */
void HtmlLayout::newLines() {
    const std::size_t quotations = std::min(quotations_, kMostIndented);
    for (int due = text_.empty() ? 0 : lineEnds_; due > 0; --due) {
        // An empty line belongs to a quotation only when it stands inside.
        decorate(std::string(due == lineEnds_ ? 0 : std::min(quotations, quotationsBefore_), '>'));
        text_ += "\r\n";
    }
    quotationsBefore_ = quotations;
    if (quotations > 0) {
        decorate(std::string(quotations, '>') + ' ');
    }
    const std::size_t depth = std::min(lists_.size(), kMostIndented);
    const std::size_t marks = mark_.empty() || depth == 0 ? depth : depth - 1;
    decorate(std::string(2 * marks, ' '));
    for (Table& table : tables_) {
        table.cellHasLines = table.cellHasLines || table.cellHasText;
    }
}

void HtmlLayout::beginWord() {
    if (separator_ && lineEnds_ == 0) {
        text_ += " | ";
        separator_ = false;
        blank_ = false;
        hardBlanks_ = 0;
    }
    const bool isFirstOfLine = text_.empty() || lineEnds_ > 0;
    if (isFirstOfLine) {
        newLines();
        lineEnds_ = 0;
    } else if (blank_) {
        text_ += ' ';
    }
    separator_ = false;
    text_ += mark_;
    mark_.clear();
    text_.append(hardBlanks_, ' ');
    hardBlanks_ = 0;
    blank_ = false;
    noteTextInCells();
}

} // namespace standard
