#include "message/attachment_file.h"

#include "email/own_files.h"
#include "message/part_headers.h"
#include "platform/drives.h"
#include "platform/private_file.h"

void writeAttachment(std::string_view part) {
    platform::PrivateOutput file(platform::nativePath(QLatin1String(email::kEncodedAttachmentFileName)),
                                 platform::Writing::InPlace);
    file.write(withoutPartHeaders(part));
    file.write("\r\n");
    file.finish();
}
