#include "OrvLauncher/platform/LoginItem.h"

#import <ServiceManagement/ServiceManagement.h>

namespace orv {

namespace {

/// The application itself, as System Settings lists it under "Open at Login".
class MainAppService : public LoginItemController {
public:
    [[nodiscard]] bool isEnabled() const override {
        return SMAppService.mainAppService.status == SMAppServiceStatusEnabled;
    }
    [[nodiscard]] std::expected<void, QString> setEnabled(bool isEnabled) override {
        SMAppService* service = SMAppService.mainAppService;
        NSError* error = nil;
        if (isEnabled ? [service registerAndReturnError:&error] : [service unregisterAndReturnError:&error]) {
            return {};
        }
        return std::unexpected(QString::fromNSString(error.localizedDescription));
    }
};

} // namespace

std::unique_ptr<LoginItemController> makeLoginItem() {
    return std::make_unique<MainAppService>();
}

} // namespace orv
