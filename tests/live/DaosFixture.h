#pragma once

#include "live/DAOs.h"
#include "tests/support/ScanFixture.h"
#include "tests/support/Told.h"

namespace salvor {

/// The statements over databases that the test writes.
class DaosFixture : public ScanFixture {
  protected:
    DaosFixture() {
        state.SMS_DATABASE = "sms";
        state.NOTES_DATABASE = "notes";
        state.CALENDAR_DATABASE = "calendar";
        state.CALLHISTORY_DATABASE = "calls";
        state.ADDRESSBOOK_DATABASE = "contacts";
        state.WHATSAPP_DATABASE = "whatsapp";
    }

    void version(std::int32_t major) { state.deviceInfo.iOSMajorVersion = major; }

    DAOs daos{state};
};

}  // namespace salvor
