// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/cli/app_runs.h"

#include <algorithm>
#include <fstream>
#include <regex>

namespace desk::cli {
namespace {

constexpr std::uintmax_t MOST_OUTPUT = 65536;  // bytes of a run that are looked at

/// Reads the lines one by one.
class RunReader {
 public:
  void Add(const TvLogLine& line) {
    std::smatch match;
    if (std::regex_match(line.text, match, m_launched)) {
      AddLaunch(line, match);
    } else if (std::regex_match(line.text, match, m_notLaunched)) {
      AppRun run;
      run.app = match[1];
      run.launched = line.time;
      run.ended = line.time;
      run.end = match[2];
      m_runs.push_back(run);
    } else if (std::regex_match(line.text, match, m_ended)) {
      EndOf(match[1], line.time, match[2]);
    } else if (line.text == "power cycle" || line.text == "off" ||
               line.text.compare(0, 8, "a TV in ") == 0) {
      EndAll(line.time);
    }
  }

  std::vector<AppRun> Runs() && { return std::move(m_runs); }

 private:
  void AddLaunch(const TvLogLine& line, const std::smatch& match) {
    AppRun run;
    run.app = match[1];
    run.launched = line.time;
    run.pid = std::stoi(match[2]);
    run.outputFrom = std::stoull(match[3]);
    for (auto& earlier : m_runs) {
      if (earlier.app == run.app && !earlier.outputBefore) {
        earlier.outputBefore = run.outputFrom;
      }
    }
    m_runs.push_back(run);
  }

  void EndOf(const std::string& app, Timestamp time, const std::string& how) {
    const auto run = std::find_if(m_runs.rbegin(), m_runs.rend(), [&](const AppRun& candidate) {
      return candidate.app == app && !candidate.ended;
    });
    if (run != m_runs.rend()) {
      run->ended = time;
      run->end = how;
    }
  }

  void EndAll(Timestamp time) {
    for (auto& run : m_runs) {
      if (!run.ended) {
        run.ended = time;
        run.end = "the TV was switched off";
      }
    }
  }

  const std::regex m_launched{R"((\S+) launched: pid (\d{1,9}), its output from byte (\d{1,18}))"};
  const std::regex m_notLaunched{R"(cannot launch (\S+): (.*))"};
  const std::regex m_ended{R"((\S+) ended: (.*))"};
  std::vector<AppRun> m_runs;
};

std::string ReadRange(const std::string& path, std::uintmax_t from, std::uintmax_t before) {
  std::ifstream file(path, std::ios::binary | std::ios::ate);
  const auto size = file ? static_cast<std::uintmax_t>(file.tellg()) : 0;
  const std::uintmax_t end = std::min(before, size);
  // A file that is shorter than it was has been replaced.
  const std::uintmax_t start = from > size ? 0 : from;
  if (start >= end) {
    return "";
  }
  const std::uintmax_t count = std::min(end - start, MOST_OUTPUT);
  std::string text(count, '\0');
  file.seekg(static_cast<std::streamoff>(end - count));
  file.read(text.data(), static_cast<std::streamsize>(count));
  text.resize(static_cast<std::size_t>(file.gcount()));
  return text;
}

}  // namespace

std::optional<TvLogLine> ParseTvLogLine(const std::string& line) {
  const auto blank = line.find(' ');
  const auto time = ParseTimestamp(line.substr(0, blank));
  if (!time || blank == std::string::npos) {
    return std::nullopt;
  }
  return TvLogLine{*time, line.substr(blank + 1)};
}

std::vector<AppRun> AppRunsIn(const std::vector<std::string>& tvLog) {
  RunReader reader;
  for (const auto& text : tvLog) {
    if (const auto line = ParseTvLogLine(text)) {
      reader.Add(*line);
    }
  }
  return std::move(reader).Runs();
}

const AppRun* LastRun(const std::vector<AppRun>& runs, const std::string& app) {
  const auto run =
      std::find_if(runs.rbegin(), runs.rend(), [&](const AppRun& r) { return r.app == app; });
  return run == runs.rend() ? nullptr : &*run;
}

std::vector<std::string> OutputOf(const DeskPaths& paths, const AppRun& run, std::size_t most) {
  if (run.pid == 0) {
    return {};
  }
  const std::string text = ReadRange(paths.Log() + "/" + run.app + ".log", run.outputFrom,
                                     run.outputBefore.value_or(UINTMAX_MAX));
  std::vector<std::string> lines;
  std::size_t start = 0;
  while (start < text.size()) {
    const std::size_t end = std::min(text.find('\n', start), text.size());
    if (end > start) {
      lines.push_back(text.substr(start, end - start));
    }
    start = end + 1;
  }
  if (lines.size() > most) {
    lines.erase(lines.begin(), lines.end() - static_cast<std::ptrdiff_t>(most));
  }
  return lines;
}

}  // namespace desk::cli
