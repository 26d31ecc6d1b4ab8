#include "SharedFiles/authorization/QVAuthorization.h"

#include <memory>
#include <mutex>

AuthorizationController& QVAuthorization::sharedController(bool gui) {
  static std::mutex mutex;
  // Never destroyed: what is held is the process's until its end.
  static AuthorizationController* controller = nullptr;
  const std::lock_guard guard(mutex);
  if (controller == nullptr) {
    using Interface = AuthorizationController::Interface;
    controller = std::make_unique<AuthorizationController>(AuthorizationEnvironment::standard(),
                                                           gui ? Interface::gui : Interface::none)
                     .release();
  }
  return *controller;
}
