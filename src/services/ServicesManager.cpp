#include "services/ServicesManager.h"

#include <utility>

#include "scan/Categories.h"
#include "services/CallHistoryService.h"
#include "services/contactServices.h"

namespace salvor {

ServicesManager::ServicesManager(ScanState& state, const DeviceInfo& device,
                                 const ServiceMakers& makers)
    : device_(device) {
    for (const CategoryFacts* facts : categoriesBy(&Places::making)) {
        const auto maker = makers.find(facts->service);
        if (maker != makers.end()) service(facts->category) = maker->second(state, device_);
    }
    if (auto* calls = dynamic_cast<CallHistoryService*>(callHistoryServ.get()))
        calls->contactServ = dynamic_cast<const contactServices*>(contactServ.get());
    for (const CategoryFacts* facts : categoriesBy(&Places::module))
        recoveryModules.push_back(service(facts->category).get());
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
    for (const CategoryFacts& facts : categories()) {
        if (static_cast<int>(facts.service) == index) run(service(facts.category).get(), cancelled);
    }
}

}  // namespace salvor
