// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "support/files.h"

#include <minizip/zip.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>

namespace support {
namespace {

namespace fs = std::filesystem;

void AddEntry(zipFile archive, const std::string& path, const ZipEntry& entry) {
  zip_fileinfo info{};
  const int method = entry.stored ? 0 : Z_DEFLATED;
  const bool added = zipOpenNewFileInZip(archive, entry.name.c_str(), &info, nullptr, 0, nullptr, 0,
                                         nullptr, method, Z_DEFAULT_COMPRESSION) == ZIP_OK &&
                     zipWriteInFileInZip(archive, entry.content.data(),
                                         static_cast<unsigned>(entry.content.size())) == ZIP_OK &&
                     zipCloseFileInZip(archive) == ZIP_OK;
  if (!added) {
    throw std::runtime_error(path + ": cannot add " + entry.name);
  }
}

}  // namespace

TempDir::TempDir() {
  std::string pattern = "/tmp/orv-test-XXXXXX";
  if (mkdtemp(pattern.data()) == nullptr) {
    throw std::system_error(errno, std::generic_category(), pattern);
  }
  m_path = pattern;
}

TempDir::~TempDir() {
  std::error_code ignored;
  fs::remove_all(m_path, ignored);
}

void WriteFile(const std::string& path, const std::string& content) {
  fs::create_directories(fs::path(path).parent_path());
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file << content;
  file.close();
  if (!file) {
    throw std::runtime_error(path + ": cannot write");
  }
}

std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    throw std::runtime_error(path + ": cannot read");
  }
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

bool Exists(const std::string& path) {
  return fs::exists(path);
}

void MakeDirectories(const std::string& path) {
  fs::create_directories(path);
}

std::vector<std::string> ListTree(const std::string& directory) {
  std::vector<std::string> names;
  for (const auto& entry : fs::recursive_directory_iterator(directory)) {
    const std::string name = fs::relative(entry.path(), directory).string();
    names.push_back(entry.is_directory() ? name + "/" : name);
  }
  std::sort(names.begin(), names.end());
  return names;
}

void WriteZip(const std::string& path, const std::vector<ZipEntry>& entries) {
  fs::create_directories(fs::path(path).parent_path());
  const zipFile archive = zipOpen(path.c_str(), APPEND_STATUS_CREATE);
  if (archive == nullptr) {
    throw std::runtime_error(path + ": cannot create");
  }
  for (const ZipEntry& entry : entries) {
    AddEntry(archive, path, entry);
  }
  if (zipClose(archive, nullptr) != ZIP_OK) {
    throw std::runtime_error(path + ": cannot close");
  }
}

}  // namespace support
