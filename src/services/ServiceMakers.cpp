#include "services/ServiceMakers.h"

#include "services/MessageServices.h"

namespace salvor {

const ServiceMakers& builtServices() {
    static const ServiceMakers makers = {
        {ServiceIndex::Messages, MessageServices::initwithDevice},
    };
    return makers;
}

}  // namespace salvor
