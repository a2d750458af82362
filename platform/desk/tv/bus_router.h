// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <string>

#include "desk/tv/callers.h"
#include "desk/tv/router.h"

namespace desk::tv {

/// The router on a desk's private bus. Create and destroy it on the main loop's thread, which runs
/// all handlers.
class BusRouter : public Router {
 public:
  /// Connects to the bus and acquires the TV's name. Add all methods before the main loop runs,
  /// since calls are handled from then on. Keeps a reference to callers. Throws DeskError (Failed).
  BusRouter(const std::string& address, const CallerTable& callers);
  ~BusRouter() override;

  void Add(const std::string& method, Handler handler) override;
  void AddDeferred(const std::string& method, DeferredHandler handler) override;
  void Emit(const std::string& topic, const Json::Value& body) override;
  void EmitTo(const std::string& busName, const std::string& topic,
              const Json::Value& body) override;
  void OnConnectionGone(std::function<void(const std::string& busName)> function) override;

  /// Returns when the bus has received and forwarded everything that was sent.
  void Flush();

 private:
  struct State;
  const std::unique_ptr<State> m_state;
};

}  // namespace desk::tv
