#include "platform/runtime_error.h"

namespace platform {

std::string meaningOf(int errorNumber) {
    switch (errorNumber) {
    case errors::InvalidProcedureCall:
        return "A text did not have the form that was expected.";
    case errors::Overflow:
        return "A number is too large.";
    case errors::OutOfMemory:
        return "There is not enough memory, or something is far too large.";
    case errors::SubscriptOutOfRange:
        return "A message number lies outside the list.";
    case errors::TypeMismatch:
        return "A text that should be a number is not one.";
    case errors::FileNotFound:
        return "A file was not found.";
    case errors::DeviceInputOutput:
        return "A file could not be read or written to its end.";
    case errors::DiskFull:
        return "The disk is full. Make room on it and try again.";
    case errors::InputPastEndOfFile:
        return "A file is shorter than it should be.";
    case errors::DeviceUnavailable:
        return "The drive is not ready. Insert a disk and try again.";
    case errors::PathFileAccess:
        return "A file or folder cannot be opened. Check its name and your rights to it.";
    case errors::MailServerBusy:
        return "The mail server is busy with another request. Try again in a moment.";
    case errors::LogOnRefused:
        return "The mail server refused the user name or the password.";
    case errors::MailServerTrouble:
        return "The connection to the mail server failed. Try again later.";
    case errors::NetworkUnreachable:
        return "The network cannot be reached. Check the computer's connection.";
    case errors::ConnectionRefused:
        return "The mail server refused the connection. Check its name and port.";
    case errors::HostNotFound:
        return "The mail server was not found. Check its name.";
    default:
        return "The program met a condition that it does not know.";
    }
}

} // namespace platform
