#pragma once

namespace salvor {

/// Codes of the services, as `StartRecoveryofService` takes them.
constexpr int kMessagesService = 0;
constexpr int kCameraRollService = 1;
constexpr int kContactsService = 2;
constexpr int kCallHistoryService = 3;
constexpr int kCalendarService = 4;
constexpr int kNotesService = 5;
constexpr int kInternetHistoryService = 6;
constexpr int kWhatsAppService = 7;

/// Data-type code of a scan of the notes alone.
constexpr int kNotesDataType = 6;

}  // namespace salvor
