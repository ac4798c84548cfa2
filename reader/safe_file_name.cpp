#include "reader/attachment_name.h"

#include "platform/runtime_error.h"
#include "platform/text.h"

void requireSafeName(const QString& name) {
    const bool hasDrive = name.size() > 1 && name.at(1) == u':';
    const bool hasSeparator = name.contains(u'/') || name.contains(u'\\');
    if (name.isEmpty() || name.startsWith(u'.') || hasDrive || hasSeparator ||
        platform::withControlsVisible(name) != name) {
        throw platform::RuntimeError(platform::errors::UnsafeAttachmentName);
    }
}
