#include "services/ServiceMakers.h"

#include "services/CalendarsService.h"
#include "services/CallHistoryService.h"
#include "services/DcimService.h"
#include "services/InternetHistoryService.h"
#include "services/MessageServices.h"
#include "services/NotesServices.h"
#include "services/WhatsAppService.h"
#include "services/contactServices.h"

namespace salvor {
namespace {

template <class Service>
std::unique_ptr<abstractServices> make(ScanState& state, const DeviceInfo&) {
    return std::make_unique<Service>(state);
}

}  // namespace

const ServiceMakers& builtServices() {
    static const ServiceMakers makers = {
        {ServiceIndex::Messages, MessageServices::initwithDevice},
        {ServiceIndex::CameraRoll, make<DcimService>},
        {ServiceIndex::Contacts, make<contactServices>},
        {ServiceIndex::CallHistory, make<CallHistoryService>},
        {ServiceIndex::Calendars, make<CalendarsService>},
        {ServiceIndex::Notes, make<NotesServices>},
        {ServiceIndex::InternetHistory, make<InternetHistoryService>},
        {ServiceIndex::WhatsApp, make<WhatsAppService>},
    };
    return makers;
}

}  // namespace salvor
