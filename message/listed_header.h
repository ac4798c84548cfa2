#pragma once

#include "message/standard_reader.h"

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

/** Collects from the header lines of one message what its row shows, as it comes. */
class ListedHeader {
  public:
    /** Bytes of each field that are kept: more than fifty characters in any encoding. */
    static constexpr std::size_t kMostBytes = 2'000;

    /** Begins another message. */
    void begin() { *this = {}; }

    /**
     * Adds one header line; `field` is empty for a folded continuation line. Of a repeated field the first
     * one counts.
     */
    void add(std::string_view field, std::string_view value);

    const ListedFields& fields() const noexcept { return fields_; }

  private:
    struct Known {
        std::string_view name;
        std::string ListedFields::*text;
        bool seen = false;
    };

    ListedFields fields_;
    std::array<Known, 3> known_ = {
        {{"FROM", &ListedFields::from}, {"SUBJECT", &ListedFields::subject}, {"DATE", &ListedFields::date}}};
    /** The field that a continuation line belongs to; null for all others. */
    std::string ListedFields::*last_ = nullptr;
};
