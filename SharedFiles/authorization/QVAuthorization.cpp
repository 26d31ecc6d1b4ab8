#include "SharedFiles/authorization/QVAuthorization.h"

#include <memory>

AuthorizationController& QVAuthorization::sharedController(bool gui) {
  using Interface = AuthorizationController::Interface;
  // Never destroyed: what is held is the process's until its end.
  static AuthorizationController& controller =
      *std::make_unique<AuthorizationController>(AuthorizationEnvironment::standard(),
                                                 gui ? Interface::gui : Interface::none)
           .release();
  return controller;
}
