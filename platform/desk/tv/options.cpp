// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/tv/options.h"

#include <map>

#include "desk/common/desk_error.h"
#include "desk/common/desk_root.h"
#include "desk/common/numbers.h"

namespace desk::tv {
namespace {

constexpr int MAX_SPEED = 100000;

DeskError Wrong(const std::string& why) {
  return DeskError(DeskError::USAGE, why + ": see desk-tv --help");
}

int Number(const std::string& option, const std::string& text, int least, int greatest) {
  const auto value = ReadNumber(text);
  if (!value || *value < least || *value > greatest) {
    throw Wrong(option + " takes a number from " + std::to_string(least) + " to " +
                std::to_string(greatest) + ", not \"" + text + "\"");
  }
  return static_cast<int>(*value);
}

// "--name value" and "--name=value" alike.
class Words {
 public:
  Words(int argc, const char* const* argv) : m_count(argc), m_words(argv) {}

  bool Next() {
    if (m_at + 1 >= m_count) {
      return false;
    }
    const std::string word = m_words[++m_at];
    const std::size_t equals = word.find('=');
    m_hasInline = equals != std::string::npos;
    m_name = word.substr(0, equals);
    m_inline = m_hasInline ? word.substr(equals + 1) : "";
    return true;
  }
  const std::string& Name() const { return m_name; }
  bool HasInline() const { return m_hasInline; }
  std::string Value() {
    if (m_hasInline) {
      return m_inline;
    }
    if (m_at + 1 >= m_count) {
      throw Wrong(m_name + " takes a value");
    }
    return m_words[++m_at];
  }

 private:
  const int m_count;
  const char* const* const m_words;
  int m_at = 0;
  std::string m_name;
  std::string m_inline;
  bool m_hasInline = false;
};

bool TakeFlag(TvOptions& options, const Words& words) {
  const std::map<std::string, std::pair<bool TvOptions::*, bool>> flags = {
      {"--offline", {&TvOptions::offline, true}},
      {"--reset-clock", {&TvOptions::resetClock, true}},
      {"--no-sandbox", {&TvOptions::sandbox, false}}};
  const auto found = flags.find(words.Name());
  if (found == flags.end() || words.HasInline()) {
    return false;
  }
  options.*(found->second.first) = found->second.second;
  return true;
}

}  // namespace

TvOptions TvOptions::Parse(int argc, const char* const* argv) {
  TvOptions options;
  std::string root;
  Words words(argc, argv);
  while (words.Next()) {
    if (TakeFlag(options, words)) {
      continue;
    }
    if (words.Name() == "--root") {
      root = words.Value();
    } else if (words.Name() == "--speed") {
      options.speed = Number("--speed", words.Value(), 1, MAX_SPEED);
    } else if (words.Name() == "--log") {
      options.log = words.Value();
    } else if (words.Name() == "--ready-fd") {
      options.readyFd = Number("--ready-fd", words.Value(), 0, 1 << 20);
    } else {
      throw Wrong("unknown option " + words.Name());
    }
  }
  options.paths = DeskPaths::Select(root);
  RequireOwnDirectory(options.paths);
  if (options.log.empty()) {
    options.log = options.paths.TvLog();
  }
  return options;
}

const char* TvOptions::HelpText() {
  return "desk-tv: the television behind the command tv; `tv up` starts it.\n"
         "\n"
         "  --root DIR      the TV's directory (default: $TV_ROOT, else $XDG_STATE_HOME/tv-desk)\n"
         "  --offline       do not set the network time\n"
         "  --speed N       run the daemon's clock and timers N times faster\n"
         "  --reset-clock   set the TV's clock to this machine's time, even if it goes back\n"
         "  --no-sandbox    run the daemon without bubblewrap, on this machine's own files\n"
         "  --log FILE      log file of desk-tv (default: DIR/log/desk-tv.log)\n"
         "  --ready-fd N    write one line, \"ready\" or \"failed: ...\", to this descriptor and "
         "close "
         "it\n";
}

}  // namespace desk::tv
