#pragma once

#include <cstdlib>
#include <ctime>

#include "DatabaseFixture.h"
#include "services/database/DAOs.h"

namespace salvor {

/// A scan of a backup folder whose databases the test writes, in UTC.
class DaosFixture : public DatabaseFixture {
  protected:
    DaosFixture() {
        setenv("TZ", "UTC", 1);
        tzset();
        state.BACKUP_DIRECTORY = folder.string();
        state.SMS_DATABASE = "sms";
        state.NOTES_DATABASE = "notes";
        state.CALENDAR_DATABASE = "calendar";
        state.CALLHISTORY_DATABASE = "calls";
        state.ADDRESSBOOK_DATABASE = "contacts";
        state.WHATSAPP_DATABASE = "whatsapp";
    }

    void version(std::int32_t major) { state.deviceInfo.iOSMajorVersion = major; }

    ScanState state;
    DAOs daos{state};
};

}  // namespace salvor
