// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <glib-unix.h>
#include <glib.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "common/bus_client.h"
#include "common/desk_error.h"
#include "webapp/web_app.h"

namespace {

using Loop = std::unique_ptr<GMainLoop, decltype(&g_main_loop_unref)>;

int Run(const std::string& id, bool background) {
  const char* address = std::getenv("TV_BUS");
  if (address == nullptr) {
    throw desk::DeskError(desk::DeskError::Usage, "TV_BUS is not set: desk-tv starts this program");
  }
  const Loop loop(g_main_loop_new(nullptr, FALSE), g_main_loop_unref);
  desk::BusClient bus(address);
  // Without its TV it has nothing to be shown on.
  bus.OnClosed([&loop] { g_main_loop_quit(loop.get()); });
  desk::WebApp app(bus, id, [&loop] { g_main_loop_quit(loop.get()); });
  g_unix_signal_add(
      SIGTERM,
      [](gpointer data) -> gboolean {
        static_cast<desk::WebApp*>(data)->End();
        return G_SOURCE_REMOVE;
      },
      &app);
  app.Start(background);
  g_main_loop_run(loop.get());
  return EXIT_SUCCESS;
}

}  // namespace

// desk-webapp APP --foreground|--background
int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: desk-webapp APP --foreground|--background\n");
    return 2;
  }
  try {
    return Run(argv[1], std::string(argv[2]) == "--background");
  } catch (const std::exception& error) {
    std::fprintf(stderr, "desk-webapp: %s: %s\n", argv[1], error.what());
    return EXIT_FAILURE;
  }
}
