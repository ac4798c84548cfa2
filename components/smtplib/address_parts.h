#pragma once

#include "components/smtplib/address_tokens.h"

#include <string>

namespace smtplib {

/** Which characters addresses may have. */
enum class AddressCharacters {
    /** ASCII only; any other is error 20401. */
    Ascii,
    /**
     * Any in a domain, which becomes A-labels (RFC 5891); what is before the "@" has to be ASCII, and is
     * error 20405 if not.
     */
    AnyInDomain,
    /** Any visible ones; domains become A-labels all the same. Only with SMTPUTF8 (RFC 6531). */
    Any
};

/**
 * What stands before the "@" as it goes over the wire: quoted where it must be, and only there.
 * \throws RuntimeError 20401 when the token is no such part, 20405 as AddressCharacters says.
 */
std::string localPartOnWire(const AddressToken& token, AddressCharacters allowed);

/**
 * A host name, with A-labels for what is beyond ASCII, or an address of a host in brackets.
 * \throws RuntimeError 20401 when the token is neither.
 */
std::string domainOnWire(const AddressToken& token, AddressCharacters allowed);

} // namespace smtplib
