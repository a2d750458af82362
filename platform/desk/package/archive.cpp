// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/package/archive.h"

#include <archive.h>
#include <archive_entry.h>
#include <locale.h>

#include <cstring>
#include <fstream>

#include "desk/package/manifest.h"

namespace desk {
namespace {

constexpr std::size_t BLOCK_SIZE = 64UL * 1024;

void CheckMagic(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    throw PackageError("cannot read " + path + ": " + std::strerror(errno));
  }
  char magic[4] = {};
  file.read(magic, sizeof magic);
  if (file.gcount() == 4 && std::memcmp(magic, "PK\x05\x06", 4) == 0) {
    throw PackageError(path + " is an empty zip archive");
  }
  if (file.gcount() != 4 || std::memcmp(magic, "PK\x03\x04", 4) != 0) {
    throw PackageError(path + " is not a zip archive");
  }
}

// The library converts names to the thread's locale, and loses those that it cannot show.
class Utf8Locale {
 public:
  Utf8Locale() : m_locale(newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr)) {
    m_before = uselocale(m_locale);
  }
  ~Utf8Locale() {
    uselocale(m_before);
    if (m_locale != nullptr) {
      freelocale(m_locale);
    }
  }
  Utf8Locale(const Utf8Locale&) = delete;
  Utf8Locale& operator=(const Utf8Locale&) = delete;

 private:
  locale_t m_locale;
  locale_t m_before;
};

// Names of a UTF-8 archive come out as they are in any locale; others as the bytes they have.
std::string NameOf(archive_entry* entry) {
  const char* name = archive_entry_pathname_utf8(entry);
  if (name == nullptr) {
    name = archive_entry_pathname(entry);
  }
  return name == nullptr ? std::string() : name;
}

RawEntry::Type TypeOf(archive_entry* entry) {
  const bool link =
      archive_entry_symlink(entry) != nullptr || archive_entry_hardlink(entry) != nullptr;
  if (!link && archive_entry_filetype(entry) == AE_IFREG) {
    return RawEntry::Type::File;
  }
  if (!link && archive_entry_filetype(entry) == AE_IFDIR) {
    return RawEntry::Type::Directory;
  }
  return RawEntry::Type::Other;
}

}  // namespace

ArchiveReader::ArchiveReader(const std::string& path) : m_path(path) {
  CheckMagic(path);
  m_archive = archive_read_new();
  if (m_archive == nullptr) {
    throw std::bad_alloc();
  }
  archive_read_support_format_zip_seekable(m_archive);
  if (archive_read_open_filename(m_archive, path.c_str(), BLOCK_SIZE) != ARCHIVE_OK) {
    const std::string reason = archive_error_string(m_archive);
    archive_read_free(m_archive);
    throw PackageError(path + " is not a whole zip archive: " + reason);
  }
}

ArchiveReader::~ArchiveReader() {
  archive_read_free(m_archive);
}

bool ArchiveReader::Next(RawEntry& entry) {
  const Utf8Locale locale;
  archive_entry* header = nullptr;
  const int result = archive_read_next_header(m_archive, &header);
  if (result == ARCHIVE_EOF) {
    return false;
  }
  // A warning here is only about a name that the locale cannot show.
  if (result < ARCHIVE_WARN) {
    Fail("is damaged");
  }
  entry.name = NameOf(header);
  entry.type = TypeOf(header);
  entry.executable = (archive_entry_mode(header) & 0111) != 0;
  entry.size = static_cast<std::uint64_t>(archive_entry_size(header));
  m_current = entry.name;
  if (archive_entry_is_encrypted(header) != 0) {
    throw PackageError(m_path + " is encrypted");
  }
  if (entry.type == RawEntry::Type::File && archive_entry_size_is_set(header) == 0) {
    throw PackageError(m_path + ": the size of " + entry.name + " is not known");
  }
  return true;
}

std::size_t ArchiveReader::Read(void* buffer, std::size_t size) {
  const la_ssize_t count = archive_read_data(m_archive, buffer, size);
  if (count < 0) {
    Fail("is damaged at " + m_current);
  }
  return static_cast<std::size_t>(count);
}

void ArchiveReader::Fail(const std::string& what) {
  const char* reason = archive_error_string(m_archive);
  throw PackageError(m_path + " " + what + ": " + (reason == nullptr ? "unknown error" : reason));
}

}  // namespace desk
