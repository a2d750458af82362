// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/tv/tv_clock.h"

#include <json/value.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>

#include "desk/common/desk_error.h"
#include "desk/common/json.h"

namespace desk::tv {
namespace {

// A TV that is killed has run for one period, and a little more, after it stored its time last.
constexpr unsigned STORE_PERIOD = 1000;
constexpr std::chrono::seconds KILLED_MARGIN(2);

// The end of the range, far from an overflow: some 250 years, which the highest speed reaches in a
// day.
constexpr TvClock::Time LAST_TIME(INT64_C(8000000000000000000));

TvClock::Time Advance(TvClock::Time from, TvClock::Time elapsed, long speed) {
  return from >= LAST_TIME || elapsed > (LAST_TIME - from) / speed ? LAST_TIME
                                                                   : from + elapsed * speed;
}

// The least time that the TV's clock may show at the machine's time now. Zero when nothing is
// stored.
TvClock::Time StoredTime(const std::string& path, TvClock::Time now) {
  std::ifstream file(path);
  std::ostringstream text;
  text << file.rdbuf();
  try {
    const Json::Value stored = ParseJson(text.str());
    const TvClock::Time time(stored["tv"].asInt64());
    const TvClock::Time machine(stored["machine"].asInt64());
    const long speed = std::max<long>(stored["speed"].asInt64(), 1);
    const TvClock::Time atEnd =
        stored["running"].asBool() && speed > 1 ? Advance(time, KILLED_MARGIN, speed) : time;
    // The machine's clock may have gone back since.
    return Advance(atEnd, std::max(now - machine, TvClock::Time(0)), 1);
  } catch (const std::exception&) {
    return TvClock::Time(0);
  }
}

}  // namespace

TvClock::TvClock(std::string file, int speed, bool reset, MachineClock machine)
    : m_file(std::move(file)),
      m_speed(speed),
      m_machine(std::move(machine)),
      m_since(m_machine()),
      m_base(reset ? m_since : std::max(m_since, StoredTime(m_file, m_since))) {
  if (!Differs()) {
    std::remove(m_file.c_str());
    return;
  }
  Store(true);
  if (m_speed > 1) {
    StoreRegularly();
  }
}

TvClock::~TvClock() {
  if (!Differs()) {
    return;
  }
  try {
    Store(false);
  } catch (const DeskError&) {
    // See the declaration.
  }
}

TvClock::Time TvClock::MachineNow() {
  return std::chrono::system_clock::now().time_since_epoch();
}

TvClock::Time TvClock::Now() const {
  return Advance(m_base, m_machine() - m_since, m_speed);
}

void TvClock::Store(bool running) const {
  Json::Value state;
  const Time machine = m_machine();
  state["tv"] = Json::Int64(Advance(m_base, machine - m_since, m_speed).count());
  state["machine"] = Json::Int64(machine.count());
  state["speed"] = m_speed;
  state["running"] = running;
  const std::string draft = m_file + ".new";
  {
    std::ofstream file(draft, std::ios::trunc);
    file << FormatJson(state) << '\n';
    file.close();
    if (!file) {
      throw DeskError(DeskError::FAILED,
                      "cannot write the TV's clock to " + draft + ": " + std::strerror(errno));
    }
  }
  if (std::rename(draft.c_str(), m_file.c_str()) != 0) {
    throw DeskError(DeskError::FAILED,
                    "cannot write the TV's clock to " + m_file + ": " + std::strerror(errno));
  }
}

void TvClock::StoreRegularly() {
  m_timer.Set(STORE_PERIOD, [this] {
    try {
      Store(true);
    } catch (const DeskError&) {
      // A full disk must not stop the TV; the next period tries again.
    }
    StoreRegularly();
  });
}

}  // namespace desk::tv
