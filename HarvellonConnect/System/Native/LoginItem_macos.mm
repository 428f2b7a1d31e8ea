#include "System/Native/LoginItem.h"

#import <ServiceManagement/ServiceManagement.h>

bool LoginItem::isEnabled() const {
    return [SMAppService mainAppService].status == SMAppServiceStatusEnabled;
}

bool LoginItem::setEnabled(bool enabled) {
    SMAppService* const service = [SMAppService mainAppService];
    return enabled ? [service registerAndReturnError:nil] : [service unregisterAndReturnError:nil];
}

bool LoginItem::waitsForApproval() const {
    return [SMAppService mainAppService].status == SMAppServiceStatusRequiresApproval;
}
