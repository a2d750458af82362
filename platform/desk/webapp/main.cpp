// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <glib-unix.h>
#include <glib.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "desk/common/bus_client.h"
#include "desk/common/desk_error.h"
#include "desk/common/gio_ptr.h"
#include "desk/webapp/web_app.h"

namespace {

int Run(const std::string& id, bool background) {
  const char* address = std::getenv("TV_BUS");
  if (address == nullptr) {
    throw desk::DeskError(desk::DeskError::USAGE,
                          "TV_BUS is not set: launch the app with `tv app launch`");
  }
  const desk::MainLoopPtr loop(g_main_loop_new(nullptr, FALSE));
  desk::BusClient bus(address);
  // A web app ends with its TV.
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
