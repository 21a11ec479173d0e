#include "services/ServiceMakers.h"

#include "scan/Categories.h"
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

std::unique_ptr<abstractServices> makeMessages(ScanState& state, const DeviceInfo& device) {
    return MessageServices::initwithDevice(state, device);
}

using Maker = std::unique_ptr<abstractServices> (*)(ScanState& state, const DeviceInfo& device);

constexpr PerCategory<Maker> kMakers{
    {Category::Messages, makeMessages},
    {Category::Photos, make<DcimService>},
    {Category::Contacts, make<contactServices>},
    {Category::Calls, make<CallHistoryService>},
    {Category::WhatsApp, make<WhatsAppService>},
    {Category::Notes, make<NotesServices>},
    {Category::Internet, make<InternetHistoryService>},
    {Category::Calendar, make<CalendarsService>},
};

}  // namespace

const ServiceMakers& builtServices() {
    static const ServiceMakers makers = [] {
        ServiceMakers all;
        for (const CategoryFacts& facts : categories())
            all.emplace(facts.service, kMakers[facts.category]);
        return all;
    }();
    return makers;
}

}  // namespace salvor
