#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace standard {

/** One parameter of a structured field. */
struct Parameter {
    /** In lower case. */
    std::string name;
    /** Decoded, UTF-8. */
    std::string value;
    /** It was written in RFC 2231's form, whose sender means it before the plain form of the same name. */
    bool extended = false;
};

/**
 * A field of a value and parameters, as Content-Type and Content-Disposition are (RFC 2045 section 5.1),
 * with RFC 2231's continuations, charsets and languages, and with encoded words, which many programs write
 * there although RFC 2047 section 5 forbids it.
 */
class StructuredField {
  public:
    /** Parameters that are looked at; any further ones are left out. */
    static constexpr std::size_t kMaximumParameters = 500;

    StructuredField() = default;
    explicit StructuredField(std::string_view field);

    /** The value before the parameters, in lower case and without comments; may be empty. */
    const std::string& value() const noexcept { return value_; }

    /** The first parameter of that name in RFC 2231's form, or else in the plain form; null for none. */
    const Parameter* parameter(std::string_view name) const;

    /** Its value; empty when there is none. */
    std::string_view textOf(std::string_view name) const;

  private:
    std::string value_;
    std::vector<Parameter> parameters_;
};

} // namespace standard
