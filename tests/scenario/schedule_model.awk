# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# Reads the daemon's log, simulates the schedule and compares every step of the scheduler with it.
# Prints a line that begins with WRONG for each mismatch; the last line has the counts.
#
# While a daemon restarts, two threads build the list and reset the current item at the same time, so
# both are unknown until the first refill. Due times are always known, because they survive
# restarts.

function wrong(text) { print "WRONG at " $1 " " $2 ": " text; ++wrongs }
function expect(holds, text) { if (!holds) wrong(text) }
function remove(id,   i, kept) {
  for (i = 1; i <= size; ++i) if (list[i] != id) list[++kept] = list[i]
  size = kept + 0
}
function add(id,   i) {
  remove(id)
  for (i = size; i >= 1; --i) list[i + 1] = list[i]
  list[1] = id
  ++size
}
# Every package with a service app, in ascending order.
function refill(   id, i) {
  expect(event == 1002 || event == 1004, "event " event " refilled the list")
  expect(!known || size == 0, "a list with " size " items was refilled")
  size = 0
  for (id in packages) {
    for (i = size; i >= 1 && list[i] > id; --i) list[i + 1] = list[i]
    list[i + 1] = id
    ++size
  }
  known = 1
  refilled = 1
  ++refills
}

# Ticks are 720 seconds apart, or slightly more on a busy machine. Each start adds a timer.
function see_tick(   parts, moment, gap) {
  split($2, parts, ":")
  moment = parts[1] * 3600 + parts[2] * 60 + parts[3]
  gap = moment - last_tick + (moment < last_tick ? 86400 : 0)
  if (timers == 1 && last_tick != "") {
    expect(gap >= 600, "a tick " gap " seconds after the one before")
    gaps += gap
    ++gap_count
  }
  last_tick = timers == 1 ? moment : ""
}
function begin_event(type) {
  event = type
  ++events[type]
  if (type == 1004) see_tick()
  start_size = size
  start_current = current
  start_known = known
  refilled = looked = stopped = idle = launched = ended = 0
  picked = ""
}
# Checks that the event just handled by the scheduler's thread did everything it should.
function end_event(   at_list) {
  if (event == "" || event == "over") return
  if (known && start_known) {
    if (event == 1004) expect(refilled == (start_size == 0 && !stopped), "a tick, " start_size " items, refilled: " refilled)
    if (event == 1005 || event == 1006) expect(start_current == "" || ended, start_current " was not ended")
    if (event == 1004) expect(!ended || stopped, "a tick ended " start_current)
    at_list = event == 1005 || event == 1006 && start_size > 0 || event == 1004 && !stopped || event == 1002 && !idle
    expect(at_list == looked, "event " event ", " start_size " items, looked at the list: " looked)
  }
  if (event == 1002 && !idle) { ++timers; last_tick = "" }
  if (picked != "") expect(launched || waiting, picked " was due and not launched")
  event = "over"
}
# The scheduler takes the front item of the list.
function pick(logged_size) {
  looked = 1
  picked = ""
  if (!known) { picked = logged_size > 0 ? "?" : ""; return }
  expect(logged_size == size, "the list has " logged_size " items, not " size)
  if (size == 0) return
  picked = list[1]
  remove(picked)
  current = picked
}
function see_due_time(text,   id) {
  expect(picked != "", "a due time is read without a picked item")
  if (picked != "?") { expect(text == due[picked], picked " is due at \"" text "\", not \"" due[picked] "\""); return }
  if (text == "") return
  for (id in due) if (due[id] == text) picked = id
  expect(picked != "?", "no app is due at " text)
}
function see_launch(id) {
  expect(!launched, "a second launch in one event")
  expect(!waiting, id " is launched before it is due")
  expect(picked == "?" || id == picked ".Feed", "launched " id " instead of " picked)
  launched = 1
  sub(/\.Feed$/, "", id)
  current = id
  ++launches
  ++launches_of[id]
}

BEGIN { known = 1; event = "" }
{
  text = $0; sub(/^.* > /, "", text)
  value = text; sub(/^.* : ?/, "", value)
  where = $7; sub(/\(.*/, "", where)
}
text == "[Debug] orv-enabler is launched." {
  event = ""
  known = starts++ == 0
  size = 0
  current = thread = last_tick = ""
  timers = 0
  next
}
/ORVScheduler\.cpp: t_OnEvent\(/ { end_event(); thread = $4; begin_event(value); next }

# Packages are added and removed on the threads that run decorators.
where == "AddSchedulingItem" && !/Cannot find/ { packages[value] = 1; add(value); next }
where == "RemoveSchedulingItem" && !/Cannot find/ { remove(value); delete packages[value]; next }
$4 != thread && /Current ServiceApp ID/ { current = "" }
$4 != thread && /Tartget pid/ { ++kills }
# Service apps set their due times on the main loop.
$4 != thread && where == "GetUTCTimeString" { due_text = value }
/sTargetPackageID/ { due[value] = due_text; ++dates }
$4 != thread { next }

/Network Time is not enabled/ { idle = 1 }
where == "StopScheduler" { stopped = 1; size = 0; if (timers > 0) --timers; last_tick = "" }
where == "ResetSchedulingList" && value != "" && !refilled { refill() }
where == "GetNextSchedulingItem" { pick(value + 0) }
where == "GetEpochTime" { see_due_time(value) }
text ~ /^\[Debug\] now : / {
  moment = text; gsub(/[^0-9]+/, " ", moment); split(moment, times, " ")
  waiting = times[1] < times[2]
  waits += waiting
}
where == "LaunchApp" { see_launch(value) }
/Current ServiceApp ID/ {
  ended = 1
  expect(!known || value == current ".Feed", "ended " value ", but current is " current)
  current = ""
}
/Tartget pid/ { ++kills }
END {
  end_event()
  for (id in launches_of) print "launched " id " " launches_of[id]
  printf "%d wrong, %d launches, %d not due, %d kills, %d refills, %d ticks, %d completions, %d dates, %d seconds between ticks\n",
    wrongs, launches, waits, kills, refills, events[1004], events[1006], dates, gap_count ? gaps / gap_count : 0
}
