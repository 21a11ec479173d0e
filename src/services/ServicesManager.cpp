#include "services/ServicesManager.h"

#include <array>
#include <utility>

#include "services/CallHistoryService.h"
#include "services/contactServices.h"

namespace salvor {
namespace {

struct Slot {
    ServiceIndex index;
    std::unique_ptr<abstractServices> ServicesManager::*service;
};

/// In the order in which the services are made.
constexpr std::array<Slot, 8> kSlots = {
    {{ServiceIndex::WhatsApp, &ServicesManager::whatsAppServ},
     {ServiceIndex::CallHistory, &ServicesManager::callHistoryServ},
     {ServiceIndex::Calendars, &ServicesManager::calendarServ},
     {ServiceIndex::Notes, &ServicesManager::noteServ},
     {ServiceIndex::Messages, &ServicesManager::messageServ},
     {ServiceIndex::Contacts, &ServicesManager::contactServ},
     {ServiceIndex::CameraRoll, &ServicesManager::dcmiServ},
     {ServiceIndex::InternetHistory, &ServicesManager::internetHistoryServ}}};

}  // namespace

ServicesManager::ServicesManager(ScanState& state, const DeviceInfo& device,
                                 const ServiceMakers& makers)
    : device_(device) {
    for (const auto& slot : kSlots) {
        const auto maker = makers.find(slot.index);
        if (maker != makers.end()) this->*slot.service = maker->second(state, device_);
    }
    if (auto* calls = dynamic_cast<CallHistoryService*>(callHistoryServ.get()))
        calls->contactServ = dynamic_cast<const contactServices*>(contactServ.get());
    recoveryModules = {messageServ.get(),  contactServ.get(),     noteServ.get(),
                       calendarServ.get(), callHistoryServ.get(), whatsAppServ.get()};
}

ServicesManager::~ServicesManager() = default;

void ServicesManager::run(abstractServices* service, const std::stop_token& cancelled) const {
    if (service == nullptr) return;
    service->setStopToken(cancelled);
    service->RecoverFromIOSBackup(device_);
}

void ServicesManager::StartRecovery(const std::stop_token& cancelled) {
    for (auto* service : recoveryModules) {
        if (cancelled.stop_requested()) return;
        run(service, cancelled);
    }
}

void ServicesManager::StartRecoveryofService(int index, const std::stop_token& cancelled) {
    for (const auto& slot : kSlots) {
        if (static_cast<int>(slot.index) == index) run((this->*slot.service).get(), cancelled);
    }
}

}  // namespace salvor
