// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// port_flood COUNT EVERY: an app that sends COUNT messages to the scheduler's port as fast as the
// port accepts them. Each has its own number; every EVERY-th sets a due time and requests an
// answer. Prints the number of accepted messages and of "success" answers; exits with 1 if a
// message was refused or an answer is missing.
#include <bundle.h>
#include <glib.h>
#include <message_port.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* DAEMON = "com.kalmora.tv.orv-enabler";
constexpr const char* PORT = "orv_scheduler_command_port";
constexpr std::chrono::seconds PATIENCE{50};

int g_answers = 0;  // on the main loop

void CountSuccess(const char*, const int, const bundle_keyval_t* value, void*) {
  void* text = nullptr;
  size_t size = 0;
  if (bundle_keyval_get_basic_val(const_cast<bundle_keyval_t*>(value), &text, &size) == 0 &&
      std::strcmp(static_cast<const char*>(text), "result_success") == 0) {
    ++g_answers;
  }
}

void OnAnswer(int, const char*, const char*, bool, bundle* message, void*) {
  bundle_foreach(message, CountSuccess, nullptr);
}

bool Send(const std::string& number, int replyPort) {
  bundle* message = bundle_create();
  bundle_add_str(message, "number", number.c_str());
  int result = 0;
  if (replyPort == 0) {
    result = message_port_send_message(DAEMON, PORT, message);
  } else {
    bundle_add_str(message, "orv_scheduler_command", "command_set_expiration_time");
    bundle_add_str(message, "expiration_time", "3600");
    result = message_port_send_message_with_local_port(DAEMON, PORT, message, replyPort);
  }
  bundle_free(message);
  return result == 0;
}

void WaitForAnswers(int wanted) {
  const auto end = Clock::now() + PATIENCE;
  // Wakes the loop so that it checks the deadline.
  g_timeout_add(
      100, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr);
  while (g_answers < wanted && Clock::now() < end) {
    g_main_context_iteration(nullptr, TRUE);
  }
}

}  // namespace

int main(int argc, char** argv) {
  const char* app = std::getenv("TV_APP_ID");
  if (argc != 3 || app == nullptr) {
    return 2;
  }
  const int count = std::atoi(argv[1]);
  const int every = std::atoi(argv[2]);
  const int port = message_port_register_local_port("answers", OnAnswer, nullptr);
  int taken = 0;
  int asked = 0;
  for (int i = 1; i <= count; ++i) {
    const bool ask = i % every == 0;
    asked += ask ? 1 : 0;
    taken += Send(std::string(app) + "-" + std::to_string(i), ask ? port : 0) ? 1 : 0;
  }
  WaitForAnswers(asked);
  std::printf("taken %d answers %d\n", taken, g_answers);
  return taken == count && g_answers == asked ? 0 : 1;
}
