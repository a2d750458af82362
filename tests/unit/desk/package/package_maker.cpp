// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "package_maker.h"

#include <stdlib.h>
#include <zlib.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

namespace desk {
namespace {

void Put(std::string& out, std::uint64_t value, int bytes) {
  for (int i = 0; i < bytes; ++i) {
    out.push_back(static_cast<char>((value >> (8 * i)) & 0xff));
  }
}

// The part that local headers and the central directory share.
void PutCommon(std::string& out, const std::string& name, const std::string& content) {
  const auto sum =
      crc32(0, reinterpret_cast<const Bytef*>(content.data()), static_cast<uInt>(content.size()));
  Put(out, 20, 2);      // version needed
  Put(out, 0x0800, 2);  // names are UTF-8
  Put(out, 0, 2);       // stored
  Put(out, 0, 4);       // time and date
  Put(out, sum, 4);
  Put(out, content.size(), 4);
  Put(out, content.size(), 4);
  Put(out, name.size(), 2);
  Put(out, 0, 2);  // extra
}

}  // namespace

TemporaryDirectory::TemporaryDirectory() {
  const char* base = getenv("TMPDIR");
  m_path = std::string(base == nullptr ? "/tmp" : base) + "/desk-test-XXXXXX";
  if (mkdtemp(m_path.data()) == nullptr) {
    throw std::runtime_error("cannot make " + m_path);
  }
}

TemporaryDirectory::~TemporaryDirectory() {
  std::error_code ignored;
  std::filesystem::remove_all(m_path, ignored);
}

std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

void WriteFile(const std::string& path, const std::string& content) {
  std::filesystem::create_directories(std::filesystem::path(path).parent_path());
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file << content;
  if (!file.flush()) {
    throw std::runtime_error("cannot write " + path);
  }
}

std::vector<std::string> ListTree(const std::string& directory) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(directory)) {
    names.push_back(std::filesystem::relative(entry.path(), directory).string() +
                    (entry.is_directory() ? "/" : ""));
  }
  std::sort(names.begin(), names.end());
  return names;
}

PackageMaker& PackageMaker::Add(const std::string& name, const std::string& content,
                                unsigned mode) {
  m_entries.push_back({name, content, mode});
  return *this;
}

PackageMaker& PackageMaker::AddLink(const std::string& name, const std::string& target) {
  return Add(name, target, 0120777);
}

PackageMaker& PackageMaker::AddSpecial(const std::string& name, unsigned mode) {
  return Add(name, "", mode);
}

PackageMaker& PackageMaker::AddConfig(const std::string& package, const std::string& version,
                                      const std::string& elements) {
  return Add("config.xml", Config(UiApp(package) + elements, version));
}

void PackageMaker::Write(const std::string& path) const {
  std::string out;
  std::string directory;
  for (const Entry& entry : m_entries) {
    Put(directory, 0x02014b50, 4);
    Put(directory, (3 << 8) | 20, 2);  // made on a Unix
    PutCommon(directory, entry.name, entry.content);
    Put(directory, 0, 6);  // comment, disk, internal attributes
    Put(directory, static_cast<std::uint64_t>(entry.mode) << 16, 4);
    Put(directory, out.size(), 4);
    directory += entry.name;
    Put(out, 0x04034b50, 4);
    PutCommon(out, entry.name, entry.content);
    out += entry.name + entry.content;
  }
  const std::size_t at = out.size();
  out += directory;
  Put(out, 0x06054b50, 4);
  Put(out, 0, 4);
  Put(out, m_entries.size(), 2);
  Put(out, m_entries.size(), 2);
  Put(out, directory.size(), 4);
  Put(out, at, 4);
  Put(out, 0, 2);
  WriteFile(path, out);
}

std::string Config(const std::string& elements, const std::string& version) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
         "<widget xmlns=\"http://www.w3.org/ns/widgets\" "
         "xmlns:tizen=\"http://tizen.org/ns/widgets\" id=\"http://example.org/x\" version=\"" +
         version + "\">\n" + elements + "\n</widget>\n";
}

std::string UiApp(const std::string& package, const std::string& name) {
  return "<tizen:application id=\"" + package + "." + name + "\" package=\"" + package +
         "\" required_version=\"4.0\"/>";
}

std::string Service(const std::string& id, const std::string& program,
                    const std::string& elements) {
  return "<tizen:service id=\"" + id + "\"><tizen:content src=\"" + program + "\"/>" + elements +
         "</tizen:service>";
}

std::string MetadataElement(const std::string& key, const std::string& value) {
  return "<tizen:metadata key=\"" + key + "\" value=\"" + value + "\"/>";
}

}  // namespace desk
