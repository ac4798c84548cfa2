#include "message/writer_in_use.h"

#include "message/house_writer.h"
#include "message/mail_mode.h"
#include "message/standard_writer.h"

const MessageWriter& writerInUse() {
    static const HouseWriter house;
    static const StandardWriter standard;
    if (mailMode() == MailMode::Standard) {
        return standard;
    }
    return house;
}
