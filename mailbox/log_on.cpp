#include "mailbox/log_on.h"

#include "components/poplib/pop.h"
#include "email/credentials.h"
#include "email/shared_settings.h"
#include "platform/text.h"

void logOn(POPLib::POP& pop, AfterLogOn after) {
    pop.setListing(after == AfterLogOn::Listing);
    pop.setMailServer(email::settings.POPServer);
    pop.setLoginUser(platform::toBytes(email::credentials.UserName));
    pop.setLoginPassword(platform::toBytes(email::credentials.Password));
    pop.issueRequest(poplib::Request::ConnectAndLogOn);
}
