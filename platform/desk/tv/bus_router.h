// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <string>

#include "tv/callers.h"
#include "tv/router.h"

namespace desk::tv {

/// The router on a desk's private bus. To be made and destroyed on the main loop's thread, which
/// runs all handlers.
class BusRouter : public Router {
 public:
  /// Connects and takes the TV's name; calls are answered from then on, so methods are to be added
  /// before the main loop runs. The callers are kept by reference. Throws DeskError (Failed).
  BusRouter(const std::string& address, const CallerTable& callers);
  ~BusRouter() override;

  void Add(const std::string& method, Handler handler) override;
  void AddDeferred(const std::string& method, DeferredHandler handler) override;
  void Emit(const std::string& topic, const Json::Value& body) override;
  void EmitTo(const std::string& busName, const std::string& topic,
              const Json::Value& body) override;
  void OnConnectionGone(std::function<void(const std::string& busName)> function) override;

  /// Returns when all that was said is with the bus and was passed on.
  void Flush();

 private:
  struct State;
  const std::unique_ptr<State> m_state;
};

}  // namespace desk::tv
