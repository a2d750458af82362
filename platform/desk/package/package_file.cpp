// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/package/package_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <map>

#include "desk/package/archive.h"

namespace desk {
namespace {

constexpr std::size_t BUFFER_SIZE = 128UL * 1024;
constexpr char CONFIG[] = "config.xml";

bool EndsWith(const std::string& text, const std::string& end) {
  return text.size() > end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

[[noreturn]] void FailAt(const std::string& path, int error) {
  if (error == ENOSPC || error == EDQUOT) {
    throw PackageError("no space left on the device for " + path + ": make room and try again");
  }
  throw PackageError("cannot write " + path + ": " + std::strerror(error));
}

// Collects the entries and refuses what must not be unpacked.
class Directory {
 public:
  Directory(PackageFile& package, const PackageLimits& limits)
      : m_package(package), m_limits(limits) {}

  void Add(const RawEntry& raw) {
    if (raw.type == RawEntry::Type::Other) {
      throw PackageError("the archive holds \"" + raw.name +
                         "\", which is a link or another special file");
    }
    PackageEntry entry{CleanRelativeName(raw.name), raw.type == RawEntry::Type::Directory,
                       raw.executable, raw.size};
    if (entry.name.empty() && !entry.directory) {
      throw PackageError("the archive holds a file without a name");
    }
    CheckSize(entry);
    CheckPlace(entry);
    m_package.entries.push_back(std::move(entry));
  }

 private:
  void CheckSize(const PackageEntry& entry) {
    if (m_package.entries.size() >= m_limits.entries) {
      throw PackageError("the archive holds more than " + std::to_string(m_limits.entries) +
                         " entries");
    }
    if (entry.size > m_limits.bytes - std::min(m_limits.bytes, m_package.bytes)) {
      throw PackageError("the archive unpacks to more than " + std::to_string(m_limits.bytes) +
                         " bytes");
    }
    m_package.bytes += entry.size;
  }

  // A name stands for one thing only: named twice, or a file that another entry uses as a
  // directory.
  void CheckPlace(const PackageEntry& entry) {
    if (!m_named.emplace(entry.name, entry.directory).second) {
      throw PackageError("the archive holds \"" + entry.name + "\" twice");
    }
    const auto parent = m_parents.find(entry.name);
    if (!entry.directory && parent != m_parents.end()) {
      throw PackageError("the archive holds \"" + entry.name + "\" as a file and as a directory");
    }
    for (std::size_t at = entry.name.find('/'); at != std::string::npos;
         at = entry.name.find('/', at + 1)) {
      const std::string above = entry.name.substr(0, at);
      const auto named = m_named.find(above);
      if (named != m_named.end() && !named->second) {
        throw PackageError("the archive holds \"" + above + "\" as a file and as a directory");
      }
      m_parents.emplace(above, true);
    }
  }

  PackageFile& m_package;
  const PackageLimits& m_limits;
  std::map<std::string, bool> m_named;  // name to "is a directory"
  std::map<std::string, bool> m_parents;
};

std::string ReadText(ArchiveReader& archive, std::uint64_t limit) {
  std::string text;
  char buffer[4096];
  for (std::size_t count = 0; (count = archive.Read(buffer, sizeof buffer)) > 0;) {
    text.append(buffer, count);
    if (text.size() > limit) {
      throw PackageError("config.xml is larger than " + std::to_string(limit) + " bytes");
    }
  }
  return text;
}

bool HasFile(const PackageFile& package, const std::string& name) {
  return std::any_of(
      package.entries.begin(), package.entries.end(),
      [&](const PackageEntry& entry) { return !entry.directory && entry.name == name; });
}

void CheckPrograms(const PackageFile& package) {
  for (const PackageApp& app : package.manifest.apps) {
    if (app.component == Component::Service && !HasFile(package, app.program)) {
      throw PackageError("the archive has no \"" + app.program + "\", which the service \"" +
                         app.id + "\" is to run");
    }
  }
}

/// Also a page that exists only in translations, as locales/<language>/<page>.
bool HasPage(const PackageFile& package, const std::string& page) {
  const std::string locales = "locales/";
  return HasFile(package, page) ||
         std::any_of(package.entries.begin(), package.entries.end(), [&](const auto& entry) {
           const std::size_t slash = entry.name.find('/', locales.size());
           return !entry.directory && entry.name.rfind(locales, 0) == 0 &&
                  slash != std::string::npos && entry.name.substr(slash + 1) == page;
         });
}

/// The platform's default pages, tried in this order when the start page does not exist.
std::string FallbackPage(const PackageFile& package) {
  for (const char* page : {"index.htm", "index.html", "index.svg", "index.xhtml", "index.xht"}) {
    if (HasPage(package, page)) {
      return page;
    }
  }
  return {};
}

/// A package that names no start page and has none is accepted: it has a UI application without a
/// page.
void ResolveStartPages(PackageFile& package) {
  for (PackageApp& app : package.manifest.apps) {
    if (app.component != Component::Ui || IsRemotePage(app.program) ||
        (!app.program.empty() && HasPage(package, app.program))) {
      continue;
    }
    const std::string fallback = FallbackPage(package);
    if (fallback.empty() && !app.program.empty()) {
      throw PackageError("config.xml: the start page \"" + app.program +
                         "\" is not in the archive, and neither is index.htm, index.html, "
                         "index.svg, index.xhtml or index.xht. Add the page, or correct the src "
                         "of the content element");
    }
    app.program = fallback;
  }
}

std::string PlaceOf(const PackageEntry& entry, const std::string& directory) {
  return directory + (IsImage(entry) ? "/res/" : "/res/wgt/") + entry.name;
}

class OutputFile {
 public:
  OutputFile(const std::string& path, mode_t mode) : m_path(path) {
    m_fd = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode);
    if (m_fd < 0) {
      FailAt(path, errno);
    }
  }
  ~OutputFile() {
    if (m_fd >= 0) {
      close(m_fd);
    }
  }
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  void Write(const char* data, std::size_t size) {
    while (size > 0) {
      const ssize_t count = write(m_fd, data, size);
      if (count < 0 && errno != EINTR) {
        FailAt(m_path, errno);
      }
      data += std::max<ssize_t>(count, 0);
      size -= static_cast<std::size_t>(std::max<ssize_t>(count, 0));
    }
  }

  // Some file systems tell of a full disk only here.
  void Close() {
    const int result = close(m_fd);
    m_fd = -1;
    if (result != 0) {
      FailAt(m_path, errno);
    }
  }

 private:
  std::string m_path;
  int m_fd = -1;
};

void MakeDirectories(const std::string& path) {
  std::error_code error;
  std::filesystem::create_directories(path, error);
  if (error) {
    FailAt(path, error.value());
  }
}

using Wanted = std::function<bool(const PackageEntry&)>;

class Unpacker {
 public:
  Unpacker(const std::string& path, const PackageFile& package, const std::string& directory,
           const std::function<void(int)>& progress, Wanted wanted)
      : m_path(path),
        m_package(package),
        m_directory(directory),
        m_progress(progress),
        m_wanted(std::move(wanted)),
        m_archive(path),
        m_buffer(BUFFER_SIZE) {}

  void Run() {
    MakeDirectories(m_directory + "/res/wgt");
    Tell();
    RawEntry raw;
    for (const PackageEntry& entry : m_package.entries) {
      const RawEntry::Type type =
          entry.directory ? RawEntry::Type::Directory : RawEntry::Type::File;
      CheckUnchanged(m_archive.Next(raw) && CleanRelativeName(raw.name) == entry.name &&
                     raw.type == type && raw.size == entry.size);
      if (m_wanted(entry)) {
        Unpack(entry);
      }
      ++m_entriesDone;
      Tell();
    }
    CheckUnchanged(!m_archive.Next(raw));
  }

 private:
  void CheckUnchanged(bool unchanged) const {
    if (!unchanged) {
      throw PackageError(m_path + " was changed while it was read");
    }
  }

  void Unpack(const PackageEntry& entry) {
    const std::string place = PlaceOf(entry, m_directory);
    if (entry.directory) {
      MakeDirectories(place);
      return;
    }
    MakeDirectories(std::filesystem::path(place).parent_path());
    OutputFile file(place, entry.executable || IsProgram(entry) ? 0755 : 0644);
    std::uint64_t written = 0;
    for (std::size_t count = 0; (count = m_archive.Read(m_buffer.data(), m_buffer.size())) > 0;) {
      written += count;
      CheckUnchanged(written <= entry.size);
      file.Write(m_buffer.data(), count);
      m_bytesDone += count;
      Tell();
    }
    CheckUnchanged(written == entry.size);
    file.Close();
  }

  // Archives from systems without an executable bit still have services that run.
  bool IsProgram(const PackageEntry& entry) const {
    const auto& apps = m_package.manifest.apps;
    return std::any_of(apps.begin(), apps.end(), [&](const PackageApp& app) {
      return app.component == Component::Service && app.program == entry.name;
    });
  }

  void Tell() {
    // An entry counts like a block, so that many empty files move the figure too.
    const double all = static_cast<double>(m_package.bytes) +
                       static_cast<double>(BUFFER_SIZE * m_package.entries.size());
    const double done =
        static_cast<double>(m_bytesDone) + static_cast<double>(BUFFER_SIZE * m_entriesDone);
    const int percent = static_cast<int>(100.0 * done / all);
    if (percent != m_percent) {
      m_percent = percent;
      m_progress(percent);
    }
  }

  const std::string& m_path;
  const PackageFile& m_package;
  const std::string& m_directory;
  const std::function<void(int)>& m_progress;
  const Wanted m_wanted;
  ArchiveReader m_archive;
  std::vector<char> m_buffer;
  std::uint64_t m_bytesDone = 0;
  std::size_t m_entriesDone = 0;
  int m_percent = -1;
};

}  // namespace

bool IsImage(const PackageEntry& entry) {
  return !entry.directory && entry.name.find('/') == std::string::npos &&
         EndsWith(entry.name, ".tmg");
}

PackageFile ReadPackage(const std::string& path, const PackageLimits& limits) {
  PackageFile package;
  Directory directory(package, limits);
  ArchiveReader archive(path);
  std::string config;
  bool found = false;
  for (RawEntry raw; archive.Next(raw);) {
    directory.Add(raw);
    const PackageEntry& entry = package.entries.back();
    if (entry.name == CONFIG && !entry.directory) {
      config = ReadText(archive, limits.configBytes);
      found = true;
    }
  }
  if (!found) {
    throw PackageError(path + " has no config.xml in its root");
  }
  package.manifest = ParseConfig(config);
  CheckPrograms(package);
  ResolveStartPages(package);
  return package;
}

void UnpackPackage(const std::string& path, const PackageFile& package,
                   const std::string& directory, const std::function<void(int)>& progress) {
  Unpacker(path, package, directory, progress, [](const PackageEntry&) { return true; }).Run();
}

void UnpackEntries(const std::string& path, const PackageFile& package,
                   const std::string& directory, const Wanted& wanted) {
  Unpacker(
      path, package, directory, [](int) {}, wanted)
      .Run();
}

}  // namespace desk
