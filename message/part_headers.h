#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

/** The keys of the part-header stripper, in its order. */
inline constexpr std::array<std::string_view, 5> kPartHeaderKeys = {
    "Content-Type", "Content-Transfer-Encoding", "Content-Disposition", "filename=", "name="};

/**
 * The part-header stripper: for each key in turn that occurs in the text, everything up to and including the
 * first line feed at or after the key is removed. What stands before a key goes with it, and a key in running
 * text cuts the text there. The empty line that ends the headers stays.
 */
std::string_view withoutPartHeaders(std::string_view text);

/**
 * A text that is added to and stripped again and again. Stripping looks only at what it has not seen yet, so
 * any number of parts costs no more than their length.
 */
class StrippedText {
  public:
    void set(std::string_view text);

    /** Sets the text when there is none yet; otherwise adds this one after CR LF. */
    void setOrAppend(std::string_view text);

    /** One pass of the part-header stripper over the whole text. */
    void strip();

    bool empty() const noexcept { return front_ == text_.size(); }

    std::string_view view() const noexcept { return std::string_view(text_).substr(front_); }

  private:
    std::string text_;
    /** Where the text begins; what lies before has been removed. */
    std::size_t front_ = 0;
    /** For each key: no occurrence starts between the front and here. */
    std::array<std::size_t, kPartHeaderKeys.size()> searchedUntil_{};
};
