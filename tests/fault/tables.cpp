// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "fault/expectations.h"

namespace fault {

const std::vector<Telling>& Tellings() {
  static const std::vector<Telling> s_tellings = {};
  return s_tellings;
}

const std::vector<Deafness>& Deafnesses() {
  static const std::vector<Deafness> s_deafnesses = {
      {"g_main_loop_new", "",
       "without a main loop the process ends; its supervisor starts it anew"},
  };
  return s_deafnesses;
}

const std::vector<Leak>& Leaks() {
  static const std::vector<Leak> s_leaks = {
      {"MessageOfCompletion", "", "bundle", "the reply of a completion is abandoned: settled"},
  };
  return s_leaks;
}

}  // namespace fault
